#include "app/WindowBook.h"
#include "app/frmMain.h"
#include "common/GenralMacro.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeCDRipperX.h"
#include "fakes/FakeDVDWriterPro.h"
#include "fakes/FakePrinter.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

/// A main window and the real book of windows, with everything outside faked.
struct Library
{
    Library()
    {
        zib::setApplicationFolder(folder.path());
        for (const char* key : {"Show Splash Screen", "Show Tips Of Day"})
            ini.WritePrivateProfileStringA("View", QByteArray(key), QByteArray("False"),
                                           folder.filePath("settings.ini"));
        desk.components.makeInformation = [this] {
            return std::make_unique<zib::FakeAudioInformation>(shelf);
        };
        desk.components.makeFile = [this] { return std::make_unique<zib::FakeAudioFile>(shelf); };
        desk.components.makePlayer = [] { return std::make_unique<zib::FakeAudioPlayer>(); };
        desk.components.makeWriter = [] { return std::make_unique<zib::FakeDVDWriterPro>(); };
        desk.components.makeRipper = [] { return std::make_unique<zib::FakeCDRipperX>(); };
        desk.components.makePrinter = [this] { return std::make_unique<zib::FakePrinter>(tray); };
        main = std::make_unique<frmMain>(book.services());
        book.setMainWindow(main.get());
        main->show();
    }
    /// Does something with the next modal window and closes it; remembers whose child it was.
    void atNext(const std::function<void(QWidget*)>& act = {})
    {
        QTimer::singleShot(0, &timer, [this, act] {
            QWidget* window = QApplication::activeModalWidget();
            if (!window) {
                atNext(act);
                return;
            }
            met << window->objectName();
            owner = window->parentWidget();
            if (act)
                act(window);
            window->close();
        });
    }

    zib::FakePrinter::Tray tray;
    QTemporaryDir folder;
    zib::IniFile ini;
    zib::FakeDesk desk{&ini};
    zib::FakeAudioShelf shelf;
    zib::WindowBook book{desk.messages, desk.dialogs, desk.components};
    std::unique_ptr<frmMain> main;
    QStringList met;
    QWidget* owner = nullptr;
    QObject timer;
};

using Opening = void (*)(Library&);

} // namespace

Q_DECLARE_METATYPE(Opening)

/// The book opens each window modally over its owner, and carries the news of one to another.
class TestWindowBook : public QObject
{
    Q_OBJECT
private slots:
    void show_opensTheWindowModallyAndReturnsWhenItCloses_data()
    {
        QTest::addColumn<Opening>("opening");
        const auto row = [](const char* name, Opening opening) { QTest::newRow(name) << opening; };
        row("frmSplash", [](Library& l) { l.book.showSplash(l.main.get()); });
        row("frmTip", [](Library& l) { l.book.showTip(l.main.get()); });
        row("frmAbout", [](Library& l) { l.book.showAbout(l.main.get()); });
        row("frmOptions", [](Library& l) { l.book.showOptions(l.main.get()); });
        row("frmWrite", [](Library& l) { l.book.showWrite(l.main.get(), {}, {}); });
        row("frmRip", [](Library& l) { l.book.showRip(l.main.get()); });
        row("frmMP3ToWAV", [](Library& l) { l.book.showMP3ToWAV(l.main.get()); });
        row("frmPlayer", [](Library& l) { l.book.showPlayer(l.main.get()); });
        row("frmPlay", [](Library& l) { l.book.showPlay(l.main.get()); });
        row("frmLabelDesigner", [](Library& l) { l.book.showLabelDesigner(l.main.get(), {}); });
    }
    void show_opensTheWindowModallyAndReturnsWhenItCloses()
    {
        QFETCH(Opening, opening);
        Library library;
        library.atNext();
        opening(library);
        QCOMPARE(library.met, QStringList{QTest::currentDataTag()});
        QCOMPARE(library.owner, library.main.get());
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY(library.main->isVisible());
    }
    void designer_opensItsDialogsOverItself_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("window");
        QTest::newRow("title") << "Title"
                               << "frmLabelTitle";
        QTest::newRow("background") << "cmdBack"
                                    << "frmLabelBack";
        QTest::newRow("list") << "cmdList"
                              << "frmLabelList";
        QTest::newRow("print") << "cmdPrint"
                               << "frmPreview";
        QTest::newRow("calibrate") << "cmdCalibrate"
                                   << "frmCalibrate";
    }
    void designer_opensItsDialogsOverItself()
    {
        QFETCH(QString, button);
        QFETCH(QString, window);
        Library library;
        library.atNext([&](QWidget* designer) {
            library.atNext();
            designer->findChild<QAbstractButton*>(button)->click();
            QCOMPARE(library.owner, designer);
        });
        library.book.showLabelDesigner(library.main.get(), {});
        QCOMPARE(library.met, (QStringList{"frmLabelDesigner", window}));
    }
    void options_whenApplied_refreshTheMainWindow()
    {
        Library library;
        auto* status = library.main->findChild<QStatusBar*>("StatusBar1");
        QVERIFY(status->isVisible());
        bool whileOpen = true;
        library.atNext([&](QWidget* options) {
            for (auto* box : options->findChildren<QCheckBox*>())
                if (box->text().remove('&') == "Show Statusbar")
                    box->setChecked(false);
            options->findChild<QAbstractButton*>("cmdApply")->click();
            whileOpen = status->isVisible();
        });
        library.book.showOptions(library.main.get());
        QVERIFY(!whileOpen);
        QVERIFY(!gOptions.ShowStatusbar);
    }
    void prepare_withoutAnyConversion_answersTheSources()
    {
        Library library;
        zib::FakeSound sound = zib::FakeAudioShelf::ramp(44100);
        library.shelf.sounds.insert("/music/a.wav", sound);
        zib::CompilationRow row;
        row.fileName = "a.wav";
        row.location = "/music/";
        QCOMPARE(library.book.showPrepare(library.main.get(), {row}), QStringList{"/music/a.wav"});
    }
};

QTEST_MAIN(TestWindowBook)
#include "tst_windowbook.moc"
