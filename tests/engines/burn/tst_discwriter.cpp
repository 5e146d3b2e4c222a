#include "WavMaker.h"

#include "engines/burn/DiscWriter.h"
#include "engines/burn/image/ImageRecorder.h"
#include "engines/burn/makers.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <array>
#include <functional>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

using namespace zib;

namespace {

/// A drive whose behaviour a test writes down.
struct ScriptedRecorder final : Recorder
{
    QString path() const override { return "/dev/sr7"; }
    QString maker() const override { return "ACME"; }
    QString model() const override { return "CD-1"; }
    bool canWriteCdR() const override { return true; }
    bool canWriteCdRw() const override { return true; }
    bool canWriteAudio() const override { return true; }
    bool hasBufferProtection() const override { return true; }
    Outcome<Medium> inspect(const InspectionTalk&) override
    {
        ++looks;
        if (onInspect)
            onInspect();
        return medium;
    }
    std::optional<BurnError> write(const BurnJob& job, BurnObserver& observer) override
    {
        ++writes;
        jobs << job;
        return onWrite ? onWrite(job, observer) : std::nullopt;
    }
    void eject() override { ++ejects; }

    Outcome<Medium> medium = Medium{.status = DVDWriterPro::kBlankDisc,
                                    .capacity = CdTime::fromFrames(360'000),
                                    .speeds = {{8, 1411}, {4, 706}}};
    std::function<void()> onInspect;
    std::function<std::optional<BurnError>(const BurnJob&, BurnObserver&)> onWrite;
    std::atomic<int> looks = 0;
    std::atomic<int> writes = 0;
    std::atomic<int> ejects = 0;
    QList<BurnJob> jobs;
};

/// A writer with one scripted drive and the image recorder, and every signal in one list.
struct Desk
{
    Desk()
    {
        writer = std::make_unique<DiscWriter>(
            [this] { return FoundRecorders{.recorders = {drive}, .allUsable = allUsable}; },
            std::make_shared<ImageRecorder>(folder.filePath("Images")));
        listen();
    }
    void listen()
    {
        const auto* w = writer.get();
        QObject::connect(w, &DVDWriterPro::PreparingToWrite, w, [this] { events << "preparing"; });
        QObject::connect(w, &DVDWriterPro::CachingProgress, w, [this](qint16 p) { percents << p; });
        QObject::connect(w, &DVDWriterPro::ReadingTrack, w, [this](const QString& name, qint32 n, qint32 t) {
            events << QString("reading %1 %2 %3").arg(name).arg(n).arg(t);
        });
        QObject::connect(w, &DVDWriterPro::WritingProgress, w,
                         [this](qint32 t, qint32 d, qint32 s) { positions << std::tuple(t, d, s); });
        QObject::connect(w, &DVDWriterPro::ClosingTrack, w,
                         [this](qint32 t) { events << QString("closing %1").arg(t); });
        QObject::connect(w, &DVDWriterPro::ClosingDisc, w, [this] { events << "closing disc"; });
        QObject::connect(w, &DVDWriterPro::WriteCompleted, w, [this] { ends << "completed"; });
        QObject::connect(w, &DVDWriterPro::WriteCancelled, w, [this] { ends << "cancelled"; });
        QObject::connect(w, &DVDWriterPro::WriteError, w,
                         [this](qint32 e, qint32 k, const QString& d, const QString& x) {
                             ends << QString("error %1 %2 %3").arg(e).arg(k).arg(x);
                             description = d;
                         });
    }
    QString track(qint64 pairs, int seed = 1)
    {
        return put(folder.filePath(QString("%1.wav").arg(seed)), cdWav(sound(pairs, seed)));
    }
    void ready(int recorder = 0, int tracks = 1)
    {
        writer->initializeDrives(false);
        writer->selectDrive(recorder);
        for (int n = 1; n <= tracks; ++n)
            writer->addAudioTrack(track(300 * 588, n));
    }
    /// Waits for the end and a little longer, for a second one.
    bool ended()
    {
        const bool came = QTest::qWaitFor([this] { return !ends.isEmpty(); }, 60'000);
        QTest::qWait(150);
        return came && ends.size() == 1;
    }
    QStringList images() const
    {
        return QDir(folder.filePath("Images")).entryList(QDir::Files | QDir::Hidden);
    }

    QTemporaryDir folder;
    std::shared_ptr<ScriptedRecorder> drive = std::make_shared<ScriptedRecorder>();
    bool allUsable = true;
    std::unique_ptr<DiscWriter> writer;
    QStringList events;
    QStringList ends;
    QString description;
    QList<int> percents;
    QList<std::tuple<qint32, qint32, qint32>> positions;
};

/// Waits on the worker's thread.
bool comesTrue(const std::function<bool()>& condition)
{
    for (int n = 0; n < 6000 && !condition(); ++n)
        QThread::msleep(10);
    return condition();
}

/// Writes other sound into a file, and sets its time back as programs that edit tags do.
bool disguise(const QString& path)
{
    QTest::qWait(20); // The system's clock for files ticks some hundred times a second.
    const QByteArray name = QFile::encodeName(path);
    struct stat before = {};
    QFile file(path);
    if (::stat(name.constData(), &before) != 0 || !file.open(QIODevice::ReadWrite) || !file.seek(100) ||
        file.write("other sound") < 0)
        return false;
    file.close();
    const std::array times{before.st_atim, before.st_mtim};
    return ::utimensat(AT_FDCWD, name.constData(), times.data(), 0) == 0;
}

} // namespace

/// The disc writer: its thread, its checks, its cache, its ends.
class TestDiscWriter : public QObject
{
    Q_OBJECT
private slots:
    void initialize_always_listsTheImageRecorderLast();
    void initialize_whenADriveCannotBeUsed_saysSo();
    void initialize_whileItWaits_letsTheOwnersEventsGoOn();
    void initialize_whenDestroyedMeanwhile_returns();
    void discStatus_always_asksAfresh();
    void discStatus_whenTheDriveCannotBeAsked_leavesTheReasonToTheWrite();
    void discStatus_whileWriting_doesNotDisturb();
    void addAudioTrack_beyond99_isRefused();
    void start_withoutDriveOrTracks_isRefused();
    void start_whileWriting_isRefused();
    void write_toAnImage_tellsEverythingInOrder();
    void write_afterAnEnd_canStartAgain();
    void write_fromTheEndEvent_canStartAgain();
    void write_whenTheTracksDoNotFit_isPastTheEnd_data();
    void write_whenTheTracksDoNotFit_isPastTheEnd();
    void write_whenTheDiscIsWrong_isRefused_data();
    void write_whenTheDiscIsWrong_isRefused();
    void write_whenASourceChanged_saysWhatToDo_data();
    void write_whenASourceChanged_saysWhatToDo();
    void write_whenASourceChanged_neverTouchesTheDrive();
    void write_settings_reachTheRecorder();
    void write_atNoSpeed_leavesItToTheDrive();
    void progress_ofAFastAndUnsteadyRecorder_isThrottledAndNeverFalls();
    void progress_whenTheRecorderSkipsTheEnd_endsAtTheFullSize();
    void cache_always_servesTheRecorderAndLeavesNothing();
    void cache_whenThereIsNoRoom_saysWhatToDo();
    void cache_whenTheFolderCannotBeMade_saysWhatToDo();
    void cache_afterAnError_leavesNothing();
    void cancel_beforeAndDuringTheWrite_givesOneEnd_data();
    void cancel_beforeAndDuringTheWrite_givesOneEnd();
    void cancel_whenNothingRuns_doesNothing();
    void destroy_whileWriting_endsTheWriteAndSaysNothing();
    void finish_withEject_handsTheDiscOut();
    void makeDiscWriter_always_endsWithImages();
};

void TestDiscWriter::initialize_always_listsTheImageRecorderLast()
{
    Desk desk;
    QCOMPARE(desk.writer->driveCount(), 0);
    QVERIFY(desk.writer->initializeDrives(false));
    QVERIFY(desk.writer->initializeDrives(false));
    QCOMPARE(desk.writer->driveCount(), 2);
    QCOMPARE(desk.writer->driveText1(0), QString("/dev/sr7"));
    QCOMPARE(desk.writer->driveText2(0), QString("ACME"));
    QCOMPARE(desk.writer->driveText3(0), QString("CD-1"));
    QVERIFY(desk.writer->driveText2(1).contains("image"));
    QVERIFY(desk.writer->canWriteCdR(1) && !desk.writer->canWriteCdRw(1) && desk.writer->canWriteAudio(1));
    for (const int wrong : {-1, 2}) {
        QVERIFY(!desk.writer->selectDrive(wrong));
        QVERIFY(desk.writer->driveText1(wrong).isEmpty());
        QVERIFY(!desk.writer->canWriteAudio(wrong));
    }
}

void TestDiscWriter::initialize_whenADriveCannotBeUsed_saysSo()
{
    Desk desk;
    desk.allUsable = false;
    QVERIFY(!desk.writer->initializeDrives(false));
    QCOMPARE(desk.writer->driveCount(), 2);
}

void TestDiscWriter::initialize_whileItWaits_letsTheOwnersEventsGoOn()
{
    std::atomic<bool> ticked = false;
    QThread* searcher = nullptr;
    DiscWriter writer(
        [&] {
            searcher = QThread::currentThread();
            return FoundRecorders{.allUsable = comesTrue([&] { return ticked.load(); })};
        },
        std::make_shared<ImageRecorder>(QDir::tempPath()));
    QTimer::singleShot(0, [&] { ticked = true; });
    QVERIFY(writer.initializeDrives(false));
    QVERIFY(searcher != QThread::currentThread());
}

void TestDiscWriter::initialize_whenDestroyedMeanwhile_returns()
{
    const auto ticked = std::make_shared<std::atomic<bool>>(false);
    auto* writer = new DiscWriter(
        [ticked] {
            comesTrue([&] { return ticked->load(); });
            return FoundRecorders{};
        },
        std::make_shared<ImageRecorder>(QDir::tempPath()));
    QTimer::singleShot(0, [&] {
        *ticked = true;
        delete writer;
    });
    QVERIFY(!writer->initializeDrives(false));
}

void TestDiscWriter::discStatus_always_asksAfresh()
{
    Desk desk;
    desk.ready();
    QCOMPARE(desk.writer->discStatus(), DVDWriterPro::kBlankDisc);
    QCOMPARE(desk.writer->discHoldsData(), false);
    QCOMPARE(desk.writer->maxWriteSpeed(), 1411);
    QCOMPARE(desk.writer->writeSpeeds(), (QList<WriteSpeed>{{8, 1411}, {4, 706}}));
    QCOMPARE(desk.drive->looks.load(), 1);
    desk.drive->medium = Medium{.status = DVDWriterPro::kUnusableDisc, .holdsData = true};
    QCOMPARE(desk.writer->discStatus(), DVDWriterPro::kUnusableDisc);
    QCOMPARE(desk.writer->discHoldsData(), true);
    QCOMPARE(desk.writer->maxWriteSpeed(), 0);
    const int looks = desk.drive->looks;
    QTest::qWait(3100); // A look answers all other questions for three seconds.
    desk.writer->writeSpeeds();
    desk.writer->maxWriteSpeed();
    QCOMPARE(desk.drive->looks.load(), looks + 1);
    QVERIFY(desk.writer->selectDrive(1));
    QCOMPARE(desk.writer->discHoldsData(), false);
    QVERIFY(desk.writer->writeSpeeds().isEmpty());
    QVERIFY(!desk.writer->supportsBufferProtection());
}

void TestDiscWriter::discStatus_whenTheDriveCannotBeAsked_leavesTheReasonToTheWrite()
{
    Desk desk;
    desk.ready();
    desk.drive->medium = Failure{Failure::Kind::Busy, "/dev/sr7"};
    QCOMPARE(desk.writer->discStatus(), DVDWriterPro::kBlankDisc);
    QVERIFY(!desk.writer->discHoldsData());
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"error 6 0 "});
    QVERIFY(desk.description.contains("Another program is using \"/dev/sr7\""));
    QCOMPARE(desk.drive->writes.load(), 0);
}

