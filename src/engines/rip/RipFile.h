#pragma once

#include "common/Outcome.h"
#include "common/StagedFile.h"

#include <QByteArray>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace zib {

/// The WAV file of the track under way: 44100 Hz, 16 bits, 2 channels, under a hidden name until it is whole.
/// The worker writes; the owner may take it away at any time, even while the worker hangs in a drive.
class RipFile
{
public:
    /// Whether a file of so many frames can be made at @p path; its folder is made for it. May wait for the
    /// storage.
    static bool canBeMade(const QString& path, qint32 frames);

    /// Begins a file, which ends the one before without a trace.  @param frames its length.
    /// @param behind chunks that follow the sound, an even number of bytes.
    /// @param seen who may be replaced; without it, who bears the name now.
    /// @returns WriteFailed or NoPermission; Cancelled after abandon.
    Outcome<> begin(const QString& path, qint32 frames, const QByteArray& behind,
                    const std::optional<NameBearer>& seen);
    /// One frame of 2352 bytes.
    Outcome<> write(const char* frame);
    /// Gives the file its name once it is on the storage, in place of the one that may be replaced; fails
    /// when another has it.  @param stopped set while the storage takes its time: the file is not kept.
    Outcome<> finish(const std::atomic<bool>& stopped);
    /// Whether the last file failed because another bore its name that may not be replaced; the worker's.
    bool wasTaken() const { return m_taken; }
    /// Drops the file under way.
    void drop();
    /// Drops the file under way and allows no other.
    void abandon();

private:
    Failure taken();

    std::mutex m_mutex;
    std::unique_ptr<StagedFile> m_file;
    QByteArray m_behind; ///< To be written once the sound is.
    NameBearer m_seen;   ///< Who may be replaced.
    bool m_taken = false;
    bool m_abandoned = false;
};

} // namespace zib
