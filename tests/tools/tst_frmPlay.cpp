#include "tools/Stage.h"

#include "tools/frmPlay.h"

#include <QApplication>
#include <QSignalSpy>
#include <QSlider>
#include <QStyle>

namespace {

const QString kFile = "/music/a.wav";

/// frmPlay on a file of 10,000 frames at 1000 Hz; a block is one second of it.
struct Desk : zib::Stage
{
    explicit Desk(const QString& current = kFile)
    {
        addSound(kFile, 10000);
        zib::setCurrentFile(current);
        window = std::make_unique<frmPlay>(desk.services);
        window->show();
    }

    QSlider* slider() const { return window->findChild<QSlider*>("Slider1"); }
    QAbstractButton* button(const char* name) const { return window->findChild<QAbstractButton*>(name); }
    void press(const char* name) const { click(*window, name); }
    QList<qint16> samples(qint64 from, qint64 count) const
    {
        return shelf.sounds[kFile].samples.mid(from, count);
    }
    /// Where a click takes the slider to @p value.
    QPoint placeOf(int value) const
    {
        const int handle = slider()->style()->pixelMetric(QStyle::PM_SliderLength, nullptr, slider());
        const int span = slider()->width() - handle;
        return {handle / 2 + QStyle::sliderPositionFromValue(0, 100, value, span), slider()->height() / 2};
    }

    std::unique_ptr<frmPlay> window;
};

} // namespace

/// The player of one file, by its controls.
class TestFrmPlay : public QObject
{
    Q_OBJECT
private slots:
    void window_bearsItsCaption()
    {
        const Desk desk;
        QCOMPARE(desk.window->windowTitle(), QString("Play..."));
        QCOMPARE(desk.slider()->minimum(), 0);
        QCOMPARE(desk.slider()->maximum(), 100);
    }

    void load_playsTheCurrentFileAtOnce()
    {
        const Desk desk;
        QCOMPARE(desk.player->calls, (QStringList{"format 1000 1", "open", "write 1000", "write 1000"}));
    }

    void load_withoutACurrentFile_staysSilent()
    {
        const Desk desk{QString()};
        QVERIFY(desk.player->calls.isEmpty());
        desk.press("cmdPlay");
        QVERIFY(!desk.player->isOpen());
    }

    void load_ofAMissingFile_staysSilent()
    {
        const Desk desk("/music/gone.wav");
        QVERIFY(!desk.player->isOpen());
        QVERIFY(desk.desk.messages.shown.isEmpty());
    }

    void bufferDone_feedsTheNextSecond()
    {
        const Desk desk;
        desk.player->play(1000);
        QCOMPARE(desk.player->queuedBlocks(), 2);
        QCOMPARE(desk.slider()->value(), 10);
        desk.player->play(9000);
        QCOMPARE(desk.player->heard, desk.samples(0, 10000));
    }

    void end_withoutRepeat_stops()
    {
        const Desk desk;
        desk.player->play(20000);
        QVERIFY(!desk.player->isOpen());
        QVERIFY(desk.shelf.calls.contains("close " + kFile));
    }

    void end_withRepeat_playsTheSameFileAgain()
    {
        const Desk desk;
        desk.press("chkRpt");
        desk.player->play(20000);
        QVERIFY(desk.player->isOpen());
        desk.player->heard.clear();
        desk.player->play(2000);
        QCOMPARE(desk.player->heard, desk.samples(0, 2000));
    }

    void cmdPlay_startsAgainFromTheStart()
    {
        const Desk desk;
        desk.player->play(1500);
        desk.player->heard.clear();
        desk.press("cmdPlay");
        QVERIFY(desk.player->calls.contains("close"));
        desk.player->play(500);
        QCOMPARE(desk.player->heard, desk.samples(0, 500));
    }

    void chkPause_isPushedInWhilePaused()
    {
        const Desk desk;
        desk.player->play(1500);
        desk.press("chkPause");
        QVERIFY(desk.button("chkPause")->isChecked());
        QVERIFY(!desk.player->isOpen());
        desk.press("chkPause");
        QVERIFY(!desk.button("chkPause")->isChecked());
        desk.player->play(20000);
        QCOMPARE(desk.player->heard, desk.samples(0, 10000));
    }