void TestDiscWriter::discStatus_whileWriting_doesNotDisturb()
{
    Desk desk;
    desk.ready();
    std::atomic<bool> go = false;
    desk.drive->onWrite = [&](const BurnJob&, BurnObserver&) {
        comesTrue([&] { return go.load(); });
        return std::nullopt;
    };
    QVERIFY(desk.writer->start());
    QTRY_COMPARE(desk.drive->writes.load(), 1);
    desk.writer->discStatus();
    QVERIFY(!desk.writer->initializeDrives(false));
    QVERIFY(!desk.writer->selectDrive(1));
    go = true;
    QVERIFY(desk.ended());
}

void TestDiscWriter::addAudioTrack_beyond99_isRefused()
{
    Desk desk;
    const QString path = desk.track(588);
    for (int n = 1; n <= 99; ++n)
        QVERIFY(desk.writer->addAudioTrack(path));
    QVERIFY(!desk.writer->addAudioTrack(path));
    QCOMPARE(desk.writer->trackCount(), 99);
    QVERIFY(!desk.writer->addAudioTrack(desk.folder.filePath("missing.wav")));
}

void TestDiscWriter::start_withoutDriveOrTracks_isRefused()
{
    Desk desk;
    desk.writer->addAudioTrack(desk.track(588));
    QVERIFY(!desk.writer->start());
    Desk other;
    other.ready(0, 0);
    QVERIFY(!other.writer->start());
    QTest::qWait(150);
    QVERIFY(desk.events.isEmpty() && other.events.isEmpty() && desk.ends.isEmpty() && other.ends.isEmpty());
}

