#include "faces/Look.h"

#include "faces/PlainFont.h"

#include <QApplication>
#include <QLocale>
#include <QPalette>
#include <QProxyStyle>

namespace zib {

namespace {

bool styleRests = false;

class RestingStyle final : public QProxyStyle
{
public:
    RestingStyle() : QProxyStyle("fusion") {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        if (!styleRests)
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override
    {
        if (!styleRests)
            QProxyStyle::drawControl(element, option, painter, widget);
    }
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override
    {
        if (!styleRests)
            QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
};

QPalette plainColors()
{
    QPalette colors(QColor(0xEFEFEF));
    colors.setColor(QPalette::Base, QColor(0xFDFDFD));
    colors.setColor(QPalette::Highlight, QColor(0x308CC6));
    colors.setColor(QPalette::HighlightedText, QColor(0xFEFEFE));
    colors.setColor(QPalette::PlaceholderText, QColor(0x7F7F7F));
    return colors;
}

} // namespace

void dressUp()
{
    QLocale::setDefault(QLocale::c());
    QApplication::setStyle(new RestingStyle);
    QApplication::setPalette(plainColors());
    QApplication::setFont(plainFont());
    for (const char* family : {"Arial", "Helvetica", "Sans Serif"})
        QFont::insertSubstitution(family, kPlainFont);
    QApplication::setCursorFlashTime(0);
}

StyleRest::StyleRest()
{
    styleRests = true;
}

StyleRest::~StyleRest()
{
    styleRests = false;
}

} // namespace zib
