// The proof of the emulated recorder: programs that know nothing of it burn, read back and rip, bit for bit.

#include "ClientBench.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

using zib::ClientBench;
using zib::padded;

namespace {

constexpr int kFrameSamples = 588;
constexpr int kFrame = 2352;

#define NEED(PROGRAM)                                                                                        \
    if (!ClientBench::has(PROGRAM)) {                                                                        \
        QSKIP(qPrintable(QString(PROGRAM) + " is not installed"));                                           \
    }

struct Album
{
    QByteArray first;
    QByteArray second;
    explicit Album(const ClientBench& bench)
        : first(bench.makeWave("one", 400 * kFrameSamples, 1)),
          second(bench.makeWave("two", 350 * kFrameSamples + 250, 2)) // ends inside a frame
    {
    }
};

void makeCdrdaoToc(const ClientBench& bench)
{
    bench.makeFile("disc.toc",
                   "CD_DA\nCATALOG \"1234567890123\"\n"
                   "CD_TEXT { LANGUAGE_MAP { 0 : EN } LANGUAGE 0 { TITLE \"Album\" PERFORMER \"Band\" } }\n"
                   "TRACK AUDIO\nCOPY\nISRC \"ABCDE1234567\"\n"
                   "CD_TEXT { LANGUAGE 0 { TITLE \"One\" PERFORMER \"Band\" } }\nFILE \"one.wav\" 0\n"
                   "TRACK AUDIO\nNO COPY\nPRE_EMPHASIS\n"
                   "CD_TEXT { LANGUAGE 0 { TITLE \"Two\" PERFORMER \"Band\" } }\n"
                   "PREGAP 0:2:0\nFILE \"two.wav\" 0\n");
}

bool holdsNothing(const ClientBench& bench)
{
    const auto content = bench.recorder.content();
    return content && content->blank && bench.recorder.frames(-150, 1000) == QByteArray(1000 * kFrame, '\0');
}

} // namespace

class TestForeignClients : public QObject
{
    Q_OBJECT
private slots:
    void burn_thenRip_isBitExact_data();
    void burn_thenRip_isBitExact();
    void burn_simulated_leavesDiscBlank_data();
    void burn_simulated_leavesDiscBlank();
    void burn_tooLong_isRefused_data();
    void burn_tooLong_isRefused();
    void burn_onFullDisc_isRefused_data();
    void burn_onFullDisc_isRefused();
    void burn_withWriteError_fails_data();
    void burn_withWriteError_fails();
    void blank_makesRewritableDiscEmpty_data();
    void blank_makesRewritableDiscEmpty();
    void cdrdao_writesCodesTextAndFlags();
    void cdrdao_readCd_isBitExact();
    void cdRead_readsFrames();
    void cdrskin_writesCdText();
    void wodim_appendsSecondSession();
    void wodim_tellsAtip();
    void cdrdao_tellsDisc_data();
    void cdrdao_tellsDisc();
    void burn_killedInACommand_leavesDriveUsable();
    void rip_overNoiseAndJitter_isBitExact_data();
    void rip_overNoiseAndJitter_isBitExact();
};

void TestForeignClients::burn_thenRip_isBitExact_data()
{
    QTest::addColumn<QString>("burn");
    QTest::addColumn<int>("gapFrames");
    QTest::newRow("cdrskin SAO") << "cdrskin dev=/dev/sr0 -sao -audio -pad one.wav two.wav" << 0;
    QTest::newRow("cdrskin TAO") << "cdrskin dev=/dev/sr0 -tao -audio -pad one.wav two.wav" << 152;
    QTest::newRow("wodim SAO") << "wodim gracetime=2 dev=/dev/sr0 -dao -audio -pad one.wav two.wav" << 0;
    QTest::newRow("wodim TAO") << "wodim gracetime=2 dev=/dev/sr0 -tao -audio -pad one.wav two.wav" << 152;
    QTest::newRow("cdrdao") << "cdrdao write -n --device /dev/sr0 --driver generic-mmc plain.toc" << 0;
}

