#include "answers/MemoryFile.h"
#include "answers/Sweep.h"
#include "answers/WavSweep.h"
#include "engines/burn/tracks/FileView.h"
#include "engines/burn/tracks/TrackSource.h"
#include "engines/burn/WavMaker.h"

#include <QTest>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

Answer trackAnswer(const QByteArray& content)
{
    const answers::MemoryFile memory(content);
    const auto track = findTrack(memory.path());
    if (!track)
        return {track.error().kind == Failure::Kind::UnreadableFile ? "refused" : "refused otherwise"};
    return {QString("data: %1 at %2").arg(track->dataBytes).arg(track->dataOffset),
            QString("length: %1").arg(track->length.frames())};
}

/// Where the sound of a track ends among so many bytes: the last byte that is none of silence.
QString soundIn(const QByteArray& bytes)
{
    qsizetype end = bytes.size();
    while (end > 0 && bytes[end - 1] == '\0')
        --end;
    return QString("%1 of sound, %2 of silence").arg(end).arg(bytes.size() - end);
}

} // namespace

/// What is found in files that are to become tracks, and what a recorder is given of them, recorded.
class TestTrackAnswers : public QObject
{
    Q_OBJECT
private slots:
    void files()
    {
        Book book("engines/burn/answers/tracks");
        answers::everyWav(book, trackAnswer);
        answers::everyKept(book, "engines/audio/wav", trackAnswer);
        answers::everySeed(book, "wav", trackAnswer);
        book.chapter("Lengths on the disc of so many sample pairs");
        for (const qint64 pairs : {1, 300 * 588 - 1, 300 * 588, 300 * 588 + 1, 301 * 588, 301 * 588 + 1})
            book.tell(QString::number(pairs), trackAnswer(cdWav(QByteArray(pairs * 4, '\1'))));
        ZIB_COMPARE_ANSWERS(book);
    }
    /// A track of 300 frames and a little: in pieces that end at, before and behind its sound and its length.
    void reading()
    {
        constexpr qint64 kBytes = 300 * 2352 + 44;
        const answers::MemoryFile memory(cdWav(QByteArray(kBytes, '\x7F')));
        const auto track = findTrack(memory.path());
        TrackSource source;
        QVERIFY(source.open(*track));
        Book book("engines/burn/answers/trackreading");
        book.chapter("Pieces");
        book.tell("size", {QString::number(source.size())});
        for (const qint64 from :
             {qint64{0}, qint64{1}, kBytes - 1, kBytes, kBytes + 1, 301 * 2352LL - 1, 301 * 2352LL})
            for (const qint64 size : {qint64{1}, qint64{43}, qint64{45}, qint64{5000}, kBytes}) {
                source.seek(from);
                QByteArray buffer(size, '\x55');
                const auto got = source.read(buffer.data(), size);
                const auto then = source.read(buffer.data() + *got, 0);
                const QString rest = buffer.sliced(*got).count('\x55') == size - *got ? "" : ", MORE written";
                book.tell(QString("%1 from %2").arg(size).arg(from),
                          {QString("%1: %2%3, then %4")
                               .arg(*got)
                               .arg(soundIn(buffer.first(*got)), rest)
                               .arg(*then)});
            }
        book.chapter("Views of so many bytes from a place on");
        for (const qint64 from : {qint64{0}, qint64{4052}, qint64{4053}, qint64{8148}, kBytes - 10}) {
            FileView view;
            const bool shown = source.show(view, from, 10);
            book.tell(QString::number(from),
                      {QString("%1: %2, %3")
                           .arg(shown ? "shown" : "not")
                           .arg(soundIn({view.at(0), 10}), view.isWhole() ? "whole" : "torn")});
        }
        const BurnTrack copy = atCopy(*track, memory.path());
        book.chapter("As a copy");
        book.tell("all", {QString("%1 at %2, %3 frames")
                              .arg(copy.dataBytes)
                              .arg(copy.dataOffset)
                              .arg(copy.length.frames())});
        ZIB_COMPARE_ANSWERS(book);
    }
};

QTEST_APPLESS_MAIN(TestTrackAnswers)
#include "tst_trackanswers.moc"
