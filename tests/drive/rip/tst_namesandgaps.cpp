#include "EmulatedRecorder.h"
#include "common/CdTime.h"
#include "engines/audio/makers.h"
#include "engines/burn/WavMaker.h"
#include "engines/cdtext/CdText.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/makers.h"

#include <QProcess>
#include <QStandardPaths>

using namespace zib;

namespace {

/// CD-TEXT packs of titles, or of another kind, twelve letters at most, the disc's own first.
QByteArray packsOf(const QList<QByteArray>& titles, char kind = '\x80')
{
    QByteArray packs;
    for (qsizetype i = 0; i < titles.size(); ++i) {
        const char number = static_cast<char>(i);
        const QByteArray pack = QByteArray(1, kind) + QByteArray(2, number) + QByteArray(1, '\0') +
                                titles[i].leftJustified(12, '\0', true);
        const quint16 crc = cdTextCrc(pack.constData());
        packs += pack + static_cast<char>(crc >> 8) + static_cast<char>(crc & 0xFF);
    }
    return packs;
}

QByteArray silence(int frames)
{
    return QByteArray(qsizetype{frames} * kBytesPerFrame, '\0');
}

/// An emulated drive under the program's ripper, with a disc of two tracks and a gap between them.
struct GapBench : RipBench
{
    GapBench() : GapBench(std::make_unique<QTemporaryDir>()) {}
    explicit GapBench(std::unique_ptr<QTemporaryDir> ofImages)
        : RipBench(makeRipper(ofImages->path())), images(std::move(ofImages))
    {
    }

    void insert(int gapFrames, const QStringList& more = {}, const QString& option = {})
    {
        put(recorder.folder() + "/one.raw", first);
        put(recorder.folder() + "/two.raw", second);
        recorder.insert("disc", QStringList{"audio one.raw " + option,
                                            QString("audio two.raw pregap=%1").arg(gapFrames)} +
                                    more + QStringList{"close"});
    }
    /// The same as an image.
    void putImage(const QByteArray& gap, const QByteArray& ofDisc = {})
    {
        const auto msf = [](qint64 frames) {
            return CdTime::fromFrames(static_cast<qint32>(frames)).toMsf().toLatin1();
        };
        put(images->filePath("album.bin"), first + gap + second);
        put(images->filePath("album.cue"), ofDisc +
                                               "FILE \"album.bin\" BINARY\n  TRACK 01 AUDIO\n    TITLE "
                                               "\"Größe カラ\"\n    PERFORMER \"A & B\"\n"
                                               "    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n    INDEX 00 " +
                                               msf(500) + "\n    INDEX 01 " +
                                               msf(500 + gap.size() / kBytesPerFrame) + '\n');
    }
    bool take() { return takeDisc(EmulatedRecorder::device()); }
    /// Changes one byte of the disc itself.
    void spoil(int frame, char value)
    {
        QFile disc(recorder.folder() + "/disc.bin");
        QVERIFY(disc.open(QIODevice::ReadWrite));
        QVERIFY(disc.seek(qint64{frame + kPregapFrames} * kBytesPerFrame + 1000) && disc.putChar(value));
    }
    /// What the copy of track 1 has behind the sound of the track.  @returns nothing when it is another
    /// sound.
    std::optional<QByteArray> restOfFirst() const
    {
        const QByteArray got = wavSamples(target(1));
        return got.startsWith(first) ? std::optional(got.mid(first.size())) : std::nullopt;
    }
    TrackNames namesIn(int track) const
    {
        const auto information = makeAudioInformation();
        return information->open(target(track)) ? TrackNames{information->title(), information->artist()}
                                                : TrackNames{"no file", {}};
    }

    std::unique_ptr<QTemporaryDir> images;
    EmulatedRecorder recorder;
    const QByteArray first = discSound(500, 1);
    const QByteArray second = discSound(400, 2);
};

} // namespace

