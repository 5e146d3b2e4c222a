#include "app/Desk.h"
#include "app/Wav.h"
#include "engines/audio/makers.h"
#include "fakes/Heartbeat.h"

#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QSemaphore>
#include <QStatusBar>
#include <QTimer>

#include <atomic>

namespace {

constexpr int kFileName = 1;
constexpr qint64 kFrozenMs = 400; // the goal is 100; a disk that is busy with others may hold up a page
const QString kNotAudio = "c: The following file could not be added, it is not audio file \n"
                          "or the audio type is not supported.\n\n";

/// Lets a reader go on, and counts the files it has looked at.
struct Gate : QSemaphore
{
    std::atomic<int> looks = 0;
};

/// Answers for files of the name "hung" only when it is let go.
class StuckInformation final : public AnySound
{
public:
    explicit StuckInformation(std::shared_ptr<Gate> go) : m_go(std::move(go)) {}
    bool isAudioFile(const QString& path) override
    {
        ++m_go->looks;
        if (path.contains("hung"))
            m_go->acquire();
        return true;
    }

private:
    std::shared_ptr<Gate> m_go;
};

} // namespace

/// What is dropped on the window: files, folders, projects, and very many of them.
class TestDrops : public QObject
{
    Q_OBJECT
private slots:
    void drop_ofAFolder_addsAllInItInNaturalOrder()
    {
        Desk desk;
        QDir home(desk.folder.path());
        for (const char* folder : {"Album/CD 10", "Album/CD 2", "Album/.hidden"})
            home.mkpath(folder);
        for (const char* name :
             {"Album/10.wav", "Album/9.wav", "Album/b.wav", "Album/A.wav", "Album/.secret.wav",
              "Album/CD 2/1.wav", "Album/CD 10/1.wav", "Album/.hidden/x.wav"})
            desk.sound(name);
        desk.file("Album/list.zibp");
        QVERIFY(QFile::link(home.filePath("Album"), home.filePath("Album/circle")));
        drop(desk.window(), {home.filePath("Album") + '/'});
        QTRY_COMPARE(desk.panel(2), QString("Total Files: 6"));
        QCOMPARE(desk.column(kFileName),
                 (QStringList{"9.wav", "10.wav", "A.wav", "b.wav", "1.wav", "1.wav"}));
        QVERIFY(desk.cell(4, 6).endsWith("CD 2/"));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void drop_besideAWindowThatIsToBeAnswered_isRefused()
    {
        Desk desk;
        desk.addThree();
        {
            QDialog question(&desk.window());
            question.open();
            QTRY_COMPARE(QApplication::activeModalWidget(), &question);
            drop(desk.window(), {desk.sound("d.wav")});
            QCoreApplication::processEvents();
            QCOMPARE(desk.rows(), 3);
        }
        drop(desk.window(), {desk.folder.filePath("d.wav")});
        QTRY_COMPARE(desk.rows(), 4);
    }
    void drop_ofWhatIsNoAudio_isToldInOneBoxAtItsEnd()
    {
        Desk desk;
        QDir(desk.folder.path()).mkpath("In");
        QStringList paths{desk.folder.filePath("In"), desk.sound("last.wav")};
        for (int i = 10; i < 23; ++i)
            desk.file(QString("In/%1.txt").arg(i));
        desk.desk.messages.onShow = [&](const QString&) { QCOMPARE(desk.rows(), 1); };
        drop(desk.window(), paths);
        QTRY_COMPARE(desk.desk.messages.shown.size(), 1);
        const QString text = desk.desk.messages.shown.first();
        QVERIFY2(text.startsWith("c: The following files could not be added"), qPrintable(text));
        QVERIFY2(text.endsWith(desk.folder.filePath("In/19.txt") + "\nand 3 more"), qPrintable(text));
    }
    void drop_ofOneFileThatIsNoAudio_saysWhatTheDialogSays()
    {
        Desk desk;
        const QString text = desk.file("letter.txt");
        drop(desk.window(), {text, desk.sound("a.wav")});
        QTRY_COMPARE(desk.desk.messages.shown, QStringList{kNotAudio + text});
        QCOMPARE(desk.rows(), 1);
    }
    void drop_ofAProjectAlone_opensIt()
    {
        Desk desk;
        desk.add({desk.sound("old.wav")});
        const QString project = savedProject(desk, {desk.sound("a.wav"), desk.sound("b.wav")});
        drop(desk.window(), {project});
        QTRY_COMPARE(desk.column(kFileName), (QStringList{"a.wav", "b.wav"}));
        QTRY_COMPARE(desk.window().windowTitle(), "Zib CD Burner - " + project);
        QCOMPARE(desk.panel(2), QString("Total Files: 2"));
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void drop_ofAProjectAmongOthers_losesNothing()
    {
        Desk desk;
        desk.add({desk.sound("old.wav")});
        const QString project = savedProject(desk, {desk.sound("a.wav"), desk.sound("b.wav")});
        drop(desk.window(), {desk.sound("c.wav"), project});
        QTRY_COMPARE(desk.column(kFileName), (QStringList{"old.wav", "c.wav", "a.wav", "b.wav"}));
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
    }
    void drop_ofAProjectThatCannotBeOpened_isTold()
    {
        Desk desk;
        const QString project = desk.file("broken.zibp");
        desk.addThree();
        drop(desk.window(), {project});
        QTRY_COMPARE(desk.desk.messages.shown,
                     QStringList{"c: The following projects could not be opened.\n\n" + project});
        QCOMPARE(desk.rows(), 3);
    }
    void drop_ofAddressesOfTheWeb_isNotAccepted()
    {
        Desk desk;
        QMimeData data;
        data.setUrls({QUrl("https://example.org/song.mp3")});
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&desk.window(), &enter);
        QVERIFY(!enter.isAccepted());
    }
    void escape_whileAFileHangs_keepsWhatIsListed()
    {
        const auto go = std::make_shared<Gate>();
        Desk desk;
        desk.desk.components.makeInformation = [go] { return std::make_unique<StuckInformation>(go); };
        desk.set("View", "Show Statusbar", "False");
        QVERIFY(desk.focusList());
        QString said;
        int beats = 0;
        QTimer heart;
        connect(&heart, &QTimer::timeout, this, [&] {
            auto* label = desk.control<QLabel>("lblProgress");
            if (!label->isVisible() || ++beats < 5)
                return;
            said = label->text();
            QTest::keyClick(&desk.window(), Qt::Key_Escape);
        });
        heart.start(10);
        desk.add({desk.file("a.wav"), desk.file("b.wav"), desk.file("hung.wav"), desk.file("z.wav")});
        heart.stop();
        QVERIFY2(said.startsWith("Adding files: 2 of 4") && said.contains("Esc"), qPrintable(said));
        QCOMPARE(desk.column(kFileName), (QStringList{"a.wav", "b.wav"}));
        QCOMPARE(desk.panel(2), QString("Total Files: 2"));
        QVERIFY(!desk.control<QLabel>("lblProgress")->isVisible());
        desk.add({desk.file("c.wav")}); // The thread that hangs is no hindrance.
        QCOMPARE(desk.rows(), 3);
        QCOMPARE(desk.desk.messages.shown, QStringList());
        const auto inUse = go.use_count();
        go->release();
        QTRY_COMPARE(go.use_count(), inUse - 1); // The thread has ended ...
        QCOMPARE(go->looks.load(), 4);           // ... and left z.wav alone.
    }
    void escape_whileAProjectIsOpened_doesNotTieTheRestToIt()
    {
        const auto go = std::make_shared<Gate>();
        Desk desk;
        desk.desk.components.makeInformation = [go] { return std::make_unique<StuckInformation>(go); };
        QVERIFY(desk.focusList());
        const QString project = savedProject(desk, {desk.file("a.wav"), desk.file("hung.wav")});
        QTimer::singleShot(300, this, [&] { QTest::keyClick(&desk.window(), Qt::Key_Escape); });
        desk.desk.dialogs.files << project;
        desk.trigger("mnuFileSub_5");
        QCOMPARE(desk.column(kFileName), QStringList{"a.wav"});
        QCOMPARE(desk.window().windowTitle(), QString("Zib CD Burner"));
        desk.trigger("mnuFileSub_6"); // A part of the project must not replace it: a name is asked for.
        QCOMPARE(desk.desk.dialogs.saved.size(), 1);
        go->release();
    }
    void drop_ofTenThousandMixed_keepsTheWindowAlive()
    {
        Desk desk;
        desk.desk.components.makeInformation = zib::makeAudioInformation;
        const QStringList paths = manyThings(desk);
        desk.window();
        QElapsedTimer clock;
        clock.start();
        Heartbeat heart;
        drop(desk.window(), paths);
        QTRY_COMPARE_WITH_TIMEOUT(desk.desk.messages.shown.size(), 1, 300000);
        qInfo("10,000 things in %lld ms; longest wait %lld ms (goal 100)", clock.elapsed(),
              heart.longestMs());
        QCOMPARE(desk.rows(), 9400);
        QVERIFY(heart.longestMs() <= kFrozenMs);
        for (const auto& [key, modifier] :
             {std::pair(Qt::Key_End, Qt::NoModifier), std::pair(Qt::Key_A, Qt::ControlModifier),
              std::pair(Qt::Key_Space, Qt::NoModifier), std::pair(Qt::Key_Delete, Qt::NoModifier)}) {
            QVERIFY(desk.focusList());
            Heartbeat beat;
            QTest::keyClick(desk.list(), key, modifier);
            qInfo("key %d among 9,400 rows: %lld ms (goal 100)", key, beat.longestMs());
            QVERIFY(beat.longestMs() <= kFrozenMs);
        }
        QCOMPARE(desk.column(kFileName), QStringList{"19-19.wav"});
    }

private:
    static QString savedProject(Desk& desk, const QStringList& files)
    {
        const QString project = desk.folder.filePath("mix.zibp");
        desk.ini.WritePrivateProfileStringA("General", QByteArray("FileCount"),
                                            QByteArray::number(files.size()), project);
        for (qsizetype i = 0; i < files.size(); ++i)
            desk.ini.WritePrivateProfileStringA("Files", "File" + QByteArray::number(i + 1),
                                                files[i].toUtf8(), project);
        return project;
    }
    static void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("Cannot write %s", qPrintable(path));
    }
    /// 5,000 files, 50 folders of 80, 20 projects of 20 files elsewhere: 9,400 tracks; and 600 letters.
    static QStringList manyThings(Desk& desk)
    {
        const QByteArray sound = wav(40, 40);
        const QDir home(desk.folder.path());
        QStringList paths;
        for (int i = 0; i < 5600; ++i) {
            paths << home.filePath(QString("%1 track.%2").arg(i).arg(i < 5000 ? "wav" : "txt"));
            write(paths.last(), i < 5000 ? sound : QByteArray("Dear reader"));
        }
        for (int folder = 0; folder < 50; ++folder) {
            paths << home.filePath(QString("Folder %1").arg(folder));
            QDir().mkpath(paths.last() + "/deeper");
            for (int i = 0; i < 80; ++i)
                write(paths.last() + (i % 2 ? "/deeper/" : "/") + QString("%1.wav").arg(i), sound);
        }
        home.mkpath("elsewhere");
        for (int project = 0; project < 20; ++project) {
            QByteArray text = "[General]\nFileCount=20\n[Files]\n";
            for (int i = 0; i < 20; ++i) {
                const QString file = home.filePath(QString("elsewhere/%1-%2.wav").arg(project).arg(i));
                write(file, sound);
                text += "File" + QByteArray::number(i + 1) + '=' + file.toUtf8() + '\n';
            }
            paths << home.filePath(QString("%1.zibp").arg(project));
            write(paths.last(), text);
        }
        return paths;
    }
};

QTEST_MAIN(TestDrops)
#include "tst_drops.moc"
