#pragma once

#include <QtGlobal>

namespace zib {

/// Tells whether anybody else opens a file, or cuts it, while we have it: fcntl(2), F_SETLEASE. The system
/// lets whoever does so wait until the lease is given up, so ask often. One thread at a time.
class FileLease
{
public:
    /// @param file open for writing; stays open while this lives. A file that somebody else has open, that
    /// belongs to somebody else, or that another machine or program could change unseen (on a network, behind
    /// FUSE) gets no lease.
    explicit FileLease(int file);
    ~FileLease();
    Q_DISABLE_COPY_MOVE(FileLease)

    /// Whether nobody but this program had the file since. Lets go, for good, when somebody waits for it.
    bool isHeld();
    /// Lets go: from here on nobody waits, and isHeld() is false.
    void release();

private:
    int m_file = -1; ///< -1 without a lease.
};

} // namespace zib
