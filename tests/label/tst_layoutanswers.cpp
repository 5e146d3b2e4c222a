#include "answers/Sweep.h"
#include "label/LabelLayout.h"
#include "label/LabelMaker.h"

#include <QTest>

#include <algorithm>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

QString wordsOf(const LabelText& text)
{
    return QString("'%1' at %2, %3, %4 points%5%6%7, %8")
        .arg(text.caption)
        .arg(text.left)
        .arg(text.top)
        .arg(text.font.pointSizeF())
        .arg(text.font.bold() ? " bold" : "", text.font.italic() ? " italic" : "",
             text.font.underline() ? " underlined" : "", text.color.name());
}

Answer fitAnswer(QSize area)
{
    const layout::TrackFit fit = layout::trackFit(area);
    const auto tighter = layout::tighterRows(area);
    return {QString("fit: %1 of %2%3").arg(fit.fitting).arg(fit.tracks).arg(fit.all() ? ", all" : ""),
            QString("wide: %1").arg(layout::isTooWide(area) ? "too wide" : "no"),
            QString("tighter: %1").arg(tighter ? tighter->rowHeight : 0)};
}

/// Everything but what the fonts of a system decide.
Answer layoutAnswer(QSize area)
{
    Answer words;
    const QList<LabelLine> lines = layout::gridLines();
    for (qsizetype i = 0; i < lines.size(); ++i)
        words << QString("line %1: %2,%3 to %4,%5, %6 wide, %7")
                     .arg(i)
                     .arg(lines[i].x1)
                     .arg(lines[i].y1)
                     .arg(lines[i].x2)
                     .arg(lines[i].y2)
                     .arg(lines[i].width)
                     .arg(lines[i].color.name());
    const QList<LabelText> cells = layout::cellTexts();
    for (qsizetype i = 0; i < cells.size(); ++i)
        words << QString("cell %1: ").arg(i) + wordsOf(cells[i]);
    words << "title: " + wordsOf(layout::title());
    return words + fitAnswer(area);
}

/// A table of three rows and two columns in which the last row is empty.
LabelMaker::Document document()
{
    const QString separator = LabelMaker::kCellSeparator;
    LabelMaker::Document doc;
    doc.TableRows = 3;
    doc.TableCols = 2;
    doc.ColWidths = {0, 450, 3000};
    doc.TableRowText = {QString(), "No" + separator + "Title", "1" + separator + "One", separator};
    return doc;
}

