#pragma once

#include "tools/Playlist.h"

#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>

class AudioInformation;

namespace zib {

/// Looks into files for the playlist, on a thread, and keeps the rows until the window takes them.
class PlaylistReader
{
public:
    explicit PlaylistReader(std::unique_ptr<AudioInformation> information);
    ~PlaylistReader();
    Q_DISABLE_COPY_MOVE(PlaylistReader)

    /// The thread's: reads one file after the other until it is told to stop.
    void read(const QStringList& paths);
    /// Any thread.  @returns at most @p most rows, in order, and keeps the others.
    QList<PlaylistRow> take(qsizetype most);
    void stop() { m_stopped = true; }

private:
    PlaylistRow look(const QString& path);

    const std::unique_ptr<AudioInformation> m_information;
    std::atomic<bool> m_stopped = false;
    std::mutex m_mutex;
    QList<PlaylistRow> m_rows;
};

} // namespace zib
