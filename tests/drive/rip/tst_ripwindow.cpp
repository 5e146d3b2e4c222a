#include "EmulatedRecorder.h"
#include "common/GenralMacro.h"
#include "engines/rip/makers.h"
#include "fakes/FakeSeams.h"
#include "tools/frmRip.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

using namespace zib;

namespace {

/// The ripper's window on the real engine, over an emulated drive.
struct WindowBench
{
    WindowBench()
    {
        OptionsData options = gOptions;
        options.WAVOutput = folder.filePath("WAV");
        options.ExploreAfterRipping = false;
        setOptions(options);
        desk.components.makeRipper = [] { return makeRipper("/nowhere"); };
    }
    void open()
    {
        window = std::make_unique<frmRip>(desk.services);
        window->show();
    }
    QTreeWidget* list() const { return window->findChild<QTreeWidget*>("lvwTracks"); }
    void click(const char* name) const
    {
        QTest::mouseClick(window->findChild<QAbstractButton*>(name), Qt::LeftButton);
    }
    QStringList left() const { return QDir(folder.filePath("WAV")).entryList(QDir::Files | QDir::Hidden); }

    EmulatedRecorder recorder;
    QTemporaryDir folder;
    FakeDesk desk;
    std::unique_ptr<frmRip> window;
};

} // namespace

class TestRipWindow : public QObject
{
    Q_OBJECT
private slots:
    /// The window asks for the disc when a drive is chosen, and then now and then.
    void disc_thatAnswersSoonAfterItsDriveWasChosen_isListed_data()
    {
        QTest::addColumn<int>("delayMs");
        for (const int delay : {10, 20, 30, 60})
            QTest::addRow("%d ms", delay) << delay;
    }
    void disc_thatAnswersSoonAfterItsDriveWasChosen_isListed()
    {
        QFETCH(int, delayMs);
        WindowBench bench;
        bench.recorder.insert("album", {"audio 400", "audio 350", "close"});
        bench.recorder.addFault(QString("READ_TOC times=forever delay=%1").arg(delayMs));
        bench.open();
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 2, 20'000);
    }

    void disc_comesGoesAndIsCopied()
    {
        WindowBench bench;
        bench.recorder.removeDisc();
        bench.open();
        QTest::qWait(600);
        QCOMPARE(bench.list()->topLevelItemCount(), 0);
        bench.recorder.insert("album", {"audio 400", "audio 350", "data 300", "close"});
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 3, 20'000);
        bench.recorder.removeDisc();
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 0, 20'000);
        bench.recorder.insert("single", {"audio 320", "audio 330", "close"});
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 2, 20'000);
        bench.list()->topLevelItem(0)->setCheckState(0, Qt::Checked);
        bench.list()->topLevelItem(1)->setCheckState(0, Qt::Checked);
        bench.click("cmdRip");
        QTRY_COMPARE_WITH_TIMEOUT(bench.desk.messages.shown, QStringList("i: Audio Ripping Completed."),
                                  60'000);
        QCOMPARE(bench.left(), (QStringList{"Track1.wav", "Track2.wav"}));
        QCOMPARE(bench.list()->topLevelItemCount(), 2);
    }

    void window_withASlowDrive_goesOnAnswering()
    {
        WindowBench bench;
        bench.recorder.insert("album", {"audio 400", "audio 350", "close"});
        bench.recorder.addFault("MEDIA times=forever delay=2000");
        QElapsedTimer sinceLast;
        qint64 longest = 0;
        QTimer beat;
        connect(&beat, &QTimer::timeout, [&] { longest = qMax(longest, sinceLast.restart()); });
        bench.open();
        QTest::qWait(300); // painted and loaded
        sinceLast.start();
        beat.start(5);
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 2, 60'000);
        QVERIFY2(longest < 1900, qPrintable(QString::number(longest)));
    }

    void drive_withoutDisc_thatAnswersLate_getsItsSpeeds()
    {
        WindowBench bench;
        bench.recorder.removeDisc();
        bench.recorder.set("read-speed", "8");
        bench.recorder.addFault("ANY times=6 delay=700");
        bench.open();
        auto* speeds = bench.window->findChild<QComboBox*>("cboSpeeds");
        QTest::qWait(300);
        QVERIFY(speeds->count() <= 1);
        QTRY_COMPARE_WITH_TIMEOUT(speeds->count(), 5, 60'000);
        QCOMPARE(speeds->itemText(4), QString("8X"));
        QCOMPARE(bench.list()->topLevelItemCount(), 0);
    }

    void drive_heldByAnother_isSaidInEntryAndToolTip_untilItIsFree()
    {
        WindowBench bench;
        bench.recorder.insert("album", {"audio 400", "close"});
        bench.recorder.set("open", "busy");
        bench.open();
        auto* drives = bench.window->findChild<QComboBox*>("cboDevices");
        QTRY_VERIFY_WITH_TIMEOUT(drives->currentText().endsWith(" (used by another program)"), 20'000);
        QVERIFY(drives->toolTip().endsWith("/dev/sr0: used by another program"));
        bench.recorder.set("open", "open");
        QTRY_VERIFY_WITH_TIMEOUT(!drives->currentText().contains('('), 20'000);
        QVERIFY(!drives->toolTip().contains("used by"));
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 1, 20'000);
    }

    void close_whileRipping_leavesNothingHalf()
    {
        WindowBench bench;
        bench.recorder.insert("album", {"audio 3000", "close"});
        bench.open();
        QTRY_COMPARE_WITH_TIMEOUT(bench.list()->topLevelItemCount(), 1, 20'000);
        bench.recorder.addFault("READ_CD times=forever delay=30");
        bench.list()->topLevelItem(0)->setCheckState(0, Qt::Checked);
        bench.click("cmdRip");
        QTRY_VERIFY_WITH_TIMEOUT(bench.window->cursor().shape() == Qt::WaitCursor && !bench.left().isEmpty(),
                                 60'000);
        bench.click("cmdClose");
        QVERIFY(!bench.window->isVisible());
        bench.window.reset();
        QTRY_COMPARE_WITH_TIMEOUT(bench.left(), QStringList(), 20'000);
        QCOMPARE(bench.desk.messages.shown, QStringList());
        QVERIFY(!bench.recorder.doorLocked());
    }
};

QTEST_MAIN(TestRipWindow)
#include "tst_ripwindow.moc"