void TestForeignClients::burn_thenRip_isBitExact()
{
    QFETCH(QString, burn);
    QFETCH(int, gapFrames);
    NEED(burn.section(' ', 0, 0));
    const ClientBench bench;
    const Album album{bench};
    bench.makeFile("plain.toc", "CD_DA\nTRACK AUDIO\nFILE \"one.wav\" 0\nTRACK AUDIO\nFILE \"two.wav\" 0\n");
    const auto burned = bench.run(burn);
    QVERIFY2(burned.status == 0, qPrintable(burned.output));
    QVERIFY(!bench.recorder.doorLocked());
    // With track at once, the next track's pause and the run-out blocks sound as silence after the track.
    const QByteArray gap(gapFrames * kFrame, '\0');
    const QByteArray runOut(gapFrames > 0 ? 2 * kFrame : 0, '\0');
    const QList<QStringList> rippers{{"cdparanoia -d /dev/sr0 -B -w", "track%1.cdda.wav"},
                                     {"cd-paranoia -d /dev/sr0 -B -w", "track%1.cdda.wav"},
                                     {"icedax -D /dev/sr0 -B -O wav rip", "rip_%1.wav"}};
    for (const QStringList& ripper : rippers) {
        NEED(ripper[0].section(' ', 0, 0));
        const auto ripped = bench.run(ripper[0]);
        QVERIFY2(ripped.status == 0, qPrintable(ripped.output));
        QVERIFY2(bench.waveContent(ripper[1].arg("01")) == padded(album.first) + gap,
                 qPrintable(ripped.output));
        QVERIFY2(bench.waveContent(ripper[1].arg("02")) == padded(album.second) + runOut,
                 qPrintable(ripped.output));
        QFile::remove(bench.path(ripper[1].arg("01")));
        QFile::remove(bench.path(ripper[1].arg("02")));
    }
}

void TestForeignClients::burn_simulated_leavesDiscBlank_data()
{
    QTest::addColumn<QString>("burn");
    QTest::newRow("cdrskin SAO") << "cdrskin dev=/dev/sr0 -dummy -sao -audio -pad one.wav two.wav";
    QTest::newRow("cdrskin TAO") << "cdrskin dev=/dev/sr0 -dummy -tao -audio -pad one.wav two.wav";
    QTest::newRow("wodim SAO") << "wodim gracetime=2 dev=/dev/sr0 -dummy -dao -audio -pad one.wav two.wav";
    QTest::newRow("wodim TAO") << "wodim gracetime=2 dev=/dev/sr0 -dummy -tao -audio -pad one.wav two.wav";
    QTest::newRow("cdrdao") << "cdrdao simulate -n --device /dev/sr0 --driver generic-mmc disc.toc";
}

void TestForeignClients::burn_simulated_leavesDiscBlank()
{
    QFETCH(QString, burn);
    NEED(burn.section(' ', 0, 0));
    const ClientBench bench;
    const Album album{bench};
    makeCdrdaoToc(bench);
    const auto burned = bench.run(burn);
    QVERIFY2(burned.status == 0, qPrintable(burned.output));
    QVERIFY(bench.recorder.count("WRITE_10", "good") > 5);
    QVERIFY(holdsNothing(bench));
}

void TestForeignClients::burn_tooLong_isRefused_data()
{
    QTest::addColumn<QString>("burn");
    QTest::newRow("cdrskin SAO") << "cdrskin dev=/dev/sr0 -sao -force -audio -pad one.wav two.wav";
    QTest::newRow("wodim SAO") << "wodim gracetime=2 dev=/dev/sr0 -dao -overburn -audio -pad one.wav two.wav";
    QTest::newRow("cdrdao") << "cdrdao write -n --overburn --device /dev/sr0 --driver generic-mmc disc.toc";
}

void TestForeignClients::burn_tooLong_isRefused()
{
    QFETCH(QString, burn);
    NEED(burn.section(' ', 0, 0));
    ClientBench bench;
    const Album album{bench};
    makeCdrdaoToc(bench);
    bench.recorder.set("disc-frames", "850"); // the album needs 901 frames and more
    const auto burned = bench.run(burn);
    QVERIFY2(burned.status != 0, qPrintable(burned.output));
    QVERIFY(bench.recorder.count("SEND_CUE_SHEET", "5/26/00") > 0);
    QCOMPARE(bench.recorder.count("WRITE_10", "good"), 0);
    QVERIFY(holdsNothing(bench));
}

