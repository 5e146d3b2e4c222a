#pragma once

#include "engines/burn/Recorder.h"

#include <functional>
#include <memory>
#include <vector>

namespace zib {

class StagedFile;

/// Local copies of a job's tracks. They have no names, so nothing is left of them when the cache is gone,
/// whatever the end, a killed program included.
class TrackCache
{
public:
    explicit TrackCache(QString folder);
    ~TrackCache();
    Q_DISABLE_COPY_MOVE(TrackCache)

    /// Copies every track and points the job at the copies; they must outlive the write.
    /// @param progress called with 0 to 100, never falling.
    /// @returns WriteFailed when the folder has no room for them, UnreadableFile, Cancelled.
    Outcome<> fill(BurnJob& job, const std::function<void(int percent)>& progress);

private:
    Outcome<> reserve(const BurnJob& job);
    Outcome<> copy(const BurnTrack& track, StagedFile& target, const BurnJob& job);

    QString m_folder;
    std::vector<std::unique_ptr<StagedFile>> m_files;
    std::function<void(int)> m_progress;
    qint64 m_copied = 0;
    qint64 m_total = 0;
};

} // namespace zib
