#pragma once

#include "engines/burn/Recorder.h"

#include <atomic>
#include <memory>

#include <sys/types.h>

namespace burn {
struct burn_source;
}

namespace zib {

/// Feeds the samples of one track to libburn, and remembers when the file gave less than it promised: the
/// library would pad with silence and report success.
///
/// Lives at least as long as the library holds the source. Read from the library's thread, asked from
/// another.
class TrackFeed
{
public:
    /// Opens the track's file. A track shorter than its frames is padded with silence to their end.
    explicit TrackFeed(const BurnTrack& track);
    ~TrackFeed();
    Q_DISABLE_COPY_MOVE(TrackFeed)

    bool isOpen() const { return m_file >= 0; }
    /// A new source of the library's kind; the caller owns the reference and frees it with burn_source_free.
    burn::burn_source* makeSource();
    /// Whether reading failed or the file ended early.
    bool failed() const { return m_failed; }
    /// What the user knows the file by.
    const QString& name() const { return m_name; }

private:
    static int read(burn::burn_source* source, unsigned char* buffer, int size);
    static off_t size(burn::burn_source* source);
    static int setSize(burn::burn_source* source, off_t size);
    static void freeData(burn::burn_source* source);

    int fill(unsigned char* buffer, int size);

    QString m_name;
    int m_file = -1;
    qint64 m_position = 0;
    qint64 m_end = 0;       ///< Of the samples, in the file.
    qint64 m_toDeliver = 0; ///< Bytes of the track on the disc that are still to come.
    qint64 m_trackBytes = 0;
    std::atomic<bool> m_failed = false;
};

} // namespace zib
