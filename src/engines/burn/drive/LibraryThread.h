#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace zib {

/// The thread on which libburn writes. The library calls a drive idle as soon as its connection is lost, long
/// before that thread has let go of the drive, and has no call that tells when it has ended. A thread
/// inherits the name of the one that starts it, so it is found among the threads of the process. May be
/// copied.
class LibraryThread
{
public:
    /// Runs @p begin, which starts the thread, on the caller's.
    void start(const std::function<void()>& begin);
    /// Any thread.
    bool isRunning() const;
    /// Waits at most @p patienceMs.  @returns whether the thread has ended.
    bool endsWithin(int patienceMs) const;

private:
    QByteArray m_name;
    QString m_task; ///< Its folder in /proc; empty when there is none.
};

} // namespace zib
