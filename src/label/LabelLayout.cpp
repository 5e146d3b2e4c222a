#include "label/LabelLayout.h"

#include "common/Twips.h"
#include "label/LabelMaker.h"
#include "label/LabelPainter.h"

#include <QFontInfo>
#include <QFontMetricsF>

#include <algorithm>
#include <limits>

using LabelMaker::LabelDocument;

namespace zib::layout {

namespace {

constexpr qint32 kLowestRow = 10 * kTwipsPerPixel; ///< The least that the layout dialog offers.
constexpr qint16 kSmallestPoints = 5;              ///< Smaller print is not read on a disc.

bool hasText(qint16 row)
{
    for (qint16 col = 1; col <= LabelDocument.TableCols; ++col)
        if (!LabelMaker::GetCellText(row, col).trimmed().isEmpty())
            return true;
    return false;
}

double lineHeight(const LabelMaker::Document& doc, qint16 points)
{
    return QFontMetricsF(paperFont(labelFont(doc.TextFontName.trimmed(), points, doc.TextFontBold,
                                             doc.TextFontItalic, doc.TextFontUnderline)))
        .height();
}

QFont cellFont()
{
    const LabelMaker::Document& doc = LabelDocument;
    return labelFont(doc.TextFontName.trimmed(), doc.TextFontSize, doc.TextFontBold, doc.TextFontItalic,
                     doc.TextFontUnderline);
}

QString visibleOr10Blanks(const QString& caption)
{
    return caption.isEmpty() ? LabelMaker::kTenBlanks : caption;
}

} // namespace

QFont labelFont(const QString& face, double points, bool bold, bool italic, bool underline)
{
    QFont font(face);
    font.setPointSizeF(std::max(points, 1.0));
    font.setBold(bold);
    font.setItalic(italic);
    font.setUnderline(underline);
    return font;
}

QFont labelFont(const QFont& chosen)
{
    const bool inPixels = chosen.pointSizeF() <= 0;
    return labelFont(chosen.family(), inPixels ? QFontInfo(chosen).pointSizeF() : chosen.pointSizeF(),
                     chosen.bold(), chosen.italic(), chosen.underline());
}

QList<LabelLine> gridLines()
{
    const LabelMaker::Document& doc = LabelDocument;
    QList<LabelLine> lines;
    if (!doc.ShowTableLines)
        return lines;
    const qint32 right = doc.TableLeft + LabelMaker::TotalColumnWidth();
    const qint32 bottom = doc.TableTop + LabelMaker::TableHeight();
    for (int row = 0; row <= doc.TableRows; ++row) {
        const qint32 y = doc.TableTop + row * doc.RowHeight;
        lines << LabelLine{doc.TableLeft, y, right, y, doc.LineWidth, doc.LineColor};
    }
    for (int col = 1; col <= doc.TableCols + 1; ++col) {
        const qint32 x = doc.TableLeft + LabelMaker::ColumnLeft(static_cast<qint16>(col));
        lines << LabelLine{x, doc.TableTop, x, bottom, doc.LineWidth, doc.LineColor};
    }
    return lines;
}

QList<LabelText> cellTexts()
{
    const LabelMaker::Document& doc = LabelDocument;
    QList<LabelText> cells;
    if (!doc.ShowTableText)
        return cells;
    const QFont font = cellFont();
    for (qint16 row = 1; row <= doc.TableRows; ++row) {
        for (qint16 col = 1; col <= doc.TableCols; ++col)
            cells << LabelText{doc.TableLeft + LabelMaker::ColumnLeft(col) + doc.PaddingLeft,
                               doc.TableTop + (row - 1) * doc.RowHeight + doc.PaddingTop,
                               visibleOr10Blanks(LabelMaker::GetCellText(row, col)), font, doc.TextColor};
        if (row == std::numeric_limits<qint16>::max())
            break;
    }
    return cells;
}

LabelText title()
{
    const LabelMaker::Document& doc = LabelDocument;
    return {doc.TitleLeft, doc.TitleTop, visibleOr10Blanks(doc.TitleText.trimmed()),
            labelFont(doc.TitleFontName.trimmed(), doc.TitleFontSize, doc.TitleFontBold, doc.TitleFontItalic,
                      doc.TitleFontUnderline),
            doc.TitleColor};
}

TrackFit trackFit(QSize area)
{
    const LabelMaker::Document& doc = LabelDocument;
    TrackFit fit;
    for (int row = 2; row <= doc.TableRows; ++row) {
        if (!hasText(static_cast<qint16>(row)))
            continue;
        ++fit.tracks;
        fit.fitting += doc.TableTop + row * doc.RowHeight <= area.height();
    }
    return fit;
}

bool isTooWide(QSize area)
{
    return LabelDocument.TableLeft + LabelMaker::TotalColumnWidth() > area.width();
}

std::optional<TighterRows> tighterRows(QSize area)
{
    const LabelMaker::Document& doc = LabelDocument;
    if (trackFit(area).all())
        return std::nullopt;
    const qint32 each = (area.height() - doc.TableTop) / std::max<qint32>(doc.TableRows, 1);
    const qint32 height = std::max(each / kTwipsPerPixel * kTwipsPerPixel, kLowestRow);
    if (height >= doc.RowHeight)
        return std::nullopt;
    qint16 points = doc.TextFontSize;
    while (points > kSmallestPoints && lineHeight(doc, points) > height)
        --points;
    const auto room = static_cast<qint32>(height - lineHeight(doc, points));
    return TighterRows{height, points, std::clamp(room / 2, 0, std::max(doc.PaddingTop, 0))};
}

QRect imagePlace(QSize size, QSize area)
{
    const LabelMaker::Document& doc = LabelDocument;
    if (doc.BackImageStretch)
        return {QPoint(0, 0), area};
    return {QPoint(doc.BackImageLeft, doc.BackImageTop), size * kTwipsPerPixel};
}

} // namespace zib::layout
