#include "common/CdTime.h"
#include "engines/audio/makers.h"
#include "engines/rip/image/ImageDisc.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/RipRun.h"
#include "engines/rip/SheetTable.h"

#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

using namespace zib;

namespace {

/// A folder with the files of one row, read as the ripper reads it.
class SheetBench
{
public:
    explicit SheetBench(const SheetRow& row)
    {
        QDir().mkpath(folder.filePath("images"));
        put(row.sheetName, row.sheet);
        for (const auto& [name, content] : row.files)
            put(name, content);
        for (const auto& [name, target] : row.links)
            if (::symlink(target.constData(), path(name).constData()) != 0)
                qFatal("no link");
        sheet = QFile::decodeName(
            path(row.links.value(0).first.endsWith(".cue") ? row.links[0].first : row.sheetName));
    }
    ~SheetBench() // the names may be no text
    {
        for (const QByteArray& made : m_made)
            ::unlink(made.constData());
    }
    Q_DISABLE_COPY_MOVE(SheetBench)

    /// Copies all tracks of sound that have a length.  @returns what is said of those that brought no file.
    QString rip(const ImageDisc& disc) const
    {
        QList<RipTask> tasks;
        for (int track = 1; track <= disc.tracks().size(); ++track)
            if (const TocTrack toc = disc.tracks()[track - 1]; toc.audio && toc.frames > 0)
                tasks << RipTask{track, target(track), toc};
        RipRun run(tasks);
        run.run(&disc);
        return run.unread().join('\n');
    }
    QString target(int track) const { return folder.filePath(QString("Track%1.wav").arg(track)); }

    QTemporaryDir folder;
    QString sheet;

private:
    QByteArray path(const QByteArray& name) const
    {
        return QFile::encodeName(folder.filePath("images/")) + name;
    }
    /// Names are bytes here, which need not be text.
    void put(const QByteArray& name, const QByteArray& content)
    {
        m_made << path(name);
        for (qsizetype slash = name.indexOf('/'); slash >= 0; slash = name.indexOf('/', slash + 1))
            ::mkdir(path(name.left(slash)).constData(), 0777);
        FILE* file = std::fopen(path(name).constData(), "wb");
        if (!file ||
            std::fwrite(content.constData(), 1, size_t(content.size()), file) != size_t(content.size()))
            qFatal("no file");
        std::fclose(file);
    }

    QList<QByteArray> m_made;
};

SheetRow rowNamed(const QByteArray& name)
{
    const auto table = sheetTable();
    const auto found =
        std::find_if(table.cbegin(), table.cend(), [&name](const SheetRow& row) { return row.name == name; });
    return found == table.cend() ? SheetRow{} : *found;
}

} // namespace
Q_DECLARE_METATYPE(zib::SheetRow)

/// The reader of disc images, on sheets as all programs write them.
class TestImageSheets : public QObject
{
    Q_OBJECT
private slots:
    void sheet_ofAnyProgram_givesItsBytesOrItsReason_data()
    {
        QTest::addColumn<SheetRow>("row");
        for (const SheetRow& row : sheetTable())
            QTest::newRow(row.name.constData()) << row;
    }
    void sheet_ofAnyProgram_givesItsBytesOrItsReason()
    {
        QFETCH(SheetRow, row);
        ++(row.reason.isEmpty() ? m_read : m_refused);
        const SheetBench bench(row);
        const auto opened = ImageDisc::open(bench.sheet, makeAudioFile);
        QCOMPARE(opened ? QString() : opened.error().detail, row.reason);
        if (!opened)
            return;
        const ImageDisc& disc = **opened;
        QCOMPARE(disc.remark(), row.remark);
        QCOMPARE(disc.tracks().size(), row.tracks.size());
        QCOMPARE(bench.rip(disc), row.unread);
        for (int track = 1; track <= row.tracks.size(); ++track) {
            const QByteArray& expected = row.tracks[track - 1];
            QCOMPARE(disc.tracks()[track - 1].audio, !expected.isNull());
            const QByteArray got = wavSamples(bench.target(track));
            if (expected.isNull() || expected == "unread")
                QVERIFY(!QFile::exists(bench.target(track)));
            else
                QVERIFY2(got == expected, qPrintable(QString("track %1: %2 bytes, expected %3")
                                                         .arg(track)
                                                         .arg(got.size())
                                                         .arg(expected.size())));
            m_tracks += expected.isEmpty() ? 0 : 1;
        }
    }

