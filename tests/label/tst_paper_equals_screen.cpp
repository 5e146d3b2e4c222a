#include "fakes/FakePrinter.h"
#include "fakes/FakeSeams.h"
#include "label/LabelMaker.h"
#include "label/frmPreview.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using LabelMaker::Document;
using LabelMaker::LabelDocument;

namespace {

const QColor kGround(255, 255, 0);
const QColor kPicture(0, 255, 0);
const QColor kTitle(255, 0, 0);
const QColor kLines(0, 0, 255);
const QColor kCells(0, 0, 0);
/// A full block: as a letter it covers all of its place.
const QString kBlock = QString::fromUtf8("\u2588");

/// The preview as it is seen and as it is printed, both of 96 dots to the inch, without the disc's outline.
struct Both
{
    QImage screen;
    QImage paper;
};

Both show(zib::FakeDesk& desk)
{
    zib::FakePrinter::Tray tray;
    desk.components.makePrinter = [&tray] { return std::make_unique<zib::FakePrinter>(tray); };
    frmPreview preview(desk.services, {8250, 8250});
    preview.findChild<QWidget*>("discOutline")->hide();
    preview.show();
    preview.findChild<QTimer*>("Timer1")->start(0);
    for (int i = 0; i < 3000 && tray.jobs.isEmpty(); ++i)
        QTest::qWait(10);
    if (tray.jobs.isEmpty())
        return {};
    return {preview.grab().toImage().convertToFormat(QImage::Format_RGB32),
            tray.jobs[0].paper.copy(0, 0, 550, 550)};
}

/// A label on which every layer covers a part of the one behind it: the picture half of the ground, the title
/// half of the picture, thick lines the title, and cells the lines.
void makeLayers(Document& document, const QTemporaryDir& folder)
{
    QImage picture(200, 550, QImage::Format_RGB32);
    picture.fill(kPicture);
    document.BackImagePath = folder.filePath("picture.png");
    picture.save(document.BackImagePath);
    document.BackImageStretch = false;
    document.BackImageLeft = document.BackImageTop = 0;
    document.BackColor = kGround;
    document.TitleText = kBlock.repeated(12);
    document.TitleFontName = document.TextFontName = "DejaVu Sans";
    document.TitleFontBold = false;
    document.TitleFontSize = 60;
    document.TitleColor = kTitle;
    document.TitleLeft = 1500, document.TitleTop = 1500;
    document.TableRows = 2, document.TableCols = 2;
    document.TableRowText = {QString(), kBlock + "#*_+{}" + kBlock, kBlock + "#*_+{}" + kBlock};
    document.TableLeft = 2250, document.TableTop = 2100;
    document.RowHeight = 900, document.ColWidths = {0, 1500, 1500};
    document.LineWidth = 10, document.LineColor = kLines;
    document.TextColor = kCells, document.TextFontSize = 24;
    document.PaddingLeft = -150, document.PaddingTop = -150;
}

/// How many dots differ plainly.
int differences(const Both& both)
{
    int different = 0;
    for (int y = 0; y < both.screen.height(); ++y)
        for (int x = 0; x < both.screen.width(); ++x) {
            const QColor one = both.screen.pixelColor(x, y);
            const QColor other = both.paper.pixelColor(x, y);
            different += qAbs(one.red() - other.red()) + qAbs(one.green() - other.green()) +
                             qAbs(one.blue() - other.blue()) >
                         200;
        }
    return different;
}

} // namespace

