#pragma once

#include "label/LabelItems.h"

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

} // namespace zib::layout