    void names_ofDiscAndTracks_areKept_data()
    {
        QTest::addColumn<QByteArray>("sheetName");
        QTest::addColumn<QByteArray>("sheet");
        const QString cue =
            QString::fromUtf8("PERFORMER \"Zoë \\\"Z\\\" Ü\"\nTITLE \"Das Bild\"\nFILE \"disc.bin\" BINARY\n"
                              "  TRACK 01 AUDIO\n    TITLE \"Eins ß\"\n    PERFORMER \"A & B\"\n"
                              "    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n    TITLE Zwei Wege\n"
                              "    INDEX 00 00:00:20\n    INDEX 01 00:00:40\n");
        QTest::newRow("UTF-8") << QByteArray("disc.cue") << cue.toUtf8();
        QTest::newRow("Latin-1") << QByteArray("disc.cue") << cue.toLatin1();
        QTest::newRow("TOC")
            << QByteArray("disc.toc")
            << QByteArray(
                   "CD_DA\nFUTURE { \"{\" WORD { 1 } }\nCD_TEXT { LANGUAGE_MAP { 0 : EN 1 : 8 }\n LANGUAGE 0 "
                   "{\n  TITLE \"Das\\040"
                   "Bild\"\n  PERFORMER \"Zo\\353 \\\"Z\\\" \\334\"\n } LANGUAGE 1 { TITLE \"no\" } }\n"
                   "TRACK AUDIO\nCD_TEXT { LANGUAGE 0 { TITLE \"Eins \\337\" PERFORMER \"A & B\" } }\n"
                   "FILE \"disc.bin\" 0 00:00:20\nTRACK AUDIO\nCD_TEXT { LANGUAGE 0 { TITLE \"Zwei "
                   "Wege\" } }\nFILE \"disc.bin\" 00:00:20\nSTART 00:00:20\n");
    }
    void names_ofDiscAndTracks_areKept()
    {
        QFETCH(QByteArray, sheetName);
        QFETCH(QByteArray, sheet);
        const SheetBench bench(
            {.sheet = sheet, .sheetName = sheetName, .files = {{"disc.bin", discSound(120, 1)}}});
        const auto opened = ImageDisc::open(bench.sheet, {});
        QVERIFY(bool(opened));
        const ImageDisc& disc = **opened;
        QCOMPARE(disc.names().title, QString("Das Bild"));
        QCOMPARE(disc.names().artist, QString::fromUtf8("Zoë \"Z\" Ü"));
        const QList<TocTrack> tracks = disc.tracks();
        QCOMPARE(tracks[0].names.title, QString::fromUtf8("Eins ß"));
        QCOMPARE(tracks[0].names.artist, QString("A & B"));
        QCOMPARE(tracks[1].names.title, QString("Zwei Wege"));
        QCOMPARE(tracks[1].names.artist, QString());
        QCOMPARE(disc.names().tracks.size(), 2);
        QCOMPARE(tracks[1].start, 40);
        QCOMPARE(tracks[1].gap, 20);
        QCOMPARE(tracks[0].gap, 0);
    }

    void flags_ofEachTrack_areItsOwn_data()
    {
        QTest::addColumn<QByteArray>("sheetName");
        QTest::addColumn<QByteArray>("sheet");
        QTest::newRow("TOC") << QByteArray("disc.toc")
                             << QByteArray("CD_DA\nTRACK AUDIO\nNO COPY\nPRE_EMPHASIS\nFILE \"disc.bin\" 0 "
                                           "00:00:40\nTRACK AUDIO\nCOPY\nNO PRE_EMPHASIS\nFILE \"disc.bin\" "
                                           "00:00:40 00:00:40\nTRACK AUDIO\nFILE \"disc.bin\" 00:01:05\n");
        QTest::newRow("CUE") << QByteArray("disc.cue")
                             << QByteArray("FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    FLAGS PRE\n"
                                           "    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n    FLAGS DCP\n"
                                           "    INDEX 01 00:00:40\n  TRACK 03 AUDIO\n"
                                           "    INDEX 01 00:01:05\n");
    }
    void flags_ofEachTrack_areItsOwn()
    {
        QFETCH(QByteArray, sheetName);
        QFETCH(QByteArray, sheet);
        const SheetBench bench(
            {.sheet = sheet, .sheetName = sheetName, .files = {{"disc.bin", discSound(120, 1)}}});
        const auto opened = ImageDisc::open(bench.sheet, {});
        QVERIFY(bool(opened));
        QList<bool> copies;
        QList<bool> emphases;
        for (const TocTrack& track : (*opened)->tracks()) {
            copies << track.copyPermitted;
            emphases << track.preemphasis;
        }
        QCOMPARE(copies, (QList{false, true, false}));
        QCOMPARE(emphases, (QList{true, false, false}));
    }

