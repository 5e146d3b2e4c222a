#include "label/LabelPainter.h"

#include "common/Twips.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace zib {

namespace {

constexpr int kTwipsPerPoint = 20;
constexpr int kScreenDpi = kTwipsPerInch / kTwipsPerPixel;
constexpr int kTextFlags = Qt::AlignLeft | Qt::AlignTop | Qt::TextDontClip | Qt::TextExpandTabs;

void paintCaption(QPainter& painter, const LabelText& text, QSize area)
{
    const bool outside = text.left >= area.width() || text.top >= area.height();
    if (!outside && !text.caption.trimmed().isEmpty())
        paintText(painter, QPointF(text.left, text.top), text.caption, paperFont(text.font), text.color);
}

void paintImage(QPainter& painter, const LabelImage& image)
{
    if (image.picture.image.isNull())
        return;
    painter.setRenderHint(QPainter::LosslessImageRendering);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(image.place), image.picture.image);
}

} // namespace

QFont screenFont(const QFont& font, int dpi)
{
    QFont scaled = font;
    scaled.setPointSizeF(font.pointSizeF() * kScreenDpi / std::max(dpi, 1));
    scaled.setHintingPreference(QFont::PreferNoHinting);
    return scaled;
}

QFont paperFont(const QFont& font)
{
    QFont scaled = font;
    scaled.setPixelSize(std::max(1, static_cast<int>(roundHalfEven(font.pointSizeF() * kTwipsPerPoint))));
    scaled.setHintingPreference(QFont::PreferNoHinting);
    return scaled;
}

void paintText(QPainter& painter, QPointF corner, const QString& caption, const QFont& font,
               const QColor& color)
{
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QRectF(corner, QSizeF(1, 1)), kTextFlags, caption);
}

QSizeF textSize(const QString& caption, const QFont& font)
{
    return QFontMetricsF(font).size(Qt::TextExpandTabs, caption);
}

QRectF lineRect(const LabelLine& line)
{
    const double half = line.width * kTwipsPerPixel / 2.0;
    const QRectF points(QPointF(std::min(line.x1, line.x2), std::min(line.y1, line.y2)),
                        QPointF(std::max(line.x1, line.x2), std::max(line.y1, line.y2)));
    return points.adjusted(-half, -half, half, half);
}

void paintScene(QPainter& painter, const LabelScene& scene)
{
    const QRectF area(QPointF(0, 0), QSizeF(scene.area));
    painter.setClipRect(area);
    painter.fillRect(area, scene.background);
    paintImage(painter, scene.image);
    paintCaption(painter, scene.title, scene.area);
    for (const LabelLine& line : scene.lines)
        painter.fillRect(lineRect(line), line.color);
    for (const LabelText& cell : scene.cells)
        paintCaption(painter, cell, scene.area);
}

} // namespace zib
