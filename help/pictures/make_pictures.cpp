// Draws the pictures of the help: every window as the program shows it, with an album that does not exist.
//   zib_make_pictures SCENE OUT      SCENE: a folder to play in, shown in the pictures; OUT: where the PNG
//   files go

#include "Frame.h"
#include "Scene.h"
#include "app/WindowBook.h"
#include "app/frmMain.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <QAbstractItemView>

#include <cstdio>
#include <functional>

namespace {

using Stage = std::function<void(QWidget*)>;

/// Shows windows and takes their pictures.
class Photographer
{
public:
    explicit Photographer(QString folder) : m_folder(std::move(folder)) {}

    /// Takes the picture of a window on the screen, with the window's own title in the frame.
    void shoot(QWidget* window, bool bare = false)
    {
        const QPixmap inside = window->grab();
        const QPixmap picture =
            bare ? inside : framed(inside, window->windowTitle(), qobject_cast<QDialog*>(window));
        const QString file = m_folder + '/' + window->objectName() + ".png";
        m_allWell = picture.save(file) && m_allWell;
        std::printf("%-18s %d x %d\n", qPrintable(window->objectName()), picture.width(), picture.height());
    }
    /// Opens a modal window; once it is there and ready, sets the stage, takes the picture and closes it.
    void open(const QString& form, const std::function<void()>& show, const Stage& stage = {},
              const std::function<bool(QWidget*)>& ready = {}, bool bare = false)
    {
        bool taken = false;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            QWidget* window = onScreen(form);
            if (taken || !window || (ready && !ready(window))) {
                return;
            }
            taken = true;
            if (stage) {
                stage(window);
            }
            QTest::qWait(ready ? 0 : 250);
            shoot(window, bare);
            if (!ready) {
                window->close();
            }
        });
        watch.start(10);
        show();
        if (!taken) {
            std::printf("%-18s never came\n", qPrintable(form));
            m_allWell = false;
        }
    }
    bool allWell() const { return m_allWell; }

private:
    static QWidget* onScreen(const QString& form)
    {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->objectName() == form) {
                return window;
            }
        }
        return nullptr;
    }

    QString m_folder;
    bool m_allWell = true;
};

/// The program with everything around it made up.
struct Studio
{
    explicit Studio(const QString& folder)
        : program(folder + "/ZibCDBurner"), album(scene::makeAlbum(folder + "/Music", shelf))
    {
        QDir().mkpath(program);
        for (const QString name : {"TIPOFDAY.TXT", "Sample1.jpg"}) {
            QFile::copy(ZIB_SOURCE_DIR "/data/" + name, program + '/' + name);
        }
        zib::setApplicationFolder(program);
        zib::setPlatform({&ini, &shell, &folders, &registry, &messages});
        greet("False"); // so that the main window opens alone
        components.makeInformation = [this] { return std::make_unique<zib::FakeAudioInformation>(shelf); };
        components.makeFile = [this] { return std::make_unique<zib::FakeAudioFile>(shelf); };
        components.makePlayer = [] { return std::make_unique<zib::FakeAudioPlayer>(); };
        components.makeWriter = [] { return std::make_unique<scene::Recorder>(); };
        components.makeRipper = [] { return std::make_unique<scene::Ripper>(); };
        components.makePrinter = [] { return std::make_unique<scene::PaperlessPrinter>(); };
    }
    /// Whether picture and tip come at the start, as settings.ini says.
    void greet(const QByteArray& word)
    {
        for (const char* key : {"Show Splash Screen", "Show Tips Of Day"})
            ini.WritePrivateProfileStringA("View", key, word, program + "/settings.ini");
    }
    void chooseNext(const QStringList& paths)
    {
        dialogs.files = {QFileInfo(paths.first()).path()};
        for (const QString& path : paths) {
            dialogs.files.first() += QChar(u'\0') + QFileInfo(path).fileName();
        }
    }

    zib::GlobalsScope globals;
    zib::FakeAudioShelf shelf;
    QString program;
    QStringList album;
    zib::IniFile ini;
    zib::RecordingShell shell;
    zib::ScriptedFolderPicker folders;
    zib::TableRegistry registry;
    zib::ScriptedMessages messages;
    zib::ScriptedDialogs dialogs;
    zib::Components components;
};

template <typename T>
T* control(QWidget* window, const char* name)
{
    T* found = window->findChild<T*>(name);
    if (!found) {
        qFatal("%s has no %s", qPrintable(window->objectName()), name);
    }
    return found;
}

void click(QWidget* window, const char* button)
{
    control<QAbstractButton>(window, button)->click();
}

} // namespace

