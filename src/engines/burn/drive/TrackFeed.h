#pragma once

#include "engines/burn/tracks/TrackSource.h"

#include <atomic>

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
    explicit TrackFeed(const BurnTrack& track);
    Q_DISABLE_COPY_MOVE(TrackFeed)

    /// A new source of the library's kind; the caller owns the reference and frees it with burn_source_free.
    burn::burn_source* makeSource();
    /// Whether the file could not be opened, failed or ended early.
    bool failed() const { return m_failed; }
    /// What the user knows the file by.
    const QString& name() const { return m_name; }

private:
    static int read(burn::burn_source* source, unsigned char* buffer, int size);
    static off_t size(burn::burn_source* source);
    static int setSize(burn::burn_source* source, off_t size);
    static void freeData(burn::burn_source* source);

    int fill(char* buffer, int size);

    QString m_name;
    TrackSource m_source;
    qint64 m_bytes;
    std::atomic<bool> m_failed;
};

} // namespace zib
