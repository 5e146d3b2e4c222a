#pragma once

#include "common/Outcome.h"
#include "engines/burn/SenseTable.h"

#include <QString>
#include <QStringList>

#include <mutex>
#include <optional>

namespace burn {
struct burn_drive;
struct burn_drive_info;
} // namespace burn

namespace zib {

/// The right to call libburn, which keeps state for the whole process: one holder at a time. The library is
/// started by the first one and told to queue its messages, print none and leave signals alone.
class LibburnSession
{
public:
    LibburnSession();
    ~LibburnSession();
    Q_DISABLE_COPY_MOVE(LibburnSession)

    /// False when the library could not be started.
    bool isReady() const;

private:
    std::unique_lock<std::mutex> m_lock;
};

/// What libburn said about failures since the last clear.
class LibburnMessages
{
public:
    /// Takes everything the library has queued. Cheap; called often, since the queue is never bounded.
    void collect();
    void clear();
    /// The sense data of the first real failure; checks that drives answer "not ready" to while they work are
    /// none.
    std::optional<Sense> sense() const { return m_sense; }
    /// The first failure's words.
    QString text() const { return m_text; }
    /// Whether the drive has gone away.
    bool connectionLost() const { return m_connectionLost; }

private:
    void take(const QString& text);

    std::optional<Sense> m_sense;
    QString m_text;
    bool m_connectionLost = false;
};

/// A drive of ours alone, from grab to destruction, which gives it back unlocked.
class GrabbedDrive
{
public:
    explicit GrabbedDrive(const QString& path);
    ~GrabbedDrive();
    Q_DISABLE_COPY_MOVE(GrabbedDrive)

    /// Whether the device may be opened now: NotFound, NoPermission or Busy otherwise. Takes no time.
    static Outcome<> check(const QString& path);

    explicit operator bool() const { return m_info != nullptr; }
    burn::burn_drive* drive() const;
    burn::burn_drive_info* info() const { return m_info; }
    /// Why the drive could not be had.
    const Failure& failure() const { return m_failure; }
    /// Gives the drive back now and hands its disc out.
    void releaseEjecting();
    /// Leaves a drive that never came back to the library: releasing it would wait for ever.
    void abandon();
    /// Whether a drive of this path was abandoned before; the kernel still works on its command.
    static bool isAbandoned(const QString& path);

private:
    void release(int eject);

    QString m_path;
    burn::burn_drive_info* m_info = nullptr;
    Failure m_failure{Failure::Kind::NotFound};
};

} // namespace zib
