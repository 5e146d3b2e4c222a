#include "engines/burn/drive/TrackFeed.h"

#include <cstdlib>
#include <cstring>

#include <libburn/libburn.h>

namespace zib {

TrackFeed::TrackFeed(const BurnTrack& track)
    : m_name(track.name), m_bytes(track.length.bytes()), m_failed(!m_source.open(track))
{
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
    return static_cast<TrackFeed*>(source->data)->fill(reinterpret_cast<char*>(buffer), size);
}

off_t TrackFeed::size(burn::burn_source* source)
{
    return static_cast<TrackFeed*>(source->data)->m_bytes;
}

int TrackFeed::setSize(burn::burn_source*, off_t)
{
    return 1;
}

void TrackFeed::freeData(burn::burn_source*) {}

/// The drive must never starve: after a failure it gets silence until the write is ended.
int TrackFeed::fill(char* buffer, int size)
{
    int filled = 0;
    while (filled < size && !m_failed) {
        const auto got = m_source.read(buffer + filled, size - filled);
        if (got && *got == 0)
            return filled;
        m_failed = !got;
        if (got)
            filled += static_cast<int>(*got);
    }
    std::memset(buffer + filled, 0, static_cast<size_t>(size - filled));
    return size;
}

} // namespace zib
