#include "answers/Sweep.h"
#include "engines/rip/image/ImageLayout.h"
#include "engines/rip/sheets/CueParser.h"
#include "engines/rip/sheets/SheetText.h"
#include "engines/rip/sheets/TocParser.h"
#include "engines/rip/sheets/TocTokens.h"

#include <QTest>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

QString yes(bool is, const char* word)
{
    return is ? QString(" ") + word : QString();
}

Answer wordsOf(const SheetFile& file, qsizetype number)
{
    const char* kind = file.kind == SheetFile::Kind::Raw          ? "raw"
                       : file.kind == SheetFile::Kind::RawSwapped ? "swapped"
                                                                  : "sound";
    return {QString("file %1: '%2' %3").arg(number).arg(file.name, kind)};
}

QString wordsOf(const SheetPiece& piece, const QString& number)
{
    const QString from = piece.file == SheetPiece::kSilence
                             ? QString("silence")
                             : QString("file %1 from %2").arg(piece.file).arg(piece.offset);
    return QString("piece %1: %2 bytes %3").arg(number, from).arg(piece.bytes) + yes(piece.isGap, "gap") +
           yes(piece.wholeFrames, "whole");
}

Answer wordsOf(const SheetTrack& track)
{
    Answer words{QString("track %1: %2 %3")
                     .arg(track.number)
                     .arg(track.sectorBytes)
                     .arg(track.audio ? "sound" : "data") +
                 yes(track.copyPermitted, "copy") + yes(track.preemphasis, "emphasis") +
                 (track.gapFrames ? QString(" gap %1").arg(*track.gapFrames) : QString())};
    if (!track.title.isEmpty() || !track.performer.isEmpty())
        words << QString("names of %1: '%2' by '%3'").arg(track.number).arg(track.title, track.performer);
    for (qsizetype i = 0; i < track.pieces.size(); ++i)
        words << wordsOf(track.pieces[i], QString("%1.%2").arg(track.number).arg(i + 1));
    return words;
}

QString wordsOf(const DiscRun& run, qsizetype number)
{
    return QString("run %1: at %2 bytes %3 file %4 from %5 sector %6")
               .arg(number)
               .arg(run.at)
               .arg(run.bytes)
               .arg(run.file)
               .arg(run.offset)
               .arg(run.sectorBytes) +
           yes(run.audio, "sound");
}

/// Where everything comes to lie, with files that hold a little more than three seconds each.
Answer wordsOfLayout(const DiscSheet& sheet, qint64 fileBytes = 235 * 2352 + 1000)
{
    const auto laid = layOut(sheet, QList<qint64>(sheet.files.size(), fileBytes));
    if (!laid)
        return {QString("layout: ") + laid.error().detail};
    Answer words;
    for (const TocTrack& track : laid->tracks)
        words << QString("on disc %1: start %2 frames %3 gap %4")
                     .arg(track.number)
                     .arg(track.start)
                     .arg(track.frames)
                     .arg(track.gap);
    for (qsizetype i = 0; i < laid->runs.size(); ++i)
        words << wordsOf(laid->runs[i], i);
    if (!laid->remark.isEmpty())
        words << QString("remark: ") + laid->remark;
    return words;
}

Answer wordsOf(const Outcome<DiscSheet>& sheet)
{
    if (!sheet)
        return {QString("refused: ") + sheet.error().detail};
    Answer words;
    if (!sheet->title.isEmpty() || !sheet->performer.isEmpty())
        words << QString("disc: '%1' by '%2'").arg(sheet->title, sheet->performer);
    for (qsizetype i = 0; i < sheet->files.size(); ++i)
        words += wordsOf(sheet->files[i], i);
    for (const SheetTrack& track : sheet->tracks)
        words += wordsOf(track);
    return words;
}

/// The sheet and where it leads to.
Answer wordsOnDisc(const Outcome<DiscSheet>& sheet)
{
    return sheet ? wordsOf(sheet) + wordsOfLayout(*sheet) : wordsOf(sheet);
}

Answer cueAnswer(const QByteArray& text)
{
    return wordsOf(parseCueSheet(QString::fromLatin1(text)));
}

