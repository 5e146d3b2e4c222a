#include "engines/burn/compare/ImageFollower.h"

#include "engines/burn/compare/ImageMatch.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zib {

namespace {

/// Whoever opens the image meanwhile waits so long at most.
constexpr std::chrono::milliseconds kLongestWait{20};

} // namespace

ImageFollower::ImageFollower(int image, QList<DiscPiece> pieces)
    : m_image(image), m_pieces(std::move(pieces)), m_lease(image), m_thread([this] { follow(); })
{
}

ImageFollower::~ImageFollower()
{
    end();
}

void ImageFollower::written(qint64 frames)
{
    {
        const std::lock_guard lock(m_mutex);
        m_written = frames;
    }
    m_changed.notify_one();
}

void ImageFollower::end()
{
    {
        const std::lock_guard lock(m_mutex);
        m_over = true;
    }
    m_changed.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

qint64 ImageFollower::finish()
{
    end();
    const bool alone = m_lease.isHeld();
    m_lease.release();
    return alone ? m_right : 0;
}

/// Ends at the first doubt: what follows is looked at when the image is whole.
void ImageFollower::follow()
{
    std::unique_lock lock(m_mutex);
    while (!m_over && m_lease.isHeld()) {
        m_changed.wait_for(lock, kLongestWait, [this] { return m_over || m_written > m_right; });
        const qint64 to = m_written;
        if (m_over || to == m_right)
            continue;
        lock.unlock();
        const bool right = isRight(m_right, to);
        lock.lock();
        if (!right)
            m_lease.release();
        else
            m_right = to;
    }
}

bool ImageFollower::isRight(qint64 from, qint64 to) const
{
    const QList<DiscPiece> stretch = between(m_pieces, from, to);
    ImageMatch match(m_image, stretch);
    return std::all_of(stretch.begin(), stretch.end(), [&](const DiscPiece& piece) {
        return match.framesOf(piece, nullptr, [](int, qint64, qint64) {}) == piece.length.frames();
    });
}

} // namespace zib
