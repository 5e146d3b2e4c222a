#include "label/frmLabelList.h"

#include "label/DialogDesk.h"
#include "label/LabelControls.h"

#include <QCheckBox>
#include <QApplication>
#include <QLabel>
#include <QWheelEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QTabWidget>

using LabelMaker::LabelDocument;

namespace {

using Desk = DialogDesk<frmLabelList>;

QStringList columnTexts(const Desk& desk)
{
    QStringList texts;
    const auto* combo = desk.find<QComboBox>("cboCols");
    for (int i = 0; i < combo->count(); ++i)
        texts << QString("%1=%2").arg(combo->itemText(i)).arg(combo->itemData(i).toInt());
    return texts;
}

} // namespace

/// The track-list layout dialog.
class TestFrmLabelList : public QObject
{
    Q_OBJECT
private slots:
    void load_always_showsTheDocument_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("least");
        QTest::addColumn<int>("most");
        QTest::newRow("left") << "Left"
                              << "35" << 0 << 300;
        QTest::newRow("top") << "Top"
                             << "80" << 0 << 300;
        QTest::newRow("cols") << "Cols"
                              << "4" << 1 << 10;
        QTest::newRow("rows") << "Rows"
                              << "16" << 1 << 30;
        QTest::newRow("column width") << "ColWidth"
                                      << "30" << 10 << 300;
        QTest::newRow("row height") << "RowHeight"
                                    << "20" << 10 << 100;
        QTest::newRow("line width") << "LineWidth"
                                    << "1" << 1 << 10;
        QTest::newRow("padding left") << "PaddingLeft"
                                      << "5" << 0 << 100;
        QTest::newRow("padding top") << "PaddingTop"
                                     << "2" << 0 << 20;
    }
    void load_always_showsTheDocument()
    {
        QFETCH(QString, name);
        QFETCH(int, least);
        QFETCH(int, most);
        const Desk desk;
        QTEST(desk.text("txt" + name), "shown");
        QVERIFY(desk.find<QLineEdit>("txt" + name)->isReadOnly());
        const auto* bar = desk.find<QScrollBar>("vs" + name);
        QCOMPARE(bar->minimum(), least);
        QCOMPARE(bar->maximum(), most);
        QCOMPARE(least + most - bar->value(), desk.text("txt" + name).toInt());
        desk.set(name, most);
        QCOMPARE(desk.text("txt" + name), QString::number(most));
        QCOMPARE(desk.dialog.focusWidget(), desk.find("txt" + name));
    }
    void load_always_hasItsTexts()
    {
        const Desk desk;
        QCOMPARE(desk.dialog.windowTitle(), QString("Label List Properties"));
        const auto* tabs = desk.find<QTabWidget>("TabStrip1");
        QCOMPARE(tabs->count(), 3);
        QCOMPARE(tabs->tabText(0), QString("List"));
        QCOMPARE(tabs->tabText(1), QString("Lines"));
        QCOMPARE(tabs->tabText(2), QString("Text"));
        QCOMPARE(desk.find<QCheckBox>("chkLines")->text(), QString("Show Table Lines"));
        QCOMPARE(desk.find<QCheckBox>("chkText")->text(), QString("Show Table Text"));
        QCOMPARE(desk.find<QAbstractButton>("cmdLineColor")->text(), QString("Line Color..."));
        QCOMPARE(desk.find<QAbstractButton>("cmdTextFont")->text(), QString("Text Font..."));
        QCOMPARE(desk.find<QAbstractButton>("cmdTextColor")->text(), QString("Text Color..."));
        QCOMPARE(desk.find<QAbstractButton>("CancelButton")->text(), QString("Cancel"));
        QCOMPARE(desk.find<QAbstractButton>("cmdApply")->text(), QString("&Apply"));
        QStringList frames;
        for (const auto* frame : desk.dialog.findChildren<QGroupBox*>())
            frames << frame->title();
        frames.sort();
        QCOMPARE(frames,
                 (QStringList{"Lines", "Matrix", "Padding", "Position", "Sample", "Sample", "Size", "Text"}));
    }
    void tabs_showOnePanelAtATime()
    {
        const Desk desk;
        for (int shown = 0; shown < 3; ++shown) {
            desk.find<QTabWidget>("TabStrip1")->setCurrentIndex(shown);
            for (int panel = 0; panel < 3; ++panel)
                QCOMPARE(desk.find(QString("picList_%1").arg(panel))->isVisible(), panel == shown);
        }
    }
    void load_always_namesColumnsCols()
    {
        const Desk desk;
        QCOMPARE(columnTexts(desk), (QStringList{"Cols1=30", "Cols2=200", "Cols3=150", "Cols4=100"}));
        QCOMPARE(desk.find<QComboBox>("cboCols")->currentIndex(), 0);
    }
    void cols_changed_namesColumnsColAndGivesNewOnes100()
    {
        const Desk desk;
        desk.set("Cols", 6);
        QCOMPARE(columnTexts(desk),
                 (QStringList{"Col1=30", "Col2=200", "Col3=150", "Col4=100", "Col5=100", "Col6=100"}));
        QCOMPARE(desk.find<QComboBox>("cboCols")->currentIndex(), 0);
        QCOMPARE(desk.text("txtColWidth"), QString("30"));
        desk.set("Cols", 2);
        QCOMPARE(columnTexts(desk), (QStringList{"Col1=30", "Col2=200"}));
    }
    void column_chosen_showsItsWidthAndTakesTheNewOne()
    {
        const Desk desk;
        desk.find<QComboBox>("cboCols")->setCurrentIndex(1);
        QCOMPARE(desk.text("txtColWidth"), QString("200"));
        desk.set("ColWidth", 222);
        desk.find<QComboBox>("cboCols")->setCurrentIndex(2);
        QCOMPARE(desk.text("txtColWidth"), QString("150"));
        QCOMPARE(columnTexts(desk), (QStringList{"Cols1=30", "Cols2=222", "Cols3=150", "Cols4=100"}));
    }
    void lineSamples_areThirteenAndFollow()
    {
        Desk desk([](auto& d) { d.LineWidth = 3, d.LineColor = QColor(1, 2, 3); });
        const auto line = [&](int n) { return desk.find<zib::LineControl>(QString("lineSample_%1").arg(n)); };
        QVERIFY(line(12) && !line(13));
        QCOMPARE(line(12)->borderWidth(), 3);
        QCOMPARE(line(0)->borderColor(), QColor(1, 2, 3));
        desk.set("LineWidth", 7);
        desk.dialogs.colors << QColor(4, 5, 6);
        desk.click("cmdLineColor");
        for (int n = 0; n < 13; ++n) {
            QCOMPARE(line(n)->borderWidth(), 7);
            QCOMPARE(line(n)->borderColor(), QColor(4, 5, 6));
        }
        QCOMPARE(desk.dialogs.titles, QStringList{"Choose a color"});
        QCOMPARE(desk.dialogs.presetColors, QList<QColor>{QColor(1, 2, 3)});
    }
    void textSample_followsFontColourAndPadding()
    {
        Desk desk;
        const auto* sample = desk.find<zib::TextControl>("lblSample");
        QCOMPARE(sample->text(), QString("Data"));
        QCOMPARE(sample->pos(), QPoint(5, 2));
        QCOMPARE(sample->item().color, QColor(0, 0, 255));
        QFont font("Liberation Serif");
        font.setPointSizeF(21.5);
        font.setBold(true);
        font.setStrikeOut(true);
        desk.dialogs.fonts << font;
        desk.click("cmdTextFont");
        desk.dialogs.colors << QColor(7, 8, 9);
        desk.click("cmdTextColor");
        desk.set("PaddingLeft", 44);
        desk.set("PaddingTop", 11);
        QCOMPARE(sample->pos(), QPoint(44, 11));
        QCOMPARE(sample->item().font.family(), QString("Liberation Serif"));
        QVERIFY(sample->item().font.bold() && !sample->item().font.strikeOut());
        QCOMPARE(sample->item().color, QColor(7, 8, 9));
        QCOMPARE(desk.dialogs.titles, (QStringList{"Choose a font", "Choose a color"}));
        QCOMPARE(desk.dialogs.presetFonts[0].family(), QString("Arial"));
        QCOMPARE(desk.dialogs.presetFonts[0].pointSize(), 12);
    }
    void pickers_cancelled_changeNothing()
    {
        const Desk desk;
        desk.click("cmdLineColor");
        desk.click("cmdTextFont");
        desk.click("cmdTextColor");
        const LabelMaker::Document before = LabelDocument;
        desk.click("cmdApply");
        QCOMPARE(LabelDocument, before);
    }
    void apply_always_writesEverything()
    {
        Desk desk;
        desk.set("Left", 100);
        desk.set("Top", 20);
        desk.set("RowHeight", 33);
        desk.set("LineWidth", 4);
        desk.set("PaddingLeft", 100);
        desk.set("PaddingTop", 20);
        QFont font("Liberation Mono");
        font.setPointSizeF(10.5);
        font.setItalic(true);
        font.setUnderline(true);
        desk.dialogs.fonts << font;
        desk.dialogs.colors << QColor(1, 1, 1) << QColor(2, 2, 2);
        desk.click("cmdTextFont");
        desk.click("cmdTextColor");
        desk.click("cmdLineColor");
        desk.click("chkText");
        desk.click("chkLines");
        QCOMPARE(desk.applied.count(), 0);
        QCOMPARE(LabelDocument.TableLeft, 525);
        desk.click("cmdApply");
        LabelMaker::Document expected = LabelDocument;
        expected.TableLeft = 1500, expected.TableTop = 300, expected.RowHeight = 495, expected.LineWidth = 4;
        expected.PaddingLeft = 1500, expected.PaddingTop = 300;
        expected.TextFontName = "Liberation Mono", expected.TextFontSize = 10; // 10.5, half to even.
        expected.TextFontItalic = expected.TextFontUnderline = true;
        expected.TextColor = QColor(1, 1, 1), expected.LineColor = QColor(2, 2, 2);
        expected.ShowTableText = expected.ShowTableLines = false;
        QCOMPARE(LabelDocument, expected);
        QCOMPARE(desk.applied.count(), 1);
        QVERIFY(desk.dialog.isVisible());
    }
    void apply_withMoreColumns_givesThem1500TwipsAndNoText()
    {
        const Desk desk;
        desk.set("Cols", 5);
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.ColWidths, (QList<qint32>{0, 450, 3000, 2250, 1500, 1500}));
        QCOMPARE(LabelDocument.TableCols, qint16(5));
        QCOMPARE(LabelMaker::GetCellText(1, 5), QString());
    }
    void apply_withFewerColumns_dropsTheirWidths()
    {
        const Desk desk;
        desk.set("Cols", 2);
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.ColWidths, (QList<qint32>{0, 450, 3000}));
        QCOMPARE(LabelMaker::TotalColumnWidth(), 3450);
        QCOMPARE(LabelMaker::GetCellText(1, 3), QString("Artist"));
    }
    void apply_withFewerRowsThenMore_bringsBackEmptyRows()
    {
        const Desk desk;
        desk.set("Rows", 5);
        desk.click("cmdApply");
        QCOMPARE(LabelMaker::GetCellText(5, 1), QString("4"));
        desk.set("Rows", 8);
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.TableRows, qint16(8));
        QCOMPARE(LabelMaker::GetCellText(5, 1), QString("4"));
        QCOMPARE(LabelMaker::GetCellText(6, 1), QString());
    }
    void apply_ofUntouchedOddLengths_keepsThePadding()
    {
        const Desk desk([](auto& d) { d.PaddingLeft = 82, d.PaddingTop = 37; });
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.PaddingLeft, 82);
        QCOMPARE(LabelDocument.PaddingTop, 37);
    }
    void load_ofALongList_showsAtMostThirtyRows()
    {
        const Desk desk([](auto& d) { d.TableRows = 41; });
        QCOMPARE(desk.text("txtRows"), QString("30"));
        QVERIFY(desk.find("lblRowsInUse")->isVisible());
        QCOMPARE(desk.find<QLabel>("lblRowsInUse")->text(), QString("(41 now)"));
    }
    void apply_ofALongListUntouched_keepsItsRows()
    {
        const Desk desk([](auto& d) { d.TableRows = 100; });
        desk.set("RowHeight", 15);
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.TableRows, qint16(100));
        QCOMPARE(LabelDocument.RowHeight, 225);
        desk.set("Rows", 29);
        QVERIFY(!desk.find("lblRowsInUse")->isVisible());
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.TableRows, qint16(29));
    }
    void load_ofAShortList_needsNoHint()
    {
        const Desk desk;
        QVERIFY(!desk.find("lblRowsInUse")->isVisible());
    }
    void numberBoxes_takeKeysAndWheel()
    {
        const Desk desk;
        auto* box = desk.find<QLineEdit>("txtLeft");
        const auto press = [&](Qt::Key key) {
            QTest::keyClick(box, key);
            return box->text();
        };
        QCOMPARE(press(Qt::Key_Up), QString("36"));
        QCOMPARE(press(Qt::Key_PageUp), QString("46"));
        QCOMPARE(press(Qt::Key_Home), QString("0"));
        QCOMPARE(press(Qt::Key_End), QString("300"));
        QCOMPARE(press(Qt::Key_PageDown), QString("290"));
        QCOMPARE(press(Qt::Key_Down), QString("289"));
        const QPointF middle = QPointF(box->rect().center());
        QWheelEvent up(middle, box->mapToGlobal(middle), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                       Qt::NoScrollPhase, false);
        QApplication::sendEvent(box, &up);
        QVERIFY(box->text().toInt() > 289 && box->text().toInt() < 300);
        QTest::keyClick(desk.find("vsLeft"), Qt::Key_Home);
        QCOMPARE(box->text(), QString("0"));
    }
    void numberBoxes_stepFasterWhileAKeyIsHeld()
    {
        const Desk desk;
        auto* box = desk.find<QLineEdit>("txtLeft");
        QTest::keyClick(box, Qt::Key_Home);
        const auto hold = [&](int times) {
            for (int i = 0; i < times; ++i) {
                QKeyEvent again(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier, QString(), true);
                QApplication::sendEvent(box, &again);
            }
            return box->text().toInt();
        };
        QTest::keyClick(box, Qt::Key_Up);
        QCOMPARE(hold(9), 10);
        QVERIFY(hold(10) >= 50);
        QVERIFY(hold(40) == 300);
        QTest::keyClick(box, Qt::Key_Down); // A new press begins slowly.
        QCOMPARE(box->text(), QString("299"));
    }
    void ok_appliesAndCloses()
    {
        const Desk desk;
        desk.set("Left", 1);
        desk.click("OKButton");
        QCOMPARE(LabelDocument.TableLeft, 15);
        QCOMPARE(desk.applied.count(), 1);
        QVERIFY(!desk.dialog.isVisible());
    }
    void cancel_closesAndKeepsWhatWasApplied()
    {
        const Desk desk;
        desk.set("Left", 1);
        desk.click("cmdApply");
        desk.set("Left", 2);
        desk.click("CancelButton");
        QCOMPARE(LabelDocument.TableLeft, 15);
        QCOMPARE(desk.applied.count(), 1);
        QVERIFY(!desk.dialog.isVisible());
    }
};

QTEST_MAIN(TestFrmLabelList)
#include "tst_frmLabelList.moc"