Answer cueOnDisc(const QByteArray& text)
{
    return wordsOnDisc(parseCueSheet(QString::fromLatin1(text)));
}

Answer tokensAnswer(const QByteArray& text)
{
    const auto tokens = tocTokens(QString::fromLatin1(text));
    if (!tokens)
        return {"no end"};
    Answer words;
    for (const TocToken& token : *tokens)
        words << QString("%1: %2%3%2").arg(token.line).arg(token.quoted ? "\"" : "", token.text);
    return words;
}

Answer tocAnswer(const QByteArray& text)
{
    return wordsOf(parseTocSheet(QString::fromLatin1(text)));
}

Answer tocOnDisc(const QByteArray& text)
{
    return wordsOnDisc(parseTocSheet(QString::fromLatin1(text)));
}

Answer timeAnswer(const QByteArray& text)
{
    const auto frames = framesOfTime(QString::fromLatin1(text));
    return {frames ? QString::number(*frames) : QString("none")};
}

Answer readingsAnswer(const QByteArray& bytes)
{
    Answer words;
    for (const SheetReading& reading : readingsOf(bytes))
        words << QString("%1: '%2' of %3 lines")
                     .arg(QString::fromLatin1(reading.encoding), reading.text)
                     .arg(linesOf(reading.text).size());
    return words;
}

const QByteArray kCue = "REM made by hand\n"
                        "TITLE \"Whole\"\n"
                        "PERFORMER \"Band\"\n"
                        "FILE \"a b.bin\" BINARY\n"
                        "  TRACK 01 AUDIO\n"
                        "    TITLE \"One\"\n"
                        "    PERFORMER Some One\n"
                        "    FLAGS DCP PRE\n"
                        "    PREGAP 00:00:05\n"
                        "    INDEX 01 00:00:10\n"
                        "  TRACK 02 AUDIO\n"
                        "    INDEX 00 00:00:20\n"
                        "    INDEX 01 00:00:30\n"
                        "    INDEX 02 00:00:40\n"
                        "    POSTGAP 00:00:07\n"
                        "FILE c.wav WAVE\n"
                        "  TRACK 03 AUDIO\n"
                        "    INDEX 01 00:00:00\n"
                        "FILE d.img MOTOROLA\n"
                        "  TRACK 04 MODE1/2048\n"
                        "    INDEX 01 00:01:00\n"
                        "  TRACK 05 AUDIO\n"
                        "    INDEX 01 00:02:30\n";

const QByteArray kToc = "CD_DA // kind\n"
                        "CATALOG \"1234567890123\"\n"
                        "CD_TEXT {\n"
                        "  LANGUAGE_MAP { 0 : EN }\n"
                        "  LANGUAGE 0 { TITLE \"Wh\\\"o\\344\" PERFORMER \"Band\" }\n"
                        "}\n"
                        "TRACK AUDIO\n"
                        "COPY\n"
                        "NO PRE_EMPHASIS\n"
                        "CD_TEXT { LANGUAGE 0 { TITLE \"One\" } LANGUAGE 1 { TITLE \"Uno\" } }\n"
                        "PREGAP 0:0:5\n"
                        "FILE \"a.wav\" 0 0:2:10\n"
                        "TRACK AUDIO\n"
                        "NO COPY\n"
                        "PRE_EMPHASIS\n"
                        "SILENCE 0:0:7\n"
                        "START\n"
                        "AUDIOFILE \"b.raw\" SWAP #44 588 0:1:0\n"
                        "INDEX 0:0:30\n"
                        "TRACK MODE1_RAW RW\n"
                        "ISRC \"DEABC0012345\"\n"
                        "ZERO MODE1 0:0:3\n"
                        "DATAFILE \"c.bin\" #2448 24480\n"
                        "TRACK AUDIO\n"
                        "FILE \"d.raw\" 1000 2000\n"
                        "START 0:0:1\n"
                        "FILE \"b.raw\" SWAP 0\n";

} // namespace

