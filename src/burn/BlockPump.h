#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class AudioFile;
class QObject;

namespace zib {

class Worker;

/// Passes blocks from a reader to a writer on a worker's thread, a few ahead of the window that tells of
/// them: what the window paints does not hold the work up.
class BlockPump
{
public:
    /// Begins at once; until next() gave 0 both files are the thread's.
    /// @param most samples of one block.
    BlockPump(Worker& worker, std::shared_ptr<AudioFile> reader, std::shared_ptr<AudioFile> writer,
              qint32 most);
    /// Lets the thread end after the block it is at.
    ~BlockPump();
    Q_DISABLE_COPY_MOVE(BlockPump)

    /// Waits for the next block to be passed and serves the window's events meanwhile.
    /// @returns its samples; 0 when there are no more, when the writer failed, or when an event destroyed @p
    /// owner or made @p goOn false.
    qint64 next(QObject* owner, const std::function<bool()>& goOn);

private:
    struct Belt;
    static void run(const std::shared_ptr<Belt>& belt, AudioFile& reader, AudioFile& writer, qint32 most);

    std::shared_ptr<Belt> m_belt;
};

} // namespace zib
