#pragma once

#include <QList>
#include <QString>

namespace zib {

/// What one track is called; either text may be empty.
struct TrackNames
{
    QString title;
    QString artist;

    bool isEmpty() const { return title.isEmpty() && artist.isEmpty(); }
    bool operator==(const TrackNames&) const = default;
};

/// What a disc and its tracks are called.
struct DiscNames
{
    QString title;            ///< Of the whole disc; may be empty.
    QString artist;           ///< Of the whole disc; may be empty.
    QList<TrackNames> tracks; ///< In disc order, one for each track.

    /// Whether any track has a name. A disc whose tracks have none is written without names.
    bool haveTracksNames() const;
    bool operator==(const DiscNames&) const = default;
};

/// The names of a disc of these tracks: its artist is the one that all of them share, if they do.
DiscNames namesOfDisc(const QString& title, const QList<TrackNames>& tracks);

} // namespace zib
