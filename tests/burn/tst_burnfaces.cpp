#include "burn/frmPrepare.h"
#include "burn/frmWrite.h"
#include "faces/Face.h"
#include "faces/Look.h"
#include "faces/World.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeDVDWriterPro.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace zib;

namespace {

FakeDrive drive(const char* path, const char* model, bool protects, const QList<WriteSpeed>& speeds)
{
    FakeDrive made;
    made.path = path;
    made.maker = "FINE";
    made.model = model;
    made.bufferProtection = protects;
    made.speeds = speeds;
    return made;
}

/// The writing window over a faked writer and real, empty track files.
struct Writing
{
    explicit Writing(const QString& name,
                     const QList<FakeDrive>& drives = {drive("/dev/sr0", "ONE", true, {{16, 2822}, {4, 706}}),
                                                       drive("/dev/sr1", "TWO", false, {{8, 1411}})})
        : face(name)
    {
        face.replace(folder.path(), "FOLDER");
        face.leaveOut("~minutes");
        for (const char* track : {"1.wav", "2.wav", "3.wav"}) {
            QFile file(folder.filePath(track));
            if (file.open(QIODevice::WriteOnly))
                files << file.fileName();
        }
        names.title = "My disc";
        names.tracks = {{"First", "Somebody"}, {}, {"Third", ""}};
        OptionsData options;
        options.CacheFilesLocally = false;
        options.Temporary = folder.filePath("temporary").leftJustified(1024);
        setOptions(options);
        writer->drives = drives;
        desk.components.makeWriter = [this] { return std::unique_ptr<DVDWriterPro>(writer); };
    }
    void set(bool OptionsData::*field, bool on)
    {
        OptionsData options = gOptions;
        options.*field = on;
        setOptions(options);
    }
    void show()
    {
        window = std::make_unique<frmWrite>(desk.services, files, names);
        window->show();
        window->activateWindow();
    }
    bool open()
    {
        show();
        return QTest::qWaitForWindowActive(window.get(), 30'000) &&
               QTest::qWaitFor([this] { return find<QPushButton>("cmdWrite")->isEnabled(); }, 30'000);
    }
    Words words() const
    {
        Words said;
        said.sayWindow(window.get());
        sayWorld(said, desk);
        sayAll(said, "~writer", writer->calls);
        for (auto track = writer->trackNames.begin(); track != writer->trackNames.end(); ++track)
            said.say(QString("~name %1").arg(track.key()), track->title + " by " + track->artist);
        said.say("~title", writer->discTitle);
        said.say("~folders", QDir(folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(' '));
        return said;
    }
    void stage(const QString& title) { face.stage(title, words()); }
    template <typename Control>
    Control* find(const char* name) const
    {
        return window->findChild<Control*>(name);
    }
    void press(const char* name) const { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }

    QTemporaryDir folder;
    Face face;
    FakeDesk desk;
    FakeDVDWriterPro* writer = new FakeDVDWriterPro;
    QStringList files;
    DiscNames names;
    std::unique_ptr<frmWrite> window;
};

/// The preparing window over an imagined shelf of sounds, in a real application folder.
struct Preparing
{
    Preparing()
    {
        setApplicationFolder(folder.path());
        desk.components.makeInformation = [this] { return std::make_unique<FakeAudioInformation>(shelf); };
        desk.components.makeFile = [this] { return std::make_unique<FakeAudioFile>(shelf); };
    }
    void add(const QString& name, const FakeSound& sound)
    {
        CompilationRow row;
        row.fileName = name;
        row.location = "/music/";
        rows << row;
        shelf.sounds.insert(row.path(), sound);
    }
    Words words(const frmPrepare& window)
    {
        Words said;
        said.sayWindow(&const_cast<frmPrepare&>(window));
        sayWorld(said, desk);
        return said;
    }

    QTemporaryDir folder;
    FakeDesk desk;
    FakeAudioShelf shelf;
    QList<CompilationRow> rows;
};

/// Does something whenever a widget is painted.
class AtEveryPaint final : public QObject
{
public:
    AtEveryPaint(QWidget* widget, std::function<void()> act) : QObject(widget), m_act(std::move(act))
    {
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_act();
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_act;
};

} // namespace

/// The windows of the way to a disc in words, at rest and at work.
class TestBurnFaces : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { dressUp(); }

    void write_aWholeDisc()
    {
        Writing w("frmWrite");
        w.show();
        w.stage("before the drives are known");
        QTRY_VERIFY(w.find<QPushButton>("cmdWrite")->isEnabled());
        QVERIFY(QTest::qWaitForWindowActive(w.window.get(), 30'000));
        w.stage("two drives");
        w.press("cmdWrite");
        QTRY_VERIFY(w.writer->running);
        w.stage("started");
        emit w.writer->PreparingToWrite();
        emit w.writer->Remark("A remark.");
        w.stage("preparing");
        emit w.writer->CachingProgress(33);
        w.stage("caching");
        emit w.writer->ReadingTrack("1.wav", 9000, 1);
        w.stage("reading the first");
        emit w.writer->WritingProgress(1, 500, 1000);
        w.stage("half of the first of three");
        emit w.writer->ClosingTrack(1);
        QTest::keyClick(w.window.get(), Qt::Key_Escape);
        w.stage("closing the first, Escape does nothing");
        emit w.writer->ReadingTrack("10.wav", 75, 10);
        emit w.writer->WritingProgress(3, 1000, 1000);
        w.stage("the last");
        emit w.writer->WritingProgress(3, 1, 0);
        emit w.writer->Waiting("Waiting for the drive: it is becoming ready");
        w.stage("waiting");
        emit w.writer->ClosingDisc();
        w.stage("closing the disc");
        emit w.writer->ComparingTrack(2, 50, 200);
        w.stage("comparing");
        w.writer->running = false;
        emit w.writer->WriteCompleted();
        w.stage("completed");
        w.set(&OptionsData::TestMode, true);
        w.set(&OptionsData::CacheFilesLocally, true);
        w.set(&OptionsData::BufferProtection, true);
        w.set(&OptionsData::VerifyAfterWriting, true);
        w.press("cmdWrite");
        QTRY_VERIFY(w.writer->running);
        w.stage("again, with every setting the other way round");
        w.writer->running = false;
        emit w.writer->WriteCompleted();
        w.stage("the test is completed");
        w.press("cmdOptions");
        w.press("cmdExit");
        w.stage("options and exit");
        COMPARE_FACE(w.face);
    }

    void write_thatIsCancelledOrFails()
    {
        Writing w("frmWrite_ends");
        QVERIFY(w.open());
        w.face.begin(w.words());
        w.writer->obeysCancel = false;
        w.press("cmdWrite");
        QTRY_VERIFY(w.writer->running);
        emit w.writer->PreparingToWrite();
        w.press("cmdCancel");
        w.stage("cancelling");
        emit w.writer->WritingProgress(2, 1, 4);
        emit w.writer->ClosingDisc();
        w.stage("what goes on is no news");
        w.writer->running = false;
        emit w.writer->WriteCancelled();
        w.stage("cancelled");
        for (const auto& [code, sense] : {std::pair{DVDWriterPro::kDriveError, 1004}, {7, 1004}}) {
            w.press("cmdWrite");
            QTRY_VERIFY(w.writer->running);
            w.writer->running = false;
            emit w.writer->WriteError(code, sense, "What happened", "[3 0C 00]");
            w.stage(QString("error %1").arg(code));
        }
        for (const char* focus : {"cboDevices", "cmdOptions", "cmdExit"}) {
            w.find<QWidget>(focus)->setFocus();
            w.find<QPushButton>("cmdWrite")->click();
            QTRY_VERIFY(w.writer->running);
            w.stage(QString("started while %1 has the focus").arg(focus));
            w.writer->running = false;
            emit w.writer->WriteCancelled();
            w.stage("cancelled again");
        }
        w.writer->starts = false;
        w.press("cmdWrite");
        QTRY_COMPARE(w.desk.messages.shown.size(), 3);
        w.stage("not started");
        w.writer->toldTracks = 0;
        w.press("cmdWrite");
        QTRY_COMPARE(w.desk.messages.shown.size(), 4);
        w.stage("not started for want of tracks");
        w.writer->starts = true;
        w.writer->toldTracks = -1;
        w.press("cmdWrite");
        QTRY_VERIFY(w.writer->running);
        w.window->close();
        w.stage("closed while it writes");
        QCOMPARE(w.desk.windows.kept.size(), std::size_t{1});
        w.writer->running = false;
        emit w.writer->ClosingDisc();
        emit w.writer->WriteCompleted();
        w.stage("and its end is somebody else's to tell");
        COMPARE_FACE(w.face);
    }

    void write_ofDrivesAndDiscs()
    {
        Writing w("frmWrite_drives");
        FakeDrive reader = drive("/dev/sr2", "READER", false, {});
        reader.writesCdR = reader.writesCdRw = false;
        FakeDrive data = drive("/dev/sr3", "DATA", false, {});
        data.writesAudio = false;
        FakeDrive rewriter = drive("/dev/sr4", "REWRITER", true, {{2, 353}});
        rewriter.writesCdR = false;
        w.writer->drives = {reader, data, rewriter, w.writer->drives[0]};
        w.writer->initializes = false;
        w.writer->refused = {w.files[1]};
        QVERIFY(QFile::remove(w.files[2]));
        QVERIFY(w.open());
        w.face.begin(Words());
        w.stage("two of four that can write");
        w.find<QComboBox>("cboDevices")->setCurrentIndex(1);
        w.stage("the second");
        w.find<QComboBox>("cboWriteSpeed")->setCurrentIndex(1);
        w.stage("its first speed");
        w.find<QComboBox>("cboWriteSpeed")->setCurrentIndex(0);
        w.stage("and its own again");
        emit w.find<QComboBox>("cboDevices")->activated(1);
        emit w.find<QComboBox>("cboDevices")->activated(1);
        w.stage("chosen again");
        int boxes = static_cast<int>(w.desk.messages.shown.size());
        for (const int status : {DVDWriterPro::kNoDisc, DVDWriterPro::kUnusableDisc, 252, 256}) {
            w.writer->drives[3].status = status;
            w.press("cmdWrite");
            ++boxes;
            QTRY_COMPARE(w.desk.messages.shown.size(), boxes);
            w.stage(QString("a disc of status %1").arg(status));
        }
        w.writer->drives[3].status = DVDWriterPro::kAppendableDisc;
        w.writer->drives[3].holdsData = true;
        w.press("cmdWrite");
        QTRY_COMPARE(w.desk.messages.shown.size(), boxes + 1);
        w.stage("a disc with something on it");
        w.writer->drives[3].holdsData = false;
        w.press("cmdWrite");
        QTRY_VERIFY(w.writer->running);
        w.stage("an open disc with nothing on it");
        COMPARE_FACE(w.face);
    }

    void write_withoutDrives()
    {
        Writing w("frmWrite_nodrive", {});
        QVERIFY(w.open());
        w.face.begin(Words());
        w.stage("no drive");
        w.press("cmdWrite");
        QTRY_COMPARE(w.desk.messages.shown.size(), 1);
        w.stage("nothing to write with");
        COMPARE_FACE(w.face);
    }

    void prepare_threeTracks()
    {
        Preparing p;
        Face face("frmPrepare");
        face.replace(p.folder.path(), "FOLDER");
        p.add("whole.mp3", FakeAudioShelf::ramp(4 * 8000, 8000, 1));
        p.add("ready.wav", FakeAudioShelf::ramp(100, 44'100, 2));
        FakeSound damaged = FakeAudioShelf::ramp(8 * 4000, 4000, 2);
        damaged.loss = {.first = 4000, .frames = 3};
        p.add("damaged <1>.mp3", damaged);
        frmPrepare window(p.desk.services, p.rows);
        face.stage("not yet shown", p.words(window));
        window.show();
        face.stage("shown", p.words(window));
        face.leaveOut("frmPrepare.focus");
        auto* percent = window.findChild<QLabel*>("lblPer");
        QStringList seen;
        new AtEveryPaint(percent, [&] {
            if (seen.contains(percent->text()))
                return;
            seen << percent->text();
            if (seen.last() == "25%" || seen.last() == "75%")
                face.stage("at " + seen.last(), p.words(window));
        });
        QTRY_VERIFY(!window.isVisible());
        Words words = p.words(window);
        sayAll(words, "~track", window.trackFiles());
        words.say("~percents", seen.join(' '));
        words.say("~made", QDir(p.folder.filePath("Temp")).entryList(QDir::Files).join(' '));
        face.stage("done", words);
        COMPARE_FACE(face);
    }

    /// What could not be prepared is told when it is to be written.
    void prepare_whatCannotBeRead()
    {
        Writing w("frmPrepare_failing");
        Preparing p;
        w.face.replace(p.folder.path(), "PLACE");
        QVERIFY(QDir(p.folder.path()).mkpath("Temp"));
        QVERIFY(QFile(p.folder.filePath("Temp/one.wav")).open(QIODevice::WriteOnly));
        p.add("one.mp3", FakeAudioShelf::ramp(8000, 8000, 1));
        FakeSound broken = FakeAudioShelf::ramp(8000, 4000, 2);
        broken.failAtSample = 9000;
        p.add("broken.mp3", broken);
        p.add(QString(60, 'x') + ".mp3", FakeAudioShelf::ramp(3, 16'000, 1));
        p.shelf.refusedTargets = {p.folder.filePath("Temp/" + QString(60, 'x') + ".wav")};
        frmPrepare window(p.desk.services, p.rows);
        window.show();
        QTRY_VERIFY(!window.isVisible());
        Words words = p.words(window);
        sayAll(words, "~track", window.trackFiles());
        words.say("~made", QDir(p.folder.filePath("Temp")).entryList(QDir::Files).join(' '));
        w.face.leaveOut("frmPrepare.");
        w.face.stage("prepared", words);
        w.files = window.trackFiles();
        QVERIFY(w.open());
        Words written;
        sayWorld(written, w.desk);
        sayAll(written, "~writer", w.writer->calls);
        w.face.stage("to be written", written);
        COMPARE_FACE(w.face);
    }
};

QTEST_MAIN(TestBurnFaces)
#include "tst_burnfaces.moc"