void TestDiscWriter::start_whileWriting_isRefused()
{
    Desk desk;
    desk.ready(1);
    QVERIFY(desk.writer->start());
    QVERIFY(!desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.images().size(), 2);
}

void TestDiscWriter::write_toAnImage_tellsEverythingInOrder()
{
    Desk desk;
    desk.ready(1, 2);
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"completed"});
    QCOMPARE(desk.events, (QStringList{"preparing", "reading 1.wav 300 1", "closing 1", "reading 2.wav 300 2",
                                       "closing 2", "closing disc"}));
    QCOMPARE(desk.images().size(), 2);
    QCOMPARE(desk.positions.last(), std::tuple(2, 705600, 705600));
}

void TestDiscWriter::write_afterAnEnd_canStartAgain()
{
    Desk desk;
    desk.ready(1);
    for (int n = 0; n < 3; ++n) {
        desk.ends.clear();
        desk.writer->setTestWrite(n == 1);
        QVERIFY(desk.writer->start());
        QVERIFY(desk.ended());
        QCOMPARE(desk.ends, QStringList{"completed"});
    }
    QCOMPARE(desk.images().size(), 4);
}

void TestDiscWriter::write_fromTheEndEvent_canStartAgain()
{
    Desk desk;
    desk.ready(1);
    int started = 0;
    connect(desk.writer.get(), &DVDWriterPro::WriteCompleted, desk.writer.get(),
            [&] { started += started < 2 && desk.writer->start() ? 1 : 0; });
    QVERIFY(desk.writer->start());
    QTRY_COMPARE_WITH_TIMEOUT(desk.ends.size(), 3, 60'000);
    QCOMPARE(started, 2);
}

void TestDiscWriter::write_whenTheTracksDoNotFit_isPastTheEnd_data()
{
    QTest::addColumn<int>("capacity");
    QTest::addColumn<bool>("fits");
    QTest::newRow("exactly") << 2 * 450 << true;
    QTest::newRow("one frame short") << 2 * 450 - 1 << false;
    QTest::newRow("unknown, which is no limit") << 0 << true;
}

void TestDiscWriter::write_whenTheTracksDoNotFit_isPastTheEnd()
{
    QFETCH(int, capacity);
    QFETCH(bool, fits);
    Desk desk;
    desk.ready(0, 2);
    desk.drive->medium = Medium{.status = DVDWriterPro::kBlankDisc, .capacity = CdTime::fromFrames(capacity)};
    desk.writer->setCacheLocally(true);
    desk.writer->setCacheFolder(desk.folder.filePath("cache"));
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{fits ? "completed" : "error 3 1021 [5 21 00]"});
    QCOMPARE(desk.drive->writes.load(), fits ? 1 : 0);
    QCOMPARE(desk.percents.isEmpty(), !fits);
    QCOMPARE(desk.description.contains("00:12:00"), !fits);
}

