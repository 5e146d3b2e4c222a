#pragma once

#include <QColor>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QTextLayout>

class QPainter;

namespace zib {

/// A caption set in lines from its upper left corner, the same for screen and paper: tabs are widened to
/// blanks first, and neither the desktop's direction nor the painter's moves it. Lengths are in the units of
/// the font. For one thread at a time, any one.
class CaptionLayout
{
public:
    CaptionLayout(const QString& caption, const QFont& font);

    /// The room of the lines, blanks at their ends included.
    QSizeF size() const { return m_size; }
    /// The room, and beyond it whatever a character covers outside its own place.
    QRectF ink() const;
    /// Draws the caption with its upper left corner at @p corner.
    void paint(QPainter& painter, QPointF corner, const QColor& color) const;

private:
    QTextLayout m_layout;
    QSizeF m_size;
};

/// A caption as it is drawn: a tab is blanks up to the next eighth place of its line, each kind of line break
/// is one.
QString withoutTabs(const QString& caption);

} // namespace zib