/// What is printed is what is seen: every layer, in its order, and every text that went wrong on paper once.
class TestPaperEqualsScreen : public QObject
{
    Q_OBJECT
private slots:
    void layers_lieInTheSameOrder_data()
    {
        QTest::addColumn<QPoint>("at");
        QTest::addColumn<QColor>("color");
        QTest::newRow("ground") << QPoint(500, 500) << kGround;
        QTest::newRow("picture on the ground") << QPoint(50, 50) << kPicture;
        QTest::newRow("title on the picture") << QPoint(120, 150) << kTitle;
        QTest::newRow("title on the ground") << QPoint(420, 150) << kTitle;
        QTest::newRow("line on the title") << QPoint(230, 140) << kLines;
        QTest::newRow("line on the ground") << QPoint(300, 260) << kLines;
        QTest::newRow("cell on the line") << QPoint(152, 140) << kCells;
    }
    void layers_lieInTheSameOrder()
    {
        QFETCH(QPoint, at);
        QFETCH(QColor, color);
        zib::FakeDesk desk;
        const QTemporaryDir folder;
        Document document;
        makeLayers(document, folder);
        LabelMaker::setLabelDocument(document);
        const Both both = show(desk);
        QVERIFY(!both.paper.isNull());
        QCOMPARE(both.screen.pixelColor(at).name(), color.name());
        QCOMPARE(both.paper.pixelColor(at).name(), color.name());
    }
    void layers_hidden_areHiddenOnBoth_data()
    {
        QTest::addColumn<QString>("layer");
        QTest::addColumn<QColor>("color");
        QTest::newRow("picture") << "picture" << kPicture;
        QTest::newRow("lines") << "lines" << kLines;
        QTest::newRow("cells") << "cells" << kCells;
        QTest::newRow("ground") << "ground" << kGround;
    }
    void layers_hidden_areHiddenOnBoth()
    {
        QFETCH(QString, layer);
        QFETCH(QColor, color);
        zib::FakeDesk desk;
        const QTemporaryDir folder;
        Document document;
        makeLayers(document, folder);
        document.UseBackImage = layer != "picture";
        document.UseBackColor = layer != "ground";
        document.ShowTableLines = layer != "lines";
        document.ShowTableText = layer != "cells";
        LabelMaker::setLabelDocument(document);
        const Both both = show(desk);
        QVERIFY(!both.paper.isNull());
        for (const QImage& image : {both.screen, both.paper})
            for (int y = 0; y < 550; ++y)
                for (int x = 0; x < 550; ++x)
                    QVERIFY(image.pixelColor(x, y) != color);
        QVERIFY2(differences(both) < 550, qPrintable(QString::number(differences(both))));
    }
    void texts_areTheSame_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("italic");
        QTest::newRow("tab") << "A\tB\tC" << false;
        QTest::newRow("overhang") << "jfjf" << true;
        QTest::newRow("right to left") << QString::fromUtf8("שיר one") << false;
        QTest::newRow("accents") << QString::fromUtf8("e\u0301\u0302 A\u030a") << false;
        QTest::newRow("blanks") << QString(10, ' ') << false;
    }
    void texts_areTheSame()
    {
        QFETCH(QString, title);
        QFETCH(bool, italic);
        for (const Qt::LayoutDirection desktop : {Qt::LeftToRight, Qt::RightToLeft}) {
            QGuiApplication::setLayoutDirection(desktop);
            zib::FakeDesk desk;
            Document document;
            document.UseBackImage = false;
            document.TitleText = title;
            document.TitleFontName = "DejaVu Sans", document.TitleFontSize = 60;
            document.TitleFontItalic = italic;
            document.TitleLeft = 1500, document.TitleTop = 2000;
            document.ShowTableLines = document.ShowTableText = false;
            LabelMaker::setLabelDocument(document);
            const Both both = show(desk);
            QGuiApplication::setLayoutDirection(Qt::LeftToRight);
            QVERIFY(!both.paper.isNull());
            QVERIFY2(differences(both) < 200, qPrintable(QString::number(differences(both))));
        }
    }
    void longList_isTheSame()
    {
        zib::FakeDesk desk;
        zib::setApplicationFolder("/nowhere");
        QList<zib::CompilationRow> rows;
        for (int i = 1; i <= 99; ++i)
            rows << zib::CompilationRow{
                QString::number(i), "a.mp3", QString("Song\t%1").arg(i), "Me", "01:02:03", "1 KB", "/m/"};
        LabelMaker::InitLabelDocument(rows);
        const Both both = show(desk);
        QVERIFY(!both.paper.isNull());
        const Both shifted{both.screen, both.paper.copy(2, 2, 550, 550)};
        QVERIFY2(differences(both) * 4 < differences(shifted),
                 qPrintable(QString("%1 of %2").arg(differences(both)).arg(differences(shifted))));
    }
};

QTEST_MAIN(TestPaperEqualsScreen)
#include "tst_paper_equals_screen.moc"
