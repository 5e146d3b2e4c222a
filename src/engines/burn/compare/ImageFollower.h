#pragma once

#include "engines/burn/compare/DiscPiece.h"
#include "engines/burn/compare/FileLease.h"

#include <QList>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace zib {

/// Compares an image with its files while it is written, close behind the writer: there both sides stand in
/// the processors' caches yet, and need not come out of the memory once more. What it saw counts only when
/// nobody else had the image until the end, where a lease on it tells so. The calls are the writer's.
class ImageFollower
{
public:
    /// @param image open and empty, and open for as long as this lives.
    /// @param pieces one behind the other from the image's first frame on.
    ImageFollower(int image, QList<DiscPiece> pieces);
    ~ImageFollower();
    Q_DISABLE_COPY_MOVE(ImageFollower)

    /// So many whole frames stand in the image now.
    void written(qint64 frames);
    /// Ends the following.  @returns how many frames from the first on are right for sure; 0 when somebody
    /// else may have changed them.
    qint64 finish();

private:
    void follow();
    void end();
    bool isRight(qint64 from, qint64 to) const;

    const int m_image;
    const QList<DiscPiece> m_pieces;
    FileLease m_lease;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    qint64 m_written = 0;
    qint64 m_right = 0;
    bool m_over = false;
    std::thread m_thread; // last: it uses everything above
};

} // namespace zib