/// What the readers of CUE sheets and TOC files answer, recorded.
class TestSheetAnswers : public QObject
{
    Q_OBJECT
private slots:
    void cueSheets()
    {
        Book book("engines/rip/answers/cue");
        book.chapter("The sheet as it is");
        book.tell("all", cueOnDisc(kCue));
        answers::everyLine(book, "CUE", kCue, cueAnswer);
        answers::everyNumber(book, "CUE", kCue, cueOnDisc,
                             {"59", "60", "74", "75", "99", "100", "1000", "x"});
        answers::everyLetter(book, "CUE", kCue, cueAnswer, {" ", "\"", "0"});
        tellKinds(book);
        tellTimes(book);
        tellFileLengths(book);
        answers::everySeed(book, "sheets", cueOnDisc);
        ZIB_COMPARE_ANSWERS(book);
    }
    void tocFiles()
    {
        Book book("engines/rip/answers/toc");
        book.chapter("The file as it is");
        book.tell("all", tocOnDisc(kToc));
        answers::everyLine(book, "TOC", kToc, tocAnswer);
        answers::everyNumber(book, "TOC", kToc, tocOnDisc,
                             {"59", "60", "75", "1099511627776", "1099511627777", "-1", "x"});
        answers::everyLength(book, "TOC", kToc, tocAnswer);
        tellModes(book);
        answers::everySeed(book, "sheets", tocOnDisc);
        ZIB_COMPARE_ANSWERS(book);
    }
    void tocTokens()
    {
        Book book("engines/rip/answers/toctokens");
        const QByteArray seed =
            "A{b}\"c\\\"d\\\\\\101\\377\\400\\48x\"e//f\r\ng,h:i / j\"\"k/l\r\"m{\"\t{{n\n\\\"o\"";
        answers::everyLength(book, "Tokens", seed, tokensAnswer);
        answers::everyLetter(book, "Tokens", seed, tokensAnswer,
                             {" ", "\"", "\\", "/", "{", "\n", "\r", "0", "3", "4", "7", "8"});
        book.chapter("Letters beyond ASCII");
        book.tell("byte order mark", {QString::number(zib::tocTokens(QString(QChar(0xFEFF)) + "a")->size())});
        book.tell("wide blank",
                  {QString::number(zib::tocTokens(QString("a") + QChar(0x3000) + "b")->size())});
        ZIB_COMPARE_ANSWERS(book);
    }
    void sheetTexts()
    {
        Book book("engines/rip/answers/sheettext");
        const QByteArray some = QByteArray::fromHex("004182a0c3efff");
        book.chapter("One byte behind an A");
        for (int byte = 0; byte < 256; ++byte)
            book.tell(QByteArray(1, static_cast<char>(byte)).toHex(),
                      readingsAnswer(QByteArray("A") + static_cast<char>(byte)));
        book.chapter("One byte, two and three");
        for (const char first : some) {
            book.tell(QByteArray(1, first).toHex(), readingsAnswer(QByteArray(1, first)));
            for (const char second : some) {
                const QByteArray two{std::array{first, second}.data(), 2};
                book.tell(two.toHex(' '), readingsAnswer(two));
                for (const char third : some)
                    book.tell((two + third).toHex(' '), readingsAnswer(two + third));
            }
        }
        book.chapter("Marks");
        for (const char* bytes : {"efbbbf41", "efbbbfe4", "efbb41", "fffe4100", "fffe41", "fffe00d8",
                                  "feff0041", "feff00", "41004200", "00410042", "8341", "81758341", "a4ce"})
            book.tell(bytes, readingsAnswer(QByteArray::fromHex(bytes)));
        book.chapter("Lines");
        for (const QByteArray text : {"", "\n", "\r\n", "\n\r", "a\r\rb", " a \n\tb", "a\r\n\r\nb\r"})
            book.tell(text.toHex(' '), linesOf(QString::fromLatin1(text)));
        book.tell("marked", linesOf(QString(QChar(0xFEFF)) + " a\n" + QChar(0xFEFF) + "b"));
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    /// Every kind of file and track, as it is and beside it.
    static void tellKinds(Book& book)
    {
        book.chapter("Kinds of tracks");
        for (const char* mode : {"AUDIO",      "audio",
                                 "CDG",        "MODE0/2336",
                                 "MODE1/2048", "MODE1/2352",
                                 "MODE2/2048", "MODE2/2324",
                                 "MODE2/2328", "MODE2/2332",
                                 "MODE2/2336", "MODE2/2352",
                                 "MODE1/2056", "MODE1/2368",
                                 "MODE1/2448", "MODE1/2449",
                                 "CDI/2336",   "CDI/2352",
                                 "MODE3/2048", "MODE1",
                                 "AUDIO x",    ""})
            book.tell(mode,
                      cueAnswer(QByteArray("FILE a\nTRACK 1 ") + mode + "\nINDEX 1 0:0:2\nPOSTGAP 0:0:3"));
        book.chapter("Files");
        for (const char* file : {"a", "a BINARY", "\"a\"", "\"a\" binary", "\"a\" MOTOROLA", "a WAVE",
                                 "\"a b\" MP3", "a b", "a b c", "\"\"", "\"a", "a\"", "\"a\"b",
                                 "\"a \"b\" c\" d", "\"a\" b c", "", "a.b", "\"", "\"a\" AIFF"})
            book.tell(file, cueAnswer(QByteArray("FILE ") + file + "\nTRACK 1 AUDIO\nINDEX 1 0:0:0"));
        book.chapter("Names");
        for (const char* name :
             {"a", "\"a\"", "\"a", "a\"", "\"", "\"\"", "\"a\\\"b\"", "a b", "\"a\" b", "\"a\"b\""})
            book.tell(name,
                      cueAnswer(QByteArray("TITLE ") + name + "\nFILE a\nTRACK 1 AUDIO\nINDEX 1 0:0:0"));
        book.chapter("First tracks");
        for (int number = 0; number <= 101; ++number)
            book.tell(
                QString::number(number),
                cueAnswer("FILE a\nTRACK " + QByteArray::number(number) + " AUDIO\nINDEX 1 0:0:0").first(1));
    }
    static void tellTimes(Book& book)
    {
        book.chapter("Times");
        for (const char* time :
             {"",         "0",         "0:0",   "0:0:0",   "1:2:3",   "01:02:03", "001:02:03",
              "9999:0:0", "10000:0:0", "0:59",  "0:60",    "0:59:74", "0:59:75",  "0:60:0",
              "0:000",    "0:0:000",   "0:0:",  ":0:0",    "-1:0",    "0:0:0:0",  "0:0:0\n",
              " 0:0:0",   "0:0:0 ",    "a:0:0", "99:59:74"})
            book.tell(QByteArray(time).replace('\n', "|"), timeAnswer(time));
        book.chapter("How long a disc may be");
        for (const char* time : {"6666:39:74", "6666:40:00", "6666:40:01"})
            for (const qint64 fileBytes : {0, 1, 2352, 2353}) {
                const auto sheet =
                    parseCueSheet(QString("FILE a\nTRACK 1 AUDIO\nINDEX 1 0:0:0\nPOSTGAP %1").arg(time));
                book.tell(QString("%1 and a file of %2").arg(time).arg(fileBytes),
                          wordsOfLayout(*sheet, fileBytes));
            }
    }
    /// Files that end at, before and behind the places where something begins.
    static void tellFileLengths(Book& book)
    {
        for (const char* kind : {"AUDIO", "MODE1/2048", "CDG"}) {
            const QByteArray text = QByteArray("FILE a\nTRACK 1 ") + kind +
                                    "\nINDEX 0 0:0:0\nINDEX 1 0:0:2\nTRACK 2 AUDIO\nINDEX 0 0:0:4\nINDEX 1 "
                                    "0:0:5\nTRACK 3 " +
                                    kind + "\nINDEX 0 0:0:7\nINDEX 1 0:0:8\nPOSTGAP 0:0:1";
            const DiscSheet sheet = *parseCueSheet(QString::fromLatin1(text));
            book.chapter(QString("Lengths of a file, the first track is ") + kind,
                         wordsOfLayout(sheet, 10 * 2352));
            qint64 told = -1;
            for (const qint64 frame : {0, 1, 2, 4, 5, 7, 8, 9})
                for (const qint64 sector : {2048, 2352, 2448})
                    for (const qint64 bytes : {frame * sector - 1, frame * sector, frame * sector + 1})
                        if (bytes > told)
                            book.tell(QString::number(told = bytes), wordsOfLayout(sheet, bytes));
        }
    }
    static void tellModes(Book& book)
    {
        book.chapter("Kinds of tracks");
        for (const char* mode :
             {"AUDIO", "audio", "MODE0", "MODE1", "MODE1_RAW", "MODE2", "MODE2_FORM1", "MODE2_FORM2",
              "MODE2_FORM_MIX", "MODE2_RAW", "MODE3", "\"AUDIO\"", "AUDIO RW", "AUDIO RW_RAW", "AUDIO RW_X",
              "AUDIO \"RW\"", "MODE1 RW_RAW", ""})
            book.tell(mode, tocAnswer(QByteArray("TRACK ") + mode + "\nFILE \"a\" 0 0:0:2\nSILENCE 100\n"));
        book.chapter("Statements alone and in a track");
        for (const char* statement : {"",
                                      "TRACK",
                                      "FILE",
                                      "FILE a",
                                      "FILE \"\"",
                                      "FILE \"a\"",
                                      "FILE \"a\" x",
                                      "FILE \"a\" 0",
                                      "FILE \"a.WAV\" 0",
                                      "FILE \"a.wav\" SWAP 0",
                                      "FILE \"a\" 0 0",
                                      "FILE \"a\" #-1 0",
                                      "FILE \"a\" #5 0",
                                      "FILE \"a\" #x 7 9",
                                      "FILE \"a\" #1099511627777 0",
                                      "FILE \"a\" \"0\"",
                                      "FILE \"a\" 0 \"0\"",
                                      "DATAFILE \"a\"",
                                      "DATAFILE \"a\" 5",
                                      "DATAFILE \"a\" #5 6",
                                      "DATAFILE \"a\" \"#5\"",
                                      "DATAFILE",
                                      "SILENCE",
                                      "SILENCE x 4",
                                      "SILENCE \"x\" 4",
                                      "SILENCE { 4 }",
                                      "ZERO MODE1 RW 4",
                                      "FIFO \"a\"",
                                      "START",
                                      "START 5",
                                      "START 0:0:1",
                                      "PREGAP",
                                      "PREGAP 0:0:1",
                                      "PREGAP 588",
                                      "INDEX 5",
                                      "INDEX x",
                                      "CATALOG",
                                      "CATALOG \"a\"",
                                      "ISRC",
                                      "CD_TEXT",
                                      "CD_TEXT {",
                                      "CD_TEXT { TITLE",
                                      "CD_TEXT { TITLE \"x\"",
                                      "CD_TEXT { TITLE \"x\" }",
                                      "CD_TEXT { title \"x\" TITLE \"y\" }",
                                      "CD_TEXT { { } TITLE \"x\" }",
                                      "CD_TEXT { \"TITLE\" \"x\" }",
                                      "CD_TEXT { { } } TITLE \"x\"",
                                      "CD_TEXT { PERFORMER \"x\" PERFORMER \"y\" }",
                                      "CD_TEXT { TITLE { \"x\" } }",
                                      "{ TRACK X }",
                                      "{ { } TRACK X }",
                                      "{ \"}\" TRACK X }",
                                      "NO",
                                      "NO COPY",
                                      "COPY",
                                      "NO COPY COPY",
                                      "NO x COPY",
                                      "NO PRE_EMPHASIS",
                                      "\"TRACK\" X",
                                      "no copy",
                                      "x y z",
                                      "}"}) {
            const QByteArray text = statement;
            book.tell(text, tocAnswer(text));
            book.tell("in a track: " + text,
                      tocAnswer("TRACK AUDIO\nCOPY\nPRE_EMPHASIS\nSILENCE 1000\n" + text));
        }
        book.chapter("How many tracks");
        for (const int count : {98, 99, 100})
            book.tell(QString::number(count),
                      tocAnswer(QByteArray("TRACK AUDIO SILENCE 0:0:1\n").repeated(count)).last(1));
    }
};

QTEST_APPLESS_MAIN(TestSheetAnswers)
#include "tst_sheetanswers.moc"
