#include "label/LabelLayout.h"

#include "common/Twips.h"
#include "label/LabelMaker.h"

#include <QFontInfo>

#include <algorithm>

using LabelMaker::LabelDocument;

namespace zib::layout {

namespace {

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

QRect imagePlace(QSize size, QSize area)
{
    const LabelMaker::Document& doc = LabelDocument;
    if (doc.BackImageStretch)
        return {QPoint(0, 0), area};
    return {QPoint(doc.BackImageLeft, doc.BackImageTop), size * kTwipsPerPixel};
}

} // namespace zib::layout
