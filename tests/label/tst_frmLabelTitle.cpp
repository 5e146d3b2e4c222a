#include "label/frmLabelTitle.h"

#include "label/DialogDesk.h"
#include "label/LabelControls.h"

using LabelMaker::LabelDocument;

namespace {

using Desk = DialogDesk<frmLabelTitle>;

} // namespace

/// The title dialog.
class TestFrmLabelTitle : public QObject
{
    Q_OBJECT
private slots:
    void load_always_showsTheDocument()
    {
        const Desk desk([](auto& d) {
            d.TitleText = "  Road Songs ", d.TitleFontName = " Liberation Serif ", d.TitleFontItalic = true;
        });
        QCOMPARE(desk.dialog.windowTitle(), QString("Label Title Properties"));
        QCOMPARE(desk.find<QAbstractButton>("cmdFont")->text(), QString("Title &Font..."));
        QCOMPARE(desk.find<QAbstractButton>("cmdColor")->text(), QString("Title &Color..."));
        QCOMPARE(desk.text("txtTitle"), QString("Road Songs"));
        QCOMPARE(desk.text("txtLeft"), QString("180"));
        QCOMPARE(desk.text("txtTop"), QString("20"));
        const zib::LabelText& sample = desk.find<zib::TextControl>("cdTitle")->item();
        QCOMPARE(sample.caption, QString("Road Songs"));
        QCOMPARE(sample.font.family(), QString("Liberation Serif"));
        QCOMPARE(sample.font.pointSize(), 18);
        QVERIFY(sample.font.bold() && sample.font.italic() && !sample.font.underline());
        QCOMPARE(sample.color, QColor(255, 0, 0));
        QCOMPARE(desk.find("cdTitle")->pos(), QPoint(180, 20));
    }
    void sample_liesOnTheLabelsGround()
    {
        for (const bool colored : {true, false}) {
            Desk desk([colored](auto& d) { d.UseBackColor = colored, d.BackColor = QColor(3, 4, 5); });
            const QImage seen = desk.dialog.grab().toImage();
            const QPoint corner = desk.find("picSample")->mapTo(&desk.dialog, QPoint(5, 5));
            QCOMPARE(seen.pixelColor(corner), colored ? QColor(3, 4, 5) : QColor(Qt::white));
        }
    }
    void sample_followsTextFontColourAndPlace()
    {
        Desk desk;
        const auto* sample = desk.find<zib::TextControl>("cdTitle");
        desk.find<QLineEdit>("txtTitle")->setText("A & B");
        QCOMPARE(sample->text(), QString("A & B"));
        desk.dialogs.fonts << QFont("Liberation Mono", 30);
        desk.click("cmdFont");
        desk.dialogs.colors << QColor(1, 2, 3);
        desk.click("cmdColor");
        desk.set("Left", 300);
        desk.set("Top", 250);
        QCOMPARE(sample->item().font.family(), QString("Liberation Mono"));
        QCOMPARE(sample->item().color, QColor(1, 2, 3));
        QCOMPARE(sample->pos(), QPoint(300, 250));
        QCOMPARE(desk.text("txtLeft"), QString("300"));
        QCOMPARE(desk.dialog.focusWidget(), desk.find("txtTop"));
        QCOMPARE(desk.dialogs.titles, (QStringList{"Choose a font", "Choose a color"}));
        QCOMPARE(desk.dialogs.presetFonts[0].pointSize(), 18);
        QVERIFY(desk.dialogs.presetFonts[0].bold());
        QCOMPARE(desk.dialogs.presetColors[0], QColor(255, 0, 0));
    }
    void pickers_cancelled_changeNothing()
    {
        const Desk desk;
        desk.click("cmdFont");
        desk.click("cmdColor");
        const LabelMaker::Document before = LabelDocument;
        desk.click("cmdApply");
        QCOMPARE(LabelDocument, before);
    }
    void apply_always_writesEverything()
    {
        Desk desk;
        desk.find<QLineEdit>("txtTitle")->setText("Mine");
        QFont font("Liberation Mono");
        font.setPointSizeF(23.6);
        font.setUnderline(true);
        desk.dialogs.fonts << font;
        desk.dialogs.colors << QColor(1, 2, 3);
        desk.click("cmdFont");
        desk.click("cmdColor");
        desk.set("Left", 300);
        desk.set("Top", 1);
        LabelMaker::Document expected = LabelDocument;
        desk.click("cmdApply");
        expected.TitleText = "Mine", expected.TitleFontName = "Liberation Mono", expected.TitleFontSize = 24;
        expected.TitleFontBold = false, expected.TitleFontUnderline = true;
        expected.TitleColor = QColor(1, 2, 3), expected.TitleLeft = 4500, expected.TitleTop = 15;
        QCOMPARE(LabelDocument, expected);
        QCOMPARE(desk.applied.count(), 1);
        QVERIFY(desk.dialog.isVisible());
    }
    void title_typed_isAtMostItsField()
    {
        const Desk desk;
        auto* box = desk.find<QLineEdit>("txtTitle");
        box->clear();
        QTest::keyClicks(box, QString(260, 'x'));
        QCOMPARE(box->text().size(), 256);
    }
    void ok_appliesAndCloses()
    {
        const Desk desk;
        desk.find<QLineEdit>("txtTitle")->setText("Mine");
        desk.click("OKButton");
        QCOMPARE(LabelDocument.TitleText, QString("Mine"));
        QCOMPARE(desk.applied.count(), 1);
        QVERIFY(!desk.dialog.isVisible());
    }
    void cancel_closesWithoutWriting()
    {
        const Desk desk;
        desk.find<QLineEdit>("txtTitle")->setText("Mine");
        desk.click("CancelButton");
        QCOMPARE(LabelDocument.TitleText, QString("Your CD Title"));
        QCOMPARE(desk.applied.count(), 0);
        QVERIFY(!desk.dialog.isVisible());
    }
};

QTEST_MAIN(TestFrmLabelTitle)
#include "tst_frmLabelTitle.moc"
