#include "burn/PreparedFiles.h"
#include "burn/frmPrepare.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeSeams.h"

#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <array>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>

using namespace zib;

namespace {

CompilationRow rowOf(const QString& name)
{
    CompilationRow row;
    row.fileName = name;
    row.location = "/music/";
    return row;
}

/// The preparing window over an imagined shelf of sounds and a real application folder.
struct Desk
{
    Desk()
    {
        setApplicationFolder(folder.path());
        desk.components.makeInformation = [this] { return std::make_unique<FakeAudioInformation>(shelf); };
        desk.components.makeFile = [this] { return std::make_unique<FakeAudioFile>(shelf); };
    }
    QString temp(const QString& name) const { return folder.filePath("Temp/" + name); }
    void add(const QString& name, const std::optional<FakeSound>& sound)
    {
        rows << rowOf(name);
        if (sound)
            shelf.sounds.insert(rows.last().path(), *sound);
    }
    /// A sound of @p seconds that must be converted.
    static FakeSound mono(int seconds, int rateHz = 8000)
    {
        return FakeAudioShelf::ramp(qint64{seconds} * rateHz, rateHz, 1);
    }
    void open()
    {
        window = std::make_unique<frmPrepare>(desk.services, rows);
        window->show();
    }
    /// Runs the whole preparation. @returns whether the window closed by itself.
    bool run()
    {
        open();
        return QTest::qWaitFor([this] { return !window->isVisible(); }, 60'000);
    }
    template <typename Control>
    Control* control(const char* name) const
    {
        return window->findChild<Control*>(name);
    }

    QTemporaryDir folder;
    FakeDesk desk;
    FakeAudioShelf shelf;
    QList<CompilationRow> rows;
    std::unique_ptr<frmPrepare> window;
};

/// Watches a label or bar change.
struct Watcher final : QObject
{
    explicit Watcher(Desk& watched) : desk(watched) {}
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && desk.window) {
            files << desk.control<QLabel>("lblFile")->text();
            percents << desk.control<QLabel>("lblPer")->text();
            bars << desk.control<QProgressBar>("pbPer")->value();
            pointers << desk.window->cursor().shape();
            if (onPaint)
                onPaint();
        }
        return QObject::eventFilter(object, event);
    }

    Desk& desk;
    QStringList files;
    QStringList percents;
    QList<int> bars;
    QList<Qt::CursorShape> pointers;
    std::function<void()> onPaint;
};

/// A reader that tells formats whose product is beyond 32 bits.
class MonstrousFile final : public AudioFile
{
public:
    explicit MonstrousFile(QStringList& calls) : m_calls(calls) {}
    int open(const QString&) override { return 0; }
    int create(const QString&) override { return 0; }
    int status() const override { return 0; }
    void setOutputFormat(int, int, int) override {}
    void setRateAndChannels(int, int) override {}
    void setInputFormat(int, int) override {}
    int formatRate() const override { return std::numeric_limits<int>::max(); }
    int formatChannels() const override { return 2; }
    qint64 length() const override { return 1; }
    int samplesPerUnit() const override { return 2; }
    void setSixteenBitBlocks(bool) override {}
    AudioBlock readBlock(qint32) override
    {
        m_calls << "read";
        return {};
    }
    qint64 seek(qint64) override { return 0; }
    void writeBlock(const AudioBlock&) override {}
    void close() override { m_calls << "close"; }
    void discard() override { m_calls << "discard"; }

private:
    QStringList& m_calls;
};

} // namespace

