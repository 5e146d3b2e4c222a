#pragma once

#include "label/LabelItems.h"

class QPainter;

namespace zib {

/// The font with which a point is 20 twips on a screen of 15 twips to the pixel, whatever @p dpi the screen
/// claims for its fonts.
QFont screenFont(const QFont& font, int dpi);

/// The font for a painter whose unit is the twip.
QFont paperFont(const QFont& font);

/// The rectangle that a horizontal or vertical line covers, in twips. Its ends reach half its width beyond
/// its points, so that the corners of a grid are closed.
QRectF lineRect(const LabelLine& line);

/// The most dots to the inch that a picture takes to the paper; no label printer shows more.
inline constexpr int kPaperDpi = 600;

/// What of a picture the paper needs: the part within the label, with no more than kPaperDpi of its placed
/// size.
LabelImage forPaper(const LabelImage& image, QSize area);

/// Draws a label with a painter whose unit is the twip. What lies beyond the label area is cut off.
void paintScene(QPainter& painter, const LabelScene& scene);

} // namespace zib
