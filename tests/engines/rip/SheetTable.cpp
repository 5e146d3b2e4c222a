#include "engines/rip/SheetTable.h"

#include "common/CdTime.h"
#include "engines/burn/WavMaker.h"
#include "engines/rip/RipBench.h"

#include <QStringEncoder>

namespace zib {

namespace {

using Files = QList<std::pair<QByteArray, QByteArray>>;

constexpr int kFrames = 120;

/// The sound of most images.
const QByteArray& disc()
{
    static const QByteArray sound = discSound(kFrames, 3);
    return sound;
}

QByteArray part(int first, int count, const QByteArray& of = disc())
{
    return of.mid(qsizetype{first} * kBytesPerFrame, qsizetype{count} * kBytesPerFrame);
}

QByteArray silence(int frames)
{
    return QByteArray(qsizetype{frames} * kBytesPerFrame, '\0');
}

QByteArray swapped(QByteArray sound)
{
    for (qsizetype i = 0; i + 1 < sound.size(); i += 2)
        std::swap(sound[i], sound[i + 1]);
    return sound;
}

QByteArray msf(int frames)
{
    return CdTime::fromFrames(frames).toMsf().toLatin1();
}

/// Sectors of data that are no sound.
QByteArray data(int sectors, int bytes)
{
    return sound(qint64{sectors} * bytes / 4 + 1, 9).left(qsizetype{sectors} * bytes);
}

/// Sectors of sound with 96 bytes behind each.
QByteArray withSubcode(const QByteArray& sound)
{
    QByteArray all;
    for (qsizetype at = 0; at < sound.size(); at += kBytesPerFrame)
        all += sound.mid(at, kBytesPerFrame) + QByteArray(96, '\x5a');
    return all;
}

QByteArray encoded(const char* encoding, const QString& text)
{
    QStringEncoder encoder(encoding);
    return encoder.encode(text);
}

QByteArray track(int number, int start, const QByteArray& mode = "AUDIO", const QByteArray& before = {})
{
    return "  TRACK " + QByteArray::number(number).rightJustified(2, '0') + ' ' + mode + '\n' + before +
           "    INDEX 01 " + msf(start) + '\n';
}

const QByteArray kFile = "FILE \"disc.bin\" BINARY\n";

QByteArray twoTracks()
{
    return track(1, 0) + track(2, 40);
}

Files discFile()
{
    return {{"disc.bin", disc()}};
}

QList<QByteArray> twoParts()
{
    return {part(0, 40), part(40, 80)};
}

/// Letter case, line ends, comments, quotes and blanks.
QList<SheetRow> texts()
{
    const QByteArray plain = kFile + twoTracks();
    const auto row = [](const char* name, const QByteArray& sheet) {
        return SheetRow{.name = name, .sheet = sheet, .tracks = twoParts(), .files = discFile()};
    };
    return {
        row("plain", plain),
        row("small letters", QByteArray(plain).toLower()),
        row("keywords of both letters",
            QByteArray(plain).replace("TRACK", "Track").replace("INDEX", "iNdEx")),
        row("CRLF", QByteArray(plain).replace("\n", "\r\n")),
        row("CR", QByteArray(plain).replace("\n", "\r")),
        row("no end of the last line", plain.chopped(1)),
        row("empty lines", "\n\n" + QByteArray(plain).replace("\n", "\n\n")),
        row("tabs", QByteArray(plain).replace("    ", "\t\t").replace("  ", "\t").replace(" ", "\t")),
        row("blanks at the ends", QByteArray(plain).replace("\n", "  \t\n")),
        row("no indents", QByteArray(plain).replace("  ", "")),
        row("comments", "REM GENRE Rock\nREM\n; mine\n# mine\n" + plain + "REM END\n"),
        row("unknown lines", "SOMETHING 1 2\nDISCID xyz\n" + plain + "    WHATEVER \"x\"\n=====\n"),
        row("words that are kept", "CATALOG 1234567890123\nCDTEXTFILE \"a.cdt\"\nSONGWRITER \"s\"\n" + plain),
        row("no quotes", QByteArray(plain).replace("\"", "")),
        row("no kind of file", QByteArray(plain).replace(" BINARY", "")),
        row("one blank more", QByteArray(plain).replace("\" BINARY", "\"  BINARY")),
        row("short times", kFile + track(1, 0) + "  TRACK 2 AUDIO\n    INDEX 1 0:0:40\n"),
        row("minutes and seconds", kFile + track(1, 0).replace("00:00:00", "0:00") + track(2, 40)),
        row("three digits of a number", kFile + track(1, 0).replace("01 A", "001 A") + track(2, 40)),
        row("quotes in a title", "TITLE \"a \\\"b\\\" c\"\nPERFORMER \"\"\n" + plain),
        row("a title without quotes", "TITLE a b c\n" + plain),
        row("a long line", "TITLE \"" + QByteArray(20'000, 'x') + "\"\n" + plain),
        row("UTF-8 with a mark", "\xEF\xBB\xBF" + plain),
        row("UTF-16, little", "\xFF\xFE" + encoded("UTF-16LE", plain)),
        row("UTF-16, big", "\xFE\xFF" + encoded("UTF-16BE", plain)),
        row("UTF-16 without a mark", encoded("UTF-16LE", plain)),
    };
}

/// Names of files, as they are written and as they lie there.
QList<SheetRow> names()
{
    QList<SheetRow> rows;
    const auto row = [&rows](const char* name, const QByteArray& written,
                             const QByteArray& lies) -> SheetRow& {
        rows << SheetRow{.name = name,
                         .sheet = "FILE \"" + written + "\" BINARY\n" + twoTracks(),
                         .tracks = twoParts(),
                         .files = {{lies, disc()}}};
        return rows.last();
    };
    const QString german = QString::fromUtf8("Grüße.bin");
    const QString japanese = QString::fromUtf8("日本の表.bin"); // the last letter ends in a backslash
    row("another letter case", "DISC.Bin", "disc.bIN");
    row("blanks in the name", "my disc (1).bin", "my disc (1).bin");
    row("blanks and no quotes", "my disc.bin", "my disc.bin").sheet.replace("\"", "");
    row("an apostrophe", "it's.bin", "it's.bin");
    row("a quotation mark", "a \"b\".bin", "a \"b\".bin");
    row("per cent", "100%41.bin", "100%41.bin");
    row("UTF-8", german.toUtf8(), german.toUtf8());
    row("UTF-8, case of other letters", QString::fromUtf8("GRÜßE.bin").toUtf8(), german.toUtf8());
    row("UTF-8, composed otherwise", german.toUtf8(),
        german.normalized(QString::NormalizationForm_D).toUtf8());
    row("UTF-16", "", german.toUtf8()).sheet =
        "\xFF\xFE" + encoded("UTF-16LE", "FILE \"" + german + "\" BINARY\n" + twoTracks());
    row("Latin-1", german.toLatin1(), german.toUtf8());
    row("Latin-1 on the storage too", german.toLatin1(), german.toLatin1());
    row("UTF-8, Latin-1 on the storage", german.toUtf8(), german.toLatin1()).reason =
        QString("the file %1 is missing").arg(german);
    row("Shift-JIS", encoded("Shift_JIS", japanese), japanese.toUtf8());
    row("Shift-JIS on the storage too", encoded("Shift_JIS", japanese), encoded("Shift_JIS", japanese));
    row("half kana", encoded("Shift_JIS", QString::fromUtf8("ｱﾙﾊﾞﾑ.bin")),
        QString::fromUtf8("ｱﾙﾊﾞﾑ.bin").toUtf8());
    row("a folder below", "sub/disc.bin", "sub/disc.bin");
    row("a folder below, backslash", "sub\\disc.bin", "sub/disc.bin");
    row("a folder below, letter case", "SUB\\DISC.BIN", "sub/disc.bin");
    row("this folder", ".\\disc.bin", "disc.bin");
    row("the folder above", "../above.bin", "../above.bin");
    row("a backslash in the name", "a\\b.bin", "a\\b.bin");
    row("an absolute path that has gone", "/somewhere/else/disc.bin", "disc.bin");
    row("a path of another system", "C:\\Music\\My Albums\\disc.bin", "disc.bin");
    row("a share of another system", "\\\\server\\music\\disc.bin", "disc.bin");
    row("a drive letter alone", "D:disc.bin", "disc.bin");
    row("a neighbour's name", "Album remastered.bin", "Album remastered.bin").files
        << std::pair<QByteArray, QByteArray>{"disc.bin", silence(kFrames)};
    row("the neighbour alone", "Album remastered.bin", "disc.bin").reason =
        "the file Album remastered.bin is missing";
    row("two that could be meant", "DISC.BIN", "disc.bin").files
        << std::pair<QByteArray, QByteArray>{"Disc.bin", silence(kFrames)};
    rows.last().reason = "more than one file could be DISC.BIN";
    row("two, and one is exact", "DISC.BIN", "DISC.BIN").files
        << std::pair<QByteArray, QByteArray>{"disc.bin", silence(kFrames)};
    row("a folder", "sub", "sub/disc.bin").reason = "sub is not a file";
    row("a link to the file", "link.bin", "real.bin").links = {{"link.bin", "real.bin"}};
    row("a link that leads nowhere", "link.bin", "real.bin").links = {{"link.bin", "gone.bin"}};
    rows.last().reason = "the file link.bin is missing";
    SheetRow& linked = row("a linked sheet", "disc.bin", "far/disc.bin");
    linked.sheetName = "far/disc.cue";
    linked.links = {{"disc.cue", "far/disc.cue"}};
    for (SheetRow& each : rows)
        if (!each.reason.isEmpty())
            each.tracks.clear();
    return rows;
}

/// Tracks, gaps and indexes of one file of sound.
QList<SheetRow> layouts()
{
    const auto row = [](const char* name, const QByteArray& tracks, const QList<QByteArray>& expected) {
        return SheetRow{.name = name, .sheet = kFile + tracks, .tracks = expected, .files = discFile()};
    };
    const QByteArray gap0 = "    INDEX 00 ";
    return {
        row("one track", track(1, 0), {disc()}),
        row("first number 4", track(4, 0) + track(5, 40), twoParts()),
        row("numbers up to 99", track(98, 0) + track(99, 40), twoParts()),
        row("hidden sound", track(1, 30, "AUDIO", gap0 + msf(0) + '\n') + track(2, 60),
            {part(30, 30), part(60, 60)}),
        row("hidden sound, unsaid", track(1, 30) + track(2, 60), {part(30, 30), part(60, 60)}),
        row("gap with sound", track(1, 0) + track(2, 40, "AUDIO", gap0 + msf(25) + '\n'), twoParts()),
        row("gap of one frame", track(1, 0) + track(2, 40, "AUDIO", gap0 + msf(39) + '\n'), twoParts()),
        row("gap of none", track(1, 0) + track(2, 40, "AUDIO", gap0 + msf(40) + '\n'), twoParts()),
        row("many indexes", track(1, 0) + "    INDEX 02 00:00:10\n    INDEX 03 00:00:20\n" + track(2, 40),
            twoParts()),
        row("pregap", track(1, 0) + track(2, 40, "AUDIO", "    PREGAP 00:00:15\n"), twoParts()),
        row("pregap before track 1", track(1, 0, "AUDIO", "    PREGAP 00:02:00\n") + track(2, 40),
            twoParts()),
        row("pregap and gap",
            track(1, 0) + track(2, 40, "AUDIO", "    PREGAP 00:00:15\n" + gap0 + msf(30) + '\n'),
            {part(0, 30) + silence(15) + part(30, 10), part(40, 80)}),
        row("postgap", track(1, 0) + "    POSTGAP 00:00:11\n" + track(2, 40),
            {part(0, 40) + silence(11), part(40, 80)}),
        row("postgap at the end", twoTracks() + "    POSTGAP 00:00:11\n",
            {part(0, 40), part(40, 80) + silence(11)}),
        row("flags", track(1, 0, "AUDIO", "    FLAGS DCP PRE 4CH SCMS\n") + track(2, 40), twoParts()),
        row("sound with graphics's word", track(1, 0) + track(2, 40), twoParts()),
    };
}

/// Data tracks of all kinds, where a file has sectors of several sizes.
QList<SheetRow> dataTracks()
{
    QList<SheetRow> rows;
    for (const auto& [mode, size] : QList<std::pair<QByteArray, int>>{{"MODE1/2048", 2048},
                                                                      {"MODE1/2352", 2352},
                                                                      {"MODE1/2448", 2448},
                                                                      {"MODE2/2048", 2048},
                                                                      {"MODE2/2324", 2324},
                                                                      {"MODE2/2328", 2328},
                                                                      {"MODE2/2336", 2336},
                                                                      {"MODE2/2352", 2352},
                                                                      {"MODE2/2448", 2448},
                                                                      {"CDI/2336", 2336},
                                                                      {"CDI/2352", 2352}}) {
        const QByteArray sectors = data(30, size);
        rows << SheetRow{.name = mode + " before",
                         .sheet = kFile + track(1, 0, mode) + track(2, 30) + track(3, 70),
                         .tracks = {{}, part(0, 40), part(40, 80)},
                         .files = {{"disc.bin", sectors + disc()}}};
        rows << SheetRow{.name = mode + " between, with gaps",
                         .sheet = kFile + track(1, 0) + track(2, 50, mode, "    INDEX 00 " + msf(40) + '\n') +
                                  track(3, 80, "AUDIO", "    INDEX 00 " + msf(70) + '\n'),
                         .tracks = {part(0, 40), {}, part(50, 70)},
                         .files = {{"disc.bin", part(0, 40) + sectors + part(40, 80)}}};
        rows << SheetRow{.name = mode + " after",
                         .sheet = kFile + track(1, 0) + track(2, 40) + track(3, 120, mode),
                         .tracks = twoParts() + QList<QByteArray>{{}},
                         .files = {{"disc.bin", disc() + sectors}}};
    }
    rows << SheetRow{.name = "sound with graphics",
                     .sheet = kFile + track(1, 0, "CDG") + track(2, 40, "CDG"),
                     .tracks = twoParts(),
                     .files = {{"disc.bin", withSubcode(disc())}}};
    rows << SheetRow{.name = "data and pregap",
                     .sheet = kFile + track(1, 0) + track(2, 120, "MODE1/2048", "    PREGAP 00:02:00\n"),
                     .tracks = {disc(), {}},
                     .files = {{"disc.bin", disc() + data(30, 2048)}}};
    rows << SheetRow{
        .name = "an ISO and WAVE files",
        .sheet = "FILE \"d.iso\" BINARY\n" + track(1, 0, "MODE1/2048") + "FILE \"a.wav\" WAVE\n" +
                 track(2, 0, "AUDIO", "    PREGAP 00:02:00\n") + "FILE \"b.wav\" WAVE\n" + track(3, 0),
        .tracks = {{}, part(0, 40), part(40, 80)},
        .files = {{"d.iso", data(30, 2048)}, {"a.wav", cdWav(part(0, 40))}, {"b.wav", cdWav(part(40, 80))}}};
    return rows;
}

/// Several files, and files of other kinds.
QList<SheetRow> files()
{
    const QByteArray wave = "FILE \"disc.wav\" WAVE\n";
    const QByteArray two = "FILE \"a.bin\" BINARY\n" + track(1, 0) + "FILE \"b.bin\" BINARY\n" + track(2, 0);
    const Files twoFiles{{"a.bin", part(0, 40)}, {"b.bin", part(40, 80)}};
    const QByteArray mono = [] {
        QByteArray left;
        for (qsizetype i = 0; i < disc().size(); i += 4)
            left += disc().mid(i, 2);
        return left;
    }();
    const QByteArray doubled = [&mono] {
        QByteArray both;
        for (qsizetype i = 0; i < mono.size(); i += 2)
            both += mono.mid(i, 2) + mono.mid(i, 2);
        return both;
    }();
    const QByteArray odd = disc() + QByteArray(1000, '\x11');
    return {
        {.name = "two files", .sheet = two, .tracks = twoParts(), .files = twoFiles},
        {.name = "one file named twice",
         .sheet = kFile + track(1, 0) + kFile + track(2, 0),
         .tracks = {disc(), disc()},
         .files = discFile()},
        {.name = "gap in the file before",
         .sheet = "FILE \"a.bin\" BINARY\n" + track(1, 0) + "  TRACK 02 AUDIO\n    INDEX 00 " + msf(30) +
                  "\nFILE \"b.bin\" BINARY\n    INDEX 01 00:00:00\n",
         .tracks = twoParts(),
         .files = twoFiles},
        {.name = "gap at the head of a file",
         .sheet = "FILE \"a.bin\" BINARY\n" + track(1, 0) + "FILE \"b.bin\" BINARY\n" +
                  track(2, 10, "AUDIO", "    INDEX 00 00:00:00\n"),
         .tracks = {part(0, 50), part(50, 70)},
         .files = twoFiles},
        {.name = "MOTOROLA",
         .sheet = "FILE \"disc.bin\" MOTOROLA\n" + twoTracks(),
         .tracks = twoParts(),
         .files = {{"disc.bin", swapped(disc())}}},
        {.name = "BINARY of the other order",
         .sheet = kFile + twoTracks(),
         .tracks = twoParts(),
         .files = {{"disc.bin", swapped(disc())}}},
        {.name = "MOTOROLA of the other order",
         .sheet = "FILE \"disc.bin\" MOTOROLA\n" + twoTracks(),
         .tracks = twoParts(),
         .files = discFile()},
        {.name = "noise keeps the order that is told",
         .sheet = kFile + track(1, 0),
         .tracks = {data(60, 2352)},
         .files = {{"disc.bin", data(60, 2352)}}},
        {.name = "silence",
         .sheet = kFile + track(1, 0),
         .tracks = {silence(60)},
         .files = {{"disc.bin", silence(60)}}},
        {.name = "WAVE",
         .sheet = wave + twoTracks(),
         .tracks = twoParts(),
         .files = {{"disc.wav", cdWav(disc())}}},
        {.name = "WAVE with chunks around",
         .sheet = wave + twoTracks(),
         .tracks = twoParts(),
         .files = {{"disc.wav", riff(chunk("JUNK", QByteArray(77, 'j')) + formatChunk() +
                                     chunk("data", disc()) + chunk("LIST", "INFOx"))}}},
        {.name = "WAVE that calls itself BINARY",
         .sheet = QByteArray(wave).replace("WAVE", "BINARY") + twoTracks(),
         .tracks = twoParts(),
         .files = {{"disc.wav", cdWav(disc())}}},
        {.name = "WAVE of one channel",
         .sheet = wave + track(1, 0),
         .tracks = {doubled},
         .files = {{"disc.wav", riff(formatChunk(1, 1) + chunk("data", mono))}}},
        {.name = "WAVE that ends within a frame",
         .sheet = wave + twoTracks(),
         .tracks = {part(0, 40),
                    (part(40, 80) + QByteArray(1000, '\x11')).leftJustified(81 * kBytesPerFrame, '\0')},
         .files = {{"disc.wav", cdWav(odd)}}},
        {.name = "BINARY that ends within a frame",
         .sheet = kFile + twoTracks(),
         .tracks = {part(0, 40),
                    (part(40, 80) + QByteArray(1000, '\x11')).leftJustified(81 * kBytesPerFrame, '\0')},
         .files = {{"disc.bin", odd}}},
        {.name = "WAVE at another rate",
         .sheet = wave + track(1, 0),
         .reason = "the file disc.wav has 48000 Hz, and a disc has 44100",
         .files = {{"disc.wav", riff(formatChunk(1, 2, 48000) + chunk("data", disc()))}}},
        {.name = "WAVE that is none",
         .sheet = wave + track(1, 0),
         .reason = "the file disc.wav is no sound that can be read",
         .files = {{"disc.wav", QByteArray("no sound at all\n").repeated(500)}}},
        {.name = "FLAC that calls itself BINARY",
         .sheet = "FILE \"disc.bin\" BINARY\n" + track(1, 0),
         .reason = "the file disc.bin is no sound that can be read",
         .files = {{"disc.bin", "fLaC" + QByteArray(20000, '\x11')}}},
        {.name = "AIFF that calls itself BINARY",
         .sheet = "FILE \"disc.bin\" BINARY\n" + track(1, 0),
         .reason = "the file disc.bin is no sound that can be read",
         .files = {{"disc.bin", QByteArray("FORM\0\0\x4e\x20"
                                           "AIFFCOMM",
                                           16) +
                                    QByteArray(20000, '\x11')}}},
        {.name = "a kind that is not read",
         .sheet = "FILE \"disc.flac\" FLAC\n" + track(1, 0),
         .reason = "the file disc.flac is no sound that can be read",
         .files = {{"disc.flac", "fLaC" + silence(20)}}},
        {.name = "an empty file",
         .sheet = kFile + track(1, 0),
         .tracks = {QByteArray("")},
         .files = {{"disc.bin", ""}},
         .remark = "the file disc.bin is too short"},
        {.name = "longer than its file, last track",
         .sheet = kFile + track(1, 0) + track(2, 40) + track(3, 5000),
         .tracks = {part(0, 40), "unread", QByteArray("")},
         .files = discFile(),
         .remark = "the file disc.bin is too short",
         .unread = "Track 2 could not be read at 00:01:05: the file disc.bin cannot be read there"},
        {.name = "shorter than its file",
         .sheet = "TRACK AUDIO\nFILE \"disc.bin\" SWAP 0 00:00:40\nTRACK AUDIO\nFILE \"disc.bin\" SWAP "
                  "00:00:40 00:00:20\n",
         .tracks = {part(0, 40), part(40, 20)},
         .sheetName = "disc.toc",
         .files = discFile()},
    };
}

/// TOC files as cdrdao has them.
QList<SheetRow> tocs()
{
    const auto row = [](const char* name, const QByteArray& sheet, const QList<QByteArray>& expected,
                        const Files& files = discFile()) {
        return SheetRow{.name = QByteArray("TOC: ") + name,
                        .sheet = sheet,
                        .tracks = expected,
                        .sheetName = "disc.toc",
                        .files = files};
    };
    const Files big{{"disc.bin", swapped(disc())}};
    const Files wav{{"disc.wav", cdWav(disc())}};
    const QByteArray waves =
        "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 00:00:40\nTRACK AUDIO\nFILE \"disc.wav\" 00:00:40\n";
    return {
        row("WAVE", waves, twoParts(), wav),
        row("CRLF", QByteArray(waves).replace("\n", "\r\n"), twoParts(), wav),
        row("all in one line", QByteArray(waves).replace("\n", " "), twoParts(), wav),
        row("AUDIOFILE", QByteArray(waves).replace("FILE", "AUDIOFILE"), twoParts(), wav),
        row("comments", "// one\n" + QByteArray(waves).replace("\nTRACK", " // two\nTRACK"), twoParts(), wav),
        row("comments behind words",
            QByteArray(waves).replace("AUDIO\n", "AUDIO//x\n").replace("0\n", "0//\n"), twoParts(), wav),
        row("single slashes", QByteArray(waves).replace("\n", " a/b / "), twoParts(), wav),
        row("raw, high byte first", QByteArray(waves).replace(".wav", ".bin"), twoParts(), big),
        row("raw, SWAP", QByteArray(waves).replace(".wav\"", ".bin\" SWAP"), twoParts()),
        row("raw of the other order", QByteArray(waves).replace(".wav", ".bin"), twoParts()),
        row("samples",
            "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 23520\nTRACK AUDIO\nFILE \"disc.wav\" 23520\n",
            twoParts(), wav),
        row("length 0", "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 0\n", {disc()}, wav),
        row("within a frame", "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 100 588\n",
            {disc().mid(400, kBytesPerFrame)}, wav),
        row("joined within a frame",
            "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 100\nFILE \"disc.wav\" 100 1076\n", {part(0, 2)}, wav),
        row("part of a frame",
            "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 600\nTRACK AUDIO\nFILE \"disc.wav\" 0\n",
            {disc().left(2400).leftJustified(2 * kBytesPerFrame, '\0'), disc()}, wav),
        row("offset", "CD_DA\nTRACK AUDIO\nFILE \"disc.bin\" #23520 0 00:00:40\n", {part(10, 40)}, big),
        row("offset of nothing", "CD_DA\nTRACK AUDIO\nFILE \"disc.bin\" #0 0 00:00:40\n", {part(0, 40)}, big),
        row("99 tracks", QByteArray("TRACK AUDIO\nSILENCE 00:00:01\n").repeated(99),
            QList<QByteArray>(99, silence(1)), {}),
        row("silence", "CD_DA\nTRACK AUDIO\nSILENCE 00:00:10\nFILE \"disc.wav\" 0\nSILENCE 588\n",
            {silence(10) + disc() + silence(1)}, wav),
        row("PREGAP",
            "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 00:00:40\nTRACK AUDIO\nPREGAP 0:0:15\nFILE \"disc.wav\" "
            "00:00:40\n",
            twoParts(), wav),
        row("START with a time",
            "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 00:00:40\nTRACK AUDIO\nFILE \"disc.wav\" "
            "00:00:40\nSTART 0:0:10\n",
            {part(0, 50), part(50, 70)}, wav),
        row("START alone",
            "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0 00:00:40\nTRACK AUDIO\nSILENCE 0:0:7\nSTART\nFILE "
            "\"disc.wav\" "
            "00:00:40\n",
            twoParts(), wav),
        row("indexes and an end", "CD_DA\nTRACK AUDIO\nFILE \"disc.wav\" 0\nINDEX 0:0:20\nINDEX 0:0:30\n",
            {disc()}, wav),
        row("flags and texts",
            "CD_DA\nCATALOG \"1234567890123\"\nCD_TEXT { LANGUAGE_MAP { 0 : EN } LANGUAGE 0 { TITLE \"T { "
            "}\" "
            "SIZE_INFO { 0, 1, 2 } PERFORMER \"P \\\"Q\\\" \\374\" } }\nTRACK AUDIO\nNO COPY\nNO "
            "PRE_EMPHASIS\n"
            "TWO_CHANNEL_AUDIO\nISRC \"DEXXX9800001\"\nCD_TEXT { LANGUAGE 0 { TITLE \"\" } }\nFILE "
            "\"disc.wav\" 0\n",
            {disc()}, wav),
        row("small letters", QByteArray(waves).toLower(), twoParts(), wav),
        row("data before",
            "CD_ROM\nTRACK MODE1\nDATAFILE \"d.iso\"\nZERO 00:02:00 // post-gap\nTRACK AUDIO\nSILENCE "
            "00:02:00\nSTART\n"
            "FILE \"disc.wav\" 0\n",
            {{}, disc()}, {{"d.iso", data(30, 2048)}, {"disc.wav", cdWav(disc())}}),
        row("data after in the same file",
            "CD_ROM_XA\nTRACK AUDIO\nFILE \"disc.bin\" 0 00:01:45\nTRACK MODE2_RAW\nZERO MODE2_RAW "
            "00:02:00\nSTART "
            "00:02:00\nDATAFILE \"disc.bin\" #282240 00:00:20\n",
            {disc(), {}}, {{"disc.bin", swapped(disc()) + data(20, 2352)}}),
        row("data of a video disc",
            "CD_ROM_XA\nTRACK MODE2_FORM_MIX\nCOPY\nDATAFILE \"d.bin\" 00:00:00 // c\nTRACK "
            "MODE2_FORM_MIX\nDATAFILE "
            "\"d.bin\" #100 00:00:03\nTRACK AUDIO\nFILE \"disc.wav\" 0\n",
            {{}, {}, disc()}, {{"d.bin", data(30, 2336)}, {"disc.wav", cdWav(disc())}}),
        row("subchannels", "CD_DA\nTRACK AUDIO RW_RAW\nFILE \"disc.bin\" SWAP 0\n", {disc()},
            {{"disc.bin", withSubcode(disc())}}),
    };
}

/// Each kind of data track that a TOC file can name, in a file that holds just its sectors, and one byte
/// less.
QList<SheetRow> tocModes()
{
    QList<SheetRow> rows;
    for (const auto& [mode, size] : QList<std::pair<QByteArray, int>>{{"MODE0", 2336},
                                                                      {"MODE1", 2048},
                                                                      {"MODE1_RAW", 2352},
                                                                      {"MODE2", 2336},
                                                                      {"MODE2_FORM1", 2048},
                                                                      {"MODE2_FORM2", 2324},
                                                                      {"MODE2_FORM_MIX", 2336},
                                                                      {"MODE2_RAW", 2352},
                                                                      {"MODE1_RAW RW", 2448},
                                                                      {"MODE1 RW_RAW", 2144}}) {
        SheetRow row{.name = "TOC: " + mode,
                     .sheet = "CD_ROM\nTRACK " + mode +
                              "\nDATAFILE \"d.bin\" 00:00:30\nTRACK AUDIO\nFILE \"disc.wav\" 0\n",
                     .tracks = {{}, disc()},
                     .sheetName = "disc.toc",
                     .files = {{"d.bin", data(30, size)}, {"disc.wav", cdWav(disc())}}};
        rows << row;
        row.name += ", from its first byte";
        row.sheet.replace("\" 00", "\" #0 00");
        rows << row;
        row.name += ", a byte missing";
        row.files[0].second.chop(1);
        row.remark = "the file d.bin is too short";
        rows << row;
    }
    return rows;
}

/// Sheets that tell no disc.
QList<SheetRow> damaged()
{
    const auto row = [](const char* name, const QByteArray& sheet, const char* reason,
                        const char* sheetName = "disc.cue") {
        return SheetRow{.name = QByteArray("damaged: ") + name,
                        .sheet = sheet,
                        .reason = QString::fromUtf8(reason),
                        .sheetName = sheetName,
                        .files = discFile()};
    };
    const QByteArray first = track(1, 0);
    return {
        row("empty", "", "the sheet is empty"),
        row("blanks", " \n\n", "the sheet is empty"),
        row("no file", first, "line 2 of the sheet is damaged"),
        row("no track", kFile, "the sheet has no tracks"),
        row("no index", kFile + "  TRACK 01 AUDIO\n", "track 1 has no beginning"),
        row("gap alone", kFile + "  TRACK 01 AUDIO\n    INDEX 00 00:00:00\n", "track 1 has no beginning"),
        row("track without index", kFile + "  TRACK 01 AUDIO\n" + track(2, 0), "track 1 has no beginning"),
        row("missing file", "FILE \"other.bin\" BINARY\n" + first, "the file other.bin is missing"),
        row("missing folder", "FILE \"no/disc.bin\" BINARY\n" + first, "the file no/disc.bin is missing"),
        row("folder", "FILE \"..\" BINARY\n" + first, ".. is not a file"),
        row("device", "FILE \"/dev/null\" BINARY\n" + first, "/dev/null is not a file"),
        row("no name", "FILE \"\" BINARY\n" + first, "line 1 of the sheet is damaged"),
        row("unknown kind of track", kFile + "  TRACK 01 VIDEO\n    INDEX 01 00:00:00\n",
            "the kind of track 1 is not known: VIDEO"),
        row("track 0", kFile + track(0, 0), "the tracks are not numbered in order"),
        row("track 100", kFile + track(100, 0), "the tracks are not numbered in order"),
        row("a track twice", kFile + first + first, "the tracks are not numbered in order"),
        row("numbers leap", kFile + first + track(3, 40), "the tracks are not numbered in order"),
        row("second 60", kFile + first + "  TRACK 02 AUDIO\n    INDEX 01 00:60:00\n",
            "line 5 of the sheet is damaged"),
        row("frame 75", kFile + first + "  TRACK 02 AUDIO\n    INDEX 01 00:00:75\n",
            "line 5 of the sheet is damaged"),
        row("no time", kFile + "  TRACK 01 AUDIO\n    INDEX 01 soon\n", "line 3 of the sheet is damaged"),
        row("half a time", kFile + "  TRACK 01 AUDIO\n    INDEX 01 00:\n", "line 3 of the sheet is damaged"),
        row("no index number", kFile + "  TRACK 01 AUDIO\n    INDEX 00:00:00\n",
            "line 3 of the sheet is damaged"),
        row("index twice", kFile + first + "    INDEX 01 00:00:10\n", "line 4 of the sheet is damaged"),
        row("index without track", kFile + "    INDEX 01 00:00:00\n", "line 2 of the sheet is damaged"),
        row("backwards", kFile + track(1, 50) + track(2, 20), "the times of track 2 go backwards"),
        row("two at one place", kFile + first + track(2, 40) + track(3, 40), "track 2 is empty"),
        row("bad pregap", kFile + "  TRACK 01 AUDIO\n    PREGAP x\n    INDEX 01 00:00:00\n",
            "line 3 of the sheet is damaged"),
        row("too large", kFile + first + QByteArray(1'100'000, '\n'), "the sheet is too large"),
        row("longer than any disc", kFile + first + "    POSTGAP 9999:00:00\n" + QByteArray(),
            "the sheet is longer than any disc"),
        row("noughts", QByteArray(3000, '\0'), "the sheet names no file"),
        row("noise", data(1, 2352), "the sheet names no file"),
        row("TOC: empty", "CD_DA\n", "the sheet has no tracks", "disc.toc"),
        row("TOC: empty track", "TRACK AUDIO\nTRACK AUDIO\n", "track 1 is empty", "disc.toc"),
        row("TOC: unknown track", "TRACK VIDEO\n", "the kind of track 1 is not known: VIDEO", "disc.toc"),
        row("TOC: missing file", "TRACK AUDIO\nFILE \"x.wav\" 0\n", "the file x.wav is missing", "disc.toc"),
        row("TOC: no quotes", "TRACK AUDIO\nFILE x.wav 0\n", "line 2 of the sheet is damaged", "disc.toc"),
        row("TOC: no start", "TRACK AUDIO\nFILE \"disc.bin\"\n", "line 2 of the sheet is damaged",
            "disc.toc"),
        row("TOC: frame 75", "TRACK AUDIO\nFILE \"disc.bin\" 0:0:75\n", "line 2 of the sheet is damaged",
            "disc.toc"),
        row("TOC: a text without end", "TRACK AUDIO\nFILE \"disc.bin 0\n", "a text in the sheet has no end",
            "disc.toc"),
        row("TOC: from a program", "TRACK AUDIO\nFIFO \"pipe\" 1000\n",
            "the sheet takes its sound from a running program", "disc.toc"),
        row("TOC: outside a track", "FILE \"disc.bin\" 0\n", "line 1 of the sheet is damaged", "disc.toc"),
        row("TOC: longer than any disc", "TRACK AUDIO\nSILENCE 9999:00:00\n",
            "the sheet is longer than any disc", "disc.toc"),
        row("TOC: 100 tracks", QByteArray("TRACK AUDIO\nSILENCE 00:00:01\n").repeated(100),
            "the sheet has more than 99 tracks", "disc.toc"),
        row("TOC: a block without end", "CD_TEXT { LANGUAGE 0 {\nTITLE \"x\"\n", "the sheet has no tracks",
            "disc.toc"),
    };
}

} // namespace

QList<SheetRow> sheetTable()
{
    return texts() + names() + layouts() + dataTracks() + files() + tocs() + tocModes() + damaged();
}

} // namespace zib