/// The preparing window, from its first tick to its end.
class TestFrmPrepare : public QObject
{
    Q_OBJECT
private slots:
    void form_atDesignTime_hasItsTexts();
    void load_always_setsTheCdFormatAndWaitsForItsTick();
    void prepare_anEmptyList_closes();
    void prepare_cdWavs_touchesNothing();
    void prepare_aMixedList_convertsWhatNeedsIt();
    void prepare_oneFile_callsItsComponentsInOrder();
    void prepare_blocks_areOneSecondOfAllChannels();
    void prepare_always_showsFileAndPercentOverAll();
    void prepare_percents_roundHalvesToEven();
    void prepare_whileConverting_showsTheHourglass();
    void prepare_aMissingSource_isSkippedSilently();
    void prepare_aRefusedTarget_isSkippedSilently();
    void prepare_aSourceThatBreaks_leavesNoTrack();
    void prepare_aFullStorage_leavesNoTrack();
    void prepare_aSilentNothing_leavesNoTrack();
    void prepare_aFormatBeyond32Bits_isAbandoned();
    void prepare_moreThan16BitsCanCount_convertsNothing();
    void prepare_whenTempCannotBeMade_saysSoOnceAndEnds();
    void close_whileWorking_isNotPossible();
    void abandon_whileASourceHangs_endsAtOnceAndLeavesNothing();
    void abandon_beforeTheFirstTick_beginsNothing();
    void work_whileItLasts_keepsTheSystemAwake();
    void form_always_offersNoWayOut();
    void aLongFileName_endsInAnEllipsisAndStaysWhole();
    void aPreparedFile_thatChangesAfterwards_isNoticed();
    void aPreparedFile_rewrittenInItsOldSizeAndTime_isNoticed();
    void damagedSources_ofEveryKind_areNamedOnceBeforeTheWindowCloses();
    void damagedSources_thatGaveNoTrack_areNotNamed();
    void damagedSources_ofAnyLength_areTold_data();
    void damagedSources_ofAnyLength_areTold();
    void damagedSources_thatAreMany_areCutOff();
};

void TestFrmPrepare::form_atDesignTime_hasItsTexts()
{
    Desk desk;
    desk.window = std::make_unique<frmPrepare>(desk.desk.services, desk.rows);
    QCOMPARE(desk.control<QLabel>("Label1")->text(), QString("Preparing Audio Files for Writing ..."));
    QCOMPARE(desk.control<QLabel>("lblFile")->text(), QString("File:"));
    QCOMPARE(desk.control<QLabel>("lblFile")->textFormat(), Qt::PlainText);
    QCOMPARE(desk.control<QLabel>("lblPer")->text(), QString("0%"));
    QCOMPARE(desk.control<QProgressBar>("pbPer")->value(), 0);
    QCOMPARE(desk.control<QProgressBar>("pbPer")->maximum(), 100);
}

void TestFrmPrepare::load_always_setsTheCdFormatAndWaitsForItsTick()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(1));
    desk.window = std::make_unique<frmPrepare>(desk.desk.services, desk.rows);
    QCOMPARE(desk.shelf.calls, QStringList{"output 44100 2 16"});
    QVERIFY(desk.window->trackFiles().isEmpty());
}

void TestFrmPrepare::prepare_anEmptyList_closes()
{
    Desk desk;
    QVERIFY(desk.run());
    QVERIFY(desk.window->trackFiles().isEmpty());
}

void TestFrmPrepare::prepare_cdWavs_touchesNothing()
{
    Desk desk;
    desk.add("a.wav", FakeAudioShelf::ramp(1000));
    QVERIFY(desk.run());
    QCOMPARE(desk.window->trackFiles(), QStringList{"/music/a.wav"});
    QVERIFY(!desk.shelf.calls.contains("open /music/a.wav"));
    QVERIFY(desk.shelf.written.isEmpty());
    QCOMPARE(desk.control<QProgressBar>("pbPer")->value(), 0);
    QCOMPARE(desk.control<QLabel>("lblFile")->text(), QString("File:"));
}

void TestFrmPrepare::prepare_aMixedList_convertsWhatNeedsIt()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(3));
    desk.add("b.wav", FakeAudioShelf::ramp(1000));
    desk.add("c.wav", FakeAudioShelf::ramp(50'000, 22050));
    QVERIFY(desk.run());
    QCOMPARE(desk.window->trackFiles(),
             (QStringList{desk.temp("a.wav"), "/music/b.wav", desk.temp("c.wav")}));
    QCOMPARE(desk.shelf.written.size(), 2);
    QCOMPARE(desk.shelf.written[desk.temp("a.wav")].samples, Desk::mono(3).samples);
    QCOMPARE(desk.shelf.written[desk.temp("a.wav")].rateHz, 44100);
    QCOMPARE(desk.shelf.written[desk.temp("c.wav")].samples.size(), 100'000);
    QVERIFY(QFileInfo::exists(desk.temp("a.wav")));
    QCOMPARE(desk.desk.messages.shown, QStringList());
}

void TestFrmPrepare::prepare_oneFile_callsItsComponentsInOrder()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(2));
    QVERIFY(desk.run());
    QStringList calls;
    for (const QString& call : desk.shelf.calls)
        if (!call.startsWith("is") && !call.startsWith("information"))
            calls << call;
    const QString target = desk.temp("a.wav");
    QCOMPARE(calls, (QStringList{"output 44100 2 16", "open /music/a.mp3", "create " + target, "input 8000 1",
                                 "close " + target, "close /music/a.mp3"}));
}

