#include "engines/burn/TrackFeed.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <libburn/libburn.h>
#include <unistd.h>

namespace zib {

TrackFeed::TrackFeed(const BurnTrack& track)
    : m_name(track.name), m_file(::open(QFile::encodeName(track.path).constData(), O_RDONLY | O_CLOEXEC)),
      m_position(track.dataOffset), m_end(track.dataOffset + track.dataBytes),
      m_toDeliver(track.length.bytes()), m_trackBytes(track.length.bytes())
{
}

TrackFeed::~TrackFeed()
{
    if (m_file >= 0)
        ::close(m_file);
}

burn::burn_source* TrackFeed::makeSource()
{
    // The library frees the struct itself, with free().
    auto* source = static_cast<burn::burn_source*>(std::calloc(1, sizeof(burn::burn_source)));
    if (!source)
        return nullptr;
    source->refcount = 1;
    source->read = &TrackFeed::read;
    source->get_size = &TrackFeed::size;
    source->set_size = &TrackFeed::setSize;
    source->free_data = &TrackFeed::freeData;
    source->data = this;
    return source;
}

int TrackFeed::read(burn::burn_source* source, unsigned char* buffer, int size)
{
    return static_cast<TrackFeed*>(source->data)->fill(buffer, size);
}

off_t TrackFeed::size(burn::burn_source* source)
{
    return static_cast<TrackFeed*>(source->data)->m_trackBytes;
}

int TrackFeed::setSize(burn::burn_source*, off_t)
{
    return 1;
}

void TrackFeed::freeData(burn::burn_source*) {}

int TrackFeed::fill(unsigned char* buffer, int size)
{
    const int wanted = static_cast<int>(std::min<qint64>(size, m_toDeliver));
    int filled = 0;
    while (filled < wanted && m_position < m_end && !m_failed) {
        const auto most = static_cast<size_t>(std::min<qint64>(wanted - filled, m_end - m_position));
        const ssize_t got = ::pread(m_file, buffer + filled, most, m_position);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            m_failed = true;
            break;
        }
        filled += static_cast<int>(got);
        m_position += got;
    }
    std::memset(buffer + filled, 0, static_cast<size_t>(wanted - filled));
    m_toDeliver -= wanted;
    return wanted;
}

} // namespace zib
