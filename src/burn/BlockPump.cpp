#include "burn/BlockPump.h"

#include "common/Worker.h"
#include "components/AudioFile.h"

#include <QCoreApplication>
#include <QPointer>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace zib {

namespace {
constexpr size_t kBlocksAhead = 3; // of the window
} // namespace

/// What lies between the thread and the window: the sizes of blocks that were passed and not yet told.
struct BlockPump::Belt
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<qint64> blocks;
    bool isLeft = false; ///< Nobody waits any more.
    Bell bell;

    /// @returns whether to go on.
    bool put(qint64 samples)
    {
        std::unique_lock lock(mutex);
        blocks.push_back(samples);
        bell.ring();
        changed.wait(lock, [this] { return isLeft || blocks.size() < kBlocksAhead; });
        return !isLeft;
    }
    /// @returns whether there was one.
    bool take(qint64& samples)
    {
        const std::lock_guard lock(mutex);
        if (blocks.empty())
            return false;
        samples = blocks.front();
        blocks.pop_front();
        changed.notify_all();
        return true;
    }
    void leave()
    {
        const std::lock_guard lock(mutex);
        isLeft = true;
        changed.notify_all();
    }
};

BlockPump::BlockPump(Worker& worker, std::shared_ptr<AudioFile> reader, std::shared_ptr<AudioFile> writer,
                     qint32 most)
    : m_belt(std::make_shared<Belt>())
{
    worker.post([belt = m_belt, reader = std::move(reader), writer = std::move(writer), most] {
        run(belt, *reader, *writer, most);
    });
}

BlockPump::~BlockPump()
{
    m_belt->leave();
    m_belt->bell.close();
}

void BlockPump::run(const std::shared_ptr<Belt>& belt, AudioFile& reader, AudioFile& writer, qint32 most)
{
    for (AudioBlock block = reader.readBlock(most); !block.isEmpty(); block = reader.readBlock(most)) {
        writer.writeBlock(block);
        const bool isWell = writer.status() >= 0;
        if (!belt->put(block.sampleCount()))
            return;
        if (!isWell)
            break;
    }
    belt->put(0);
}

qint64 BlockPump::next(QObject* owner, const std::function<bool()>& goOn)
{
    const QPointer<QObject> guard(owner);
    qint64 samples = 0;
    while (guard && goOn() && !m_belt->take(samples))
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return guard ? samples : 0;
}

} // namespace zib
