#include "Show.h"

#include "SheetPrinter.h"

#include "app/frmMain.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "engines/audio/makers.h"
#include "engines/burn/makers.h"
#include "engines/play/makers.h"
#include "engines/rip/makers.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>

namespace demo {

namespace {

constexpr int kLooksToPaint = 8;       ///< Looks until a window has surely painted itself.
constexpr int kLooksToReadADisc = 100; ///< Looks until the ripper has surely listed a disc.

/// Lets the window system and the timers have their way for a while.
void pause(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

Show::Show(const QString& folder, const QStringList& samples)
    : m_programFolder(folder + QStringLiteral("/ZibCDBurner")), m_samples(samples),
      m_sheet(folder + QStringLiteral("/printed-page.png")), m_book(m_messages, m_dialogs, m_components),
      m_director(folder)
{
    QDir(m_programFolder).removeRecursively();
    QFile::remove(m_sheet);
    QDir().mkpath(m_programFolder);
    for (const QString& file : {QStringLiteral("TIPOFDAY.TXT"), QStringLiteral("Sample1.jpg")})
        QFile::copy(QStringLiteral(ZIB_SOURCE_DIR "/data/") + file, m_programFolder + u'/' + file);
    if (!QFileInfo::exists(QStringLiteral("/dev/snd")) && !qEnvironmentVariableIsSet("SDL_AUDIODRIVER"))
        qputenv("SDL_AUDIODRIVER", "dummy"); // The players are shown, not heard.
    zib::setApplicationFolder(m_programFolder);
    zib::setPlatform({&m_ini, &m_shell, &m_folders, &m_registry, &m_messages});
    m_components.makeInformation = zib::makeAudioInformation;
    m_components.makeFile = zib::makeAudioFile;
    m_components.makePlayer = zib::makeAudioPlayer;
    m_components.makePrinter = [this] { return std::make_unique<SheetPrinter>(m_sheet); };
    m_components.makeWriter = [this] {
        return zib::makeDiscWriter(m_programFolder + QStringLiteral("/Images"));
    };
    m_components.makeRipper = [this] { return zib::makeRipper(m_programFolder + QStringLiteral("/Images")); };
    setScenes();
}

Show::~Show() = default;

void Show::setScenes()
{
    using namespace std::placeholders;
    m_director.setScene(QStringLiteral("zibFileBox"), std::bind(&Show::chooseSamples, this, _1, _2));
    m_director.setScene(QStringLiteral("frmPrepare"), std::bind(&Show::watchPreparation, this, _1, _2));
    m_director.setScene(QStringLiteral("frmWrite"), std::bind(&Show::write, this, _1, _2));
    m_director.setScene(QStringLiteral("frmOptions"), std::bind(&Show::visitOptions, this, _1, _2));
    m_director.setScene(QStringLiteral("frmLabelDesigner"), std::bind(&Show::visitDesigner, this, _1, _2));
    m_director.setScene(QStringLiteral("frmPreview"), std::bind(&Show::watchPreview, this, _1, _2));
    m_director.setScene(QStringLiteral("frmRip"), std::bind(&Show::visitRipper, this, _1, _2));
}

void Show::play()
{
    m_main = std::make_unique<frmMain>(m_book.services()); // The splash window comes and goes in here.
    m_book.setMainWindow(m_main.get());
    m_main->show();
    pause(1500); // The tip of the day comes by itself.
    trigger(QStringLiteral("Toolbar1_add"));
    if (auto* list = m_main->findChild<QTableView*>(QStringLiteral("ListView1")))
        list->selectRow(0);
    pause(300);
    m_director.shoot(m_main.get());
    trigger(QStringLiteral("Toolbar1_write"));
    for (const char* tool : {"ripper", "converter", "label", "player", "play", "options"})
        trigger(QStringLiteral("Toolbar1_") + QLatin1StringView(tool));
    trigger(QStringLiteral("mnuHelpSub_6"));
    m_main->close();
}

void Show::trigger(const QString& action)
{
    if (auto* found = m_main->findChild<QAction*>(action))
        found->trigger();
}

QString Show::cueSheet() const
{
    const QDir images(m_programFolder + QStringLiteral("/Images"));
    const QStringList sheets = images.entryList({QStringLiteral("*.cue")}, QDir::Files);
    return sheets.size() == 1 ? images.filePath(sheets.first()) : QString();
}

void Show::chooseSamples(QWidget* dialog, int visit)
{
    auto* box = qobject_cast<QFileDialog*>(dialog);
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (!box || !name)
        return;
    if (visit == 1) {
        box->setDirectory(QFileInfo(m_samples.first()).path());
        QStringList quoted;
        for (const QString& sample : std::as_const(m_samples))
            quoted << u'"' + QFileInfo(sample).fileName() + u'"';
        name->setText(quoted.join(u' '));
    } else if (visit == 3 * kLooksToPaint) {
        m_director.shoot(dialog, QStringLiteral("AddFiles"));
        if (auto* buttons = dialog->findChild<QDialogButtonBox*>())
            buttons->button(QDialogButtonBox::Open)->click();
    }
}

/// It is over in a moment, so every look is a picture; the last one stays.
void Show::watchPreparation(QWidget* window, int)
{
    m_director.shoot(window);
}

void Show::write(QWidget* window, int visit)
{
    auto* drives = window->findChild<QComboBox*>(QStringLiteral("cboDevices"));
    const auto* start = window->findChild<QPushButton*>(QStringLiteral("cmdWrite"));
    if (!drives || !start)
        return;
    if (m_writing == Writing::NotYet && visit > kLooksToPaint && drives->count() > 0 && start->isEnabled()) {
        m_writing = Writing::Starting;
        drives->setCurrentIndex(drives->count() - 1); // The recorder of disc images is the last one.
        m_director.shoot(window);
        press(window, QStringLiteral("cmdWrite"));
        m_writing = Writing::Started;
    } else if (m_writing == Writing::Started && !start->isEnabled()) {
        m_director.shoot(window,
                         QStringLiteral("frmWrite-writing")); // Every look is a picture; the last one stays.
    } else if (m_writing == Writing::Started) {
        m_director.shoot(window, QStringLiteral("frmWrite-completed"));
        press(window, QStringLiteral("cmdExit"));
    }
}

/// One page at a time.
void Show::visitOptions(QWidget* window, int visit)
{
    auto* tabs = window->findChild<QTabWidget*>();
    const int page = visit / kLooksToPaint;
    if (!tabs || page >= tabs->count())
        window->close();
    else if (visit % kLooksToPaint == 0)
        tabs->setCurrentIndex(page);
    else if (visit % kLooksToPaint == kLooksToPaint - 1)
        m_director.shoot(window, QStringLiteral("frmOptions-%1").arg(page + 1));
}

/// Opens each of its dialogs, which are pictured and closed like every window.
void Show::visitDesigner(QWidget* window, int visit)
{
    static const QStringList buttons{QStringLiteral("Title"), QStringLiteral("cmdBack"),
                                     QStringLiteral("cmdList"), QStringLiteral("cmdPrint")};
    const int step = visit - kLooksToPaint;
    if (step == 0)
        m_director.shoot(window);
    else if (step > 0 && step <= buttons.size())
        press(window, buttons.at(step - 1));
    else if (step > 0)
        window->close();
}

/// The preview prints itself after a moment.
void Show::watchPreview(QWidget* window, int)
{
    if (!QFileInfo::exists(m_sheet))
        return;
    m_director.shoot(window);
    window->close();
}

/// The disc that was written lies in the ripper's list of drives.
void Show::visitRipper(QWidget* window, int visit)
{
    if (visit < kLooksToReadADisc)
        return;
    m_director.shoot(window);
    window->close();
}

} // namespace demo
