#pragma once

#include "label/LabelItems.h"

#include <optional>

namespace zib::layout {

/// The label area's width and height: a square that holds the default table with equal margins, in twips.
inline constexpr int kLabelAreaTwips = 8250;

/// A font of a label: its face, size in points, bold, italic and underline; nothing else counts.
QFont labelFont(const QString& face, double points, bool bold, bool italic, bool underline);
/// What of a chosen font a label can have.
QFont labelFont(const QFont& chosen);

/// The grid of the document's table: a line above each row and one below the last, then one left of each
/// column and one right of the last. Nothing when lines are off.
QList<LabelLine> gridLines();

/// One text for each cell, row by row; ten blanks for an empty one. Nothing when text is off.
QList<LabelText> cellTexts();

/// The title; ten blanks when it is empty.
LabelText title();

/// Where a picture of @p size pixels lies on a label area of @p area twips: all over it, or at its own place
/// with its pixels as large as the screen's.
QRect imagePlace(QSize size, QSize area);

/// How many tracks of the table the label shows whole. A track is a row below the header that holds a text.
struct TrackFit
{
    int fitting = 0;
    int tracks = 0;

    bool all() const { return fitting == tracks; }
};
TrackFit trackFit(QSize area);

/// Whether the table reaches beyond the label's right edge.
bool isTooWide(QSize area);

/// A row height, a font size and a padding with which more rows fit.
struct TighterRows
{
    qint32 rowHeight = 0;  ///< Twips, whole pixels.
    qint16 fontSize = 0;   ///< Points.
    qint32 paddingTop = 0; ///< Twips.
};
/// What makes all rows fit, or as many as rows of the least height can.
/// @returns nothing when all fit, or when the rows have that height already.
std::optional<TighterRows> tighterRows(QSize area);

} // namespace zib::layout
