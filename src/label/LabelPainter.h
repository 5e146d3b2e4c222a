#pragma once

#include "label/LabelItems.h"

class QPainter;

namespace zib {

/// The font with which a point is 20 twips on a screen of 15 twips to the pixel, whatever @p dpi the screen
/// claims for its fonts.
QFont screenFont(const QFont& font, int dpi);

/// The font for a painter whose unit is the twip.
QFont paperFont(const QFont& font);

/// Draws a text with its upper left corner at @p corner; @p font and @p corner are in the painter's units.
void paintText(QPainter& painter, QPointF corner, const QString& caption, const QFont& font,
               const QColor& color);

/// @returns the room that paintText needs with this font.
QSizeF textSize(const QString& caption, const QFont& font);

/// The rectangle that a horizontal or vertical line covers, in twips. Its ends reach half its width beyond
/// its points, so that the corners of a grid are closed.
QRectF lineRect(const LabelLine& line);

/// Draws a label with a painter whose unit is the twip. What lies beyond the label area is cut off.
void paintScene(QPainter& painter, const LabelScene& scene);

} // namespace zib