/// What comes back from a disc beside its sound: names, and lengths without the silence between tracks.
class TestNamesAndGaps : public QObject
{
    Q_OBJECT
private slots:
    void names_ofADisc_standInItsFiles();
    void names_ofASheet_standInItsFiles();
    void namesOfOtherPrograms_comeBack_data();
    void namesOfOtherPrograms_comeBack();
    void performer_toldOnce_isThatOfEveryNamedTrack();
    void disc_withoutNames_givesPlainFiles();
    void drive_slowOrBrokenOverNames_givesItsSound_data();
    void drive_slowOrBrokenOverNames_givesItsSound();
    void silentGap_belongsToNoFile_data();
    void silentGap_belongsToNoFile();
    void gapThatSounds_staysBehindTheTrack_data();
    void gapThatSounds_staysBehindTheTrack();
    void drive_withoutSubChannel_givesTracksAsListed_data();
    void drive_withoutSubChannel_givesTracksAsListed();
    void search_takesFewReads();
    void gapOfAnImage_isJudgedAlike_data();
    void gapOfAnImage_isJudgedAlike();
    void progress_keepsToTheShortenedTrack();
};

void TestNamesAndGaps::names_ofADisc_standInItsFiles()
{
    GapBench bench;
    put(bench.recorder.folder() + "/names", packsOf({"Disc", "Caf\xE9", "Two"}));
    bench.insert(0, {"cdtext names"});
    QVERIFY(bench.take());
    QCOMPARE(bench.rip({1, 2}), QString("finished"));
    QCOMPARE(bench.ripper->unreadTracks(), QStringList());
    QVERIFY((bench.namesIn(1) == TrackNames{QString::fromUtf8("Café"), {}}));
    QVERIFY((bench.namesIn(2) == TrackNames{"Two", {}}));
    QVERIFY(wavSamples(bench.target(1)) == bench.first);
    QVERIFY(wavSamples(bench.target(2)) == bench.second);
}

void TestNamesAndGaps::names_ofASheet_standInItsFiles()
{
    GapBench bench;
    bench.putImage(silence(150));
    QVERIFY(bench.takeDisc("album"));
    QCOMPARE(bench.rip({1, 2}), QString("finished"));
    QVERIFY((bench.namesIn(1) == TrackNames{QString::fromUtf8("Größe カラ"), "A & B"}));
    QVERIFY((bench.namesIn(2) == TrackNames{}));
    QCOMPARE(fileContent(bench.target(2)).size(), bench.second.size() + 44);
}

void TestNamesAndGaps::namesOfOtherPrograms_comeBack_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("sheet");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");
    const QByteArray english = "Input Sheet Version = 0.7T\nText Code = 8859\nLanguage Code = English\n"
                               "Album Title = Album\nArtist Name = Band\nFirst Track Number = 1\n";
    const QStringList cdrskin{"cdrskin", "dev=/dev/sr0", "-sao", "-text", "input_sheet_v07t=sheet"};
    const QStringList tracks{"-audio", "-pad", "one.wav", "two.wav"};
    QTest::newRow("cdrskin, letters of Windows")
        << cdrskin + tracks << english + "Track 01 Title = Don\x92t \xE9\nTrack 02 Title = Two\n"
        << QString::fromUtf8("Don’t é") << "Band";
    QTest::newRow("cdrskin, Japanese behind English")
        << cdrskin + QStringList("input_sheet_v07t=japanese") + tracks
        << english + "Track 01 Title = One\nTrack 01 Artist = Choir\nTrack 02 Title = Two\n"
        << "One"
        << "Choir";
    QTest::newRow("cdrdao") << QStringList{"cdrdao",           "write",    "-n",
                                           "--device",         "/dev/sr0", "--driver",
                                           "generic-mmc:0x10", "sheet"}
                            << QByteArray(R"(CD_DA
CD_TEXT { LANGUAGE_MAP { 0 : EN } LANGUAGE 0 { TITLE "Album" PERFORMER "Band" } }
TRACK AUDIO
CD_TEXT { LANGUAGE 0 { TITLE "Say \"Caf\351\"" PERFORMER "Choir" } }
FILE "one.wav" 0
TRACK AUDIO
CD_TEXT { LANGUAGE 0 { TITLE "Two" PERFORMER "Choir" } }
PREGAP 0:2:0
FILE "two.wav" 0
)") << QString::fromUtf8("Say \"Café\"")
                            << "Choir";
}

