#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

/// What a label is drawn of. Positions and lengths are twips from the label area's upper left corner; fonts
/// are in points. Screen and paper draw the same items, so they cannot differ.
namespace zib {

/// A straight line, its width lying half on either side.
struct LabelLine
{
    qint32 x1 = 0;
    qint32 y1 = 0;
    qint32 x2 = 0;
    qint32 y2 = 0;
    int width = 1; ///< Pixels, 15 twips each.
    QColor color = Qt::black;

    bool operator==(const LabelLine&) const = default;
};

/// A text as long as its caption, never clipped.
struct LabelText
{
    qint32 left = 0;
    qint32 top = 0;
    QString caption;
    QFont font;
    QColor color = Qt::black;

    bool operator==(const LabelText&) const = default;
};

/// A decoded picture. A huge one is held with fewer pixels than its file has.
struct LabelPicture
{
    QImage image;
    QSize size; ///< The picture's own size in pixels, upright.
};

/// A picture and where it lies.
struct LabelImage
{
    QRect place;
    LabelPicture picture;
};

/// A whole label as a surface shows it, from back to front.
struct LabelScene
{
    QSize area;
    QColor background = Qt::white;
    LabelImage image; ///< A null picture draws nothing.
    LabelText title;
    QList<LabelLine> lines;
    QList<LabelText> cells; ///< Row by row.
};

} // namespace zib
