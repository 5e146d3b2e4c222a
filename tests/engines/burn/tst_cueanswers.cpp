#include "answers/Sweep.h"
#include "engines/burn/image/CueSheet.h"

#include <QTest>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

Answer cueAnswer(const QByteArray& text)
{
    const auto content = parseCue(text);
    if (!content)
        return {"refused: " + content.error().detail};
    Answer words{QString("file: '%1'").arg(content->binName),
                 QString("disc: '%1' by '%2'").arg(content->names.title, content->names.artist)};
    for (qsizetype i = 0; i < content->tracks.size(); ++i)
        words << QString("track %1: gap %2, start %3, '%4' by '%5'")
                     .arg(i)
                     .arg(content->tracks[i].gap.frames())
                     .arg(content->tracks[i].start.frames())
                     .arg(content->names.tracks[i].title, content->names.tracks[i].artist);
    return words;
}

CueTrack at(qint64 gap, qint64 start)
{
    return {CdTime::fromFrames(gap), CdTime::fromFrames(start)};
}

} // namespace

/// The sheets of disc images, written and read back, recorded.
class TestCueAnswers : public QObject
{
    Q_OBJECT
private slots:
    void sheets()
    {
        Book book("engines/burn/answers/cuesheets");
        const DiscNames names{"A \"disc\"", "Band", {{"One", "x"}, {"", "y\ny"}, {"Three", ""}}};
        const QList<CueTrack> tracks{at(0, 0), at(400, 550), at(74 + 75 * 59, 100 * 60 * 75)};
        const QByteArray seed = cueText("disc.bin", tracks, names);
        book.chapter("Sheets");
        book.tell("with names", {QString::fromUtf8(seed)});
        book.tell("without", {QString::fromUtf8(cueText("disc.bin", tracks))});
        book.tell("of twelve tracks",
                  {QString::fromUtf8(cueText("b", QList<CueTrack>(12, at(1, 1)), names))});
        book.tell("read", cueAnswer(seed));
        answers::everyLine(book, "Sheet", seed, cueAnswer);
        answers::everyNumber(book, "Sheet", seed, cueAnswer,
                             {"59", "60", "74", "75", "99", "100", "1", "000"});
        answers::everyLetter(book, "Sheet", seed, cueAnswer, {" ", "\""});
        book.chapter("Names of every letter");
        for (int code = 0; code < 0x120; ++code)
            book.tell(QString::number(code, 16),
                      {sheetNames({QString("a") + QChar(code) + "b", {}, {}}, 0).title});
        for (const char16_t code : {u'\x2028', u'\x3000', u'\xD800', u'\xDC00', u'\xFEFF'})
            book.tell(QString::number(code, 16), {sheetNames({QString("a") + QChar(code), {}, {}}, 0).title});
        book.tell("a pair", {sheetNames({QString::fromUtf8("a\xF0\x9F\x98\x80z"), {}, {}}, 0).title});
        book.tell("a pair at the end",
                  {sheetNames({QString::fromUtf8("a\xF0\x9F\x98\x80"), {}, {}}, 0).title});
        book.tell("halves", {sheetNames({QString(QChar(0xD83D)) + "z" + QChar(0xD83D), {}, {}}, 0).title});
        ZIB_COMPARE_ANSWERS(book);
    }
    void times()
    {
        Book book("engines/burn/answers/times");
        book.chapter("Frames as minutes, seconds and frames");
        for (const qint64 frames : {0, 1, 74, 75, 76, 4499, 4500, 4501, 449'999, 450'000, 4'500'000})
            book.tell(QString::number(frames), {CdTime::fromFrames(frames).toMsf()});
        book.chapter("Frames that hold so many samples");
        for (const qint64 samples : {0, 1, 587, 588, 589, 1175, 1176, 1177})
            book.tell(QString::number(samples), {QString::number(CdTime::holdingSamples(samples).frames())});
        ZIB_COMPARE_ANSWERS(book);
    }
};

QTEST_APPLESS_MAIN(TestCueAnswers)
#include "tst_cueanswers.moc"
