#include "label/LabelControls.h"

#include "common/Twips.h"
#include "label/CaptionLayout.h"
#include "label/LabelPainter.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace zib {

namespace {

/// A line's rectangle on the screen: its first pixel lies on its point, a thicker one is centred there.
QRect screenRect(const LabelLine& line)
{
    const int before = line.width / 2;
    const QPoint first(wholePixels(std::min(line.x1, line.x2)), wholePixels(std::min(line.y1, line.y2)));
    const QPoint last(wholePixels(std::max(line.x1, line.x2)), wholePixels(std::max(line.y1, line.y2)));
    const QSize reach(line.width, line.width);
    return {first - QPoint(before, before), QSize(last.x() - first.x(), last.y() - first.y()) + reach};
}

QRect screenRect(const QRect& twips)
{
    return {wholePixels(twips.x()), wholePixels(twips.y()), wholePixels(twips.width()),
            wholePixels(twips.height())};
}

/// Whole pixels that hold a length; a trace of a pixel, and less than nothing, takes none.
int upwards(double pixels)
{
    constexpr double kTrace = 0.05;
    return std::max(0, static_cast<int>(std::ceil(pixels - kTrace)));
}

} // namespace

LineControl::LineControl(QWidget* parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void LineControl::setItem(const LabelLine& line)
{
    m_line = line;
    setGeometry(screenRect(line));
    update();
}

void LineControl::setX1(int twips)
{
    m_line.x1 = twips;
    setItem(m_line);
}

void LineControl::setY1(int twips)
{
    m_line.y1 = twips;
    setItem(m_line);
}

void LineControl::setX2(int twips)
{
    m_line.x2 = twips;
    setItem(m_line);
}

void LineControl::setY2(int twips)
{
    m_line.y2 = twips;
    setItem(m_line);
}

void LineControl::setBorderWidth(int pixels)
{
    m_line.width = pixels;
    setItem(m_line);
}

void LineControl::setBorderColor(const QColor& color)
{
    m_line.color = color;
    setItem(m_line);
}

void LineControl::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), m_line.color);
}

/// What of a text lies outside its control. Clicks go through.
class TextOverhang final : public QWidget
{
public:
    explicit TextOverhang(const TextControl* text) : QWidget(text->parentWidget()), m_text(text)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect inside = m_text->geometry().translated(-pos());
        painter.setClipRegion(QRegion(rect()) - inside);
        CaptionLayout(m_text->item().caption, m_text->font())
            .paint(painter, inside.topLeft(), m_text->item().color);
    }

private:
    const TextControl* m_text;
};

TextControl::TextControl(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

TextControl::~TextControl()
{
    delete m_outside;
}

void TextControl::setItem(const LabelText& text)
{
    setLeft(text.left);
    setTop(text.top);
    setColor(text.color);
    m_text.caption = text.caption;
    setDesignFont(text.font);
}

void TextControl::setCaption(const QString& caption)
{
    m_text.caption = caption;
    fit();
}

void TextControl::setLeft(qint32 twips)
{
    m_text.left = twips;
    move(wholePixels(twips), y());
}

void TextControl::setTop(qint32 twips)
{
    m_text.top = twips;
    move(x(), wholePixels(twips));
}

void TextControl::setColor(const QColor& color)
{
    m_text.color = color;
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, color);
    setPalette(colors);
    if (m_outside)
        m_outside->update();
}

void TextControl::setDesignFont(const QFont& font)
{
    m_text.font = font;
    setFont(screenFont(font, logicalDpiY()));
    fit();
}

void TextControl::fit()
{
    setText(m_text.caption);
    const CaptionLayout layout(m_text.caption, font());
    const QRectF ink = layout.ink();
    const QSize room(upwards(layout.size().width()), upwards(layout.size().height()));
    m_overhang = QMargins(upwards(-ink.left()), upwards(-ink.top()), upwards(ink.right() - room.width()),
                          upwards(ink.bottom() - room.height()));
    resize(room);
    place();
    update();
}

/// Puts what lies outside right behind this control.
void TextControl::place()
{
    if (m_overhang.isNull() || !parentWidget()) {
        delete m_outside;
        return;
    }
    if (!m_outside)
        m_outside = new TextOverhang(this);
    m_outside->setGeometry(geometry().marginsAdded(m_overhang));
    m_outside->stackUnder(this);
    m_outside->setVisible(!isHidden());
    m_outside->update();
}

void TextControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    CaptionLayout(m_text.caption, font()).paint(painter, QPointF(0, 0), m_text.color);
}

void TextControl::moveEvent(QMoveEvent* event)
{
    QLabel::moveEvent(event);
    place();
}

void TextControl::showEvent(QShowEvent* event)
{
    QLabel::showEvent(event);
    place();
}

void TextControl::hideEvent(QHideEvent* event)
{
    QLabel::hideEvent(event);
    if (m_outside)
        m_outside->hide();
}

void TextControl::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}

void TextControl::mouseReleaseEvent(QMouseEvent* event)
{
    event->accept();
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        emit Click();
}

void TextControl::mouseDoubleClickEvent(QMouseEvent* event)
{
    event->accept();
}

ImageControl::ImageControl(QWidget* parent) : QLabel(parent) {}

void ImageControl::setItem(const LabelImage& image)
{
    m_image = image;
    m_fitted = {};
    setGeometry(screenRect(image.place));
    fitToScreen();
}

/// Scales the picture down once for this screen, not at every painting.
void ImageControl::fitToScreen()
{
    const QSize wanted = (QSizeF(size()) * devicePixelRatioF()).toSize();
    const QImage& image = m_image.picture.image;
    if (wanted == m_fitted || image.isNull())
        return;
    m_fitted = wanted;
    const bool smaller = wanted.width() < image.width() || wanted.height() < image.height();
    setPixmap(QPixmap::fromImage(
        smaller ? image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation) : image));
}

void ImageControl::paintEvent(QPaintEvent*)
{
    fitToScreen();
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect(), pixmap());
}

} // namespace zib
