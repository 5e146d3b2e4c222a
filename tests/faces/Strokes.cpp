#include "faces/Strokes.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainterPath>
#include <QPainter>
#include <QWidget>

#include <cmath>

namespace zib {

namespace {

QString number(double value)
{
    const double rounded = std::round(value * 100) / 100;
    return QString::number(rounded == 0 ? 0 : rounded);
}

QString place(const QPointF& point)
{
    return number(point.x()) + ',' + number(point.y());
}

QString place(const QRectF& rect)
{
    return place(rect.topLeft()) + ' ' + number(rect.width()) + 'x' + number(rect.height());
}

QString colorName(const QColor& color)
{
    return color.alpha() == 255 ? color.name() : color.name(QColor::HexArgb);
}

QString penWords(const QPen& pen)
{
    if (pen.style() == Qt::NoPen)
        return {};
    QString words = " line " + colorName(pen.color());
    if (pen.widthF() != 1)
        words += " wide " + number(pen.widthF());
    if (pen.style() != Qt::SolidLine)
        words += QString(" style %1").arg(static_cast<int>(pen.style()));
    return words;
}

QString brushWords(const QBrush& brush)
{
    if (brush.style() == Qt::NoBrush)
        return {};
    const QString style =
        brush.style() == Qt::SolidPattern ? QString() : QString(" style %1").arg(brush.style());
    return " fill " + colorName(brush.color()) + style;
}

QString fontWords(const QFont& font)
{
    const double size = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF();
    QString words = ' ' + font.family() + ' ' + number(size) + (font.pixelSize() > 0 ? "px" : "pt");
    for (const auto& [is, word] : {std::pair{font.bold(), " bold"},
                                   {font.italic(), " italic"},
                                   {font.underline(), " underlined"},
                                   {font.strikeOut(), " struck"}})
        words += is ? word : "";
    return font.stretch() == 100 || font.stretch() == 0 ? words
                                                        : words + QString(" stretch %1").arg(font.stretch());
}

/// Writes down what it is told to draw.
class Writer final : public QPaintEngine
{
public:
    explicit Writer(QStringList& strokes) : QPaintEngine(AllFeatures), m_strokes(strokes) {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState& news) override
    {
        if (news.state() & DirtyPen)
            m_pen = news.pen();
        if (news.state() & DirtyBrush)
            m_brush = news.brush();
        if (news.state() & DirtyTransform)
            m_transform = news.transform();
        if (news.state() & DirtyFont)
            m_font = news.font();
        if (news.state() & DirtyOpacity)
            m_opacity = news.opacity();
        if (news.state() & DirtyClipRegion)
            m_clip = news.clipOperation() == Qt::NoClip ? QRegion() : news.clipRegion();
    }
    void drawRects(const QRectF* rects, int count) override
    {
        for (int i = 0; i < count; ++i)
            shape("rectangle " + place(m_transform.mapRect(rects[i])));
    }
    void drawRects(const QRect* rects, int count) override
    {
        for (int i = 0; i < count; ++i)
            shape("rectangle " + place(m_transform.mapRect(QRectF(rects[i]))));
    }
    void drawLines(const QLineF* lines, int count) override
    {
        for (int i = 0; i < count; ++i)
            shape("line " + place(m_transform.map(lines[i].p1())) + " to " +
                  place(m_transform.map(lines[i].p2())));
    }
    void drawLines(const QLine* lines, int count) override
    {
        for (int i = 0; i < count; ++i) {
            const QLineF line(lines[i]);
            drawLines(&line, 1);
        }
    }
    void drawEllipse(const QRectF& rect) override { shape("ellipse " + place(m_transform.mapRect(rect))); }
    void drawEllipse(const QRect& rect) override { drawEllipse(QRectF(rect)); }
    void drawPath(const QPainterPath& path) override
    {
        shape(QString("path of %1 in ").arg(path.elementCount()) +
              place(m_transform.mapRect(path.boundingRect())));
    }
    void drawPoints(const QPointF* points, int count) override
    {
        for (int i = 0; i < count; ++i)
            shape("point " + place(m_transform.map(points[i])));
    }
    void drawPolygon(const QPointF* points, int count, PolygonDrawMode) override
    {
        QStringList places;
        for (int i = 0; i < count; ++i)
            places << place(m_transform.map(points[i]));
        shape("polygon " + places.join(' '));
    }
    void drawPixmap(const QRectF& on, const QPixmap& picture, const QRectF& part) override
    {
        drawImage(on, picture.toImage(), part, Qt::AutoColor);
    }
    void drawTiledPixmap(const QRectF& on, const QPixmap&, const QPointF&) override
    {
        write("tiles " + place(m_transform.mapRect(on)));
    }
    void drawImage(const QRectF& on, const QImage& image, const QRectF& part,
                   Qt::ImageConversionFlags) override
    {
        write(QString("picture %1x%2 part %3 on ").arg(image.width()).arg(image.height()).arg(place(part)) +
              place(m_transform.mapRect(on)) +
              (painter()->testRenderHint(QPainter::SmoothPixmapTransform) ? " smooth" : "") +
              (painter()->testRenderHint(QPainter::LosslessImageRendering) ? " lossless" : ""));
    }
    void drawTextItem(const QPointF& at, const QTextItem& text) override
    {
        const QString what = text.text().isEmpty() ? "glyphs" : "text \"" + text.text() + '"';
        write(what + " at " + place(m_transform.map(at)) + fontWords(text.font()) + ' ' +
              colorName(m_pen.color()));
    }

private:
    void shape(const QString& words) { write(words + penWords(m_pen) + brushWords(m_brush)); }
    void write(const QString& words)
    {
        const bool scaled = m_transform.type() > QTransform::TxTranslate;
        m_strokes << words + (m_opacity < 1 ? " opacity " + number(m_opacity) : QString()) +
                         (scaled ? " by " + number(m_transform.m11()) + 'x' + number(m_transform.m22())
                                 : QString()) +
                         (m_clip.isEmpty() ? QString()
                                           : QString(" within %1 of ").arg(m_clip.rectCount()) +
                                                 place(m_transform.mapRect(QRectF(m_clip.boundingRect()))));
    }

    QStringList& m_strokes;
    QPen m_pen;
    QBrush m_brush;
    QFont m_font;
    QTransform m_transform;
    QRegion m_clip;
    double m_opacity = 1;
};

/// A page of 96 dots to the inch on which only words appear.
class Page final : public QPaintDevice
{
public:
    Page(QSize area, QStringList& strokes) : m_area(area), m_engine(strokes) {}

    QPaintEngine* paintEngine() const override { return &m_engine; }

protected:
    int metric(PaintDeviceMetric which) const override
    {
        switch (which) {
        case PdmWidth:
            return m_area.width();
        case PdmHeight:
            return m_area.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 0;
        }
    }

private:
    QSize m_area;
    mutable Writer m_engine;
};

} // namespace

QStringList strokesOf(QWidget* widget)
{
    QStringList strokes;
    Page page(widget->size(), strokes);
    widget->render(&page, {}, {}, QWidget::RenderFlags());
    return strokes;
}

QStringList strokesOf(QSize area, const std::function<void(QPainter&)>& draw)
{
    QStringList strokes;
    Page page(area, strokes);
    QPainter painter(&page);
    draw(painter);
    painter.end();
    return strokes;
}

} // namespace zib
