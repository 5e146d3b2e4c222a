#pragma once

#include "label/LabelItems.h"

#include <QLabel>
#include <QMargins>
#include <QPointer>

/// The controls a label surface is made of. Each holds its item in twips and shows it at 15 twips to the
/// pixel.
namespace zib {

/// A line. It lets every click through to what is below.
class LineControl final : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(int x1 READ x1 WRITE setX1)
    Q_PROPERTY(int y1 READ y1 WRITE setY1)
    Q_PROPERTY(int x2 READ x2 WRITE setX2)
    Q_PROPERTY(int y2 READ y2 WRITE setY2)
    Q_PROPERTY(int borderWidth READ borderWidth WRITE setBorderWidth)
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor)
public:
    explicit LineControl(QWidget* parent = nullptr);

    const LabelLine& item() const { return m_line; }
    void setItem(const LabelLine& line);

    int x1() const { return m_line.x1; }
    int y1() const { return m_line.y1; }
    int x2() const { return m_line.x2; }
    int y2() const { return m_line.y2; }
    int borderWidth() const { return m_line.width; } ///< Pixels.
    QColor borderColor() const { return m_line.color; }
    void setX1(int twips);
    void setY1(int twips);
    void setX2(int twips);
    void setY2(int twips);
    void setBorderWidth(int pixels);
    void setBorderColor(const QColor& color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    LabelLine m_line;
};

class TextOverhang;

/// A transparent text, as large as its caption. What a character covers beyond that, as a slanted one does,
/// is drawn by a second control right behind this one; this one's corner is the text's.
class TextControl final : public QLabel
{
    Q_OBJECT
public:
    explicit TextControl(QWidget* parent = nullptr);
    ~TextControl() override;

    const LabelText& item() const { return m_text; }
    void setItem(const LabelText& text);
    void setCaption(const QString& caption);
    void setLeft(qint32 twips);
    void setTop(qint32 twips);
    void setColor(const QColor& color);
    /// @param font in points of 20 twips.
    void setDesignFont(const QFont& font);

signals:
    /// The left button was pressed and released on the text.
    void Click();

protected:
    void paintEvent(QPaintEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void fit();
    void place();

    LabelText m_text;
    QMargins m_overhang;              ///< What the characters need beyond the control, in pixels.
    QPointer<TextOverhang> m_outside; ///< There as long as that is anything; the parent may go first.
};

/// A picture, drawn into its place. Clicks go on to the surface.
class ImageControl final : public QLabel
{
    Q_OBJECT
public:
    explicit ImageControl(QWidget* parent = nullptr);

    const LabelImage& item() const { return m_image; }
    void setItem(const LabelImage& image);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void fitToScreen();

    LabelImage m_image;
    QSize m_fitted; ///< The size in screen dots for which the label's pixmap was made.
};

} // namespace zib
