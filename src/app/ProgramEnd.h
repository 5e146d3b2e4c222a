#pragma once

#include <QElapsedTimer>
#include <QObject>

#include <chrono>
#include <functional>

class QSessionManager;

namespace zib {

class WindowBook;

/// How the program ends: by its user, on a signal of the system, or with the desktop session. Windows close
/// at once; a write is cancelled, a disc that lacks nothing but its closing is finished, and no drive that
/// answers is left locked. GUI thread only.
class ProgramEnd final : public QObject
{
    Q_OBJECT
public:
    /// The drives that this process has in its hands.
    struct Drives
    {
        std::function<bool()> answer; ///< Whether all of them do; told within some seconds.
        /// Lets their discs be taken out, within a patience.  @returns whether there were any.
        std::function<bool(std::chrono::milliseconds)> unlock;
    };

    /// @param windows outlives this.
    ProgramEnd(WindowBook& windows, Drives drives);

    /// Ends the program on the system's word: nothing is asked or told any more.
    void hurry();
    /// Whether that was asked for, by whomever.
    bool isHurried() const { return m_hurried; }
    /// The desktop session is going to end. While a disc is written the user is asked, where that is allowed,
    /// and may keep the session; otherwise the session waits until the drive is free.
    void sessionEnds(QSessionManager& session);
    /// The same, apart from the session's own calls.
    /// @param ask puts the question; empty where no question is allowed.  @returns whether the session may
    /// end.
    bool mayEnd(const std::function<bool()>& ask);
    /// Behind the event loop: waits for what is being finished. Ends the process itself where a drive was
    /// still in use, for what hangs there may never come back.
    void leave(int result);

private:
    bool askUser();

    WindowBook& m_windows;
    Drives m_drives;
    bool m_hurried = false;
    QElapsedTimer m_sinceSession; ///< Since the session was going to end and could not be asked about.
};

} // namespace zib
