#include "label/LabelPainter.h"

#include "common/Twips.h"
#include "label/CaptionLayout.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace zib {

namespace {

constexpr int kTwipsPerPoint = 20;
constexpr qint64 kMostLosslessPixels = 4'000'000; ///< A larger picture is a photo and goes as one.
constexpr int kScreenDpi = kTwipsPerInch / kTwipsPerPixel;

void paintCaption(QPainter& painter, const LabelText& text, QSize area)
{
    const bool outside = text.left >= area.width() || text.top >= area.height();
    if (!outside && !text.caption.trimmed().isEmpty())
        CaptionLayout(text.caption, paperFont(text.font))
            .paint(painter, QPointF(text.left, text.top), text.color);
}

/// Its dots on so many twips at the printer's finest.
int dotsOn(int twips)
{
    return static_cast<int>(std::ceil(double(twips) * kPaperDpi / kTwipsPerInch));
}

void paintImage(QPainter& painter, const LabelImage& image, QSize area)
{
    const LabelImage fitted = forPaper(image, area);
    if (fitted.picture.image.isNull())
        return;
    const QSize size = fitted.picture.image.size();
    const bool isPhoto = qint64{size.width()} * size.height() > kMostLosslessPixels;
    painter.setRenderHint(QPainter::LosslessImageRendering, !isPhoto);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(fitted.place), fitted.picture.image);
}

} // namespace

QFont screenFont(const QFont& font, int dpi)
{
    QFont scaled = font;
    scaled.setPointSizeF(font.pointSizeF() * kScreenDpi / std::max(dpi, 1));
    scaled.setHintingPreference(QFont::PreferNoHinting);
    return scaled;
}

LabelImage forPaper(const LabelImage& image, QSize area)
{
    const QImage& whole = image.picture.image;
    const QRect shown = image.place.intersected(QRect(QPoint(0, 0), area));
    if (whole.isNull() || shown.isEmpty())
        return {};
    const double across = double(whole.width()) / image.place.width();
    const double down = double(whole.height()) / image.place.height();
    const QPoint first(static_cast<int>((shown.left() - image.place.left()) * across),
                       static_cast<int>((shown.top() - image.place.top()) * down));
    const QPoint end(
        static_cast<int>(std::ceil((shown.left() + shown.width() - image.place.left()) * across)),
        static_cast<int>(std::ceil((shown.top() + shown.height() - image.place.top()) * down)));
    const QRect part = QRect(first, end - QPoint(1, 1)).intersected(whole.rect());
    const QRectF place(image.place.left() + part.left() / across, image.place.top() + part.top() / down,
                       part.width() / across, part.height() / down);
    QImage cut = part == whole.rect() ? whole : whole.copy(part);
    const QSize most(dotsOn(qRound(place.width())), dotsOn(qRound(place.height())));
    if (cut.width() > most.width() || cut.height() > most.height())
        cut = cut.scaled(cut.size().boundedTo(most), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return {place.toRect(), {cut, cut.size()}};
}

QFont paperFont(const QFont& font)
{
    QFont scaled = font;
    scaled.setPixelSize(std::max(1, static_cast<int>(roundHalfEven(font.pointSizeF() * kTwipsPerPoint))));
    scaled.setHintingPreference(QFont::PreferNoHinting);
    return scaled;
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
    paintImage(painter, scene.image, scene.area);
    paintCaption(painter, scene.title, scene.area);
    for (const LabelLine& line : scene.lines)
        painter.fillRect(lineRect(line), line.color);
    for (const LabelText& cell : scene.cells)
        paintCaption(painter, cell, scene.area);
}

} // namespace zib