void TestNamesAndGaps::namesOfOtherPrograms_comeBack()
{
    QFETCH(QStringList, command);
    QFETCH(QByteArray, sheet);
    if (QStandardPaths::findExecutable(command.first()).isEmpty())
        QSKIP(qPrintable(command.first() + " is not installed"));
    EmulatedRecorder recorder;
    const auto path = [&recorder](const QString& name) { return recorder.folder() + '/' + name; };
    put(path("sheet"), sheet);
    put(path("japanese"), "Input Sheet Version = 0.7T\nText Code = MS-JIS\nLanguage Code = Japanese\n"
                          "First Track Number = 1\nTrack 01 Title = \x83\x4A\nTrack 02 Title = \x83\x69\n");
    put(path("one.wav"), cdWav(discSound(500, 1)));
    put(path("two.wav"), cdWav(discSound(400, 2)));
    QProcess other;
    other.setWorkingDirectory(recorder.folder());
    other.setProcessChannelMode(QProcess::MergedChannels);
    other.start(command.first(), command.mid(1));
    QVERIFY(other.waitForFinished(120'000));
    QVERIFY2(other.exitCode() == 0, other.readAll().constData());
    if (command.contains("cdrdao") && !recorder.content()->cdTextPacks.contains(QByteArray("Album\0", 6)))
        QSKIP("this cdrdao sets no end behind a text");
    RipBench bench(makeRipper("/nowhere"));
    QVERIFY(bench.takeDisc(EmulatedRecorder::device()));
    QCOMPARE(bench.rip({1}), QString("finished"));
    const auto information = makeAudioInformation();
    QVERIFY(information->open(bench.target(1)));
    QTEST(information->title(), "title");
    QTEST(information->artist(), "artist");
}

void TestNamesAndGaps::performer_toldOnce_isThatOfEveryNamedTrack()
{
    GapBench bench;
    put(bench.recorder.folder() + "/names",
        packsOf({"Disc", "One", "Two"}) + packsOf({"Choir", "", "Guest"}, '\x81'));
    bench.insert(0, {"cdtext names"});
    QVERIFY(bench.take());
    QCOMPARE(bench.rip({1, 2}), QString("finished"));
    QVERIFY((bench.namesIn(1) == TrackNames{"One", "Choir"}));
    QVERIFY((bench.namesIn(2) == TrackNames{"Two", "Guest"}));
    GapBench image;
    image.putImage(silence(150), "PERFORMER \"Choir\"\nTITLE \"Disc\"\n");
    QVERIFY(image.takeDisc("album"));
    QCOMPARE(image.rip({1, 2}), QString("finished"));
    QCOMPARE(image.namesIn(1).artist, QString("A & B"));
    QVERIFY((image.namesIn(2) == TrackNames{})); // without a title it has no name
}

void TestNamesAndGaps::disc_withoutNames_givesPlainFiles()
{
    GapBench bench;
    bench.recorder.set("cd-text", "no");
    bench.insert(0);
    QVERIFY(bench.take());
    QCOMPARE(bench.rip({1}), QString("finished"));
    QCOMPARE(fileContent(bench.target(1)).size(), bench.first.size() + 44);
}

void TestNamesAndGaps::drive_slowOrBrokenOverNames_givesItsSound_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("title");
    QTest::newRow("slow") << "delay=2500"
                          << "One";
    QTest::newRow("disc announced as new") << "sense=6/28/00"
                                           << "One";
    QTest::newRow("refused") << "sense=5/24/00"
                             << "";
    QTest::newRow("broken line") << "transport"
                                 << "";
}

void TestNamesAndGaps::drive_slowOrBrokenOverNames_givesItsSound()
{
    QFETCH(QString, what);
    GapBench bench;
    put(bench.recorder.folder() + "/names", packsOf({"Disc", "One", "Two"}));
    bench.insert(150, {"cdtext names"});
    QVERIFY(bench.take());
    bench.recorder.addFault("READ_TOC nth=3 times=1 " + what); // behind two of the table of contents
    QCOMPARE(bench.rip({1}), QString("finished"));
    const QStringList asked = bench.recorder.journal().filter("cdb=430005");
    QVERIFY2(!asked.filter("fault=yes").isEmpty(), qPrintable(asked.join('\n')));
    QCOMPARE(bench.ripper->unreadTracks(), QStringList());
    QTEST(bench.namesIn(1).title, "title");
    QVERIFY(wavSamples(bench.target(1)) == bench.first);
}

void TestNamesAndGaps::silentGap_belongsToNoFile_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<QString>("option");
    for (const int frames : {1, 20, 150, 151, 152, 400})
        QTest::addRow("%d frames", frames) << frames << "";
    QTest::newRow("another first number") << 150 << "number=5";
}