void TestDiscWriter::write_whenTheDiscIsWrong_isRefused_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("data");
    QTest::addColumn<QString>("end");
    QTest::newRow("no disc") << DVDWriterPro::kNoDisc << false << "error 3 1033 [2 3A 00]";
    QTest::newRow("unusable") << DVDWriterPro::kUnusableDisc << false << "error 7 0 ";
    QTest::newRow("with data") << DVDWriterPro::kAppendableDisc << true << "error 7 0 ";
    QTest::newRow("appendable but empty") << DVDWriterPro::kAppendableDisc << false << "completed";
}

void TestDiscWriter::write_whenTheDiscIsWrong_isRefused()
{
    QFETCH(int, status);
    QFETCH(bool, data);
    Desk desk;
    desk.ready();
    desk.drive->medium = Medium{.status = status, .holdsData = data, .capacity = CdTime::fromFrames(360'000)};
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QTEST(desk.ends.value(0), "end");
}

void TestDiscWriter::write_whenASourceChanged_saysWhatToDo_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<bool>("cached");
    for (const bool cached : {false, true}) {
        QTest::addRow("removed%s", cached ? ", cached" : "") << "removed" << cached;
        QTest::addRow("changed%s", cached ? ", cached" : "") << "changed" << cached;
        QTest::addRow("in size and time as before%s", cached ? ", cached" : "") << "disguised" << cached;
    }
}

void TestDiscWriter::write_whenASourceChanged_saysWhatToDo()
{
    QFETCH(QString, change);
    QFETCH(bool, cached);
    Desk desk;
    desk.ready(1, 2);
    desk.writer->setCacheLocally(cached);
    desk.writer->setCacheFolder(desk.folder.filePath("cache"));
    const QString path = desk.folder.filePath("2.wav");
    if (change == "removed")
        QFile::remove(path);
    else if (change == "disguised")
        QVERIFY(disguise(path));
    else
        put(path, cdWav(sound(600 * 588)));
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"error 1 0 "});
    QVERIFY(desk.description.contains(path) && desk.description.contains("Prepare the list again"));
    QCOMPARE(desk.images(), QStringList());
}

