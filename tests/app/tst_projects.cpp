#include "app/Desk.h"

#include <QSemaphore>
#include <QTimer>
#include <QWindow>

namespace {

constexpr int kFileName = 1;

/// Writes only when it is let go.
class SlowDisk final : public zib::IniService
{
public:
    QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                        const QByteArray& fallback, int size, const QString& file) override
    {
        return m_files.GetPrivateProfileStringA(section, key, fallback, size, file);
    }
    bool WritePrivateProfileStringA(const QByteArray&, const std::optional<QByteArray>&,
                                    const std::optional<QByteArray>&, const QString&) override
    {
        return false;
    }
    bool writeAll(const QList<zib::IniChange>& changes, const QString& file) override
    {
        go.acquire();
        const bool written = m_files.writeAll(changes, file);
        done.release();
        return written;
    }

    QSemaphore go;
    QSemaphore done;

private:
    zib::IniFile m_files;
};
const QString kFilter = "Project Files(*.zibp)|*.zibp|All Files(*.*)|*.*";

} // namespace

/// The project commands of the File menu.
class TestProjects : public QObject
{
    Q_OBJECT
private slots:
    void save_onAnEmptyList_isRefusedAndWritesNothing()
    {
        Desk desk;
        const QString project = saved(desk);
        const QByteArray before = content(project);
        desk.trigger("mnuTracksSub_8");
        for (const char* item : {"mnuFileSub_6", "mnuFileSub_7"}) {
            desk.desk.messages.shown.clear();
            desk.trigger(item);
            QCOMPARE(desk.desk.messages.shown,
                     QStringList{"i: There are no files in the list, need not to save."});
        }
        QCOMPARE(content(project), before);
        QCOMPARE(desk.desk.dialogs.saved.size(), 1);
    }
    void title_ofANameWithTheMarkOfChanges_showsItWhole()
    {
        Desk desk;
        desk.addThree();
        const QString project = desk.folder.filePath("Mix[*].zibp");
        desk.desk.dialogs.files << project;
        desk.trigger("mnuFileSub_7");
        QCOMPARE(desk.window().windowHandle()->title(), "Zib CD Burner - " + project);
    }
    void save_withoutAName_asksForOneAndShowsIt()
    {
        Desk desk;
        desk.addThree();
        const QString project = desk.folder.filePath("My Mix.zibp");
        desk.desk.dialogs.files << "  " + project + " ";
        desk.trigger("mnuFileSub_6");
        const zib::FileDialogRequest request = desk.desk.dialogs.saved.first();
        QCOMPARE(request.title, QString("Save Project As"));
        QCOMPARE(request.filter, kFilter);
        QCOMPARE(request.flags, 0x280800u);
        QCOMPARE(desk.window().windowTitle(), "Zib CD Burner - " + project);
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("3"));
        QCOMPARE(read(desk, project, "Files", "File1"), desk.folder.filePath("a.wav"));
        QCOMPARE(read(desk, project, "Files", "File3"), desk.folder.filePath("c.wav"));
    }
    void save_withAName_writesWithoutAsking()
    {
        Desk desk;
        const QString project = saved(desk);
        desk.add({desk.sound("d.wav")});
        desk.trigger("mnuFileSub_6");
        QCOMPARE(desk.desk.dialogs.saved.size(), 1);
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("4"));
    }
    void save_whenTheDialogIsCancelled_changesNothing()
    {
        Desk desk;
        desk.addThree();
        desk.trigger("mnuFileSub_6");
        desk.trigger("mnuFileSub_7");
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
        QCOMPARE(QDir(desk.folder.path()).entryList({"*.zibp"}), QStringList());
    }
    void save_withABlankName_changesNothing()
    {
        Desk desk;
        desk.addThree();
        desk.desk.dialogs.files << "   ";
        desk.trigger("mnuFileSub_7");
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
    }
    void saveAs_withAnotherName_leavesTheFirstFile()
    {
        Desk desk;
        const QString first = saved(desk);
        const QByteArray before = content(first);
        desk.add({desk.sound("d.wav")});
        const QString second = desk.folder.filePath("typed without extension");
        desk.desk.dialogs.files << second;
        desk.trigger("mnuFileSub_7");
        QCOMPARE(content(first), before);
        QCOMPARE(read(desk, second, "General", "FileCount"), QString("4"));
        QCOMPARE(desk.window().windowTitle(), "Zib CD Burner - " + second);
    }
    void save_ofAShorterList_leavesTheRestOfTheFile()
    {
        Desk desk;
        const QString project = desk.folder.filePath("old.zibp");
        write(desk, project, "Mine", "Colour", "blue");
        for (const char* key : {"File1", "File2", "File3", "File4", "File5"})
            write(desk, project, "Files", key, "/x.wav");
        desk.addThree();
        desk.desk.dialogs.files << project;
        desk.trigger("mnuFileSub_7");
        QCOMPARE(read(desk, project, "Files", "File4"), QString("/x.wav"));
        QCOMPARE(read(desk, project, "Files", "File5"), QString("/x.wav"));
        QCOMPARE(read(desk, project, "Mine", "Colour"), QString("blue"));
        open(desk, project);
        QCOMPARE(desk.rows(), 3);
    }
    void save_thatFails_saysWhy_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing folder") << "missing/a.zibp"
                                        << "Its folder does not exist.";
        QTest::newRow("a folder") << "sub"
                                  << "There is a folder of this name.";
    }
    void save_thatFails_saysWhy()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        Desk desk;
        desk.addThree();
        QDir(desk.folder.path()).mkdir("sub");
        desk.trigger("mnuViewSub_7"); // Without the status bar too.
        desk.desk.dialogs.files << desk.folder.filePath(name);
        desk.trigger("mnuFileSub_7");
        QCOMPARE(desk.desk.messages.shown,
                 QStringList{"c: The project could not be written. The file is as it was before.\n\n" +
                             desk.folder.filePath(name) + '\n' + reason});
        QCOMPARE(desk.rows(), 3);
    }
    void save_ofMoreThanCanBeOpened_saysHowMany()
    {
        Desk desk;
        QStringList sounds;
        for (int i = 0; i < 201; ++i)
            sounds << desk.sound(QString("%1.wav").arg(i));
        desk.add(sounds);
        const QString project = desk.folder.filePath("long.zibp");
        desk.desk.dialogs.files << project;
        desk.trigger("mnuFileSub_6");
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("201"));
        QCOMPARE(desk.desk.messages.shown,
                 QStringList{"c: The project was saved, but it cannot be opened again: "
                             "it holds 201 files, and a project is opened with 200 at most."});
        desk.desk.messages.answer = zib::Messages::Answer::Yes;
        desk.trigger("mnuFileSub_4"); // What cannot be had again is not thrown away.
        QCOMPARE(desk.rows(), 201);
    }
    void save_onASlowDisk_leavesTheWindowAliveAndClosesAfterwards()
    {
        SlowDisk disk;
        Desk desk(&disk);
        desk.addThree();
        desk.desk.dialogs.files << desk.folder.filePath("slow.zibp");
        int beats = 0;
        QTimer heart;
        connect(&heart, &QTimer::timeout, this, [&] {
            if (++beats == 1) {
                desk.trigger("mnuTracksSub_8"); // Commands wait.
                desk.window().close();
            }
            if (beats == 10)
                disk.go.release();
        });
        heart.start(10);
        desk.trigger("mnuFileSub_6");
        QVERIFY2(beats >= 10, qPrintable(QString::number(beats)));
        QCOMPARE(desk.rows(), 3);
        QVERIFY(!desk.window().isVisible());
    }
    void save_withACommandBehindIt_doesBoth()
    {
        SlowDisk disk;
        Desk desk(&disk);
        desk.addThree();
        const QString project = desk.folder.filePath("both.zibp");
        desk.desk.dialogs.files << project;
        desk.desk.messages.answer = zib::Messages::Answer::No;
        QTimer::singleShot(0, this, [&] {
            desk.trigger("mnuFileSub_4");
            disk.go.release();
        });
        desk.trigger("mnuFileSub_6");
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("3"));
        QCOMPARE(desk.desk.messages.shown, QStringList{"q: Would you like to save this project?"});
        QCOMPARE(desk.rows(), 0);
    }
    void save_withExitBehindIt_endsAfterIt()
    {
        SlowDisk disk;
        Desk desk(&disk);
        desk.addThree();
        const QString project = desk.folder.filePath("end.zibp");
        desk.desk.dialogs.files << project;
        QTimer::singleShot(0, this, [&] { desk.trigger("mnuFileSub_9"); });
        QTimer::singleShot(400, this, [&] { disk.go.release(); });
        desk.trigger("mnuFileSub_6");
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("3"));
        QVERIFY(!desk.window().isVisible());
    }
    void save_underANameThatEndsInALineBreak_keepsIt()
    {
        Desk desk;
        desk.addThree();
        const QString project = desk.folder.filePath("odd\n");
        const QString other = desk.file("odd");
        const QByteArray before = content(other);
        desk.desk.dialogs.files << ' ' + project + ' ';
        desk.trigger("mnuFileSub_7");
        QCOMPARE(desk.window().windowTitle(), "Zib CD Burner - " + project);
        QCOMPARE(content(other), before);
        open(desk, project);
        QCOMPARE(desk.rows(), 3);
    }
    void save_onADiskThatDoesNotAnswer_canBeLeftAndKeepsTheList()
    {
        SlowDisk disk;
        {
            Desk desk(&disk);
            QVERIFY(desk.focusList());
            desk.addThree();
            desk.desk.dialogs.files << desk.folder.filePath("hung.zibp");
            desk.desk.messages.answer = zib::Messages::Answer::Yes;
            QTimer::singleShot(50, this, [&] { QTest::keyClick(&desk.window(), Qt::Key_Escape); });
            desk.trigger("mnuFileSub_4");
            QCOMPARE(desk.rows(), 3);
            QCOMPARE(desk.desk.messages.shown.size(), 2);
            QVERIFY(desk.desk.messages.shown.last().startsWith("c: The disk does not answer"));
            QVERIFY(desk.window().isVisible());
            disk.go.release();
            QVERIFY(disk.done.tryAcquire(1, 30000));
        }
    }

    void open_aProject_replacesTheList()
    {
        Desk desk;
        const QString project = saved(desk);
        desk.add({desk.sound("d.wav")});
        desk.tick(0);
        open(desk, project);
        const zib::FileDialogRequest request = desk.desk.dialogs.opened.last();
        QCOMPARE(request.title, QString("Open Project"));
        QCOMPARE(request.filter, kFilter);
        QCOMPARE(request.flags, 0x281800u);
        QCOMPARE(desk.column(kFileName), (QStringList{"a.wav", "b.wav", "c.wav"}));
        QVERIFY(!desk.ticked(0));
        QCOMPARE(desk.panel(2), QString("Total Files: 3"));
        QCOMPARE(desk.window().windowTitle(), "Zib CD Burner - " + project);
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void open_twice_givesTheSameList()
    {
        Desk desk;
        const QString project = saved(desk);
        open(desk, project);
        open(desk, project);
        QCOMPARE(desk.column(kFileName), (QStringList{"a.wav", "b.wav", "c.wav"}));
    }
    void open_withABadCount_leavesTheListButTakesTheName_data()
    {
        QTest::addColumn<QString>("count");
        for (const char* count : {"", "0", "-3", "201", "many", "99999999999"})
            QTest::newRow(count) << count;
    }
    void open_withABadCount_leavesTheListButTakesTheName()
    {
        QFETCH(QString, count);
        Desk desk;
        const QString project = desk.folder.filePath("bad.zibp");
        write(desk, project, "Files", "File1", desk.sound("x.wav"));
        if (!count.isEmpty())
            write(desk, project, "General", "FileCount", count);
        desk.addThree();
        open(desk, project);
        QCOMPARE(desk.column(kFileName), (QStringList{"a.wav", "b.wav", "c.wav"}));
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
        QCOMPARE(desk.desk.messages.shown, QStringList());
        desk.trigger("mnuFileSub_6"); // The name is the project's already, so nothing is asked.
        QCOMPARE(desk.desk.dialogs.saved.size(), 0);
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("3"));
    }
    void open_with200Files_takesThemAll()
    {
        Desk desk;
        const QString project = desk.folder.filePath("long.zibp");
        write(desk, project, "General", "FileCount", "200");
        for (int i = 1; i <= 200; ++i)
            write(desk, project, "Files", QString("File%1").arg(i), desk.sound(QString("%1.wav").arg(i)));
        open(desk, project);
        QCOMPARE(desk.rows(), 200);
    }
    void open_withAMissingKey_takesTheOthers()
    {
        Desk desk;
        const QString project = desk.folder.filePath("gap.zibp");
        write(desk, project, "General", "FileCount", "2");
        write(desk, project, "Files", "File2", desk.sound("second.wav"));
        open(desk, project);
        QCOMPARE(desk.column(kFileName), QStringList{"second.wav"});
    }
    void open_withRelativeNames_takesThemFromTheApplicationFolder()
    {
        Desk desk;
        const QString project = desk.folder.filePath("near.zibp");
        QVERIFY(QDir(desk.folder.path()).mkdir("Album"));
        write(desk, project, "General", "FileCount", "2");
        write(desk, project, "Files", "File1", "Album/first.wav");
        write(desk, project, "Files", "File2", "second.wav");
        const QString first = desk.sound("Album/first.wav");
        desk.sound("second.wav");
        open(desk, project);
        QCOMPARE(desk.column(kFileName), (QStringList{"first.wav", "second.wav"}));
        QCOMPARE(desk.cell(0, 6) + desk.cell(0, kFileName), first);
    }
    void open_withMissingFiles_dropsThemInSilence()
    {
        Desk desk;
        const QString project = saved(desk);
        QVERIFY(QFile::remove(desk.folder.filePath("b.wav")));
        open(desk, project);
        QCOMPARE(desk.column(kFileName), (QStringList{"a.wav", "c.wav"}));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void open_withAllFilesMissing_emptiesTheListAndKeepsTheTitle()
    {
        Desk desk;
        const QString project = saved(desk);
        desk.desk.messages.answer = zib::Messages::Answer::No;
        desk.trigger("mnuFileSub_4");
        for (const char* name : {"a.wav", "b.wav", "c.wav"})
            QVERIFY(QFile::remove(desk.folder.filePath(name)));
        desk.add({desk.sound("d.wav")});
        open(desk, project);
        QCOMPARE(desk.rows(), 0);
        QCOMPARE(desk.panel(2), QString("Total Files: 0"));
        QVERIFY(!desk.window().windowTitle().contains(project));
    }
    void open_withFilesThatAreNoAudio_namesEach()
    {
        Desk desk;
        const QString project = saved(desk);
        desk.shelf.sounds.remove(desk.folder.filePath("a.wav"));
        desk.shelf.sounds.remove(desk.folder.filePath("c.wav"));
        open(desk, project);
        QCOMPARE(desk.column(kFileName), QStringList{"b.wav"});
        QCOMPARE(desk.desk.messages.shown.size(), 2);
        QVERIFY(desk.desk.messages.shown.first().endsWith(desk.folder.filePath("a.wav")));
    }
    void open_whenCancelledOrMissing_changesNothing()
    {
        Desk desk;
        desk.addThree();
        desk.trigger("mnuFileSub_5");
        open(desk, "   ");
        open(desk, desk.folder.filePath("nowhere.zibp"));
        open(desk, desk.folder.path());
        QCOMPARE(desk.rows(), 3);
        desk.trigger("mnuFileSub_6"); // There is still no name, so one is asked for.
        QCOMPARE(desk.desk.dialogs.saved.size(), 1);
    }

    void newProject_onAnEmptyList_asksNothing()
    {
        Desk desk;
        desk.trigger("mnuFileSub_4");
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void newProject_onAListOfOne_asks()
    {
        Desk desk;
        desk.add({desk.sound("a.wav")});
        desk.trigger("mnuFileSub_4");
        QCOMPARE(desk.desk.messages.shown, QStringList{"q: Would you like to save this project?"});
        QCOMPARE(desk.rows(), 1);
    }
    void newProject_answeredNo_clearsListNameAndTitle()
    {
        Desk desk;
        const QString project = saved(desk);
        const QByteArray before = content(project);
        desk.add({desk.sound("d.wav")});
        desk.desk.messages.answer = zib::Messages::Answer::No;
        desk.trigger("mnuFileSub_4");
        QCOMPARE(desk.desk.messages.shown, QStringList{"q: Would you like to save this project?"});
        QCOMPARE(desk.rows(), 0);
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
        QCOMPARE(desk.panel(1), QString("Total Time: 00:00:00"));
        QCOMPARE(content(project), before);
        desk.add({desk.folder.filePath("a.wav")});
        desk.trigger("mnuFileSub_6");
        QCOMPARE(desk.desk.dialogs.saved.size(), 2); // The name is gone, so one is asked for.
    }
    void newProject_answeredYes_savesFirst()
    {
        Desk desk;
        const QString project = saved(desk);
        desk.add({desk.sound("d.wav")});
        desk.desk.messages.answer = zib::Messages::Answer::Yes;
        desk.trigger("mnuFileSub_4");
        QCOMPARE(read(desk, project, "General", "FileCount"), QString("4"));
        QCOMPARE(desk.rows(), 0);
    }
    void newProject_answeredYesAndNotSaved_keepsTheList()
    {
        Desk desk;
        desk.addThree();
        desk.desk.messages.answer = zib::Messages::Answer::Yes;
        desk.trigger("mnuFileSub_4"); // No name is given.
        QCOMPARE(desk.desk.dialogs.saved.size(), 1);
        QCOMPARE(desk.rows(), 3);
        desk.desk.dialogs.files << desk.folder.filePath("missing/a.zibp");
        desk.trigger("mnuFileSub_4");
        QCOMPARE(desk.rows(), 3);
        QVERIFY(desk.desk.messages.shown.last().startsWith("c: The project could not be written."));
    }
    void newProject_answeredCancel_keepsEverything()
    {
        Desk desk;
        const QString project = saved(desk);
        desk.trigger("mnuFileSub_4");
        QCOMPARE(desk.rows(), 3);
        QCOMPARE(desk.window().windowTitle(), "Zib CD Burner - " + project);
    }

private:
    /// A project of three tracks, saved through the menu.
    static QString saved(Desk& desk)
    {
        desk.addThree();
        const QString project = desk.folder.filePath("mix.zibp");
        desk.desk.dialogs.files << project;
        desk.trigger("mnuFileSub_7");
        return project;
    }
    static void open(Desk& desk, const QString& project)
    {
        desk.desk.dialogs.files << project;
        desk.trigger("mnuFileSub_5");
    }
    static QByteArray content(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString read(Desk& desk, const QString& file, const char* section, const char* key)
    {
        return QString::fromUtf8(desk.ini.GetPrivateProfileStringA(section, key, "", 4096, file));
    }
    static void write(Desk& desk, const QString& file, const char* section, const QString& key,
                      const QString& value)
    {
        desk.ini.WritePrivateProfileStringA(section, key.toUtf8(), value.toUtf8(), file);
    }
};

QTEST_MAIN(TestProjects)
#include "tst_projects.moc"
