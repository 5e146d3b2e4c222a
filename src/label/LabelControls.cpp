#include "label/LabelControls.h"

#include "common/Twips.h"
#include "label/LabelPainter.h"

#include <QMouseEvent>
#include <QPainter>

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

TextControl::TextControl(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
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
    const QSizeF size = textSize(m_text.caption, font());
    resize(static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height())));
}

void TextControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintText(painter, QPointF(0, 0), m_text.caption, font(), m_text.color);
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
