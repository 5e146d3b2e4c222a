#include "app/ProgramEnd.h"

#include "app/WindowBook.h"
#include "common/Messages.h"

#include <QApplication>
#include <QSessionManager>

#include <cstdlib>
#include <utility>

namespace zib {

namespace {

/// So long a disc may take to be finished after the last window has closed.
constexpr std::chrono::minutes kLongestEnd{15};
/// So long on the system's word, while the drive answers: what takes longer is killed sooner or later.
constexpr std::chrono::seconds kHurry{20};
/// For a drive that does not answer even to be unlocked.
constexpr std::chrono::seconds kUnlocking{15};
constexpr std::chrono::seconds kHurriedUnlocking{2};
/// A session that ends does so within this time, or was kept by somebody.
constexpr qint64 kSessionsEndMs = 60'000;

const QString kSessionEnds =
    QStringLiteral("A disc is being written. If the session ends now, the disc cannot be used any more. "
                   "End the session all the same?");

} // namespace

ProgramEnd::ProgramEnd(WindowBook& windows, Drives drives) : m_windows(windows), m_drives(std::move(drives))
{
}

void ProgramEnd::hurry()
{
    m_hurried = true;
    m_windows.closedWrites().hurry(kHurry, m_drives.answer);
    m_windows.abandonPreparing();
    QApplication::closeAllWindows();
    QCoreApplication::quit();
}

void ProgramEnd::sessionEnds(QSessionManager& session)
{
    std::function<bool()> ask;
    if (m_windows.isWriting() && session.allowsInteraction())
        ask = [this] { return askUser(); };
    if (mayEnd(ask))
        session.release();
    else
        session.cancel();
}

bool ProgramEnd::askUser()
{
    return m_windows.services().messages.askYesNoCancel(QApplication::activeModalWidget(), kSessionEnds,
                                                        Messages::Answer::No) == Messages::Answer::Yes;
}

bool ProgramEnd::mayEnd(const std::function<bool()>& ask)
{
    if (!m_windows.isWriting())
        return true;
    // Sessions also announce an end without ending: then no disc is spoilt for it. One that does end closes
    // the windows, or takes the screen away.
    if (!ask) {
        m_sinceSession.start();
        return true;
    }
    if (!ask())
        return false;
    hurry();
    m_windows.closedWrites().await(kHurry);
    return true;
}

void ProgramEnd::leave(int result)
{
    if (m_sinceSession.isValid() && !m_sinceSession.hasExpired(kSessionsEndMs))
        hurry();
    m_windows.closedWrites().await(kLongestEnd);
    if (m_drives.unlock(m_hurried ? kHurriedUnlocking : kUnlocking))
        std::_Exit(result);
}

} // namespace zib