void TestDiscWriter::write_whenASourceChanged_neverTouchesTheDrive()
{
    Desk desk;
    desk.ready(0, 2);
    QFile::remove(desk.folder.filePath("2.wav"));
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"error 1 0 "});
    QCOMPARE(desk.drive->looks + desk.drive->writes, 0);
}

void TestDiscWriter::write_settings_reachTheRecorder()
{
    Desk desk;
    desk.ready();
    desk.writer->setWriteSpeed(706);
    desk.writer->setTestWrite(true);
    desk.writer->setBufferProtection(true);
    desk.writer->setWriteMode(0);
    desk.writer->setCloseSession(false);
    desk.writer->setCloseDisc(true);
    QVERIFY(desk.writer->testWrite());
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    const BurnJob job = desk.drive->jobs.value(0);
    QCOMPARE(job.speed, 706);
    QVERIFY(job.simulate && job.bufferProtection && !job.closeSession && job.closeDisc);
    QCOMPARE(job.writeMode, 0);
    QCOMPARE(job.totalLength().frames(), 450);
    desk.writer->selectDrive(0);
    desk.ends.clear();
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.drive->jobs.value(1).speed, 0);
}

void TestDiscWriter::write_atNoSpeed_leavesItToTheDrive()
{
    for (const auto& [asked, given] : {std::pair(1, 1), {0, 0}, {-1, 0}}) {
        Desk desk;
        desk.ready();
        desk.writer->setWriteSpeed(706);
        desk.writer->setWriteSpeed(asked);
        QVERIFY(desk.writer->start());
        QVERIFY(desk.ended());
        QCOMPARE(desk.drive->jobs.value(0).speed, given);
    }
}

