#pragma once

#include "common/CdTime.h"
#include "common/NameBearer.h"
#include "common/Outcome.h"

#include <QString>

#include <chrono>

namespace zib {

/// A file that is being written beside its final place, under a hidden name and locked, and appears under its
/// final name only when it is whole. Dropped without keep, it leaves nothing.
class StagedFile
{
public:
    StagedFile() = default;
    ~StagedFile();
    Q_DISABLE_COPY_MOVE(StagedFile)

    /// @param name the final name in @p folder.  @returns WriteFailed or NoPermission, the detail is the
    /// folder.
    Outcome<> create(const QString& folder, const QString& name);
    /// @returns also that something written earlier did not arrive.
    Outcome<> write(const char* data, qint64 size);
    /// Reserves room, so that a full storage shows before the work and not after it.
    Outcome<> reserve(qint64 bytes);
    /// Waits until everything is on the storage, without the name.
    Outcome<> flush();
    /// Gives the file its name, never in place of another file.
    Outcome<> keep();
    /// Gives the file its name if who bears it is still what was @p seen: nobody, or the one file that may be
    /// replaced. Look with bearerOf when the user is asked.
    Outcome<> keepInPlaceOf(const NameBearer& seen);
    /// Takes the name away for good: the file can be opened by currentPath for as long as this object lives,
    /// and nothing of it is left after that, not even when the program is killed.
    void makeNameless();
    /// What to open to read the file at the moment.
    QString currentPath() const;
    /// The open file, until it is kept or removed; -1 before create.
    int handle() const { return m_file; }
    /// Whether currentPath leads to it: nobody moved it, or put another file there.
    bool isInPlace() const;
    /// Removes the file, under whatever name.
    void remove();

    /// Removes hidden files in @p folder that nobody is writing any more.
    /// @param names a wildcard for the final names.
    static void removeLeftOvers(const QString& folder, const QString& names);
    /// The same for the one file that would get the final name @p name.
    static void removeLeftOver(const QString& folder, const QString& name);

private:
    using Clock = std::chrono::steady_clock;

    Failure storageFailure() const;
    Outcome<> handOver();
    void close();

    QString m_folder;
    QString m_path;
    QString m_hiddenPath;
    int m_file = -1;
    qint64 m_size = 0;
    qint64 m_handedOver = 0;
    qint64 m_settled = 0; ///< So much is on the storage for sure.
    qint64 m_lead = 0;    ///< So much more may be on its way.
    Clock::time_point m_begun{};
    bool m_kept = false;
    bool m_nameless = false;
};

} // namespace zib
