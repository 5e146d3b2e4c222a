#include "label/frmLabelBack.h"

#include "label/DialogDesk.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QRadioButton>

using LabelMaker::LabelDocument;

namespace {

using Desk = DialogDesk<frmLabelBack>;

const QStringList kPath{"txtOpen", "cmdOpen", "optImage_0", "optImage_1"};
const QStringList kPosition{"txtLeft", "txtTop", "vsLeft", "vsTop"};
const QStringList kColor{"cmdBackColor", "picBackColor"};

bool allAre(const Desk& desk, const QStringList& names, bool enabled)
{
    for (const QString& name : names)
        if (desk.enabled(name) != enabled)
            return false;
    return true;
}

} // namespace

/// The background dialog.
class TestFrmLabelBack : public QObject
{
    Q_OBJECT
private slots:
    void load_always_showsTheDocument()
    {
        Desk desk([](auto& d) { d.BackImagePath = "  /pictures/a.jpg ", d.BackColor = QColor(3, 4, 5); });
        QCOMPARE(desk.dialog.windowTitle(), QString("Label Background Properties"));
        QCOMPARE(desk.text("txtOpen"), QString("/pictures/a.jpg"));
        QVERIFY(desk.find<QCheckBox>("chkBackImage")->isChecked());
        QVERIFY(desk.find<QCheckBox>("chkBackColor")->isChecked());
        QVERIFY(desk.find<QRadioButton>("optImage_0")->isChecked());
        QCOMPARE(desk.text("txtLeft"), QString("100"));
        QCOMPARE(desk.text("txtTop"), QString("20"));
        QCOMPARE(desk.find<QScrollBar>("vsLeft")->maximum(), 300);
        QCOMPARE(desk.find<QScrollBar>("vsTop")->maximum(), 300);
        QCOMPARE(desk.find("picBackColor")->palette().color(QPalette::Window), QColor(3, 4, 5));
        const QWidget* swatch = desk.find("picBackColor");
        QCOMPARE(
            desk.dialog.grab().toImage().pixelColor(swatch->mapTo(&desk.dialog, swatch->rect().center())),
            QColor(3, 4, 5));
    }
    void load_always_hasItsTexts()
    {
        const Desk desk;
        QCOMPARE(desk.find<QCheckBox>("chkBackImage")->text(), QString("Use an Image as background"));
        QCOMPARE(desk.find<QRadioButton>("optImage_0")->text(), QString("Stretch to fit for the label"));
        QCOMPARE(desk.find<QRadioButton>("optImage_1")->text(), QString("The original size"));
        QCOMPARE(desk.find<QCheckBox>("chkBackColor")->text(), QString("Set Background Color"));
        QCOMPARE(desk.find<QAbstractButton>("cmdBackColor")->text(), QString("Set Background Color..."));
        QCOMPARE(desk.find<QGroupBox>("fraPicture")->title(), QString("Background Picture"));
        QCOMPARE(desk.find<QGroupBox>("fraColor")->title(), QString("Background Color"));
    }
    void load_ofAnUnstretchedPicture_choosesTheOriginalSize()
    {
        const Desk desk([](auto& d) { d.BackImageStretch = false; });
        QVERIFY(desk.find<QRadioButton>("optImage_1")->isChecked());
        QVERIFY(allAre(desk, kPosition, true));
    }
    void controls_followTheChoices()
    {
        const Desk desk;
        QVERIFY(allAre(desk, kPath, true) && allAre(desk, kPosition, false) && allAre(desk, kColor, true));
        desk.click("optImage_1");
        QVERIFY(allAre(desk, kPosition, true));
        desk.click("chkBackImage");
        QVERIFY(allAre(desk, kPath, false) && allAre(desk, kPosition, false));
        desk.click("chkBackImage");
        desk.click("optImage_0");
        QVERIFY(allAre(desk, kPath, true) && allAre(desk, kPosition, false));
        desk.click("chkBackColor");
        QVERIFY(allAre(desk, kColor, false));
    }
    void controls_followAChoiceHoweverItIsMade()
    {
        const Desk desk;
        desk.find<QRadioButton>("optImage_1")->setChecked(true);
        QVERIFY(allAre(desk, kPosition, true));
        desk.find<QCheckBox>("chkBackImage")->setChecked(false);
        QVERIFY(allAre(desk, kPath, false) && allAre(desk, kPosition, false));
        desk.find<QCheckBox>("chkBackColor")->setChecked(false);
        QVERIFY(allAre(desk, kColor, false));
    }
    void open_aFile_takesItsPath()
    {
        Desk desk;
        desk.dialogs.files << "/pictures/b.gif";
        desk.click("cmdOpen");
        QCOMPARE(desk.text("txtOpen"), QString("/pictures/b.gif"));
        QCOMPARE(desk.dialogs.opened[0].title, QString("Open an Image file"));
        QCOMPARE(desk.dialogs.opened[0].filter,
                 QString("All Supported Image Files(*.jpg;*.jpeg;*.gif;*.bmp)|*.jpg;*.jpeg;*.gif;*.bmp|BMP "
                         "Files(*.bmp)|*.bmp|JPEG Files(*.jpg;*.jpeg)|*.jpg;*.jpeg|GIF "
                         "Files(*.gif)|*.gif|All Files(*.*)|*.*"));
        desk.click("cmdOpen"); // Cancelled.
        QCOMPARE(desk.text("txtOpen"), QString("/pictures/b.gif"));
        QCOMPARE(LabelDocument.BackImagePath, QString("/opt/zib/Sample1.jpg"));
    }
    void colour_isChosenFromTheCurrentOne()
    {
        Desk desk;
        desk.dialogs.colors << QColor(9, 9, 9);
        desk.click("cmdBackColor");
        QCOMPARE(desk.dialogs.titles, QStringList{"Choose a color"});
        QCOMPARE(desk.dialogs.presetColors, QList<QColor>{QColor(255, 255, 255)});
        desk.click("cmdBackColor"); // Cancelled.
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.BackColor, QColor(9, 9, 9));
    }
    void scrollBars_showTheirNumbers()
    {
        const Desk desk;
        desk.click("optImage_1");
        desk.set("Left", 7);
        QCOMPARE(desk.text("txtLeft"), QString("7"));
        QCOMPARE(desk.dialog.focusWidget(), desk.find("txtLeft"));
        desk.set("Top", 300);
        QCOMPARE(desk.text("txtTop"), QString("300"));
    }
    void apply_always_writesEverything()
    {
        Desk desk;
        desk.click("optImage_1");
        desk.set("Left", 101);
        desk.set("Top", 21);
        desk.find<QLineEdit>("txtOpen")->setText("no such file");
        desk.click("chkBackColor");
        LabelMaker::Document expected = LabelDocument;
        desk.click("cmdApply");
        expected.BackImageStretch = false, expected.BackImageOriginalSize = true;
        expected.BackImageLeft = 1515, expected.BackImageTop = 315;
        expected.BackImagePath = "no such file";
        expected.UseBackColor = false;
        QCOMPARE(LabelDocument, expected);
        desk.click("chkBackImage");
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.UseBackImage, false);
        QCOMPARE(desk.applied.count(), 2);
    }
    void apply_ofALongPath_cutsItAtTheField()
    {
        const Desk desk;
        desk.find<QLineEdit>("txtOpen")->setText(QString(1030, 'p'));
        desk.click("cmdApply");
        QCOMPARE(LabelDocument.BackImagePath.size(), 1024);
    }
    void ok_appliesAndCloses()
    {
        const Desk desk;
        desk.click("chkBackImage");
        desk.click("OKButton");
        QCOMPARE(LabelDocument.UseBackImage, false);
        QCOMPARE(desk.applied.count(), 1);
        QVERIFY(!desk.dialog.isVisible());
    }
    void cancel_closesWithoutWriting()
    {
        const Desk desk;
        desk.click("chkBackImage");
        desk.click("CancelButton");
        QCOMPARE(LabelDocument.UseBackImage, true);
        QCOMPARE(desk.applied.count(), 0);
        QVERIFY(!desk.dialog.isVisible());
    }
};

QTEST_MAIN(TestFrmLabelBack)
#include "tst_frmLabelBack.moc"
