#include "DiscImage.h"
#include "burn/frmPrepare.h"
#include "burn/frmWrite.h"
#include "engines/audio/makers.h"
#include "engines/burn/DiscWriter.h"
#include "engines/burn/image/ImageRecorder.h"
#include "engines/burn/WavMaker.h"
#include "fakes/FakeSeams.h"

#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <functional>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace zib;

namespace {

const QString kNotWritten = "i: The following file could not be written to CD audio:\n";
const QString kNotRead = "\nThis file cannot be read:\n";
const QString kNotStored = "\nThe track of this file cannot be stored, perhaps the disk is full:\n";

/// The two windows of the main job with the real engines behind them and the image recorder as the only
/// drive.
struct Road
{
    Road()
    {
        setApplicationFolder(folder.filePath("program"));
        QDir().mkpath(applicationFolder());
        OptionsData options;
        options.Temporary = folder.filePath("cache").leftJustified(1024);
        setOptions(options);
        desk.components.makeInformation = makeAudioInformation;
        desk.components.makeFile = makeAudioFile;
        desk.components.makeWriter = [this] {
            return std::make_unique<DiscWriter>(FindRecorders(), std::make_shared<ImageRecorder>(images()));
        };
    }
    QString images() const { return folder.filePath("program/Images"); }
    QString temp(const QString& name) const { return folder.filePath("program/Temp/" + name); }
    QString file(const QString& name) const { return folder.filePath(name); }
    /// A row for a file in the test's folder, which may be copied from @p sample first.
    void add(const QString& name, const QString& sample = {})
    {
        if (!sample.isEmpty())
            QFile::copy(ZIB_SOURCE_DIR "/data/samples/" + sample, file(name));
        CompilationRow row;
        row.fileName = name;
        row.location = folder.path() + '/';
        rows << row;
    }
    bool prepare()
    {
        frmPrepare window(desk.services, rows);
        window.show();
        const bool ended = QTest::qWaitFor([&] { return !window.isVisible(); }, 120'000);
        tracks = window.trackFiles();
        return ended;
    }
    /// Shows the writing window, presses Start Writing and waits for the end. @returns whether it came.
    bool write(const std::function<void(frmWrite&)>& beforeStart = {})
    {
        frmWrite window(desk.services, tracks);
        window.show();
        auto* start = window.findChild<QPushButton*>("cmdWrite");
        if (!QTest::qWaitFor([&] { return start->isEnabled(); }, 30'000))
            return false;
        if (beforeStart)
            beforeStart(window);
        QTest::mouseClick(start, Qt::LeftButton);
        const bool ended = QTest::qWaitFor([&] { return start->isEnabled(); }, 120'000);
        status = window.findChild<QLabel*>("lblStatus")->text();
        percent = window.findChild<QLabel*>("lblPer")->text();
        return ended;
    }
    QStringList imageFiles() const
    {
        return QDir(images()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    /// The samples of every track of the one image, read by a library that is not ours.
    QList<QByteArray> readBack() const
    {
        QList<QByteArray> sounds;
        const QStringList found = imageFiles();
        if (found.size() != 2)
            return sounds;
        const auto disc = demo::DiscImage::open(images() + '/' + found[1]);
        const auto told = disc ? disc->tracks() : disc.error();
        for (const demo::DiscTrack& track : told ? *told : QList<demo::DiscTrack>())
            sounds << disc->read(track.start, track.frames);
        return sounds;
    }

    QTemporaryDir folder;
    FakeDesk desk;
    QList<CompilationRow> rows;
    QStringList tracks;
    QString status;
    QString percent;
};

/// The samples of a WAV file with a plain header, padded as a disc pads them.
QByteArray onDisc(const QString& path)
{
    QFile wav(path);
    if (!wav.open(QIODevice::ReadOnly))
        return {};
    const QByteArray samples = wav.readAll().mid(44);
    const qsizetype frames = qMax<qsizetype>((samples.size() + 2351) / 2352, 300);
    return samples + QByteArray(frames * 2352 - samples.size(), '\0');
}

/// No file may grow beyond so many bytes while this lives.
struct SmallStorage
{
    explicit SmallStorage(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallStorage() { setrlimit(RLIMIT_FSIZE, &before); }

    rlimit before{};
};

} // namespace

/// From files to a disc image through the real windows and engines, with good and with bad files.
class TestMainJob : public QObject
{
    Q_OBJECT
private slots:
    void goodFiles_always_becomeADiscOfTheirSamples_data();
    void goodFiles_always_becomeADiscOfTheirSamples();
    void anotherRun_afterwards_writesAnotherImage();
    void testMode_always_writesNothing();
    void aBadFile_amongGoodOnes_isNamedAndLeftOut_data();
    void aBadFile_amongGoodOnes_isNamedAndLeftOut();
    void aWavThatLies_isWrittenAsFarAsItGoes();
    void aTrackThatGoes_betweenPreparingAndWriting_isNamed();
    void aTrackThatGoes_beforeStartWriting_isAnError();
    void aFullStorage_whilePreparing_leavesNoShortTrack();
    void aFullStorage_whileWriting_leavesNoImage();
    void aTempThatCannotBeMade_isToldAndNothingIsClaimed();
    void namesInAnyLetters_surviveTheRoad_data();
    void namesInAnyLetters_surviveTheRoad();
    void aNameThatIsNoUnicode_survivesTheRoad_data();
    void aNameThatIsNoUnicode_survivesTheRoad();
    void onlyBadFiles_writeNothing();
    void cancel_inTheMiddle_leavesNothing();
    void closingTheWindow_inTheMiddle_leavesNothing();
};

void TestMainJob::goodFiles_always_becomeADiscOfTheirSamples_data()
{
    QTest::addColumn<bool>("cached");
    QTest::newRow("straight") << false;
    QTest::newRow("through local copies") << true;
}

void TestMainJob::goodFiles_always_becomeADiscOfTheirSamples()
{
    QFETCH(bool, cached);
    Road road;
    OptionsData options = gOptions;
    options.CacheFilesLocally = cached;
    setOptions(options);
    road.add("a.mp3", "Morning Light.mp3");
    road.add("b.wav", "Night Train.wav");
    road.add("c.wav", "Short Wave.wav");
    put(road.file("d.wav"), cdWav(sound(1000)));
    road.add("d.wav");
    QVERIFY(road.prepare());
    QCOMPARE(road.tracks.last(), road.file("d.wav"));
    QCOMPARE(road.tracks.first(), road.temp("a.wav"));
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown, QStringList{"i: Writing is completed."});
    QCOMPARE(road.status, QString("Writing Completed."));
    QCOMPARE(road.percent, QString("Percent:   100%"));
    const QList<QByteArray> read = road.readBack();
    QCOMPARE(read.size(), 4);
    for (int i = 0; i < 4; ++i) {
        QVERIFY(read[i].size() >= 300 * 2352);
        QVERIFY(read[i] == onDisc(road.tracks[i]));
    }
    QCOMPARE(QDir(road.file("cache")).exists(), cached);
    QVERIFY(QDir(road.file("cache")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void TestMainJob::anotherRun_afterwards_writesAnotherImage()
{
    Road road;
    road.add("a.mp3", "Morning Light.mp3");
    QVERIFY(road.prepare());
    QVERIFY(road.write());
    QVERIFY(road.prepare());
    QCOMPARE(road.tracks, QStringList{road.temp("a-1.wav")});
    QVERIFY(road.write());
    QCOMPARE(road.imageFiles().size(), 4);
    QCOMPARE(onDisc(road.temp("a.wav")), onDisc(road.temp("a-1.wav")));
}

void TestMainJob::testMode_always_writesNothing()
{
    Road road;
    OptionsData options = gOptions;
    options.TestMode = true;
    setOptions(options);
    road.add("a.mp3", "Morning Light.mp3");
    QVERIFY(road.prepare());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown.size(), 2);
    QVERIFY(road.desk.messages.shown[0].startsWith("i: The software was set to \"Test Mode\" now."));
    QCOMPARE(road.desk.messages.shown[1], QString("i: Writing is completed."));
    QVERIFY(!QFileInfo::exists(road.images()));
}

void TestMainJob::aBadFile_amongGoodOnes_isNamedAndLeftOut_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("name");
    QTest::newRow("missing mp3") << "missing"
                                 << "bad.mp3";
    QTest::newRow("missing wav") << "missing"
                                 << "bad.wav";
    QTest::newRow("text") << "text"
                          << "bad.mp3";
    QTest::newRow("empty") << "empty"
                           << "bad.wav";
    QTest::newRow("folder") << "folder"
                            << "bad.mp3";
    QTest::newRow("pipe") << "pipe"
                          << "bad.wav";
    QTest::newRow("link to itself") << "loop"
                                    << "bad.mp3";
    QTest::newRow("device") << "device"
                            << "bad.wav";
    QTest::newRow("wav without samples") << "no samples"
                                         << "bad.wav";
    QTest::newRow("mp3 without a whole frame") << "part of a frame"
                                               << "bad.mp3";
}

void TestMainJob::aBadFile_amongGoodOnes_isNamedAndLeftOut()
{
    QFETCH(QString, kind);
    QFETCH(QString, name);
    Road road;
    road.add("good.mp3", "Morning Light.mp3");
    road.add(name);
    put(road.file("last.wav"), cdWav(sound(300 * 588, 3)));
    road.add("last.wav");
    const QString path = road.file(name);
    if (kind == "text" || kind == "empty")
        put(path, kind == "text" ? "Dear friend, this is a letter and no song. " : "");
    else if (kind == "folder")
        QDir().mkdir(path);
    else if (kind == "pipe")
        mkfifo(qPrintable(path), 0600);
    else if (kind == "loop")
        QFile::link(path, path);
    else if (kind == "device")
        QFile::link("/dev/zero", path);
    else if (kind == "no samples")
        put(path, cdWav({}));
    else if (kind == "part of a frame") {
        QFile whole(ZIB_SOURCE_DIR "/data/samples/Morning Light.mp3");
        QVERIFY(whole.open(QIODevice::ReadOnly));
        put(path, whole.readAll().right(50));
    }
    QVERIFY(road.prepare());
    QCOMPARE(road.desk.messages.shown, QStringList());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown,
             (QStringList{kNotWritten + road.tracks[1] + kNotRead + path, "i: Writing is completed."}));
    const QList<QByteArray> read = road.readBack();
    QCOMPARE(read.size(), 2);
    QVERIFY(read[0] == onDisc(road.tracks[0]));
    QVERIFY(read[1] == onDisc(road.tracks[2]));
    QVERIFY(!QFileInfo(road.temp("bad.wav")).isFile());
}

void TestMainJob::aWavThatLies_isWrittenAsFarAsItGoes()
{
    Road road;
    QByteArray lying = cdWav(sound(400 * 588));
    lying.replace(40, 4, little32(0x7FFFFFFF));
    put(road.file("lying.wav"), lying);
    road.add("lying.wav");
    QVERIFY(road.prepare());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown, QStringList{"i: Writing is completed."});
    QCOMPARE(road.readBack().value(0).size(), 400 * 2352);
    QVERIFY(road.readBack().value(0) == sound(400 * 588));
}

void TestMainJob::aTrackThatGoes_betweenPreparingAndWriting_isNamed()
{
    Road road;
    road.add("a.mp3", "Morning Light.mp3");
    road.add("b.mp3", "Morning Light.mp3");
    QVERIFY(road.prepare());
    QVERIFY(QFile::remove(road.tracks[0]));
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown,
             (QStringList{kNotWritten + road.tracks[0], "i: Writing is completed."}));
    QCOMPARE(road.readBack().size(), 1);
}

void TestMainJob::aTrackThatGoes_beforeStartWriting_isAnError()
{
    Road road;
    road.add("a.mp3", "Morning Light.mp3");
    QVERIFY(road.prepare());
    QVERIFY(road.write([&](frmWrite&) { QFile::remove(road.tracks[0]); }));
    QCOMPARE(road.desk.messages.shown.size(), 1);
    QVERIFY(road.desk.messages.shown[0].startsWith("c: Writing Error: (1)   The file \"" + road.tracks[0]));
    QCOMPARE(road.imageFiles(), QStringList());
}

void TestMainJob::aFullStorage_whilePreparing_leavesNoShortTrack()
{
    Road road;
    road.add("a.mp3", "Morning Light.mp3");
    {
        const SmallStorage storage(500'000);
        QVERIFY(road.prepare());
    }
    QCOMPARE(QDir(road.folder.filePath("program/Temp")).entryList(QDir::Files | QDir::Hidden), QStringList());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown,
             (QStringList{kNotWritten + road.tracks[0] + kNotStored + road.file("a.mp3"),
                          "c: Write to disc failed."}));
    QCOMPARE(road.imageFiles(), QStringList());
}

void TestMainJob::aFullStorage_whileWriting_leavesNoImage()
{
    Road road;
    road.add("a.mp3", "Morning Light.mp3");
    QVERIFY(road.prepare());
    const SmallStorage storage(500'000);
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown.size(), 1);
    QVERIFY(road.desk.messages.shown[0].startsWith("c: Writing Error: (2)   "));
    QCOMPARE(road.imageFiles(), QStringList());
    QVERIFY(QDir(road.file("cache")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void TestMainJob::aTempThatCannotBeMade_isToldAndNothingIsClaimed()
{
    Road road;
    put(road.folder.filePath("program/Temp"), "in the way");
    road.add("a.mp3", "Morning Light.mp3");
    road.add("b.mp3", "Morning Light.mp3");
    QVERIFY(road.prepare());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown,
             (QStringList{"c[Error]: Create directory error: " + road.folder.filePath("program/Temp"),
                          kNotWritten + road.tracks[0] + kNotStored + road.file("a.mp3"),
                          kNotWritten + road.tracks[1] + kNotStored + road.file("b.mp3"),
                          "c: Write to disc failed."}));
}

void TestMainJob::namesInAnyLetters_surviveTheRoad_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("umlauts") << QString::fromUtf8("Größenwahn für Anfänger.mp3");
    QTest::newRow("many scripts") << QString::fromUtf8("音楽 – музыка – موسيقى.mp3");
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("🎵 song 🎶.mp3");
    QTest::newRow("quotes and percents") << QString("\"50%1\" & <b>'co'</b>;$(x).mp3").remove('/');
    QTest::newRow("line break") << QString("two\nlines.mp3");
    QTest::newRow("backslash") << QString("back\\slash.mp3");
    QTest::newRow("long") << QString(240, 'x') + ".mp3";
}

void TestMainJob::namesInAnyLetters_surviveTheRoad()
{
    QFETCH(QString, name);
    Road road;
    road.add(name, "Morning Light.mp3");
    QVERIFY(road.prepare());
    QCOMPARE(road.tracks, QStringList{road.temp(name.chopped(4) + ".wav")});
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown, QStringList{"i: Writing is completed."});
    QVERIFY(road.readBack().value(0) == onDisc(road.tracks[0]));
}

void TestMainJob::aNameThatIsNoUnicode_survivesTheRoad_data()
{
    QTest::addColumn<bool>("cdFormat");
    QTest::newRow("taken as it is") << true;
    QTest::newRow("converted") << false;
}

void TestMainJob::aNameThatIsNoUnicode_survivesTheRoad()
{
    QFETCH(bool, cdFormat);
    Road road;
    const QByteArray samples = sound(400 * 588);
    const QByteArray wav =
        cdFormat ? cdWav(samples) : riff(formatChunk(1, 2, 22050) + chunk("data", samples));
    const QString plain = put(road.file("plain.wav"), wav);
    const QByteArray odd = QFile::encodeName(road.folder.path()) + "/Gr\xf6\xdf"
                                                                   "e.wav";
    QCOMPARE(std::rename(qPrintable(plain), odd.constData()), 0);
    road.add(QFile::decodeName("Gr\xf6\xdf"
                               "e.wav"));
    QVERIFY(road.prepare());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown, QStringList{"i: Writing is completed."});
    QCOMPARE(road.readBack().size(), 1);
    if (cdFormat)
        QVERIFY(road.readBack().value(0) == samples);
}

void TestMainJob::onlyBadFiles_writeNothing()
{
    Road road;
    road.add("bad.mp3");
    QVERIFY(road.prepare());
    QVERIFY(road.write());
    QCOMPARE(road.desk.messages.shown,
             (QStringList{kNotWritten + road.tracks[0] + kNotRead + road.file("bad.mp3"),
                          "c: Write to disc failed."}));
}

void TestMainJob::cancel_inTheMiddle_leavesNothing()
{
    Road road;
    for (int n = 1; n <= 4; ++n) {
        put(road.file(QString("%1.wav").arg(n)), cdWav(sound(240 * 44100, n)));
        road.add(QString("%1.wav").arg(n));
    }
    QVERIFY(road.prepare());
    QVERIFY(road.write([](frmWrite& window) {
        auto* timer = new QTimer(&window);
        auto* cancel = window.findChild<QPushButton*>("cmdCancel");
        connect(timer, &QTimer::timeout, cancel, [&window, cancel] {
            const QString status = window.findChild<QLabel*>("lblStatus")->text();
            if (status.startsWith("Preparing to Write") || status.startsWith("Track:") ||
                status.startsWith("Writing Track"))
                cancel->click();
        });
        timer->start(0);
    }));
    QVERIFY2(road.desk.messages.shown.isEmpty(), qPrintable(road.desk.messages.shown.join(u';')));
    QCOMPARE(road.status, QString("Writing Cancelled."));
    QCOMPARE(road.imageFiles(), QStringList());
    QVERIFY(QDir(road.file("cache")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void TestMainJob::closingTheWindow_inTheMiddle_leavesNothing()
{
    Road road;
    for (int n = 1; n <= 4; ++n) {
        put(road.file(QString("%1.wav").arg(n)), cdWav(sound(60 * 44100, n)));
        road.add(QString("%1.wav").arg(n));
    }
    QVERIFY(road.prepare());
    frmWrite window(road.desk.services, road.tracks);
    window.show();
    auto* start = window.findChild<QPushButton*>("cmdWrite");
    QTRY_VERIFY_WITH_TIMEOUT(start->isEnabled(), 30'000);
    QTest::mouseClick(start, Qt::LeftButton);
    window.close();
    QTRY_VERIFY_WITH_TIMEOUT(!window.isVisible(), 60'000);
    QCOMPARE(road.imageFiles(), QStringList());
    QCOMPARE(road.desk.messages.shown, QStringList());
}

QTEST_MAIN(TestMainJob)
#include "tst_mainjob.moc"