void TestForeignClients::burn_onFullDisc_isRefused_data()
{
    QTest::addColumn<QString>("burn");
    QTest::newRow("cdrskin") << "cdrskin dev=/dev/sr0 -sao -audio -pad one.wav two.wav";
    QTest::newRow("wodim") << "wodim gracetime=2 dev=/dev/sr0 -dao -audio -pad one.wav two.wav";
    QTest::newRow("cdrdao") << "cdrdao write -n --device /dev/sr0 --driver generic-mmc disc.toc";
}

void TestForeignClients::burn_onFullDisc_isRefused()
{
    QFETCH(QString, burn);
    NEED(burn.section(' ', 0, 0));
    ClientBench bench;
    const Album album{bench};
    makeCdrdaoToc(bench);
    bench.recorder.insert("full", {"audio 500", "close"});
    const auto burned = bench.run(burn);
    QVERIFY2(burned.status != 0, qPrintable(burned.output));
    QCOMPARE(bench.recorder.count("WRITE_10", "good"), 0);
    QCOMPARE(bench.recorder.content()->tracks.size(), 1);
}

void TestForeignClients::burn_withWriteError_fails_data()
{
    burn_onFullDisc_isRefused_data();
}

void TestForeignClients::burn_withWriteError_fails()
{
    QFETCH(QString, burn);
    NEED(burn.section(' ', 0, 0));
    ClientBench bench;
    const Album album{bench};
    makeCdrdaoToc(bench);
    bench.recorder.addFault("WRITE_10 lba=200 times=forever sense=3/0C/00");
    const auto burned = bench.run(burn);
    QVERIFY2(burned.status != 0, qPrintable(burned.output));
    QVERIFY(!bench.recorder.content()->finalized);
    QVERIFY(bench.recorder.count("WRITE_10", "3/0C/00") > 0);
}

void TestForeignClients::blank_makesRewritableDiscEmpty_data()
{
    QTest::addColumn<QString>("blank");
    QTest::newRow("cdrskin") << "cdrskin dev=/dev/sr0 blank=all";
    QTest::newRow("wodim") << "wodim gracetime=2 dev=/dev/sr0 blank=fast";
    QTest::newRow("cdrdao") << "cdrdao blank -n --device /dev/sr0 --driver generic-mmc";
}

void TestForeignClients::blank_makesRewritableDiscEmpty()
{
    QFETCH(QString, blank);
    NEED(blank.section(' ', 0, 0));
    NEED("cdrskin");
    ClientBench bench;
    const Album album{bench};
    bench.recorder.set("disc-kind", "cd-rw");
    bench.recorder.insert("again", {"audio 500", "close"});
    const auto blanked = bench.run(blank);
    QVERIFY2(blanked.status == 0, qPrintable(blanked.output));
    QVERIFY(holdsNothing(bench));
    const auto burned = bench.run("cdrskin dev=/dev/sr0 -sao -audio -pad one.wav two.wav");
    QVERIFY2(burned.status == 0, qPrintable(burned.output));
    QCOMPARE(bench.recorder.frames(0, 400), album.first);
}

void TestForeignClients::cdrdao_writesCodesTextAndFlags()
{
    NEED("cdrdao");
    NEED("cd-info");
    const ClientBench bench;
    const Album album{bench};
    makeCdrdaoToc(bench);
    const auto burned = bench.run("cdrdao write -n --device /dev/sr0 --driver generic-mmc:0x10 disc.toc");
    QVERIFY2(burned.status == 0, qPrintable(burned.output));
    const auto content = bench.recorder.content().value();
    QCOMPARE(content.tracks.size(), 2);
    QCOMPARE(content.tracks[0].control, 2);
    QCOMPARE(content.tracks[1].control, 1);
    QCOMPARE(content.tracks[1].pregap, 400);
    QCOMPARE(content.tracks[1].start, 550);
    QCOMPARE(content.leadOut, 550 + 351);
    const QString told = bench.run("cd-info --no-cddb --no-header -C /dev/sr0").output;
    QStringList texts{"1234567890123", "ABCDE1234567", "TITLE: Album"};
    if (bench.run("cdrdao").output.contains("version 1.2.5")) // it sets no end behind each text
        texts << "TITLE: AlbumOneTwo";
    else
        texts << "TITLE: Two"
              << "PERFORMER: Band";
    for (const QString& text : texts) {
        QVERIFY2(told.contains(text), qPrintable(text + " is missing in\n" + told));
    }
}

