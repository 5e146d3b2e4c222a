#pragma once

#include "common/CompilationRow.h"

#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>

class QLineEdit;
class QScrollBar;

/// The label document, one for each run of the program, and the reckoning on it. Lengths are twips, 1440 to
/// the inch; font sizes are points. Nothing of it is ever saved.
namespace LabelMaker {

inline constexpr qsizetype kPathLength = 1024; ///< Longest image path, in characters.
inline constexpr qsizetype kTextLength = 256;  ///< Longest title and font names, in characters.

/// Parts the cells of a row's text.
inline const QString kCellSeparator = QStringLiteral("#*_+{}");
/// What an empty cell or title shows, so that there is something to click on.
inline const QString kTenBlanks = QStringLiteral("          ");

/// Everything a label is made of: a background, a title and the table of tracks.
struct Document
{
    bool UseBackImage = true;
    QString BackImagePath;
    bool BackImageStretch = true;
    bool BackImageOriginalSize = false; ///< What the background dialog last stored; nothing is drawn by it.
    qint32 BackImageLeft = 1500;
    qint32 BackImageTop = 300;
    bool UseBackColor = true;
    QColor BackColor{255, 255, 255};

    QString TitleText = QStringLiteral("Your CD Title");
    QString TitleFontName = QStringLiteral("Arial");
    qint16 TitleFontSize = 18;
    bool TitleFontBold = true;
    bool TitleFontItalic = false;
    bool TitleFontUnderline = false;
    QColor TitleColor{255, 0, 0};
    qint32 TitleLeft = 2700;
    qint32 TitleTop = 300;

    qint16 TableRows = 16; ///< The header row included.
    qint16 TableCols = 4;
    qint32 TableLeft = 525;
    qint32 TableTop = 1200;
    qint32 RowHeight = 300;
    QList<qint32> ColWidths{0, 450, 3000, 2250, 1500}; ///< Index 0 is unused and holds 0.
    bool ShowTableLines = true;
    bool ShowTableText = true;
    qint16 LineWidth = 1; ///< Pixels, 15 twips each.
    QColor LineColor{255, 0, 0};
    QString TextFontName = QStringLiteral("Arial");
    qint16 TextFontSize = 12;
    bool TextFontBold = false;
    bool TextFontItalic = false;
    bool TextFontUnderline = false;
    QColor TextColor{0, 0, 255};
    qint32 PaddingLeft = 75;
    qint32 PaddingTop = 30;
    QStringList TableRowText; ///< Row r is entry r; entry 0 is unused.

    bool operator==(const Document&) const = default;
};

/// Read anywhere in the label maker; written through setLabelDocument.
extern const Document& LabelDocument;

/// Stores a document. Texts are cut at their fields' lengths, before a character that would be halved; every
/// row and column gets its entry.
void setLabelDocument(Document document);

/// Stores the defaults and fills the table from the compilation: a header and one row for each track, or
/// fifteen numbered blank rows when there is none. At most 32766 tracks fit.
void InitLabelDocument(const QList<zib::CompilationRow>& rows);

/// @returns the width of the whole table.
qint32 TotalColumnWidth();
/// @returns the height of the whole table.
qint32 TableHeight();
/// @returns the left edge of a column, counted from 1, relative to the table's left.
qint32 ColumnLeft(qint16 col);
/// @returns a cell's text, both counted from 1; nothing for a cell that does not exist.
QString GetCellText(qint16 row, qint16 col);

/// Shows one number as a vertical scroll bar whose upper arrow increases it, with a read-only box beside it.
/// The value is brought into the range; no change signal leaves the bar. Keys and wheel step the number,
/// see NumberKeys.
void SetupScrollBar(QScrollBar* bar, QLineEdit* box, int min, int max, int value);
/// Writes the number at the bar's position into its box and moves the focus there.
void ShowScrollBarValue(QScrollBar* bar, QLineEdit* box);

} // namespace LabelMaker
