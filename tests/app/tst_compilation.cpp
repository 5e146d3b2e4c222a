#include "app/Desk.h"
#include "app/totals.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTextDocument>
#include <QThread>

namespace {

enum Column
{
    Number,
    FileName,
    Title,
    Artist,
    Time,
    FileSize,
    Location
};

/// Takes its time over every file.
class SlowInformation final : public AnySound
{
public:
    bool isAudioFile(const QString&) override
    {
        QThread::msleep(5);
        return true;
    }
};

const QString kNotAudio = "c: The following file could not be added, it is not audio file \n"
                          "or the audio type is not supported.\n\n";

QStringList names(int count)
{
    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths << QString("/music/%1.wav").arg(i, 5, 10, QChar('0'));
    return paths;
}

} // namespace

/// The compilation list: how files enter it, its totals, and the commands on its rows.
class TestCompilation : public QObject
{
    Q_OBJECT
private slots:
    void add_anAudioFile_fillsItsRow()
    {
        Desk desk;
        desk.add({desk.sound("song.mp3", 61230, 1536000, "A Title", "An Artist")});
        QCOMPARE(desk.rows(), 1);
        QCOMPARE(desk.cell(0, Number), QString("1"));
        QCOMPARE(desk.cell(0, FileName), QString("song.mp3"));
        QCOMPARE(desk.cell(0, Title), QString("A Title"));
        QCOMPARE(desk.cell(0, Artist), QString("An Artist"));
        QCOMPARE(desk.cell(0, Time), QString("01:01:23"));
        QCOMPARE(desk.cell(0, FileSize), QString("1,501 KB"));
        QCOMPARE(desk.cell(0, Location), desk.folder.path() + "/");
        QVERIFY(!desk.ticked(0));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void tip_ofATitleThatLooksLikeMarkup_showsItLetterForLetter()
    {
        Desk desk;
        desk.add({desk.sound("a.wav", 60000, 1000, "<b>Loud</b>", "Plain & simple")});
        const auto tip = [&](int column) {
            return desk.list()->model()->index(0, column).data(Qt::ToolTipRole).toString();
        };
        QTextDocument shown;
        shown.setHtml(tip(2));
        QCOMPARE(shown.toPlainText(), QString("<b>Loud</b>"));
        QCOMPARE(tip(3), QString("Plain & simple"));
    }
    void fileSize_isKilobytesPlusOneRounded_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << qint64{0} << "1 KB";
        QTest::newRow("one byte") << qint64{1} << "1 KB";
        QTest::newRow("1000") << qint64{1000} << "2 KB";
        QTest::newRow("exact multiple") << qint64{1024} << "2 KB";
        QTest::newRow("below a half") << qint64{511} << "1 KB";
        QTest::newRow("half") << qint64{512} << "2 KB";
        QTest::newRow("1536000") << qint64{1536000} << "1,501 KB";
        QTest::newRow("million") << qint64{1024} * 1234566 << "1,234,567 KB";
        QTest::newRow("beyond the pattern") << qint64{1024} * 1234567890122 << "1,234,567,890,123 KB";
    }
    void fileSize_isKilobytesPlusOneRounded()
    {
        QFETCH(qint64, bytes);
        QTEST(zib::fileSizeText(bytes), "text");
    }
    void add_theSameFileTwice_leavesOneRowInSilence()
    {
        Desk desk;
        const QString path = desk.sound("a.wav");
        desk.add({path});
        desk.add({path});
        QCOMPARE(desk.rows(), 1);
        QCOMPARE(desk.desk.messages.shown, QStringList());
        QCOMPARE(desk.panel(2), QString("Total Files: 1"));
    }
    void add_namesThatDifferInCaseOrFolder_areDifferentFiles()
    {
        Desk desk;
        QVERIFY(QDir(desk.folder.path()).mkdir("sub"));
        for (const char* name : {"a.wav", "A.wav", "sub/a.wav"})
            desk.window().AddOneFileToList(desk.sound(name));
        QCOMPARE(desk.rows(), 3);
    }
    void add_afterRemoval_takesTheFileAgain()
    {
        Desk desk;
        desk.addThree();
        desk.tick(1);
        desk.trigger("Toolbar1_delete");
        desk.add({desk.folder.filePath("b.wav")});
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "c.wav", "b.wav"}));
        desk.trigger("mnuTracksSub_8");
        desk.add({desk.folder.filePath("b.wav")});
        QCOMPARE(desk.column(FileName), QStringList{"b.wav"});
    }
    void add_afterAMove_stillKnowsEveryFile()
    {
        Desk desk;
        desk.addThree();
        desk.list()->selectRow(2);
        desk.trigger("Toolbar1_up");
        for (const char* name : {"a.wav", "b.wav", "c.wav"})
            desk.window().AddOneFileToList(desk.folder.filePath(name));
        QCOMPARE(desk.rows(), 3);
    }
    void add_aFileThatIsNoAudio_isNamedInABox()
    {
        Desk desk;
        const QString path = desk.file("letter.txt");
        desk.add({path});
        QCOMPARE(desk.rows(), 0);
        QCOMPARE(desk.desk.messages.shown, QStringList{kNotAudio + path});
        QCOMPARE(desk.desk.messages.owners.last().data(), &desk.window());
    }
    void add_severalFiles_reportsTheBadOnesOneByOneAndTakesTheRest()
    {
        Desk desk;
        const QStringList paths{desk.sound("1.wav"), desk.file("2.txt"), desk.sound("3.wav"),
                                desk.file("4.txt")};
        QList<int> rowsSeen;
        desk.desk.messages.onShow = [&](const QString&) { rowsSeen << desk.rows(); };
        desk.add(paths);
        QCOMPARE(desk.column(FileName), (QStringList{"1.wav", "3.wav"}));
        QCOMPARE(desk.desk.messages.shown, (QStringList{kNotAudio + paths[1], kNotAudio + paths[3]}));
        QCOMPARE(rowsSeen, (QList<int>{1, 2})); // What was added before stands behind the box.
        QCOMPARE(desk.panel(2), QString("Total Files: 2"));
    }
    void add_aFileThatVanishesMeanwhile_isIgnoredAsAnError()
    {
        Desk desk;
        const QString path = desk.sound("gone.wav", 0);
        QVERIFY(QFile::remove(path));
        desk.window().AddOneFileToList(path);
        QCOMPARE(desk.rows(), 1);
        QCOMPARE(desk.cell(0, Time), QString("00:00:00"));
        QCOMPARE(desk.cell(0, FileSize), QString("1 KB"));
    }
    void addOneFile_alone_leavesTheTotals()
    {
        Desk desk;
        desk.window().AddOneFileToList(desk.sound("a.wav"));
        QCOMPARE(desk.rows(), 1);
        QCOMPARE(desk.panel(2), QString("Total Files: 0"));
    }
    void addDialog_isAskedForAsDesigned()
    {
        Desk desk;
        desk.trigger("Toolbar1_add");
        QCOMPARE(desk.desk.dialogs.opened.size(), 1);
        const zib::FileDialogRequest request = desk.desk.dialogs.opened.first();
        QCOMPARE(request.title, QString("Open Audio Files MP3 and WAV"));
        QCOMPARE(request.filter, QString("MP3 and WAV Files(*.mp3;*.wav)|*.wav;*.mp3|MP3 Files(*.mp3)|*.mp3|"
                                         "WAV Files(*.wav)|*.wav|All Files(*.*)|*.*"));
        QCOMPARE(request.flags, 0x281200u);
        QCOMPARE(request.maxFileSize, 32767);
        QCOMPARE(desk.rows(), 0);
    }
    void addDialog_whenCancelled_stillRefreshesTheTotals()
    {
        Desk desk;
        desk.window().AddOneFileToList(desk.sound("a.wav"));
        desk.trigger("mnuFileSub_1");
        QCOMPARE(desk.panel(2), QString("Total Files: 1"));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void addDialog_ofTooManyNames_saysSo()
    {
        Desk desk;
        desk.desk.dialogs.noFile.kind = zib::Failure::Kind::BadValue;
        desk.trigger("mnuFileSub_1");
        QCOMPARE(desk.desk.messages.shown.size(), 1);
        QVERIFY(desk.desk.messages.shown[0].startsWith("i: So many names do not fit in one choice."));
    }
    void addDialog_withNamesOfABackslashFolder_joinsThemInItsStyle()
    {
        Desk desk;
        for (const char* path : {"C:\\Music\\a.wav", "C:\\Music\\b.wav"})
            desk.shelf.sounds.insert(path, zib::FakeAudioShelf::ramp(100));
        desk.desk.dialogs.files << QStringList{"C:\\Music", "a.wav", "b.wav"}.join(QChar(QChar::Null));
        desk.trigger("Toolbar1_add");
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "b.wav"}));
        QCOMPARE(desk.cell(1, Location), QString("C:\\Music\\"));
    }
    void names_ofAnyKind_comeBackAsTheyWent_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blanks") << "  two  blanks .wav";
        QTest::newRow("backslash") << "back\\slash.wav";
        QTest::newRow("quotes") << "\"quoted\" & 'so'.wav";
        QTest::newRow("line break") << "line\nbreak.wav";
        QTest::newRow("markup") << "<b>bold&amp;.wav";
        QTest::newRow("accents") << QString::fromUtf8("Ça va — Ünïcödé.wav");
        QTest::newRow("right to left") << QString::fromUtf8("שלום עולם.wav");
        QTest::newRow("beyond the first plane") << QString::fromUtf8("🎵 𝄞.wav");
        QTest::newRow("decomposed") << QString::fromUtf8("e\xCC\x81.wav");
        QTest::newRow("long") << QString(251, 'n') + ".wav";
        QTest::newRow("leading dash") << "-rf.wav";
        QTest::newRow("percent") << "%1 %n.wav";
    }
    void names_ofAnyKind_comeBackAsTheyWent()
    {
        QFETCH(QString, name);
        Desk desk;
        const QString path = desk.sound(name);
        desk.add({path});
        QCOMPARE(desk.column(FileName), QStringList{name});
        desk.list()->selectRow(0);
        desk.trigger("Toolbar1_play");
        QCOMPARE(::CurrentFile, path);
        desk.add({path});
        QCOMPARE(desk.rows(), 1);
    }

    void totals_countTwoSecondsForEachTrack()
    {
        Desk desk;
        desk.addThree();
        QCOMPARE(desk.panel(1), QString("Total Time: 03:06:00"));
        QCOMPARE(desk.panel(2), QString("Total Files: 3"));
        QVERIFY(qAbs(TotalMinutes - 3.1) < 1e-9);
        QCOMPARE(desk.control<QWidget>("StatusBar1_1")->toolTip(), QString("Total Time: 03:06:00"));
        QCOMPARE(desk.control<QWidget>("StatusBar1_2")->toolTip(), QString("Total Files: 3"));
    }
    void totals_ofHundredths_areNotLost()
    {
        Desk desk;
        desk.add({desk.sound("a.wav", 59999), desk.sound("b.wav", 10)});
        QCOMPARE(desk.panel(1), QString("Total Time: 01:04:00")); // 59.99 s, 0.01 s and two gaps.
    }
    void totals_beyond24Days_areNotWrapped()
    {
        QCOMPARE(zib::totalTimeText(35791), QString("35791:00:00"));
        QCOMPARE(zib::totalTimeText(40000.5), QString("40000:30:00"));
    }
    void durationTextToMinutes_readsThreeNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("minutes"); // Negative: refused.
        QTest::newRow("zero") << "00:00:00" << 0.0;
        QTest::newRow("minutes") << "03:00:00" << 3.0;
        QTest::newRow("seconds") << "00:30:00" << 0.5;
        QTest::newRow("hundredths") << "00:00:60" << 0.01;
        QTest::newRow("many minutes") << "100:15:00" << 100.25;
        QTest::newRow("missing") << "" << -1.0;
        QTest::newRow("two parts") << "01:02" << -1.0;
        QTest::newRow("four parts") << "01:02:03:04" << -1.0;
        QTest::newRow("no number") << "aa:00:00" << -1.0;
    }
    void durationTextToMinutes_readsThreeNumbers()
    {
        QFETCH(QString, text);
        QFETCH(double, minutes);
        const double read = DurationTextToMinutes(text).value_or(-1);
        QVERIFY2(qAbs(read - minutes) < 1e-12, qPrintable(QString::number(read)));
    }

    void moveUp_onAnEmptyList_isRefused()
    {
        Desk desk;
        for (const char* action : {"Toolbar1_up", "mnuTracksSub_1", "Toolbar1_down", "mnuTracksSub_2"}) {
            desk.desk.messages.shown.clear();
            desk.trigger(action);
            QCOMPARE(desk.desk.messages.shown,
                     QStringList{"i: There are no files in the list!\nPlease add some files first!"});
        }
    }
    void moveUp_fromTheTop_isRefused()
    {
        Desk desk;
        desk.addThree();
        desk.list()->selectRow(0);
        desk.trigger("mnuTracksSub_1");
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: The current selected row is already at the top,\n"
                                                       "Can not move up any more!"});
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "b.wav", "c.wav"}));
    }
    void moveDown_fromTheBottom_isRefused()
    {
        Desk desk;
        desk.addThree();
        desk.list()->selectRow(2);
        desk.trigger("mnuTracksSub_2");
        QCOMPARE(desk.desk.messages.shown,
                 QStringList{"i: The current selected row is already at the bottom,\n"
                             "Can not move down any more!"});
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "b.wav", "c.wav"}));
    }
    void moveUp_withoutSelection_countsAsTheTop()
    {
        Desk desk;
        desk.addThree();
        desk.list()->clearSelection();
        desk.trigger("Toolbar1_up");
        QCOMPARE(desk.desk.messages.shown.size(), 1);
        desk.trigger("Toolbar1_down");
        QCOMPARE(desk.desk.messages.shown.size(), 1);
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "b.wav", "c.wav"}));
    }
    void move_exchangesTheFilesButNeitherNumberNorTick()
    {
        Desk desk;
        desk.add({desk.sound("a.wav"), desk.sound("b.wav", 1000, 5000, "B", "Bee"),
                  desk.sound("c.wav", 2000, 9000, "C", "Cee")});
        desk.tick(1);
        desk.list()->selectRow(2);
        desk.trigger("Toolbar1_up");
        QCOMPARE(desk.column(Number), (QStringList{"1", "2", "3"}));
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "c.wav", "b.wav"}));
        QCOMPARE(desk.column(Title), (QStringList{"", "C", "B"}));
        QCOMPARE(desk.column(Artist), (QStringList{"", "Cee", "Bee"}));
        QCOMPARE(desk.column(Time), (QStringList{"01:00:00", "00:02:00", "00:01:00"}));
        QCOMPARE(desk.column(FileSize), (QStringList{"2 KB", "10 KB", "6 KB"}));
        QVERIFY(desk.ticked(1) && !desk.ticked(2));
        QCOMPARE(desk.list()->selectionModel()->selectedRows().value(0).row(), 1);
    }
    void moveUp_fromTheSecondRow_reachesTheTop()
    {
        Desk desk;
        desk.addThree();
        desk.list()->selectRow(1);
        desk.trigger("mnuTracksSub_1");
        QCOMPARE(desk.column(FileName), (QStringList{"b.wav", "a.wav", "c.wav"}));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void moveDown_twice_carriesTheSelectionAlong()
    {
        Desk desk;
        desk.addThree();
        desk.list()->selectRow(0);
        desk.trigger("Toolbar1_down");
        desk.trigger("mnuTracksSub_2");
        QCOMPARE(desk.column(FileName), (QStringList{"b.wav", "c.wav", "a.wav"}));
        QCOMPARE(desk.list()->selectionModel()->selectedRows().value(0).row(), 2);
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }

    void tickAll_andUntickAll_reachEveryRow()
    {
        Desk desk;
        desk.addThree();
        desk.tick(1);
        desk.trigger("mnuTracksSub_4");
        for (int row = 0; row < 3; ++row)
            QVERIFY(desk.ticked(row));
        desk.trigger("mnuTracksSub_5");
        for (int row = 0; row < 3; ++row)
            QVERIFY(!desk.ticked(row));
    }
    void tickAll_onAnEmptyList_doesNothing()
    {
        Desk desk;
        desk.trigger("mnuTracksSub_4");
        desk.trigger("mnuTracksSub_5");
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void tick_byTheMouseAndTheKeyboard_changesTheRowsBox()
    {
        Desk desk;
        desk.addThree();
        const QRect cell = desk.list()->visualRect(desk.list()->model()->index(1, 0));
        QTest::mouseClick(desk.list()->viewport(), Qt::LeftButton, {}, {cell.left() + 10, cell.center().y()});
        QVERIFY(desk.ticked(1));
        QVERIFY(desk.focusList());
        desk.list()->setCurrentIndex(desk.list()->model()->index(2, FileName));
        QTest::keyClick(desk.list(), Qt::Key_Space);
        QVERIFY(desk.ticked(2));
        QTest::keyClick(desk.list(), Qt::Key_Space);
        QVERIFY(!desk.ticked(2));
    }
    void remove_onAnEmptyList_isRefused()
    {
        Desk desk;
        desk.trigger("mnuTracksSub_7");
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: There are no files in the list!"});
    }
    void remove_withoutTicks_isRefusedAndRefreshesTheTotals()
    {
        Desk desk;
        desk.window().AddOneFileToList(desk.sound("a.wav"));
        desk.list()->selectRow(0);
        desk.trigger("Toolbar1_delete"); // The selected row is not what it deletes.
        QCOMPARE(desk.desk.messages.shown, QStringList{"i: There are no files checked in the list, \n"
                                                       "please check files to delete from the list!"});
        QCOMPARE(desk.rows(), 1);
        QCOMPARE(desk.panel(2), QString("Total Files: 1"));
    }
    void remove_tickedRows_keepsTheOthersAndNumbersThem()
    {
        Desk desk;
        desk.add({desk.sound("a.wav"), desk.sound("b.wav"), desk.sound("c.wav"), desk.sound("d.wav"),
                  desk.sound("e.wav")});
        for (const int row : {0, 2, 3})
            desk.tick(row);
        desk.trigger("mnuTracksSub_7");
        QCOMPARE(desk.column(FileName), (QStringList{"b.wav", "e.wav"}));
        QCOMPARE(desk.column(Number), (QStringList{"1", "2"}));
        QVERIFY(!desk.ticked(0) && !desk.ticked(1));
        QCOMPARE(desk.panel(1), QString("Total Time: 02:04:00"));
        QCOMPARE(desk.panel(2), QString("Total Files: 2"));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void remove_everySecondOfManyRows_keepsTheRest()
    {
        Desk desk;
        desk.desk.components.makeInformation = [] { return std::make_unique<SlowInformation>(); };
        QStringList kept;
        const QStringList paths = names(100);
        for (const QString& path : paths)
            desk.window().AddOneFileToList(path);
        for (int row = 0; row < 100; ++row)
            if (row % 2 == 0)
                desk.tick(row);
            else
                kept << paths[row].section('/', -1);
        desk.trigger("Toolbar1_delete");
        QCOMPARE(desk.column(FileName), kept);
        QCOMPARE(desk.column(Number).last(), QString("50"));
        desk.window().AddOneFileToList(paths[1]);
        QCOMPARE(desk.rows(), 50);
        desk.window().AddOneFileToList(paths[0]);
        QCOMPARE(desk.rows(), 51);
    }
    void deleteKey_inTheList_removesTheTickedRows()
    {
        Desk desk;
        desk.addThree();
        desk.tick(2);
        QVERIFY(desk.focusList());
        QTest::keyClick(desk.list(), Qt::Key_Delete);
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "b.wav"}));
    }
    void deleteKey_outsideTheList_removesNothing()
    {
        Desk desk;
        desk.addThree();
        desk.tick(2);
        QVERIFY(desk.focusList());
        auto* elsewhere = desk.control<QWidget>("Toolbar1");
        elsewhere->setFocusPolicy(Qt::StrongFocus);
        elsewhere->setFocus();
        QVERIFY(elsewhere->hasFocus());
        QTest::keyClick(elsewhere, Qt::Key_Delete);
        QCOMPARE(desk.rows(), 3);
    }
    void clear_asksNothingAndLeavesTheOldTotals()
    {
        Desk desk;
        desk.addThree();
        desk.trigger("mnuTracksSub_8");
        QCOMPARE(desk.rows(), 0);
        QCOMPARE(desk.desk.messages.shown, QStringList());
        QCOMPARE(desk.panel(1), QString("Total Time: 03:06:00"));
        QCOMPARE(desk.panel(2), QString("Total Files: 3"));
        QVERIFY(TotalMinutes > 3);
        desk.add({desk.sound("d.wav", 30000)});
        QCOMPARE(desk.panel(1), QString("Total Time: 00:32:00"));
        QCOMPARE(desk.panel(2), QString("Total Files: 1"));
    }

    void play_onAnEmptyList_isRefused()
    {
        Desk desk;
        for (const char* action : {"Toolbar1_play", "mnuTracksSub_10"}) {
            desk.desk.messages.shown.clear();
            desk.trigger(action);
            QCOMPARE(desk.desk.messages.shown, QStringList{"i: There are no files in the list to play."});
        }
    }
    void play_withoutSelection_doesNothing()
    {
        Desk desk;
        desk.addThree();
        desk.list()->clearSelection();
        desk.trigger("Toolbar1_play");
        QCOMPARE(desk.desk.windows.shown, QStringList());
        QCOMPARE(::CurrentFile, QString());
    }
    void play_theSelectedRow_sharesItsPathFirst()
    {
        Desk desk;
        desk.addThree();
        desk.list()->selectRow(1);
        QString shared;
        desk.desk.windows.onShow = [&](const QString&) { shared = ::CurrentFile; };
        desk.trigger("mnuTracksSub_10");
        QCOMPARE(desk.desk.windows.shown, QStringList{"play"});
        QCOMPARE(shared, desk.folder.filePath("b.wav"));
    }
    void doubleClick_onARow_playsIt()
    {
        Desk desk;
        desk.addThree();
        const QPoint at = desk.list()->visualRect(desk.list()->model()->index(2, FileName)).center();
        QTest::mouseClick(desk.list()->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(desk.list()->viewport(), Qt::LeftButton, {}, at);
        QCOMPARE(desk.desk.windows.shown, QStringList{"play"});
        QCOMPARE(::CurrentFile, desk.folder.filePath("c.wav"));
    }
    void returnKey_inTheList_playsTheSelectedRow()
    {
        Desk desk;
        desk.addThree();
        QVERIFY(desk.focusList());
        desk.list()->selectRow(0);
        QTest::keyClick(desk.list(), Qt::Key_Return);
        QCOMPARE(desk.desk.windows.shown, QStringList{"play"});
        QCOMPARE(::CurrentFile, desk.folder.filePath("a.wav"));
    }

    void drop_ofFiles_addsThemLikeTheDialog()
    {
        Desk desk;
        const QString text = desk.file("letter.txt");
        drop(desk.window(), {desk.sound("a.wav"), text, desk.sound("b.wav")});
        QTRY_COMPARE(desk.panel(2), QString("Total Files: 2"));
        QCOMPARE(desk.column(FileName), (QStringList{"a.wav", "b.wav"}));
        QCOMPARE(desk.desk.messages.shown, QStringList{kNotAudio + text});
    }

    void adding_manyFiles_tellsTheListInBatches()
    {
        Desk desk;
        desk.desk.components.makeInformation = [] { return std::make_unique<SlowInformation>(); };
        QSignalSpy news(desk.list()->model(), &QAbstractItemModel::rowsInserted);
        addMany(desk, 200);
        QCOMPARE(desk.rows(), 200);
        QVERIFY2(news.size() <= 100, qPrintable(QString::number(news.size())));
        QCOMPARE(desk.column(Number).last(), QString("200"));
        QCOMPARE(desk.panel(2), QString("Total Files: 200"));
    }
    void adding_manyFiles_leavesTheWindowAlive()
    {
        Desk desk;
        desk.desk.components.makeInformation = [] { return std::make_unique<SlowInformation>(); };
        int beats = 0;
        QString busyText;
        QTimer heart;
        connect(&heart, &QTimer::timeout, this, [&] {
            ++beats;
            busyText = desk.control<QStatusBar>("StatusBar1")->currentMessage();
        });
        heart.start(1);
        addMany(desk, 100);
        QVERIFY(beats > 0);
        QVERIFY2(busyText.contains("100"), qPrintable(busyText));
        QCOMPARE(desk.control<QStatusBar>("StatusBar1")->currentMessage(), QString());
    }
    void commands_whileFilesAreAdded_wait()
    {
        Desk desk;
        desk.desk.components.makeInformation = [] { return std::make_unique<SlowInformation>(); };
        desk.window();
        bool tried = false;
        QTimer::singleShot(0, this, [&] {
            tried = true;
            for (const char* action : {"mnuTracksSub_8", "mnuFileSub_1", "mnuFileSub_4", "Toolbar1_delete",
                                       "Toolbar1_write", "mnuFileSub_5", "Toolbar1_up", "Toolbar1_options"})
                desk.trigger(action);
            drop(desk.window(), {"/music/dropped.wav"});
        });
        addMany(desk, 100);
        QCoreApplication::processEvents();
        QVERIFY(tried);
        QCOMPARE(desk.rows(), 100);
        QCOMPARE(desk.desk.windows.shown, QStringList());
        QCOMPARE(desk.desk.messages.shown, QStringList());
        QVERIFY(desk.action("Toolbar1_add")->isEnabled());
        desk.trigger("mnuTracksSub_8");
        QCOMPARE(desk.rows(), 0);
    }
    void closing_whileFilesAreAdded_endsTheAdding_data()
    {
        QTest::addColumn<bool>("byCommand");
        QTest::newRow("its cross") << false;
        QTest::newRow("Exit") << true;
    }
    void closing_whileFilesAreAdded_endsTheAdding()
    {
        QFETCH(bool, byCommand);
        Desk desk;
        desk.desk.components.makeInformation = [] { return std::make_unique<SlowInformation>(); };
        desk.window();
        QTimer::singleShot(0, this, [&] {
            if (byCommand)
                desk.trigger("mnuFileSub_9");
            else
                desk.window().close();
        });
        addMany(desk, 1000);
        QVERIFY(!desk.window().isVisible());
        QVERIFY(desk.rows() < 1000);
    }

private:
    static void addMany(Desk& desk, int count)
    {
        QStringList parts{"/music"};
        for (const QString& path : names(count))
            parts << path.section('/', -1);
        desk.desk.dialogs.files << parts.join(QChar(QChar::Null));
        desk.trigger("Toolbar1_add");
    }
};

QTEST_MAIN(TestCompilation)
#include "tst_compilation.moc"
