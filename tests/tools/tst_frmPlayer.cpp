#include "tools/Stage.h"

#include "tools/frmPlayer.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QSlider>
#include <QTableView>
#include <QTimer>
#include <QToolTip>
#include <QUrl>

namespace {

using Flag = zib::FileDialogRequest::Flag;

struct Desk : zib::Stage
{
    explicit Desk(int files = 0)
    {
        window = std::make_unique<frmPlayer>(desk.services);
        window->show();
        QStringList names;
        for (int i = 1; i <= files; ++i) {
            names << QString("%1.wav").arg(i);
            addSound("/music/" + names.last(), 3000 + 10 * i);
        }
        if (files > 0)
            open(QStringList{"/music"} + names);
    }

    /// Chooses files in the open dialog.
    void open(const QStringList& answer)
    {
        desk.dialogs.files << answer.join(QChar::Null);
        press("cmdOpen");
    }
    QTableView* list() const { return window->findChild<QTableView*>("ListView1"); }
    QAbstractItemModel* rows() const { return list()->model(); }
    QString cell(int row, int column) const { return rows()->index(row, column).data().toString(); }
    void tick(int row) const { rows()->setData(rows()->index(row, 0), Qt::Checked, Qt::CheckStateRole); }
    void select(int row) const { list()->setCurrentIndex(rows()->index(row, 0)); }
    void press(const char* name) const { click(*window, name); }
    /// Presses a key in the list.
    void key(Qt::Key key) const
    {
        QApplication::setActiveWindow(window.get());
        list()->setFocus();
        QTest::keyClick(list(), key);
    }
    QStringList names() const
    {
        QStringList all;
        for (int row = 0; row < rows()->rowCount(); ++row)
            all << cell(row, 0);
        return all;
    }
    /// Plays to the end of what is playing.
    void playOut() const { player->play(100000); }

    std::unique_ptr<frmPlayer> window;
};

} // namespace

/// The player with its list, by its controls.
class TestFrmPlayer : public QObject
{
    Q_OBJECT
private slots:
    void window_bearsItsCaptionAndColumns()
    {
        const Desk desk;
        QCOMPARE(desk.window->windowTitle(), QString("Player..."));
        QStringList columns;
        for (int column = 0; column < desk.rows()->columnCount(); ++column)
            columns << desk.rows()->headerData(column, Qt::Horizontal).toString();
        QCOMPARE(columns, (QStringList{"File Name", "Time", "Title", "Location"}));
        const int letter = desk.window->fontMetrics().averageCharWidth();
        for (const auto& [column, letters] : {std::pair(0, 32), {1, 11}, {2, 24}})
            QCOMPARE(desk.list()->columnWidth(column), letters * letter);
    }