void TestForeignClients::cdrdao_readCd_isBitExact()
{
    NEED("cdrdao");
    ClientBench bench;
    bench.recorder.insert("album", {"audio 500", "audio 400", "close"});
    const auto read =
        bench.run("cdrdao read-cd --device /dev/sr0 --driver generic-mmc --datafile rip.bin rip.toc");
    QVERIFY2(read.status == 0, qPrintable(read.output));
    QByteArray ripped = bench.fileContent("rip.bin"); // high byte first
    for (qsizetype i = 0; i + 1 < ripped.size(); i += 2) {
        std::swap(ripped[i], ripped[i + 1]);
    }
    QCOMPARE(ripped, bench.recorder.frames(0, 900));
}

void TestForeignClients::cdRead_readsFrames()
{
    NEED("cd-read");
    ClientBench bench;
    bench.recorder.insert("album", {"audio 500", "close"});
    const auto read =
        bench.run("cd-read -C /dev/sr0 -m audio -s 100 -n 5 --no-hexdump --no-header -o frames.raw");
    QVERIFY2(read.status == 0, qPrintable(read.output));
    QCOMPARE(bench.fileContent("frames.raw"), bench.recorder.frames(100, 5));
}

void TestForeignClients::cdrskin_writesCdText()
{
    NEED("cdrskin");
    NEED("cd-info");
    const ClientBench bench;
    const Album album{bench};
    bench.makeFile("text.v07t", "Input Sheet Version = 0.7T\nText Code = 8859\nLanguage Code = English\n"
                                "Album Title = The Album\nArtist Name = The Band\nFirst Track Number = 1\n"
                                "Track 01 Title = One\nTrack 02 Title = Two\n");
    const auto burned =
        bench.run("cdrskin dev=/dev/sr0 -sao -text input_sheet_v07t=text.v07t -audio -pad one.wav two.wav");
    QVERIFY2(burned.status == 0, qPrintable(burned.output));
    const QString told = bench.run("cd-info --no-cddb --no-header -C /dev/sr0").output;
    for (const char* const text : {"TITLE: The Album", "PERFORMER: The Band", "TITLE: One", "TITLE: Two"}) {
        QVERIFY2(told.contains(text), qPrintable(QString(text) + " is missing in\n" + told));
    }
}

void TestForeignClients::wodim_appendsSecondSession()
{
    NEED("wodim");
    ClientBench bench;
    const Album album{bench};
    const auto first = bench.run("wodim gracetime=2 dev=/dev/sr0 -multi -tao -audio -pad one.wav");
    QVERIFY2(first.status == 0, qPrintable(first.output));
    QVERIFY(!bench.recorder.content()->finalized);
    bench.makeFile("two.raw", album.second);
    const auto second = bench.run("wodim gracetime=2 dev=/dev/sr0 -tao -data two.raw");
    QVERIFY2(second.status == 0, qPrintable(second.output));
    const auto content = bench.recorder.content().value();
    QVERIFY(content.finalized);
    QCOMPARE(content.tracks.size(), 2);
    QCOMPARE(content.tracks[1].session, 2);
    QCOMPARE(content.tracks[1].control & 4, 4);
    // Lead-out of 90 seconds, lead-in of 60, pause of 2.
    QCOMPARE(content.tracks[1].start, 402 + 6750 + 4500 + 150);
    const QString told = bench.run("wodim dev=/dev/sr0 -toc").output;
    QVERIFY2(told.contains(QRegularExpression("track: +2 lba: +11802 .*control: 4")), qPrintable(told));
}

