#include "answers/Sweep.h"
#include "engines/rip/drive/GapSearch.h"
#include "engines/rip/image/ByteOrder.h"

#include <QTest>

#include <array>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

/// The Q sub-channel of a place, its numbers in BCD or as they are.
QByteArray qOf(int track, int index, int minute, int second, int frame, bool inBcd)
{
    const auto number = [inBcd](int value) {
        return static_cast<char>(inBcd ? value / 10 << 4 | value % 10 : value);
    };
    QByteArray q(kQBytes, '\0');
    q[0] = 0x41;
    q[1] = number(track);
    q[2] = number(index);
    q[7] = number(minute);
    q[8] = number(second);
    q[9] = number(frame);
    return q;
}

Answer placeAnswer(const QByteArray& q, qint32 asked)
{
    const auto place = placeIn(q, asked);
    if (!place)
        return {"none"};
    return {QString("track %1, index %2, frame %3").arg(place->track).arg(place->index).arg(place->frame)};
}

/// What is found of a gap of so many frames before @p end, and with how many questions.
/// @param silent frames that tell nothing: those that this divides; 0 is none.
Answer searchAnswer(qint32 first, qint32 end, qint32 gap, int silent = 0)
{
    int questions = 0;
    GapSearch search([&](qint32 frame) -> std::optional<bool> {
        ++questions;
        if (silent > 0 && frame % silent == 0)
            return std::nullopt;
        return frame >= end - gap;
    });
    const qint32 found = search.lengthBefore(end, first);
    return {
        QString("%1 with %2 questions").arg(found == gap ? "found" : QString::number(found)).arg(questions)};
}

/// Around the places that are looked at first, and between them.
QList<qint32> gaps()
{
    QList<qint32> all;
    for (qint32 gap = 0; gap < 20'000; gap += gap < 16 ? 1 : 997)
        all << gap;
    for (const qint32 likely : {150, 600, 2'400, 9'600, 19'999})
        for (qint32 beside = -2; beside < 4; ++beside)
            all << likely + beside;
    return all;
}

/// A triangle whose steps have one height, as little-endian samples of two channels.
QByteArray steps(int height, int frames)
{
    QByteArray sound;
    for (int i = 0; i < frames; ++i) {
        const int value = i % 2 == 0 ? height / 2 : height / 2 - height;
        for (int channel = 0; channel < 2; ++channel) {
            sound += static_cast<char>(value);
            sound += static_cast<char>(value >> 8);
        }
    }
    return sound;
}

QString heardIn(const QByteArray& sound)
{
    ByteOrderEar ear;
    ear.hear(sound);
    return ear.hearsItSwapped() ? "swapped" : "as told";
}

} // namespace

/// What is read in the sub-channel of a disc and heard in raw sound, recorded.
class TestGapAnswers : public QObject
{
    Q_OBJECT
private slots:
    void places()
    {
        Book book("engines/rip/answers/places");
        constexpr qint32 kAsked = (12 * 60 + 34) * 75 + 56 - 150;
        for (const bool inBcd : {true, false}) {
            const QByteArray q = qOf(17, 1, 12, 34, 56, inBcd);
            const QString title = inBcd ? "In BCD" : "Converted";
            answers::everyLength(book, title, q,
                                 [](const QByteArray& bytes) { return placeAnswer(bytes, kAsked); });
            answers::everyByte(
                book, title, q, [](const QByteArray& bytes) { return placeAnswer(bytes, kAsked); }, 0,
                kQBytes);
            book.chapter(title + ", asked for so many frames off");
            for (int off = -8; off < 9; ++off)
                book.tell(QString::number(off), placeAnswer(q, kAsked + off));
            book.chapter(title + ", tracks and indexes");
            for (const int track : {0, 1, 98, 99, 100, 127})
                for (const int index : {0, 1, 98, 99, 100, 127})
                    book.tell(QString("%1 and %2").arg(track).arg(index),
                              placeAnswer(qOf(track, index, 12, 34, 56, inBcd), kAsked));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void searches()
    {
        Book book("engines/rip/answers/gapsearch");
        for (const int silent : {0, 2, 3, 7}) {
            book.chapter(silent == 0 ? QString("Gaps of so many frames in a track of 20000")
                                     : QString("The same, every frame number %1 tells nothing").arg(silent));
            for (const qint32 gap : gaps())
                book.tell(QString::number(gap), searchAnswer(1'001, 21'001, gap, silent));
        }
        book.chapter("Tracks of so many frames, all of them gap but the first");
        for (qint32 frames = 0; frames < 1'000; frames += frames < 20 ? 1 : 13)
            book.tell(QString::number(frames), searchAnswer(100, 100 + frames, frames - 1));
        book.chapter("Tracks of so many frames, a gap of two seconds");
        for (qint32 frames = 148; frames < 160; ++frames)
            book.tell(QString::number(frames), searchAnswer(100, 100 + frames, 150));
        book.chapter("Long tracks");
        for (const qint32 frames : {100'000, 400'000})
            for (const qint32 gap : {1, 149, 150, 151, 9'599, 9'600, 9'601, 50'000, 99'999})
                book.tell(QString("%1 in %2").arg(gap).arg(frames), searchAnswer(0, frames, gap));
        ZIB_COMPARE_ANSWERS(book);
    }
    void byteOrder()
    {
        Book book("engines/rip/answers/byteorder");
        book.chapter("Steps of so much, in frames of which the first two make none");
        for (const int height :
             {0, 11'999, 12'000, 12'001, 12'256, 12'289, 12'544, 16'384, 20'001, 32'767, 46'881})
            for (const int frames : {1, 2, 3, 40})
                book.tell(QString("%1 in %2").arg(height).arg(frames), {heardIn(steps(height, frames))});
        book.chapter("Steps whose other bytes are four times smaller, or nearly");
        for (const int high : {56, 60, 64, 68, 72, 80})
            for (const int low : {10, 13, 14, 15, 16, 17, 18, 19, 20, 21})
                book.tell(QString("%1 against %2").arg(high).arg(low), {heardIn(steps(high << 8 | low, 40))});
        book.chapter("Bytes swapped");
        for (int bytes = 0; bytes < 8; ++bytes) {
            QByteArray sound = "abcdefgh";
            swapBytes(sound.data(), bytes);
            book.tell(QString::number(bytes), {QString::fromLatin1(sound)});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
};

QTEST_APPLESS_MAIN(TestGapAnswers)
#include "tst_gapanswers.moc"