namespace {

void shootMain(Photographer& camera, frmMain& window, Studio& studio)
{
    window.resize(940, 600);
    window.show();
    studio.chooseNext(studio.album);
    control<QAction>(&window, "Toolbar1_add")->trigger();
    auto* list = control<QAbstractItemView>(&window, "ListView1");
    list->setCurrentIndex(list->model()->index(2, 0));
    list->model()->setData(list->model()->index(7, 0), Qt::Checked, Qt::CheckStateRole);
    QTest::qWait(300);
    camera.shoot(&window);
}

void shootStart(Photographer& camera, frmMain& window, zib::WindowBook& book)
{
    camera.open(
        "frmSplash", [&] { book.showSplash(&window); }, {}, {}, true);
    OptionsData options = gOptions;
    options.ShowTipsOfDay = true;
    zib::setOptions(options);
    camera.open("frmTip", [&] { book.showTip(&window); });
    camera.open("frmAbout", [&] { book.showAbout(&window); });
    camera.open(
        "frmOptions", [&] { book.showOptions(&window); },
        [](QWidget* dialog) {
            QTest::keyClick(dialog, Qt::Key_Tab, Qt::ControlModifier); // its second page shows the most
        });
}

void shootDisc(Photographer& camera, frmMain& window, Studio& studio, zib::WindowBook& book)
{
    QList<zib::CompilationRow> rows;
    for (const QString& path : studio.album) {
        zib::CompilationRow row;
        row.fileName = QFileInfo(path).fileName();
        row.location = QFileInfo(path).path() + '/';
        rows << row;
    }
    camera.open(
        "frmPrepare", [&] { book.showPrepare(&window, rows); }, {},
        [](QWidget* dialog) { return control<QLabel>(dialog, "lblPer")->text().chopped(1).toInt() >= 62; });
    camera.open(
        "frmWrite", [&] { book.showWrite(&window, studio.album); },
        [](QWidget* dialog) { click(dialog, "cmdWrite"); });
}

void shootTools(Photographer& camera, frmMain& window, Studio& studio, zib::WindowBook& book)
{
    camera.open(
        "frmRip", [&] { book.showRip(&window); },
        [](QWidget* dialog) {
            auto* tracks = control<QAbstractItemView>(dialog, "lvwTracks");
            for (int row = 0; row < 10; row += 1 + row % 3) {
                tracks->model()->setData(tracks->model()->index(row, 0), Qt::Checked, Qt::CheckStateRole);
            }
        });
    camera.open(
        "frmMP3ToWAV", [&] { book.showMP3ToWAV(&window); },
        [&](QWidget* dialog) {
            studio.dialogs.files = {studio.album.first()};
            click(dialog, "cmdOpen");
        });
    zib::setCurrentFile(studio.album.first());
    camera.open(
        "frmPlay", [&] { book.showPlay(&window); },
        [](QWidget* dialog) { control<QAbstractSlider>(dialog, "Slider1")->setValue(38); });
    camera.open(
        "frmPlayer", [&] { book.showPlayer(&window); },
        [&](QWidget* dialog) {
            studio.chooseNext(studio.album.mid(0, 7));
            click(dialog, "cmdOpen");
            control<QAbstractSlider>(dialog, "Slider1")->setValue(38);
        });
}

QList<zib::CompilationRow> labelRows(const Studio& studio)
{
    QList<zib::CompilationRow> rows;
    for (const QString& path : studio.album) {
        const zib::FakeSound sound = studio.shelf.sounds.value(path);
        zib::CompilationRow row;
        row.number = QString::number(rows.size() + 1);
        row.fileName = QFileInfo(path).fileName();
        row.title = sound.title;
        row.artist = sound.artist;
        row.time = GeneralAPI::FormatDuration(*sound.durationMs);
        rows << row;
    }
    return rows;
}

void shootLabel(Photographer& camera, frmMain& window, Studio& studio, zib::WindowBook& book)
{
    camera.open(
        "frmLabelDesigner", [&] { book.showLabelDesigner(&window, labelRows(studio)); },
        [&](QWidget* designer) {
            camera.open("frmPreview", [&] { (void)book.showPreview(designer); });
            camera.open("frmLabelList", [&] { book.showLabelList(designer); });
            camera.open("frmLabelBack", [&] { book.showLabelBack(designer); });
            camera.open("frmLabelTitle", [&] { book.showLabelTitle(designer); });
            camera.open("frmCalibrate", [&] { (void)book.showCalibrate(designer); });
        });
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (application.arguments().size() != 3) {
        std::fprintf(stderr, "usage: zib_make_pictures SCENE OUT\n");
        return 2;
    }
    Q_INIT_RESOURCE(zib);
    QApplication::setStyle("fusion");
    Studio studio(application.arguments().at(1));
    Photographer camera(application.arguments().at(2));
    zib::WindowBook book(studio.messages, studio.dialogs, studio.components);
    frmMain window(book.services());
    book.setMainWindow(&window);
    shootMain(camera, window, studio);
    studio.greet("True");
    shootStart(camera, window, book);
    shootDisc(camera, window, studio, book);
    shootTools(camera, window, studio, book);
    shootLabel(camera, window, studio, book);
    for (const QString& box : studio.messages.shown) {
        std::printf("A box came: %s\n", qPrintable(box));
    }
    return camera.allWell() ? 0 : 1;
}