void TestForeignClients::wodim_tellsAtip()
{
    NEED("wodim");
    ClientBench bench;
    bench.recorder.set("disc-minutes", "74");
    bench.recorder.set("disc-kind", "cd-rw");
    bench.recorder.insert("rewritable");
    const QString told = bench.run("wodim dev=/dev/sr0 -atip").output;
    QVERIFY2(told.contains("ATIP start of lead in:  -11635 (97:26/65)"), qPrintable(told));
    QVERIFY2(told.contains("(73:59/74)"), qPrintable(told));
    QVERIFY2(told.contains("Is erasable"), qPrintable(told));
}

void TestForeignClients::cdrdao_tellsDisc_data()
{
    QTest::addColumn<QStringList>("recipe");
    QTest::addColumn<QString>("empty");
    QTest::addColumn<QString>("appendable");
    QTest::newRow("blank") << QStringList{} << "yes"
                           << "";
    QTest::newRow("appendable") << QStringList{"audio 500", "session"} << "no"
                                << "yes";
    QTest::newRow("complete") << QStringList{"audio 500", "close"} << "no"
                              << "no";
    QTest::newRow("mixed") << QStringList{"data 500", "audio 500", "close"} << "no"
                           << "no";
}

void TestForeignClients::cdrdao_tellsDisc()
{
    QFETCH(QStringList, recipe);
    QFETCH(QString, empty);
    QFETCH(QString, appendable);
    NEED("cdrdao");
    ClientBench bench;
    bench.recorder.insert("disc", recipe);
    const QString told = bench.run("cdrdao disk-info --device /dev/sr0 --driver generic-mmc").output;
    QVERIFY2(told.contains(QRegularExpression("CD-R empty +: " + empty)), qPrintable(told));
    const bool tellsAppending = told.contains(QRegularExpression("Appendable +: " + appendable));
    QVERIFY2(appendable.isEmpty() || tellsAppending, qPrintable(told));
}

void TestForeignClients::burn_killedInACommand_leavesDriveUsable()
{
    NEED("wodim");
    NEED("cdrdao");
    ClientBench bench;
    const Album album{bench};
    bench.recorder.addFault("SEND_CUE_SHEET after delay=forever");
    const auto killed =
        bench.run("timeout -s KILL 12 wodim gracetime=2 dev=/dev/sr0 -dao -audio -pad one.wav two.wav");
    QVERIFY2(killed.status != 0, qPrintable(killed.output));
    bench.recorder.clearFaults();
    const QString told = bench.run("cdrdao disk-info --device /dev/sr0 --driver generic-mmc").output;
    QVERIFY2(told.contains(QRegularExpression("CD-R empty +: yes")), qPrintable(told));
    const auto burned = bench.run("wodim gracetime=2 dev=/dev/sr0 -dao -audio -pad one.wav two.wav");
    QVERIFY2(burned.status == 0, qPrintable(burned.output));
    QCOMPARE(bench.recorder.frames(0, 400), album.first);
}

void TestForeignClients::rip_overNoiseAndJitter_isBitExact_data()
{
    QTest::addColumn<QString>("rip");
    QTest::addColumn<QString>("fault");
    for (const char* const program : {"cdparanoia", "cd-paranoia"}) {
        const QString rip = QString(program) + " -d /dev/sr0 -w 1 rip.wav";
        QTest::addRow("%s, noise", program) << rip << "READ_CD lba=700-710 times=1 noise";
        QTest::addRow("%s, jitter", program) << rip << "READ_CD nth=12 times=1 jitter=40";
        QTest::addRow("%s, one bad read", program) << rip << "READ_CD lba=700 times=1 sense=3/11/05";
    }
}

void TestForeignClients::rip_overNoiseAndJitter_isBitExact()
{
    QFETCH(QString, rip);
    QFETCH(QString, fault);
    NEED(rip.section(' ', 0, 0));
    ClientBench bench;
    bench.recorder.insert("album", {"audio 1500", "audio 500", "close"});
    bench.recorder.addFault(fault);
    const auto ripped = bench.run(rip);
    QVERIFY2(ripped.status == 0, qPrintable(ripped.output));
    QVERIFY(!bench.recorder.journal().filter("fault=yes").isEmpty());
    QCOMPARE(bench.waveContent("rip.wav"), bench.recorder.frames(0, 1500));
}

QTEST_GUILESS_MAIN(TestForeignClients)
#include "tst_foreign_clients.moc"