void TestFrmPrepare::prepare_blocks_areOneSecondOfAllChannels()
{
    Desk desk;
    desk.add("a.mp3", FakeAudioShelf::ramp(3 * 22050, 22050, 2));
    desk.shelf.blocksUntilDiskFull = 3;
    QVERIFY(desk.run());
    QCOMPARE(desk.shelf.written.size(), 1);
    Desk small;
    small.add("a.mp3", FakeAudioShelf::ramp(3 * 22050 + 1, 22050, 2));
    small.shelf.blocksUntilDiskFull = 3;
    QVERIFY(small.run());
    QCOMPARE(small.shelf.written.size(), 0);
}

void TestFrmPrepare::prepare_always_showsFileAndPercentOverAll()
{
    Desk desk;
    desk.add("one.mp3", Desk::mono(4));
    desk.add("asis.wav", FakeAudioShelf::ramp(1000));
    desk.add("<i>two.mp3", Desk::mono(10));
    Watcher watcher(desk);
    desk.open();
    desk.window->installEventFilter(&watcher);
    for (const char* name : {"lblFile", "lblPer", "pbPer"})
        desk.window->findChild<QWidget*>(name)->installEventFilter(&watcher);
    QTRY_VERIFY_WITH_TIMEOUT(!desk.window->isVisible(), 60'000);
    QVERIFY(watcher.files.contains("one.mp3"));
    QVERIFY(watcher.files.contains("<i>two.mp3"));
    QVERIFY(!watcher.files.contains("asis.wav"));
    QVERIFY(std::is_sorted(watcher.bars.begin(), watcher.bars.end()));
    QVERIFY(watcher.bars.contains(12) && watcher.bars.contains(38) && watcher.bars.contains(75));
    QVERIFY(watcher.percents.contains("75%"));
    QCOMPARE(desk.control<QLabel>("lblPer")->text(), QString("100%"));
    QCOMPARE(desk.control<QProgressBar>("pbPer")->value(), 100);
}

void TestFrmPrepare::prepare_percents_roundHalvesToEven()
{
    Desk desk;
    desk.add("one.mp3", Desk::mono(8));
    Watcher watcher(desk);
    desk.open();
    desk.window->findChild<QWidget*>("lblPer")->installEventFilter(&watcher);
    QTRY_VERIFY_WITH_TIMEOUT(!desk.window->isVisible(), 60'000);
    for (const char* text : {"12%", "25%", "38%", "50%", "62%", "75%", "88%"})
        QVERIFY2(watcher.percents.contains(text), text);
}

void TestFrmPrepare::prepare_whileConverting_showsTheHourglass()
{
    Desk desk;
    desk.add("one.mp3", Desk::mono(8));
    Watcher watcher(desk);
    desk.open();
    desk.window->findChild<QWidget*>("lblPer")->installEventFilter(&watcher);
    QTRY_VERIFY_WITH_TIMEOUT(!desk.window->isVisible(), 60'000);
    QVERIFY(watcher.pointers.contains(Qt::WaitCursor));
    QCOMPARE(desk.window->cursor().shape(), Qt::ArrowCursor);
}

void TestFrmPrepare::prepare_aMissingSource_isSkippedSilently()
{
    Desk desk;
    desk.add("gone.mp3", std::nullopt);
    desk.add("there.mp3", Desk::mono(1));
    QVERIFY(desk.run());
    QCOMPARE(desk.window->trackFiles(), (QStringList{desk.temp("gone.wav"), desk.temp("there.wav")}));
    QCOMPARE(desk.shelf.written.keys(), QStringList{desk.temp("there.wav")});
    QVERIFY(!desk.shelf.calls.contains("create " + desk.temp("gone.wav")));
    QCOMPARE(desk.control<QLabel>("lblPer")->text(), QString("100%"));
    QCOMPARE(desk.desk.messages.shown, QStringList());
}

void TestFrmPrepare::prepare_aRefusedTarget_isSkippedSilently()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(1));
    desk.add("b.mp3", Desk::mono(1));
    desk.shelf.refusedTargets << desk.temp("a.wav");
    QVERIFY(desk.run());
    QCOMPARE(desk.window->trackFiles().value(0), desk.temp("a.wav"));
    QCOMPARE(desk.shelf.written.keys(), QStringList{desk.temp("b.wav")});
    QVERIFY(desk.shelf.calls.contains("close /music/a.mp3"));
    QCOMPARE(desk.desk.messages.shown, QStringList());
}

void TestFrmPrepare::prepare_aSourceThatBreaks_leavesNoTrack()
{
    Desk desk;
    FakeSound broken = Desk::mono(5);
    broken.failAtSample = 16'000;
    desk.add("broken.mp3", broken);
    desk.add("whole.mp3", Desk::mono(1));
    QVERIFY(desk.run());
    QCOMPARE(desk.shelf.discarded, QStringList{desk.temp("broken.wav")});
    QCOMPARE(PreparedFiles::trouble(desk.temp("broken.wav")),
             QString("This file cannot be read:\n/music/broken.mp3"));
    QCOMPARE(PreparedFiles::trouble(desk.temp("whole.wav")), QString());
    QCOMPARE(desk.shelf.written.keys(), QStringList{desk.temp("whole.wav")});
    QVERIFY(!QFileInfo::exists(desk.temp("broken.wav")));
}

void TestFrmPrepare::prepare_aFullStorage_leavesNoTrack()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(5));
    desk.shelf.blocksUntilDiskFull = 2;
    QVERIFY(desk.run());
    QCOMPARE(desk.shelf.discarded, QStringList{desk.temp("a.wav")});
    QVERIFY(desk.shelf.written.isEmpty());
    QCOMPARE(desk.window->trackFiles(), QStringList{desk.temp("a.wav")});
    QCOMPARE(PreparedFiles::trouble(desk.temp("a.wav")),
             QString("The track of this file cannot be stored, perhaps the disk is full:\n/music/a.mp3"));
}