    /// A track that is all gap would vanish if its silence were left out.
    void silence_asLongAsItsTrack_isCopied()
    {
        const SheetBench bench(
            {.sheet = "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                      "  TRACK 02 AUDIO\n    INDEX 00 00:00:10\n    INDEX 01 00:00:20\n",
             .files = {{"disc.bin", QByteArray(20 * kBytesPerFrame, '\0') + discSound(20, 1)}}});
        const auto opened = ImageDisc::open(bench.sheet, {});
        QVERIFY(bool(opened));
        TocTrack first = (*opened)->tracks()[0];
        for (const auto& [start, expected] : QList<std::pair<int, int>>{{0, 10}, {9, 1}, {10, 10}}) {
            first.start = start;
            first.frames = 20 - start;
            RipRun run({RipTask{1, bench.target(1), first}});
            run.run(opened->get());
            QCOMPARE(wavSamples(bench.target(1)).size(), expected * kBytesPerFrame);
            QFile::remove(bench.target(1));
        }
    }

    void names_inShiftJis_areToldByTheirKana()
    {
        const QByteArray sheet = QByteArray::fromHex("5449544C45202282B382AD82E722") +
                                 "\nFILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n"
                                 "    INDEX 01 00:00:00\n";
        const SheetBench bench({.sheet = sheet, .files = {{"disc.bin", discSound(20, 1)}}});
        const auto opened = ImageDisc::open(bench.sheet, {});
        QVERIFY(bool(opened));
        QCOMPARE(opened.value()->names().title, QString::fromUtf8("さくら"));
    }

    void mp3_asAFileOfASheet_isDecoded()
    {
        const QString sample = QStringLiteral(ZIB_SAMPLES) + "/Morning Light.mp3";
        SheetRow row{.sheet = "FILE \"song.mp3\" MP3\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                              "  TRACK 02 AUDIO\n    INDEX 01 00:01:00\n",
                     .files = {{"song.mp3", fileContent(sample)}}};
        const SheetBench bench(row);
        const auto opened = ImageDisc::open(bench.sheet, makeAudioFile);
        const auto decoder = makeAudioFile();
        decoder->setSixteenBitBlocks(true);
        QVERIFY(decoder->open(sample) >= 0);
        if (decoder->formatRate() != kCdSampleRate)
            QSKIP("the sample has another rate");
        QByteArray expected;
        for (AudioBlock block = decoder->readBlock(10'000); !block.isEmpty();
             block = decoder->readBlock(10'000))
            for (const qint16 value : *block.narrow())
                for (int copy = decoder->formatChannels(); copy <= 2; ++copy)
                    expected += QByteArray(reinterpret_cast<const char*>(&value), 2);
        QVERIFY2(bool(opened), opened ? "" : qPrintable(opened.error().detail));
        QCOMPARE(bench.rip(**opened), QString());
        const QByteArray got = wavSamples(bench.target(1)) + wavSamples(bench.target(2));
        QCOMPARE(wavSamples(bench.target(1)).size(), qsizetype{75} * kBytesPerFrame);
        QVERIFY(got.startsWith(expected));
        QVERIFY(got.size() - expected.size() < kBytesPerFrame);
        QCOMPARE(got.mid(expected.size()).count('\0'), got.size() - expected.size());
    }

    void image_thatChanged_isNotCurrent()
    {
        const SheetBench bench(rowNamed("plain"));
        const auto opened = ImageDisc::open(bench.sheet, {});
        QVERIFY(opened && opened.value()->isCurrent());
        QVERIFY(QFile::resize(bench.folder.filePath("images/disc.bin"), 200'000));
        QVERIFY(!opened.value()->isCurrent());
    }

    void cleanupTestCase()
    {
        std::printf("Sheets: %d read (%d tracks bit for bit), %d refused with their reason.\n", m_read,
                    m_tracks, m_refused);
    }

private:
    int m_read = 0;
    int m_refused = 0;
    int m_tracks = 0;
};

QTEST_GUILESS_MAIN(TestImageSheets)
#include "tst_imagesheets.moc"
