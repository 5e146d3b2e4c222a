#include "common/DiscNames.h"

#include <algorithm>

namespace zib {

bool DiscNames::haveTracksNames() const
{
    return std::any_of(tracks.cbegin(), tracks.cend(),
                       [](const TrackNames& names) { return !names.isEmpty(); });
}

DiscNames namesOfDisc(const QString& title, const QList<TrackNames>& tracks)
{
    DiscNames disc{title, {}, tracks};
    const auto sameArtist = [&tracks](const TrackNames& names) {
        return names.artist == tracks.first().artist;
    };
    if (std::all_of(tracks.cbegin(), tracks.cend(), sameArtist) && !tracks.isEmpty())
        disc.artist = tracks.first().artist;
    return disc;
}

} // namespace zib
