#include "label/LabelMaker.h"

#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "label/NumberKeys.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <limits>
#include <numeric>

namespace LabelMaker {

namespace {

constexpr int kEmptyTableRows = 16;

Document& stored()
{
    static Document document;
    return document;
}

/// Cuts a text at a field's length, never within a character as a reader sees it: an accent goes with its
/// letter, an emoji whole.
void cutAt(qsizetype length, QString& text)
{
    if (text.size() <= length)
        return;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(length);
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    const bool endless = finder.position() <= 0; // One character alone fills the field.
    text.truncate(endless ? length - (text[length - 1].isHighSurrogate() ? 1 : 0) : finder.position());
}

/// The default title of a track without one: its file name without the extension.
QString nameWithoutExtension(const QString& fileName)
{
    const QString name = fileName.trimmed();
    const bool audio = name.endsWith(QStringLiteral(".wav"), Qt::CaseInsensitive) ||
                       name.endsWith(QStringLiteral(".mp3"), Qt::CaseInsensitive);
    return audio ? name.chopped(4) : name;
}

QString headerRow()
{
    return QStringList{QStringLiteral("No"), QStringLiteral("Title"), QStringLiteral("Artist"),
                       QStringLiteral("Time")}
        .join(kCellSeparator);
}

QString trackRow(const zib::CompilationRow& row)
{
    const QString title = row.title.trimmed().isEmpty() ? nameWithoutExtension(row.fileName) : row.title;
    return QStringList{row.number, title, row.artist, row.time}.join(kCellSeparator);
}

QString blankRow(int number, int columns)
{
    return QString::number(number) + (kCellSeparator + kTenBlanks).repeated(columns - 1);
}

void fillTable(Document& document, const QList<zib::CompilationRow>& rows)
{
    constexpr qsizetype kMostTracks = std::numeric_limits<qint16>::max() - 1;
    const qsizetype tracks = std::min(rows.size(), kMostTracks);
    document.TableRows = static_cast<qint16>(tracks > 0 ? tracks + 1 : kEmptyTableRows);
    document.TableRowText = {QString(), headerRow()};
    for (int row = 2; row <= document.TableRows; ++row)
        document.TableRowText << (tracks > 0 ? trackRow(rows[row - 2])
                                             : blankRow(row - 1, document.TableCols));
}

} // namespace

const Document& LabelDocument = stored();

void setLabelDocument(Document document)
{
    cutAt(kPathLength, document.BackImagePath);
    for (QString* text : {&document.TitleText, &document.TitleFontName, &document.TextFontName})
        cutAt(kTextLength, *text);
    document.ColWidths.resize(std::max<qsizetype>(document.ColWidths.size(), document.TableCols + 1));
    document.TableRowText.resize(std::max<qsizetype>(document.TableRows, 0) + 1);
    stored() = std::move(document);
}

void InitLabelDocument(const QList<zib::CompilationRow>& rows)
{
    Document document;
    document.BackImagePath = GeneralAPI::JoinPath(zib::applicationFolder(), QStringLiteral("Sample1.jpg"));
    fillTable(document, rows);
    setLabelDocument(std::move(document));
}

qint32 TotalColumnWidth()
{
    const QList<qint32>& widths = LabelDocument.ColWidths;
    return widths.size() < 2 ? 0 : std::accumulate(widths.begin() + 1, widths.end(), qint32{0});
}

qint32 TableHeight()
{
    return LabelDocument.TableRows * LabelDocument.RowHeight;
}

qint32 ColumnLeft(qint16 col)
{
    const QList<qint32>& widths = LabelDocument.ColWidths;
    const qsizetype end = std::clamp<qsizetype>(col, 1, std::max<qsizetype>(widths.size(), 1));
    return end < 2 ? 0 : std::accumulate(widths.begin() + 1, widths.begin() + end, qint32{0});
}

QString GetCellText(qint16 row, qint16 col)
{
    if (row < 1 || row > LabelDocument.TableRows || col < 1)
        return {};
    return LabelDocument.TableRowText.value(row).split(kCellSeparator).value(col - 1);
}

void SetupScrollBar(QScrollBar* bar, QLineEdit* box, int min, int max, int value)
{
    const QSignalBlocker quiet(bar);
    const int lower = std::min(min, max);
    const int shown = std::clamp(value, lower, max);
    bar->setRange(lower, max);
    box->setText(QString::number(shown));
    bar->setValue(lower + max - shown);
    box->setReadOnly(true);
    zib::NumberKeys::install(bar, box);
}

void ShowScrollBarValue(QScrollBar* bar, QLineEdit* box)
{
    if (!bar || !box)
        return;
    box->setText(QString::number(bar->minimum() + bar->maximum() - bar->value()));
    box->setFocus();
}

} // namespace LabelMaker