void TestFrmPrepare::prepare_aSilentNothing_leavesNoTrack()
{
    Desk desk;
    desk.add("empty.mp3", Desk::mono(0));
    QVERIFY(desk.run());
    QVERIFY(desk.shelf.written.isEmpty());
    QCOMPARE(desk.shelf.discarded, QStringList{desk.temp("empty.wav")});
}

void TestFrmPrepare::prepare_aFormatBeyond32Bits_isAbandoned()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(1));
    QStringList calls;
    desk.desk.components.makeFile = [&] { return std::make_unique<MonstrousFile>(calls); };
    QVERIFY(desk.run());
    QCOMPARE(calls, (QStringList{"discard", "close"}));
}

void TestFrmPrepare::prepare_moreThan16BitsCanCount_convertsNothing()
{
    Desk desk;
    for (int n = 0; n < 32'768; ++n)
        desk.rows << rowOf(QString("%1.mp3").arg(n));
    QVERIFY(desk.run());
    QCOMPARE(desk.window->trackFiles().size(), 32'768);
    QVERIFY(!desk.shelf.calls.contains("open /music/0.mp3"));
}

void TestFrmPrepare::prepare_whenTempCannotBeMade_saysSoOnceAndEnds()
{
    Desk desk;
    QFile file(desk.folder.filePath("Temp"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    desk.add("a.mp3", Desk::mono(1));
    desk.add("b.mp3", Desk::mono(1));
    desk.shelf.refusedTargets << desk.temp("a.wav") << desk.temp("b.wav");
    QVERIFY(desk.run());
    QCOMPARE(desk.desk.messages.shown,
             QStringList{"c[Error]: Create directory error: " + desk.folder.filePath("Temp")});
    QCOMPARE(desk.window->trackFiles(), (QStringList{desk.temp("a.wav"), desk.temp("b.wav")}));
}

void TestFrmPrepare::work_whileItLasts_keepsTheSystemAwake()
{
    Desk desk;
    desk.add("one.mp3", Desk::mono(20));
    Watcher watcher(desk);
    QSet<QString> held;
    watcher.onPaint = [&] {
        held += QSet<QString>(desk.desk.inhibitor.held->begin(), desk.desk.inhibitor.held->end());
    };
    desk.open();
    desk.window->findChild<QWidget*>("lblPer")->installEventFilter(&watcher);
    QTRY_VERIFY_WITH_TIMEOUT(!desk.window->isVisible(), 60'000);
    QCOMPARE(held, QSet<QString>{"Tracks are being prepared for a disc"});
    QCOMPARE(*desk.desk.inhibitor.held, QStringList());
}

void TestFrmPrepare::abandon_whileASourceHangs_endsAtOnceAndLeavesNothing()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(2));
    desk.add("b.mp3", Desk::mono(1));
    QSemaphore reading;
    QSemaphore goOn;
    desk.shelf.onRead = [&] {
        reading.release();
        goOn.acquire();
    };
    QTimer ending;
    QObject::connect(&ending, &QTimer::timeout, &ending, [&] {
        if (reading.available() > 0)
            desk.window->abandon();
    });
    ending.start(10);
    QVERIFY(desk.run());
    ending.stop();
    QCOMPARE(desk.shelf.noted().filter("open ").size(), 1);
    goOn.release(100);
    desk.window.reset();
    QCOMPARE(desk.shelf.noted().filter("open "), QStringList{"open /music/a.mp3"});
    QCOMPARE(desk.shelf.written.keys(), QStringList());
    QCOMPARE(desk.desk.messages.shown, QStringList());
    QCOMPARE(*desk.desk.inhibitor.held, QStringList());
}

void TestFrmPrepare::abandon_beforeTheFirstTick_beginsNothing()
{
    Desk desk;
    desk.add("a.mp3", Desk::mono(1));
    desk.open();
    desk.window->abandon();
    QVERIFY(!desk.window->isVisible());
    QTest::qWait(200);
    QCOMPARE(desk.shelf.noted().filter("open "), QStringList());
}

void TestFrmPrepare::close_whileWorking_isNotPossible()
{
    Desk desk;
    desk.add("one.mp3", Desk::mono(20));
    Watcher watcher(desk);
    bool stayed = true;
    watcher.onPaint = [&] {
        QTest::keyClick(desk.window.get(), Qt::Key_Escape);
        desk.window->close();
        desk.window->reject();
        stayed = stayed && desk.window->isVisible();
    };
    desk.open();
    desk.window->findChild<QWidget*>("lblPer")->installEventFilter(&watcher);
    desk.window->close();
    QVERIFY(desk.window->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!desk.window->isVisible(), 60'000);
    QVERIFY(stayed);
    QCOMPARE(desk.shelf.written.keys(), QStringList{desk.temp("one.wav")});
    QCOMPARE(desk.window->result(), int(QDialog::Accepted));
}

void TestFrmPrepare::form_always_offersNoWayOut()
{
    Desk desk;
    desk.window = std::make_unique<frmPrepare>(desk.desk.services, desk.rows);
    QVERIFY(!desk.window->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(desk.window->findChildren<QWidget*>("cmdCancel").isEmpty());
    desk.control<QLabel>("lblFile")->setText(QString(500, 'W'));
    QVERIFY(desk.window->minimumSizeHint().width() < 600);
}

void TestFrmPrepare::aLongFileName_endsInAnEllipsisAndStaysWhole()
{
    Desk desk;
    desk.window = std::make_unique<frmPrepare>(desk.desk.services, desk.rows);
    desk.window->ensurePolished();
    desk.window->resize(440, 130);
    auto* label = desk.control<QLabel>("lblFile");
    const auto shown = [&](const QString& text) {
        label->setText(text);
        return desk.window->grab().toImage();
    };
    const QString name = QString(500, 'W');
    const QImage whole = shown(name);
    QCOMPARE(label->text(), name);
    QCOMPARE(whole, shown(label->fontMetrics().elidedText(name, Qt::ElideRight, label->width())));
    QVERIFY(whole != shown("WWW"));
}

void TestFrmPrepare::aPreparedFile_thatChangesAfterwards_isNoticed()
{
    Desk desk;
    desk.add("one.mp3", FakeAudioShelf::ramp(1000, 22050));
    desk.window = std::make_unique<frmPrepare>(desk.desk.services, desk.rows);
    desk.window->show();
    QTRY_VERIFY_WITH_TIMEOUT(!desk.window->isVisible(), 60'000);
    QVERIFY(!desk.control<QLabel>("lblFile")->toolTip().isEmpty());
    QVERIFY(!PreparedFiles::wasChanged(desk.temp("one.wav")));
    QFile file(desk.temp("one.wav"));
    QVERIFY(file.open(QIODevice::Append));
    file.write("more");
    file.close();
    QVERIFY(PreparedFiles::wasChanged(desk.temp("one.wav")));
    QVERIFY(file.remove());
    QVERIFY(!PreparedFiles::wasChanged(desk.temp("one.wav")));
}

void TestFrmPrepare::aPreparedFile_rewrittenInItsOldSizeAndTime_isNoticed()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("one.wav"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("sound");
    file.close();
    PreparedFiles::note(file.fileName());
    QTest::qWait(20); // The system's clock for files ticks some hundred times a second.
    const QByteArray path = QFile::encodeName(file.fileName());
    struct stat before = {};
    QCOMPARE(::stat(path.constData(), &before), 0);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write("SOUND");
    file.close();
    const std::array times{before.st_atim, before.st_mtim};
    QCOMPARE(::utimensat(AT_FDCWD, path.constData(), times.data(), 0), 0);
    QVERIFY(PreparedFiles::wasChanged(file.fileName()));
}

void TestFrmPrepare::damagedSources_ofEveryKind_areNamedOnceBeforeTheWindowCloses()
{
    Desk desk;
    FakeSound song = Desk::mono(200);
    song.loss = {83 * 8000, 3 * 8000 + 4000};
    FakeSound cut = FakeAudioShelf::ramp(1000);
    cut.loss = {1000, 44100};
    desk.add("song.mp3", song);
    desk.add("whole.mp3", Desk::mono(1));
    desk.add("cut.wav", cut);
    desk.add("song.mp3", song);
    bool wasThere = false;
    desk.desk.messages.onShow = [&](const QString&) {
        wasThere = desk.window->isVisible() && desk.shelf.written.size() == 3;
    };
    QVERIFY(desk.run());
    QVERIFY(wasThere);
    QCOMPARE(desk.desk.messages.shown,
             QStringList{"i: The following files are damaged. What is lost of their sound is silent or left "
                         "out on the disc:\n"
                         "song.mp3: from 1:23 on, 3.5 seconds lost\n"
                         "cut.wav: from 0:00 on, 1.0 seconds lost"});
    QCOMPARE(desk.desk.messages.owners.value(0).data(), desk.window.get());
    QCOMPARE(desk.shelf.written[desk.temp("song.wav")].samples, song.samples);
    QCOMPARE(desk.window->result(), int(QDialog::Accepted));
}

void TestFrmPrepare::damagedSources_thatGaveNoTrack_areNotNamed()
{
    Desk desk;
    FakeSound broken = Desk::mono(5);
    broken.loss = {100, 100};
    broken.failAtSample = 16'000;
    desk.add("broken.mp3", broken);
    QVERIFY(desk.run());
    QCOMPARE(desk.desk.messages.shown, QStringList());
}

void TestFrmPrepare::damagedSources_ofAnyLength_areTold_data()
{
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("frames");
    QTest::addColumn<QString>("line");
    QTest::newRow("a sample") << 0LL << 1LL << "x: from 0:00 on, 0.1 seconds lost";
    QTest::newRow("a frame") << 7 * 44100LL - 1 << 1152LL << "x: from 0:06 on, 0.1 seconds lost";
    QTest::newRow("nearly a minute") << 61 * 44100LL << 59 * 44100LL << "x: from 1:01 on, 59.0 seconds lost";
    QTest::newRow("a minute") << 0LL << 60 * 44100LL << "x: from 0:00 on, 1:00 minutes lost";
    QTest::newRow("hours") << 3600 * 44100LL << 7204 * 44100LL << "x: from 60:00 on, 120:04 minutes lost";
}

void TestFrmPrepare::damagedSources_ofAnyLength_areTold()
{
    QFETCH(qint64, first);
    QFETCH(qint64, frames);
    DamagedSources damaged;
    damaged.add("/m/x", {first, frames}, 44100);
    QTEST(damaged.text().section('\n', 1), "line");
}

void TestFrmPrepare::damagedSources_thatAreMany_areCutOff()
{
    DamagedSources damaged;
    QVERIFY(damaged.text().isEmpty());
    damaged.add("/m/whole", {}, 44100);
    QVERIFY(damaged.text().isEmpty());
    for (int n = 0; n < 10; ++n)
        damaged.add(QString("/m/%1.mp3").arg(n), {0, 44100}, 44100);
    QCOMPARE(damaged.text().count('\n'), 10);
    QVERIFY(!damaged.text().contains("more"));
    damaged.add("/m/" + QString(200, 'W') + ".mp3", {0, 44100}, 44100);
    damaged.add("/m/last.mp3", {0, 44100}, 44100);
    QVERIFY(damaged.text().endsWith("\nand 2 more"));
    DamagedSources longName;
    longName.add("/m/" + QString(200, 'W') + ".mp3", {0, 44100}, 44100);
    QVERIFY(longName.text().section('\n', 1).size() < 100);
    QVERIFY(longName.text().contains("WW.mp3: from"));
}

QTEST_MAIN(TestFrmPrepare)
#include "tst_frmprepare.moc"