    void chkPause_whenStopped_doesNotStayPushedIn()
    {
        const Desk desk;
        desk.press("cmdStop");
        desk.press("chkPause");
        QVERIFY(!desk.button("chkPause")->isChecked());
        QVERIFY(!desk.player->isOpen());
    }

    void chkPause_afterAStopWhilePaused_resumesAtTheRememberedPlace()
    {
        const Desk desk;
        desk.press("chkPause");
        desk.press("cmdStop");
        QVERIFY(!desk.button("chkPause")->isChecked());
        desk.press("cmdPlay");
        desk.player->play(1500);
        desk.player->heard.clear();
        desk.press("chkPause");
        QVERIFY(!desk.button("chkPause")->isChecked());
        QVERIFY(desk.player->isOpen());
        desk.player->play(100);
        QCOMPARE(desk.player->heard, desk.samples(0, 100));
    }

    void cmdStop_givesTheDeviceBack()
    {
        const Desk desk;
        desk.press("cmdStop");
        QVERIFY(!desk.player->isOpen());
        QVERIFY(desk.shelf.calls.contains("close " + kFile));
    }

    void seekButtons_moveTheSliderAndSeek_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::newRow("top") << QByteArray("cmdTop") << 40 << 0;
        QTest::newRow("end") << QByteArray("cmdEnd") << 40 << 100;
        QTest::newRow("backward") << QByteArray("cmdBackward") << 40 << 39;
        QTest::newRow("backward at 2") << QByteArray("cmdBackward") << 2 << 1;
        QTest::newRow("backward at 1 stays") << QByteArray("cmdBackward") << 1 << 1;
        QTest::newRow("backward at 0 stays") << QByteArray("cmdBackward") << 0 << 0;
        QTest::newRow("forward") << QByteArray("cmdForward") << 40 << 41;
        QTest::newRow("forward at 99") << QByteArray("cmdForward") << 99 << 100;
        QTest::newRow("forward at 100 stays") << QByteArray("cmdForward") << 100 << 100;
    }
    void seekButtons_moveTheSliderAndSeek()
    {
        QFETCH(QByteArray, button);
        QFETCH(int, from);
        QFETCH(int, to);
        const Desk desk;
        desk.slider()->setValue(from);
        desk.player->calls.clear();
        desk.press(button.constData());
        QCOMPARE(desk.slider()->value(), to);
        QCOMPARE(desk.player->calls.value(0), QString("reset"));
        QVERIFY(desk.shelf.calls.contains(QString("seek %1").arg(to * 100)));
        desk.player->heard.clear();
        desk.player->play(10);
        QCOMPARE(desk.player->heard, desk.samples(to * 100, 10));
    }

    void drag_holdsTheSliderAndSeeksAtTheRelease()
    {
        const Desk desk;
        desk.player->play(500);
        QTest::mousePress(desk.slider(), Qt::LeftButton, {}, desk.placeOf(desk.slider()->value()));
        QTest::mouseMove(desk.slider(), desk.placeOf(60));
        QTest::mouseEvent(QTest::MouseMove, desk.slider(), Qt::LeftButton, {}, desk.placeOf(60));
        const int held = desk.slider()->sliderPosition();
        desk.player->calls.clear();
        desk.player->play(100);
        QCOMPARE(desk.slider()->sliderPosition(), held);
        QVERIFY2(!desk.player->calls.contains("reset"), "nothing moves before the release");
        QTest::mouseRelease(desk.slider(), Qt::LeftButton, {}, desk.placeOf(60));
        QVERIFY(desk.player->calls.contains("reset"));
        desk.player->heard.clear();
        desk.player->play(10);
        QCOMPARE(desk.player->heard, desk.samples(desk.slider()->value() * 100, 10));
    }

    void click_beyondTheHandle_goesThereAtOnce()
    {
        const Desk desk;
        for (const int place : {20, 90, 8, 55, 75}) {
            QTest::mouseClick(desk.slider(), Qt::LeftButton, {}, desk.placeOf(place));
            QCOMPARE(desk.slider()->value(), place);
        }
        desk.player->heard.clear();
        desk.player->play(10);
        QCOMPARE(desk.player->heard, desk.samples(desk.slider()->value() * 100, 10));
    }

    void drag_whileStopped_changesNothing()
    {
        const Desk desk;
        desk.press("cmdStop");
        desk.player->calls.clear();
        QTest::mouseClick(desk.slider(), Qt::LeftButton, {}, desk.placeOf(75));
        QVERIFY(desk.player->calls.isEmpty());
    }

    void keyboard_onTheSlider_seeks_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("to");
        QTest::newRow("right") << int(Qt::Key_Right) << 41;
        QTest::newRow("left") << int(Qt::Key_Left) << 39;
        QTest::newRow("page up") << int(Qt::Key_PageUp) << 45;
        QTest::newRow("home") << int(Qt::Key_Home) << 0;
        QTest::newRow("end") << int(Qt::Key_End) << 100;
    }
    void keyboard_onTheSlider_seeks()
    {
        QFETCH(int, key);
        const Desk desk;
        desk.slider()->setValue(40);
        QTest::keyClick(desk.slider(), static_cast<Qt::Key>(key));
        QTEST(desk.slider()->value(), "to");
        desk.player->heard.clear();
        desk.player->play(10);
        QCOMPARE(desk.player->heard, desk.samples(desk.slider()->value() * 100, 10));
    }

    void cmdVol_opensTheVolumeControl()
    {
        const Desk desk;
        desk.press("cmdVol");
        QCOMPARE(desk.desk.shell.calls, QStringList{"open sndvol32.exe"});
    }

    void lostDevice_stopsSilently()
    {
        const Desk desk;
        desk.player->lose();
        QVERIFY(desk.shelf.calls.contains("close " + kFile));
        QVERIFY(desk.desk.messages.shown.isEmpty());
    }

    void brokenFile_endsLikeAShortOne()
    {
        Desk desk{QString()};
        desk.shelf.sounds[kFile].failAtSample = 1000;
        zib::setCurrentFile(kFile);
        desk.press("cmdPlay");
        desk.player->play(5000);
        QCOMPARE(desk.player->heard, desk.samples(0, 1000));
        QVERIFY(!desk.player->isOpen());
    }

    void close_whilePlayingOrPaused_givesTheDeviceBack_data()
    {
        QTest::addColumn<bool>("paused");
        QTest::newRow("playing") << false;
        QTest::newRow("paused") << true;
    }
    void close_whilePlayingOrPaused_givesTheDeviceBack()
    {
        QFETCH(bool, paused);
        const Desk desk;
        if (paused)
            desk.press("chkPause");
        desk.player->calls.clear();
        desk.window->close();
        QVERIFY(desk.player->calls.contains("close"));
        QVERIFY(desk.shelf.calls.contains("close " + kFile));
    }

    void tab_visitsEveryControlInItsOrder()
    {
        const Desk desk;
        QApplication::setActiveWindow(desk.window.get());
        desk.button("cmdPlay")->setFocus();
        QStringList visited;
        for (int i = 0; i < 10; ++i) {
            visited << desk.window->focusWidget()->objectName();
            QTest::keyClick(desk.window->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited, (QStringList{"cmdPlay", "chkPause", "cmdStop", "cmdTop", "cmdBackward",
                                       "cmdForward", "cmdEnd", "chkRpt", "cmdVol", "Slider1"}));
    }

    void buttons_withoutText_areNamedForEveryone()
    {
        const Desk desk;
        for (const QAbstractButton* each : desk.window->findChildren<QAbstractButton*>()) {
            QVERIFY2(!each->accessibleName().isEmpty(), qPrintable(each->objectName()));
            QVERIFY2(!each->toolTip().isEmpty(), qPrintable(each->objectName()));
            QVERIFY2(!each->icon().isNull(), qPrintable(each->objectName()));
        }
    }
};

QTEST_MAIN(TestFrmPlay)
#include "tst_frmPlay.moc"
