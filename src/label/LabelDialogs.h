#pragma once

#include "common/Twips.h"
#include "label/LabelMaker.h"

#include <QFrame>
#include <QLineEdit>
#include <QScreen>

#include <limits>

/// What the three label dialogs share.
namespace zib {

/// The number in a scroll bar's box.
inline int boxNumber(const QLineEdit* box)
{
    return box->text().toInt();
}

/// The number in a scroll bar's box, pixels, as twips.
inline qint32 boxTwips(const QLineEdit* box)
{
    return twipsFromPixels(boxNumber(box));
}

/// A font's size as the document's fields hold it, in whole points.
inline qint16 wholePoints(const QFont& font)
{
    return narrowed<qint16>(roundHalfEven(font.pointSizeF())).value_or(std::numeric_limits<qint16>::max());
}

/// The largest that a window can be on its screen, without its frame.
inline QSize roomFor(const QWidget* window)
{
    constexpr int kFrame = 40; ///< Pixels that a desktop's frames take.
    return window->screen()->availableSize() - QSize(0, kFrame);
}

/// Makes a window no larger than its screen has room for.
inline void fitToScreen(QWidget* window)
{
    window->resize(window->size().boundedTo(roomFor(window)));
}

/// Fills a frame with a colour.
inline void setSwatch(QFrame* frame, const QColor& color)
{
    QPalette colors = frame->palette();
    colors.setColor(QPalette::Window, color);
    frame->setPalette(colors);
    frame->setAutoFillBackground(true);
}

/// Gives a sample the colour that the label has behind its texts.
inline void setSampleGround(QFrame* frame)
{
    const LabelMaker::Document& doc = LabelMaker::LabelDocument;
    setSwatch(frame, doc.UseBackColor ? doc.BackColor : QColor(Qt::white));
}

} // namespace zib