void TestNamesAndGaps::silentGap_belongsToNoFile()
{
    QFETCH(int, frames);
    QFETCH(QString, option);
    GapBench bench;
    bench.insert(frames, {}, option);
    QVERIFY(bench.take());
    QCOMPARE(bench.ripper->trackLength(1), 500 + frames);
    QCOMPARE(bench.rip({1, 2}), QString("finished"));
    QCOMPARE(bench.ripper->unreadTracks(), QStringList());
    QVERIFY(bench.restOfFirst() && bench.restOfFirst()->isEmpty());
    QVERIFY(wavSamples(bench.target(2)) == bench.second);
}

void TestNamesAndGaps::gapThatSounds_staysBehindTheTrack_data()
{
    QTest::addColumn<int>("at");
    QTest::newRow("first frame") << 0;
    QTest::newRow("middle") << 70;
    QTest::newRow("last frame") << 149;
}

void TestNamesAndGaps::gapThatSounds_staysBehindTheTrack()
{
    QFETCH(int, at);
    GapBench bench;
    bench.insert(150);
    QVERIFY(bench.take());
    bench.spoil(500 + at, 1);
    QCOMPARE(bench.rip({1}), QString("finished"));
    QByteArray gap = silence(150);
    gap[at * kBytesPerFrame + 1000] = 1;
    QVERIFY(bench.restOfFirst() == gap);
}

void TestNamesAndGaps::drive_withoutSubChannel_givesTracksAsListed_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("refused") << "READ_CD lba=649-649 times=1 sense=5/24/00";
    QTest::newRow("not understood") << "READ_CD lba=648-649 times=2 flip=2361/77";
    QTest::newRow("unreadable") << "READ_CD lba=648-649 times=2 sense=3/11/05";
}

void TestNamesAndGaps::drive_withoutSubChannel_givesTracksAsListed()
{
    QFETCH(QString, fault);
    GapBench bench;
    bench.insert(150);
    QVERIFY(bench.take());
    bench.recorder.addFault(fault);
    QCOMPARE(bench.rip({1}), QString("finished"));
    QCOMPARE(bench.ripper->unreadTracks(), QStringList());
    QVERIFY(bench.restOfFirst() == silence(150));
}

void TestNamesAndGaps::search_takesFewReads()
{
    GapBench bench;
    bench.insert(150);
    QVERIFY(bench.take());
    bench.recorder.clearJournal();
    QCOMPARE(bench.rip({1}), QString("finished"));
    int asked = 0;
    for (const QString& line : bench.recorder.journal())
        if (const auto at = line.indexOf("cdb=");
            line.contains(" READ_CD ") && line.mid(at + 4 + 20, 2) == "02")
            ++asked;
    QCOMPARE(asked, 3);
}

void TestNamesAndGaps::gapOfAnImage_isJudgedAlike_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("sounding"); // frame of the gap, negative for none
    QTest::newRow("silent") << 150 << -1;
    QTest::newRow("silent, one frame") << 1 << -1;
    QTest::newRow("silent, longer than the track") << 700 << -1;
    QTest::newRow("sound at its beginning") << 150 << 0;
    QTest::newRow("sound at its end") << 150 << 149;
}

void TestNamesAndGaps::gapOfAnImage_isJudgedAlike()
{
    QFETCH(int, frames);
    QFETCH(int, sounding);
    GapBench bench;
    QByteArray gap = silence(frames);
    if (sounding >= 0)
        gap[sounding * kBytesPerFrame + 2351] = 1;
    bench.putImage(gap);
    QVERIFY(bench.takeDisc("album"));
    QCOMPARE(bench.ripper->trackLength(1), 500 + frames);
    QCOMPARE(bench.rip({1, 2}), QString("finished"));
    QVERIFY(bench.restOfFirst() == (sounding < 0 ? QByteArray() : gap));
    QVERIFY(wavSamples(bench.target(2)) == bench.second);
}

void TestNamesAndGaps::progress_keepsToTheShortenedTrack()
{
    GapBench bench;
    bench.insert(150);
    QVERIFY(bench.take());
    QCOMPARE(bench.rip({1, 2}), QString("finished"));
    QCOMPARE(bench.said, (QStringList{"started", "track 1 0 500", "track finished", "track 2 650 1050",
                                      "track finished", "finished"}));
    qint32 last = 0;
    for (const auto& [kind, position] : bench.positions) {
        if (kind != CDRipperX::kPositionProgress)
            continue;
        QVERIFY(position >= last && (position <= 500 || position > 650));
        last = position;
    }
    QCOMPARE(last, 1050);
}

QTEST_GUILESS_MAIN(TestNamesAndGaps)
#include "tst_namesandgaps.moc"