/// Around every row's lower edge, the table's right one, and where rows of other heights would just fit.
QList<int> edges(int top, int height)
{
    QList<int> places{0, 525 + 7'200};
    for (int row = 1; row <= 16; ++row)
        places << top + row * height;
    for (int other = 135; other < height; other += 15)
        places << top + 16 * other;
    QList<int> all;
    for (const int place : std::as_const(places))
        all << place - 1 << place << place + 1;
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

QSize square(int twips)
{
    return {twips, twips};
}

} // namespace

/// Where the items of a label come to lie, recorded.
class TestLayoutAnswers : public QObject
{
    Q_OBJECT
private slots:
    void items()
    {
        Book book("label/answers/layout");
        LabelMaker::setLabelDocument(document());
        const Answer usual = layoutAnswer(square(layout::kLabelAreaTwips));
        book.chapter("A small label");
        book.tell("all", usual);
        book.chapter("One thing changed", usual);
        using Change = void (*)(LabelMaker::Document&);
        const QList<std::pair<const char*, Change>> changes{
            {"no lines", [](auto& doc) { doc.ShowTableLines = false; }},
            {"no text", [](auto& doc) { doc.ShowTableText = false; }},
            {"wide lines", [](auto& doc) { doc.LineWidth = 3; }},
            {"green lines", [](auto& doc) { doc.LineColor = QColor(0, 128, 0); }},
            {"left", [](auto& doc) { doc.TableLeft = 100; }},
            {"top", [](auto& doc) { doc.TableTop = 200; }},
            {"rows", [](auto& doc) { doc.RowHeight = 450; }},
            {"no rows", [](auto& doc) { doc.TableRows = 0; }},
            {"one column", [](auto& doc) { doc.TableCols = 1; }},
            {"three columns", [](auto& doc) { doc.TableCols = 3; }},
            {"column", [](auto& doc) { doc.ColWidths[1] = 500; }},
            {"padding left", [](auto& doc) { doc.PaddingLeft = 15; }},
            {"padding top", [](auto& doc) { doc.PaddingTop = 45; }},
            {"small text", [](auto& doc) { doc.TextFontSize = 7; }},
            {"no size", [](auto& doc) { doc.TextFontSize = 0; }},
            {"bold text", [](auto& doc) { doc.TextFontBold = true; }},
            {"italic text", [](auto& doc) { doc.TextFontItalic = true; }},
            {"underlined text", [](auto& doc) { doc.TextFontUnderline = true; }},
            {"red text", [](auto& doc) { doc.TextColor = QColor(255, 0, 0); }},
            {"no title", [](auto& doc) { doc.TitleText = "  "; }},
            {"blanks round the title", [](auto& doc) { doc.TitleText = " x "; }},
            {"title elsewhere", [](auto& doc) { doc.TitleLeft = 7, doc.TitleTop = 9; }},
            {"title's font",
             [](auto& doc) { doc.TitleFontSize = 9, doc.TitleFontBold = false, doc.TitleFontItalic = true; }},
            {"title underlined",
             [](auto& doc) { doc.TitleFontUnderline = true, doc.TitleColor = QColor(1, 2, 3); }},
            {"a text of blanks", [](auto& doc) { doc.TableRowText[2] = "  "; }},
            {"a text in the last row",
             [](auto& doc) { doc.TableRowText[3] = LabelMaker::kCellSeparator + "x"; }}};
        for (const auto& [name, change] : changes) {
            LabelMaker::Document doc = document();
            change(doc);
            LabelMaker::setLabelDocument(doc);
            book.tell(name, layoutAnswer(square(layout::kLabelAreaTwips)));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void fitting()
    {
        Book book("label/answers/labelfit");
        QList<CompilationRow> rows(15, CompilationRow{"1", "a.mp3", "t", "", "", "", ""});
        for (const qint32 top : {0, 1'200})
            for (const qint32 height : {150, 165, 300, 600}) {
                LabelMaker::InitLabelDocument(rows);
                LabelMaker::Document doc = LabelMaker::LabelDocument;
                doc.TableTop = top;
                doc.RowHeight = height;
                LabelMaker::setLabelDocument(doc);
                book.chapter(QString("Areas for a table at %1 with rows of %2").arg(top).arg(height));
                for (const int area : edges(top, height))
                    book.tell(QString::number(area), fitAnswer(square(area)));
            }
        ZIB_COMPARE_ANSWERS(book);
    }
    void pictures()
    {
        Book book("label/answers/pictureplaces");
        for (const bool stretched : {true, false}) {
            LabelMaker::Document doc = document();
            doc.BackImageStretch = stretched;
            doc.BackImageLeft = 30;
            doc.BackImageTop = 45;
            LabelMaker::setLabelDocument(doc);
            book.chapter(stretched ? "Pictures all over a label" : "Pictures at their own place");
            for (const QSize size : {QSize(0, 0), QSize(1, 2), QSize(640, 480), QSize(30'000, 10)}) {
                const QRect place = layout::imagePlace(size, {8'250, 8'000});
                book.tell(QString("%1 by %2").arg(size.width()).arg(size.height()),
                          {QString("%1, %2, %3 by %4")
                               .arg(place.x())
                               .arg(place.y())
                               .arg(place.width())
                               .arg(place.height())});
            }
        }
        ZIB_COMPARE_ANSWERS(book);
    }
};

QTEST_MAIN(TestLayoutAnswers)
#include "tst_layoutanswers.moc"