void TestDiscWriter::progress_ofAFastAndUnsteadyRecorder_isThrottledAndNeverFalls()
{
    Desk desk;
    desk.ready(0, 2);
    desk.drive->onWrite = [&](const BurnJob&, BurnObserver& observer) {
        for (int track = 1; track <= 2; ++track) {
            observer.readingTrack(track);
            for (int n = 0; n < 200'000; ++n)
                observer.progress(track, n % 7 == 0 ? 0 : n * 10, 705'600);
            observer.progress(1, 5, 705'600);
        }
        observer.closingDisc();
        return std::nullopt;
    };
    QElapsedTimer clock;
    clock.start();
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QVERIFY(desk.positions.size() <= clock.elapsed() / 50 + 6);
    auto before = std::tuple(0, 0, 0);
    for (const auto& position : desk.positions) {
        QVERIFY(position >= before);
        before = position;
    }
    QVERIFY(desk.positions.contains(std::tuple(1, 705600, 705600)));
    QCOMPARE(desk.positions.last(), std::tuple(2, 705600, 705600));
}

void TestDiscWriter::progress_whenTheRecorderSkipsTheEnd_endsAtTheFullSize()
{
    Desk desk;
    desk.ready(0, 3);
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.positions.size(), 3);
    QCOMPARE(desk.positions.last(), std::tuple(3, 705600, 705600));
}

void TestDiscWriter::cache_always_servesTheRecorderAndLeavesNothing()
{
    Desk desk;
    desk.ready(0, 2);
    desk.writer->setCacheLocally(true);
    desk.writer->setCacheFolder(desk.folder.filePath("deep/cache"));
    QByteArray read;
    QStringList named;
    desk.drive->onWrite = [&](const BurnJob& job, BurnObserver&) {
        named = QDir(desk.folder.filePath("deep/cache")).entryList(QDir::Files | QDir::Hidden);
        QFile::remove(desk.folder.filePath("2.wav"));
        TrackSource source;
        if (source.open(job.tracks[1])) {
            read.resize(source.size());
            (void)source.read(read.data(), read.size());
        }
        return std::nullopt;
    };
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"completed"});
    QVERIFY(read == sound(300 * 588, 2));
    QCOMPARE(named, QStringList()); // nothing would be left of them if the program were killed now
    QVERIFY(std::is_sorted(desk.percents.begin(), desk.percents.end()));
    QCOMPARE(desk.percents.last(), 100);
    QCOMPARE(QDir(desk.folder.filePath("deep/cache"))
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
    QCOMPARE(desk.drive->jobs[0].tracks[1].name, desk.folder.filePath("2.wav"));
}

void TestDiscWriter::cache_whenThereIsNoRoom_saysWhatToDo()
{
    Desk desk;
    desk.ready();
    desk.writer->setCacheLocally(true);
    desk.writer->setCacheFolder(desk.folder.filePath("cache"));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{100'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const bool started = desk.writer->start();
    const bool ended = desk.ended();
    setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(started && ended);
    QCOMPARE(desk.ends, QStringList{"error 2 0 "});
    QVERIFY(desk.description.contains(desk.folder.filePath("cache")));
    QCOMPARE(desk.drive->writes.load(), 0);
    QVERIFY(
        QDir(desk.folder.filePath("cache")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void TestDiscWriter::cache_whenTheFolderCannotBeMade_saysWhatToDo()
{
    Desk desk;
    desk.ready();
    desk.writer->setCacheLocally(true);
    desk.writer->setCacheFolder(put(desk.folder.filePath("file"), "in the way"));
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"error 2 0 "});
    QVERIFY(desk.description.contains(desk.folder.filePath("file")));
}

void TestDiscWriter::cache_afterAnError_leavesNothing()
{
    Desk desk;
    desk.ready();
    desk.writer->setCacheLocally(true);
    desk.writer->setCacheFolder(desk.folder.filePath("cache"));
    desk.drive->onWrite = [](const BurnJob&, BurnObserver&) {
        return BurnError::withSense(1008, "[3 0C 09]");
    };
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"error 3 1008 [3 0C 09]"});
    QVERIFY(
        QDir(desk.folder.filePath("cache")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void TestDiscWriter::cancel_beforeAndDuringTheWrite_givesOneEnd_data()
{
    QTest::addColumn<QString>("stage");
    for (const char* stage : {"at once", "preparing", "inspecting", "caching", "writing"})
        QTest::newRow(stage) << QString(stage);
}

void TestDiscWriter::cancel_beforeAndDuringTheWrite_givesOneEnd()
{
    QFETCH(QString, stage);
    Desk desk;
    desk.ready(1, 3);
    if (stage == "inspecting" || stage == "writing") {
        desk.writer->selectDrive(0);
        const auto cancelHere = [&] {
            QMetaObject::invokeMethod(
                desk.writer.get(), [&] { desk.writer->cancel(); }, Qt::QueuedConnection);
        };
        if (stage == "inspecting")
            desk.drive->onInspect = [&, cancelHere] {
                cancelHere();
                QThread::msleep(300);
            };
        desk.drive->onWrite = [&, cancelHere](const BurnJob& job, BurnObserver&) -> std::optional<BurnError> {
            cancelHere();
            comesTrue([&] { return job.isCancelled(); });
            return BurnError::byUser();
        };
    }
    std::atomic<bool> asked = false;
    if (stage == "at once") { // The worker is not to be faster than the user.
        desk.writer->selectDrive(0);
        desk.drive->onInspect = [&asked] { comesTrue([&asked] { return asked.load(); }); };
    }
    if (stage == "caching") {
        desk.writer->selectDrive(0);
        desk.writer->setCacheLocally(true);
        desk.writer->setCacheFolder(desk.folder.filePath("cache"));
        desk.drive->onWrite = [](const BurnJob& job, BurnObserver&) -> std::optional<BurnError> {
            comesTrue([&job] { return job.isCancelled(); });
            return BurnError::byUser();
        };
    }
    if (stage == "preparing")
        connect(desk.writer.get(), &DVDWriterPro::PreparingToWrite, desk.writer.get(),
                [&] { desk.writer->cancel(); });
    QVERIFY(desk.writer->start());
    if (stage == "at once" || stage == "caching")
        desk.writer->cancel();
    asked = true;
    QVERIFY(desk.ended());
    QVERIFY(desk.ends[0] == "cancelled" || (stage == "preparing" && desk.ends[0] == "completed"));
    QCOMPARE(desk.images().size(), desk.ends[0] == "cancelled" ? 0 : 2);
}

void TestDiscWriter::cancel_whenNothingRuns_doesNothing()
{
    Desk desk;
    desk.ready(1);
    desk.writer->cancel();
    QVERIFY(desk.writer->start());
    QVERIFY(desk.ended());
    QCOMPARE(desk.ends, QStringList{"completed"});
    desk.writer->cancel();
    QTest::qWait(100);
    QCOMPARE(desk.ends.size(), 1);
}

void TestDiscWriter::destroy_whileWriting_endsTheWriteAndSaysNothing()
{
    Desk desk;
    desk.ready();
    std::atomic<bool> left = false;
    desk.drive->onWrite = [&](const BurnJob& job, BurnObserver&) {
        left = comesTrue([&] { return job.isCancelled(); });
        return BurnError::byUser();
    };
    QVERIFY(desk.writer->start());
    QTRY_COMPARE(desk.drive->writes.load(), 1);
    desk.writer.reset();
    QTRY_VERIFY(left);
    QTest::qWait(150);
    QCOMPARE(desk.ends, QStringList());
}

void TestDiscWriter::finish_withEject_handsTheDiscOut()
{
    Desk desk;
    desk.ready();
    desk.writer->finish(false);
    desk.writer->finish(true);
    QTRY_COMPARE(desk.drive->ejects.load(), 1);
}

void TestDiscWriter::makeDiscWriter_always_endsWithImages()
{
    QTemporaryDir folder;
    const auto writer = makeDiscWriter(folder.filePath("Images"));
    writer->initializeDrives(false);
    QVERIFY(writer->driveCount() >= 1);
    QVERIFY(writer->driveText2(writer->driveCount() - 1).contains("image"));
}

QTEST_GUILESS_MAIN(TestDiscWriter)
#include "tst_discwriter.moc"