    void times_alone_standRight()
    {
        const Desk desk(1);
        for (int column = 0; column < desk.rows()->columnCount(); ++column) {
            const QModelIndex cell = desk.rows()->index(0, column);
            const QVariant header = desk.rows()->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole);
            for (const QVariant& alignment : {cell.data(Qt::TextAlignmentRole), header})
                QCOMPARE(alignment.value<Qt::Alignment>().testFlag(Qt::AlignRight), column == 1);
        }
    }

    void cmdOpen_asksAsStated()
    {
        const Desk desk;
        desk.press("cmdOpen");
        const auto& request = desk.desk.dialogs.opened.value(0);
        QCOMPARE(request.title, QString("Open WAV Files"));
        QCOMPARE(
            request.filter,
            QString("Audio Files(*.wav;*.mp3)|*.wav;*.mp3|MP3 Files(*.mp3)|*.mp3|WAV Files(*.wav)|*.wav"));
        QCOMPARE(request.flags, 0x200U | 0x80000U | 0x1000U | 0x200000U);
        QCOMPARE(request.maxFileSize, 1024);
        QCOMPARE(desk.rows()->rowCount(), 0);
        QVERIFY(desk.desk.messages.shown.isEmpty());
    }

    void cmdOpen_onePiece_isAFullPath()
    {
        Desk desk;
        auto sound = zib::FakeAudioShelf::ramp(61230, 1000, 1);
        sound.title = "  Morning  ";
        desk.shelf.sounds["/music/a b.mp3"] = sound;
        desk.open({"/music/a b.mp3"});
        QCOMPARE(desk.cell(0, 0), QString("a b.mp3"));
        QCOMPARE(desk.cell(0, 1), QString("01:01:23"));
        QCOMPARE(desk.cell(0, 2), QString("Morning"));
        QCOMPARE(desk.cell(0, 3), QString("/music/"));
    }

    void cmdOpen_severalPieces_areAFolderAndNames()
    {
        const Desk desk(3);
        QCOMPARE(desk.names(), (QStringList{"1.wav", "2.wav", "3.wav"}));
        QCOMPARE(desk.cell(2, 3), QString("/music/"));
    }

    void cmdOpen_moreNamesThanFit_saysWhatToDo()
    {
        Desk desk;
        desk.desk.dialogs.noFile.kind = zib::Failure::Kind::BadValue;
        desk.press("cmdOpen");
        QCOMPARE(desk.rows()->rowCount(), 0);
        QVERIFY(QToolTip::text().startsWith("So many names do not fit in one choice."));
        QVERIFY(desk.desk.messages.shown.isEmpty());
    }

    void drop_addsTheFiles()
    {
        Desk desk;
        desk.addSound("/music/a b.wav", 3000);
        QMimeData files;
        files.setUrls({QUrl::fromLocalFile("/music/a b.wav"), QUrl("https://somewhere.example/c.mp3")});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(desk.window.get(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop({5, 5}, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(desk.window.get(), &drop);
        QTRY_COMPARE(desk.names(), QStringList{"a b.wav"});
        QMimeData text;
        text.setText("no file");
        QDragEnterEvent other({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
        other.ignore();
        QApplication::sendEvent(desk.window.get(), &other);
        QVERIFY(!other.isAccepted());
    }

    void title_comesFromTheOldTagWhenTheMainOneHasNone_data()
    {
        QTest::addColumn<QString>("main");
        QTest::addColumn<QString>("old");
        QTest::addColumn<QString>("shown");
        QTest::newRow("main") << "Main"
                              << "Old"
                              << "Main";
        QTest::newRow("old") << ""
                             << " Old "
                             << "Old";
        QTest::newRow("blank main") << "   "
                                    << "Old"
                                    << "Old";
        QTest::newRow("none") << ""
                              << ""
                              << "";
    }
    void title_comesFromTheOldTagWhenTheMainOneHasNone()
    {
        QFETCH(QString, main);
        QFETCH(QString, old);
        Desk desk;
        auto sound = zib::FakeAudioShelf::ramp(1000, 1000, 1);
        sound.title = main;
        sound.oldTitle = old;
        desk.shelf.sounds["/music/a.mp3"] = sound;
        desk.open({"/music/a.mp3"});
        QTEST(desk.cell(0, 2), "shown");
    }

    void cmdOpen_aListedFile_isIgnored()
    {
        Desk desk(2);
        desk.open({"/music/1.wav"});
        desk.open({"/music", "2.wav", "1.wav", "1.WAV", "1.WAV"});
        QCOMPARE(desk.names(), (QStringList{"1.wav", "2.wav", "1.WAV"}));
    }

    void cmdOpen_whatIsNoAudio_isListedWithoutATime()
    {
        Desk desk;
        desk.open({"/music/notes.txt"});
        QCOMPARE(desk.cell(0, 0), QString("notes.txt"));
        QCOMPARE(desk.cell(0, 1), QString("00:00:00"));
    }

    void cmdRemove_onAnEmptyList_saysSo()
    {
        const Desk desk;
        desk.press("cmdRemove");
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: There are no files in the list!"});
    }

    void cmdRemove_withNothingTicked_saysSo()
    {
        const Desk desk(2);
        desk.press("cmdRemove");
        QCOMPARE(
            desk.desk.messages.shown,
            QStringList{
                "i: There are no files checked in the list, \nplease check files to delete from the list!"});
        QCOMPARE(desk.rows()->rowCount(), 2);
    }

    void cmdRemove_takesEveryTickedRow()
    {
        Desk desk(6);
        for (const int row : {0, 2, 3, 5})
            desk.tick(row);
        desk.press("cmdRemove");
        QCOMPARE(desk.names(), (QStringList{"2.wav", "5.wav"}));
        QVERIFY(desk.desk.messages.shown.isEmpty());
        desk.open({"/music/3.wav"});
        QCOMPARE(desk.names(), (QStringList{"2.wav", "5.wav", "3.wav"}));
    }

    void space_ticksTheSelectedRow()
    {
        const Desk desk(2);
        desk.select(1);
        desk.key(Qt::Key_Space);
        QCOMPARE(desk.rows()->index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        desk.key(Qt::Key_Space);
        QCOMPARE(desk.rows()->index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    }

    void delete_removesTheTickedRows()
    {
        const Desk desk(2);
        desk.tick(1);
        desk.key(Qt::Key_Delete);
        QCOMPARE(desk.names(), QStringList{"1.wav"});
    }

    void cmdPlay_onAnEmptyList_doesNothing()
    {
        const Desk desk;
        zib::setCurrentFile("/music/1.wav");
        desk.press("cmdPlay");
        QVERIFY(desk.player->calls.isEmpty());
        QCOMPARE(CurrentFile, QString("/music/1.wav"));
    }

    void cmdPlay_playsTheSelectedRow()
    {
        const Desk desk(3);
        desk.select(1);
        desk.press("cmdPlay");
        QCOMPARE(CurrentFile, QString("/music/2.wav"));
        QVERIFY(desk.player->isOpen());
    }

    void cmdPlay_afterOpening_playsTheFirstRow()
    {
        const Desk desk(3);
        desk.press("cmdPlay");
        QCOMPARE(CurrentFile, QString("/music/1.wav"));
    }

    void doubleClickAndEnter_playTheRow()
    {
        const Desk desk(3);
        const QPoint row = desk.list()->visualRect(desk.rows()->index(2, 1)).center();
        QTest::mouseClick(desk.list()->viewport(), Qt::LeftButton, {}, row);
        QTest::mouseDClick(desk.list()->viewport(), Qt::LeftButton, {}, row);
        QCOMPARE(CurrentFile, QString("/music/3.wav"));
        desk.select(0);
        desk.key(Qt::Key_Return);
        QCOMPARE(CurrentFile, QString("/music/1.wav"));
    }

    void end_playsTheNextRowAndSelectsIt()
    {
        const Desk desk(3);
        desk.press("cmdPlay");
        desk.playOut();
        QCOMPARE(CurrentFile, QString("/music/2.wav"));
        QCOMPARE(desk.list()->currentIndex().row(), 1);
        QVERIFY(desk.player->isOpen());
    }

    void end_ofTheLastRow_stopsOrStartsOver_data()
    {
        QTest::addColumn<bool>("repeat");
        QTest::newRow("stop") << false;
        QTest::newRow("repeat") << true;
    }
    void end_ofTheLastRow_stopsOrStartsOver()
    {
        QFETCH(bool, repeat);
        const Desk desk(2);
        if (repeat)
            desk.press("chkRpt");
        desk.select(1);
        desk.press("cmdPlay");
        desk.playOut();
        QCOMPARE(desk.player->isOpen(), repeat);
        QCOMPARE(CurrentFile, repeat ? QString("/music/1.wav") : QString("/music/2.wav"));
        QCOMPARE(desk.list()->currentIndex().row(), repeat ? 0 : 1);
    }

    void end_whenThePlayedRowWasRemoved_stops()
    {
        const Desk desk(3);
        desk.press("cmdPlay");
        desk.tick(0);
        desk.press("cmdRemove");
        desk.playOut();
        QVERIFY(!desk.player->isOpen());
    }

    void end_followedByAMissingFile_stopsSilently()
    {
        Desk desk(2);
        desk.shelf.sounds.remove("/music/2.wav");
        desk.press("cmdPlay");
        desk.playOut();
        QVERIFY(!desk.player->isOpen());
        QCOMPARE(CurrentFile, QString("/music/2.wav"));
        QCOMPARE(desk.list()->currentIndex().row(), 1);
        QVERIFY(desk.desk.messages.shown.isEmpty());
    }

    void wholeList_isHeardInOrder()
    {
        const Desk desk(3);
        desk.press("cmdPlay");
        for (int i = 0; i < 3; ++i)
            desk.playOut();
        QList<qint16> all;
        for (const char* path : {"/music/1.wav", "/music/2.wav", "/music/3.wav"})
            all << desk.shelf.sounds[path].samples;
        QCOMPARE(desk.player->heard, all);
    }

    void transport_isThatOfTheSmallPlayer()
    {
        const Desk desk(1);
        desk.press("cmdPlay");
        auto* slider = desk.window->findChild<QSlider*>("Slider1");
        slider->setValue(50);
        desk.press("cmdForward");
        QCOMPARE(slider->value(), 51);
        desk.press("chkPause");
        QVERIFY(!desk.player->isOpen());
        desk.press("cmdStop");
        desk.press("cmdVol");
        QCOMPARE(desk.desk.shell.calls, QStringList{"open sndvol32.exe"});
    }

    void chkDown_collapsesAndExpands()
    {
        const Desk desk;
        const auto* below = desk.window->findChild<QWidget*>("cmdBackward");
        const int expanded = desk.window->height();
        const QRect list = desk.list()->geometry();
        const int collapsed = expanded - list.height() - (list.top() - (below->y() + below->height()));
        desk.press("chkDown");
        QVERIFY(!desk.list()->isVisible());
        QCOMPARE(desk.window->height(), collapsed);
        QVERIFY(below->geometry().bottom() < desk.window->height());
        QCOMPARE(desk.window->height() - below->geometry().bottom(), expanded - list.bottom());
        desk.press("chkDown");
        QVERIFY(desk.list()->isVisible());
        QCOMPARE(desk.window->height(), expanded);
        QCOMPARE(desk.list()->geometry(), list);
    }

    void chkDown_setByAProgram_collapsesToo()
    {
        const Desk desk;
        desk.window->findChild<QAbstractButton*>("chkDown")->setChecked(false);
        QVERIFY(!desk.list()->isVisible());
    }

    void chkDown_withALargeFont_stillFits()
    {
        const QFont before = QApplication::font();
        QFont large = before;
        large.setPointSize(24);
        QApplication::setFont(large);
        const Desk desk;
        QApplication::setFont(before);
        const int expanded = desk.window->height();
        desk.press("chkDown");
        QVERIFY(desk.window->height() < expanded);
        QVERIFY(desk.window->rect().contains(desk.window->findChild<QWidget*>("cmdBackward")->geometry()));
        desk.press("chkDown");
        QCOMPARE(desk.window->height(), expanded);
    }

    void chkDown_keepsTheHeightTheUserGave()
    {
        const Desk desk;
        desk.window->resize(700, 600);
        desk.press("chkDown");
        desk.press("chkDown");
        QCOMPARE(desk.window->size(), QSize(700, 600));
    }

    void close_whilePlaying_givesTheDeviceBack()
    {
        const Desk desk(1);
        desk.press("cmdPlay");
        desk.window->close();
        QVERIFY(!desk.player->isOpen());
    }

    void escape_stopsFirst_andNeverLosesTheList()
    {
        const Desk desk(2);
        QApplication::setActiveWindow(desk.window.get());
        desk.press("cmdPlay");
        for (int time = 0; time < 3; ++time) {
            QTest::keyClick(desk.list(), Qt::Key_Escape);
            QVERIFY(desk.window->isVisible());
            QVERIFY(!desk.player->isOpen());
        }
        for (int row = 0; row < 2; ++row)
            desk.tick(row);
        desk.press("cmdRemove");
        QTest::keyClick(desk.window.get(), Qt::Key_Escape);
        QVERIFY(!desk.window->isVisible());
    }

    void enter_onAButton_closesNothing()
    {
        const Desk desk(1);
        QApplication::setActiveWindow(desk.window.get());
        desk.press("cmdPlay");
        for (auto* button : desk.window->findChildren<QAbstractButton*>()) {
            button->setFocus();
            QTest::keyClick(button, Qt::Key_Return);
        }
        QVERIFY(desk.window->isVisible());
        QVERIFY(desk.player->isOpen());
    }

    void list_obeysItsKeys()
    {
        const Desk desk(3);
        desk.select(1);
        QApplication::setActiveWindow(desk.window.get());
        QTest::keyClick(desk.list(), Qt::Key_A, Qt::ControlModifier);
        for (int row = 0; row < 3; ++row)
            QCOMPARE(desk.rows()->index(row, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        desk.key(Qt::Key_End);
        QCOMPARE(desk.list()->currentIndex().row(), 2);
        desk.key(Qt::Key_Home);
        QCOMPARE(desk.list()->currentIndex().row(), 0);
        QVERIFY(!desk.player->isOpen());
    }

    void tab_visitsEveryControlInItsOrder()
    {
        const Desk desk(1);
        QApplication::setActiveWindow(desk.window.get());
        desk.window->findChild<QWidget*>("cmdPlay")->setFocus();
        QStringList visited;
        for (int i = 0; i < 14; ++i) {
            visited << desk.window->focusWidget()->objectName();
            QTest::keyClick(desk.window->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited, (QStringList{"cmdPlay", "chkPause", "cmdStop", "cmdTop", "cmdBackward",
                                       "cmdForward", "cmdEnd", "chkRpt", "cmdVol", "cmdOpen", "cmdRemove",
                                       "chkDown", "ListView1", "Slider1"}));
    }

    void tenThousandFiles_areAddedPlayedAndRemoved()
    {
        Desk desk;
        QStringList answer{"/music"};
        for (int i = 0; i < 10000; ++i)
            answer << QString("%1.wav").arg(i);
        desk.addSound("/music/9999.wav", 2000);
        desk.open(answer);
        QCOMPARE(desk.rows()->rowCount(), 10000);
        desk.open(answer);
        QCOMPARE(desk.rows()->rowCount(), 10000);
        desk.select(9999);
        desk.press("cmdPlay");
        desk.playOut();
        QVERIFY(!desk.player->isOpen());
        for (int row = 0; row < 10000; row += 2)
            desk.tick(row);
        desk.press("cmdRemove");
        QCOMPARE(desk.rows()->rowCount(), 5000);
        QCOMPARE(desk.cell(0, 0), QString("1.wav"));
    }

    void adding_whilePlaying_goesOnFeeding()
    {
        Desk desk(1);
        desk.press("cmdPlay");
        QStringList answer{"/music"};
        for (int i = 2; i < 200000; ++i)
            answer << QString("%1.wav").arg(i);
        bool fed = false;
        QTimer::singleShot(0, desk.window.get(), [&] {
            desk.player->play(1000);
            fed = desk.player->queuedBlocks() == 2;
        });
        zib::Errands::setPatience(zib::Errands::kPatience);
        desk.desk.dialogs.files << answer.join(QChar::Null);
        desk.press("cmdOpen");
        QTRY_VERIFY_WITH_TIMEOUT(fed, 20'000);
        QVERIFY(desk.rows()->rowCount() < 199999);
        QTRY_COMPARE_WITH_TIMEOUT(desk.rows()->rowCount(), 199999, 60'000);
        QVERIFY(fed);
    }
};

QTEST_MAIN(TestFrmPlayer)
#include "tst_frmPlayer.moc"
