#include "label/CaptionLayout.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QTextOption>

#include <algorithm>

namespace zib {

namespace {

constexpr int kTabPlaces = 8;
constexpr double kAnyWidth = 1e6; ///< Wider than every line; nothing is wrapped.

QTextOption optionFor(const QString& text)
{
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    option.setFlags(QTextOption::IncludeTrailingSpaces);
    return option;
}

/// Characters as a reader counts them.
int placesOf(const QString& text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int places = 0;
    while (finder.toNextBoundary() > 0)
        ++places;
    return places;
}

QString expanded(const QString& line)
{
    QStringList pieces = line.split(u'\t');
    QString text = pieces.takeFirst();
    for (const QString& piece : pieces)
        text += QString(kTabPlaces - placesOf(text) % kTabPlaces, u' ') + piece;
    return text;
}

} // namespace

QString withoutTabs(const QString& caption)
{
    QString text = caption;
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (const QChar lineBreak : {QChar(u'\r'), QChar(u'\v'), QChar(u'\f'), QChar(0x85),
                                  QChar(QChar::LineSeparator), QChar(QChar::ParagraphSeparator)})
        text.replace(lineBreak, u'\n');
    QStringList lines = text.split(u'\n');
    for (QString& line : lines)
        line = expanded(line);
    return lines.join(u'\n');
}

CaptionLayout::CaptionLayout(const QString& caption, const QFont& font)
{
    QString text = withoutTabs(caption);
    m_layout.setTextOption(optionFor(text));
    m_layout.setText(text.replace(u'\n', QChar(QChar::LineSeparator)));
    m_layout.setFont(font);
    m_layout.setCacheEnabled(true);
    const double leading = QFontMetricsF(font).leading();
    double height = 0;
    m_layout.beginLayout();
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        line.setLineWidth(kAnyWidth);
        if (line.lineNumber() > 0)
            height += leading;
        line.setPosition(QPointF(0, height));
        height += line.height();
        m_size = QSizeF(std::max(m_size.width(), line.naturalTextWidth()), height);
    }
    m_layout.endLayout();
}

QRectF CaptionLayout::ink() const
{
    QRectF covered(QPointF(0, 0), m_size);
    for (const QGlyphRun& run : m_layout.glyphRuns()) {
        const QRawFont font = run.rawFont();
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> places = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i)
            covered |= font.boundingRect(glyphs[i]).translated(places[i]);
    }
    return covered;
}

void CaptionLayout::paint(QPainter& painter, QPointF corner, const QColor& color) const
{
    painter.setPen(color);
    m_layout.draw(&painter, corner);
}

} // namespace zib
