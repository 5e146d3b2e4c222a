#include "app/ProgramEnd.h"
#include "app/WindowBook.h"
#include "app/frmMain.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Texts.h"
#include "components/Components.h"
#include "engines/audio/makers.h"
#include "engines/burn/makers.h"
#include "engines/play/makers.h"
#include "engines/print/makers.h"
#include "engines/rip/makers.h"
#include "platform/BoxMessages.h"
#include "platform/DesktopDialogs.h"
#include "platform/DesktopFolderPicker.h"
#include "platform/DesktopShell.h"
#include "platform/HeadStart.h"
#include "platform/IniQueue.h"
#include "platform/LogindInhibitor.h"
#include "platform/ProgramFolder.h"
#include "platform/QuitSignals.h"
#include "platform/SessionBus.h"
#include "platform/SystemRegistry.h"

#include <QApplication>
#include <QIcon>

namespace {

/// The engines behind the components.
zib::Components engines()
{
    zib::Components components;
    components.makeInformation = zib::makeAudioInformation;
    components.makeFile = zib::makeAudioFile;
    components.makePlayer = zib::makeAudioPlayer;
    components.makeWriter = [] {
        return zib::makeDiscWriter(GeneralAPI::JoinPath(zib::applicationFolder(), QStringLiteral("Images")));
    };
    components.makeRipper = [] {
        return zib::makeRipper(GeneralAPI::JoinPath(zib::applicationFolder(), QStringLiteral("Images")),
                               zib::makeAudioFile);
    };
    components.makePrinter = zib::makePrinter;
    return components;
}

/// By what the desktop knows the program.
void introduceOurselves()
{
    QApplication::setApplicationName(zib::kApplicationTitle);
    QGuiApplication::setDesktopFileName(QStringLiteral("zibcdburner"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/drawn/zibcdburner.drawn")));
}

} // namespace

int main(int argc, char* argv[])
{
    zib::leaveMuteSessionBus();
    zib::HeadStart headStart;
    QApplication application(argc, argv);
    headStart.applicationIsThere();
    zib::QuitSignals quit;
    introduceOurselves();

    zib::IniFile disk;
    zib::IniQueue ini(disk);
    zib::DesktopShell shell;
    zib::DesktopFolderPicker folders;
    zib::SystemRegistry registry;
    zib::LogindInhibitor inhibitor;
    zib::BoxMessages messages;
    zib::DesktopDialogs dialogs;
    const zib::ProgramFolder place = zib::findProgramFolder();
    zib::setApplicationFolder(place.path);
    headStart.awaitFonts();
    if (!place.trouble.isEmpty())
        messages.critical(nullptr, place.trouble);
    zib::setPlatform({&ini, &shell, &folders, &registry, &messages, &inhibitor});

    const zib::Components components = engines();
    zib::WindowBook windows(messages, dialogs, components);
    zib::ProgramEnd end(windows, {zib::drivesInUseAnswer, zib::unlockDrivesInUse});
    QObject::connect(&quit, &zib::QuitSignals::raised, &end, &zib::ProgramEnd::hurry);
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &end, &zib::ProgramEnd::sessionEnds,
                     Qt::DirectConnection);
    frmMain window(windows.services());
    windows.setMainWindow(&window);
    int result = 0;
    if (!end.isHurried()) { // Asked to end while the splash window was shown.
        window.show();
        result = QApplication::exec();
    }
    headStart.finish();
    ini.finish(); // While a failure can still be told.
    end.leave(result);
    return result;
}
