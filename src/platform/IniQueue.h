#pragma once

#include "common/Platform.h"
#include "common/Worker.h"
#include "platform/IniFile.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace zib {

/// The INI files of the program: as IniFile, but what writes later waits for the disk on a thread of its own,
/// in order. Every reading sees what is still on its way. Lives on the GUI thread. Readings and writeAll may
/// come from any thread, the rest from that one only. A thread that is left behind in writeAll keeps its
/// place.
class IniQueue final : public IniService
{
public:
    explicit IniQueue(IniFile& disk);
    /// Waits until all is on the disk, with finish.
    ~IniQueue() override;
    Q_DISABLE_COPY_MOVE(IniQueue)

    QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                        const QByteArray& fallback, int size, const QString& file) override;
    QList<QByteArray> readAll(const QList<IniQuery>& queries, const QString& file) override;
    bool WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                    const std::optional<QByteArray>& value, const QString& file) override;
    /// Behind everything that is on its way to this file; waits for it, and fails after two minutes.
    bool writeAll(const QList<IniChange>& changes, const QString& file) override;
    void writeLater(const QList<IniChange>& changes, const QString& file,
                    const std::function<void(bool)>& done) override;

    /// Waits until all is on the disk, or two minutes, and tells those who wait for an answer.
    void finish();

private:
    enum class State
    {
        Waiting,
        Written,
        Failed
    };

    /// The thread owns a share of it: a disk that never answers leaves it behind.
    struct Job
    {
        QList<IniChange> changes;
        QString file;
        std::function<void(bool)> done;
        State state = State::Waiting;
    };
    using Jobs = std::deque<std::shared_ptr<Job>>;
    struct Board
    {
        std::mutex mutex;
        std::condition_variable changed;
        QObject* desk = nullptr; ///< What the thread sends its news to, while it is there.
        Jobs direct;             ///< What threads of others write just now, or wait to write.

        bool waitFor(const Job& job, std::chrono::milliseconds patience);
    };

    Jobs jobs() const;
    Jobs jobsOf(const QString& file) const;
    Jobs enter(const std::shared_ptr<Job>& job);
    State stateOf(const Job& job) const;
    void tellFinished();
    bool finishUntil(const QDeadlineTimer& deadline);

    IniFile& m_disk;
    std::shared_ptr<Board> m_board = std::make_shared<Board>();
    mutable std::mutex m_jobsMutex;
    std::mutex m_entry; ///< One thread after the other takes its place.
    Jobs m_jobs;
    bool m_gaveUp = false; ///< A disk did not answer until the end.
    QObject m_desk;
    Worker m_thread{std::chrono::milliseconds(0)};
};

} // namespace zib
