#include "label/frmLabelDesigner.h"

#include "fakes/FakeSeams.h"
#include "label/LabelControls.h"
#include "label/LabelMaker.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using LabelMaker::LabelDocument;

namespace {

const QString kTenBlanks(10, ' ');

/// A designer whose outside is faked.
struct Desk : zib::FakeDesk
{
    explicit Desk(const QList<zib::CompilationRow>& rows = {})
        : designer((zib::setApplicationFolder("/nowhere"), services), rows)
    {
        designer.show();
    }
    template <typename Control = QWidget>
    Control* find(const QString& name) const
    {
        return designer.findChild<Control*>(name);
    }
    QLineEdit* editor() const { return find<QLineEdit>("txtCursor"); }
    QLabel* label(int n) const { return find<QLabel>(QString("labels_%1").arg(n)); }
    void click(const QString& name, QPoint at = {}) const
    {
        QTest::mouseClick(find(name), Qt::LeftButton, {}, at);
    }

    frmLabelDesigner designer;
};

QString fitText(const Desk& desk)
{
    return desk.find<QLabel>("lblFit")->text();
}

QList<zib::CompilationRow> tracks(int count)
{
    QList<zib::CompilationRow> rows;
    for (int i = 1; i <= count; ++i)
        rows << zib::CompilationRow{
            QString::number(i), "a.mp3", QString("Song %1").arg(i), "Me", "01:02:03", "1 KB", "/m/"};
    return rows;
}

void edit(const std::function<void(LabelMaker::Document&)>& change)
{
    LabelMaker::Document document = LabelDocument;
    change(document);
    LabelMaker::setLabelDocument(document);
}

} // namespace

/// The designer: editing in place, its dialogs and its preview.
class TestFrmLabelDesigner : public QObject
{
    Q_OBJECT
private slots:
    void load_always_makesTheLabelAnew()
    {
        edit([](auto& d) { d.TitleText = "Old", d.TableRows = 3; });
        const Desk desk({{"1", "a.mp3", "One", "Me", "01:02:03", "1 KB", "/m/"}});
        QCOMPARE(desk.find<QLabel>("cdTitle")->text(), QString("Your CD Title"));
        QCOMPARE(LabelDocument.TableRows, qint16(2));
        QCOMPARE(desk.label(6)->text(), QString("One"));
        QCOMPARE(desk.label(8)->text(), QString("01:02:03"));
        QVERIFY(!desk.label(9));
        QVERIFY(!desk.editor()->isVisible());
        QCOMPARE(desk.label(6)->cursor().shape(), Qt::IBeamCursor);
        QCOMPARE(desk.find("cdTitle")->cursor().shape(), Qt::IBeamCursor);
    }
    void load_always_hasCaptionsAndAnAreaForTheDefaultTable()
    {
        const Desk desk;
        QCOMPARE(desk.designer.windowTitle(), QString("CD Label Maker"));
        QCOMPARE(desk.find<QPushButton>("Title")->text(), QString("&Title..."));
        QCOMPARE(desk.find<QPushButton>("cmdBack")->text(), QString("&Background..."));
        QCOMPARE(desk.find<QPushButton>("cmdList")->text(), QString("&List..."));
        QCOMPARE(desk.find<QPushButton>("cmdPrint")->text(), QString("&Print..."));
        QCOMPARE(desk.find<QPushButton>("cmdClose")->text(), QString("&Close"));
        QCOMPARE(desk.find("Picture1")->size() * 15, desk.designer.labelArea());
        QVERIFY(desk.find("Picture1")->rect().contains(desk.find("lines_17")->geometry()));
        QVERIFY(desk.find("Picture1")->rect().contains(desk.find("lines_22")->geometry()));
    }
    void cellClick_opensTheEditorOnTheCell()
    {
        const Desk desk;
        desk.click("labels_2");
        QLineEdit* editor = desk.editor();
        QVERIFY(editor->isVisible());
        QCOMPARE(desk.designer.focusWidget(), editor);
        QCOMPARE(editor->text(), QString("Title"));
        QCOMPARE(editor->selectedText(), QString("Title"));
        QCOMPARE(editor->font(), desk.label(2)->font());
        QCOMPARE(editor->palette().color(QPalette::Text), QColor(0, 0, 255));
        // (975 + 75 - 75 + 15, 1230 - 30 + 15) twips, as wide as the text, its padding and 30 twips.
        QCOMPARE(editor->pos(), QPoint(66, 81));
        QCOMPARE(editor->size(), QSize(qMax(50, desk.label(2)->width() + 7), desk.label(2)->height()));
    }
    void cellClick_onANarrowCell_opens750Twips()
    {
        const Desk desk;
        desk.click("labels_5");
        QCOMPARE(desk.editor()->text(), QString("1"));
        QCOMPARE(desk.editor()->width(), 50);
        const QRect place = desk.editor()->geometry();
        for (const QPoint& corner : {place.topLeft(), place.center(), place.bottomRight()})
            QCOMPARE(desk.editor()->parentWidget()->childAt(corner), desk.editor()); // before its neighbours
    }
    void typing_beyondTheEditor_widensIt()
    {
        const Desk desk;
        desk.click("labels_5");
        QTest::keyClicks(desk.editor(), "a text that is longer than the cell");
        QVERIFY(desk.editor()->width() >
                desk.editor()->fontMetrics().horizontalAdvance(desk.editor()->text()));
    }
    void cellClick_onPaleText_showsItOnBlack()
    {
        Desk desk;
        edit([](auto& d) { d.TextColor = QColor(255, 255, 240); });
        desk.designer.RedrawTable();
        desk.click("labels_2");
        QCOMPARE(desk.editor()->palette().color(QPalette::Base), QColor(Qt::black));
    }
    void cellEdit_closedByAClick_keepsTheTextInTheDesignerOnly_data()
    {
        QTest::addColumn<QString>("where");
        QTest::newRow("label area") << "Picture1";
        QTest::newRow("picture") << "Image1";
        QTest::newRow("window") << "frmLabelDesigner";
        QTest::newRow("another cell") << "labels_7";
        QTest::newRow("title") << "cdTitle";
        QTest::newRow("print") << "cmdPrint";
        QTest::newRow("background") << "cmdBack";
        QTest::newRow("list") << "cmdList";
        QTest::newRow("title dialog") << "Title";
    }
    void cellEdit_closedByAClick_keepsTheTextInTheDesignerOnly()
    {
        QFETCH(QString, where);
        Desk desk;
        desk.designer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&desk.designer)); // the keyboard is here, as at a real screen
        const QStringList before = LabelDocument.TableRowText;
        desk.click("labels_6");
        QTest::keyClicks(desk.editor(), "Prelude");
        if (where == "frmLabelDesigner")
            QTest::mouseClick(&desk.designer, Qt::LeftButton, {}, {2, 2});
        else
            desk.click(where, where == "Picture1" ? QPoint(3, 3) : QPoint());
        QCOMPARE(desk.label(6)->text(), QString("Prelude"));
        QCOMPARE(LabelDocument.TableRowText, before);
        QCOMPARE(desk.editor()->isVisible(), where == "labels_7" || where == "cdTitle");
        desk.designer.RedrawTable();
        QCOMPARE(desk.label(6)->text(), kTenBlanks);
    }
    void cellEdit_cleared_leavesTenBlanks()
    {
        const Desk desk;
        desk.click("labels_1");
        desk.editor()->clear();
        desk.click("Picture1", {3, 3});
        QCOMPARE(desk.label(1)->text(), kTenBlanks);
        QVERIFY(desk.label(1)->width() > 20);
    }
    void titleEdit_isKeptInTheDocument()
    {
        Desk desk;
        desk.click("cdTitle");
        QCOMPARE(desk.editor()->text(), QString("Your CD Title"));
        QCOMPARE(desk.editor()->x(), (2700 - 75 + 15) / 15);
        QTest::keyClicks(desk.editor(), "Road Songs");
        desk.click("Picture1", {3, 3});
        QCOMPARE(desk.find<QLabel>("cdTitle")->text(), QString("Road Songs"));
        QCOMPARE(LabelDocument.TitleText, QString("Road Songs"));
        desk.designer.RedrawTitle();
        QCOMPARE(desk.find<QLabel>("cdTitle")->text(), QString("Road Songs"));
    }
    void titleEdit_cleared_leavesTenBlanks()
    {
        const Desk desk;
        desk.click("cdTitle");
        desk.editor()->clear();
        desk.click("Picture1", {3, 3});
        QCOMPARE(desk.find<QLabel>("cdTitle")->text(), kTenBlanks);
        QCOMPARE(LabelDocument.TitleText, kTenBlanks);
    }
    void titleEdit_longerThanItsField_isCutInTheDocument()
    {
        const Desk desk;
        desk.click("cdTitle");
        desk.editor()->setText(QString(300, 'x'));
        desk.click("Picture1", {3, 3});
        QCOMPARE(LabelDocument.TitleText, QString(256, 'x'));
    }
    void clickElsewhere_withoutAnEdit_changesNothing()
    {
        const Desk desk;
        desk.editor()->setText("stray");
        desk.click("Picture1", {3, 3});
        QCOMPARE(desk.find<QLabel>("cdTitle")->text(), QString("Your CD Title"));
        QCOMPARE(desk.label(1)->text(), QString("No"));
    }
    void keyboard_editsEverything()
    {
        Desk desk;
        QTest::keyClick(&desk.designer, Qt::Key_F2);
        QCOMPARE(desk.editor()->text(), QString("Your CD Title"));
        QTest::keyClick(desk.editor(), Qt::Key_Tab);
        QCOMPARE(desk.editor()->text(), QString("No"));
        QTest::keyClicks(desk.editor(), "Nr");
        QTest::keyClick(desk.editor(), Qt::Key_Tab);
        QCOMPARE(desk.label(1)->text(), QString("Nr"));
        QCOMPARE(desk.editor()->text(), QString("Title"));
        QTest::keyClick(desk.editor(), Qt::Key_Backtab, Qt::ShiftModifier);
        QTest::keyClick(desk.editor(), Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(desk.editor()->text(), QString("Your CD Title"));
        QTest::keyClick(desk.editor(), Qt::Key_Return);
        QVERIFY(!desk.editor()->isVisible());
        QVERIFY(desk.designer.isVisible());
    }
    void keyboard_beyondTheLastCell_leavesTheEditor()
    {
        Desk desk;
        desk.designer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&desk.designer));
        desk.click("labels_64");
        QTest::keyClicks(desk.editor(), "9:99");
        QTest::keyClick(desk.editor(), Qt::Key_Tab);
        QCOMPARE(desk.designer.focusWidget()->objectName(), QString("Title"));
        QVERIFY(!desk.editor()->isVisible());
        QCOMPARE(desk.label(64)->text(), QString("9:99"));
    }
    void escape_whileEditing_discardsOnlyTheEdit()
    {
        Desk desk;
        desk.click("labels_1");
        QTest::keyClicks(desk.editor(), "gone");
        QTest::keyClick(desk.editor(), Qt::Key_Escape);
        QVERIFY(desk.designer.isVisible());
        QVERIFY(!desk.editor()->isVisible());
        QCOMPARE(desk.label(1)->text(), QString("No"));
        QTest::keyClick(&desk.designer, Qt::Key_Escape); // The label would be lost.
        QVERIFY(desk.designer.isVisible());
    }
    void enter_pressesTheFocusedButton()
    {
        Desk desk;
        desk.designer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&desk.designer));
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            desk.find("cmdList")->setFocus();
            QTest::keyClick(desk.find("cmdList"), key);
        }
        QTest::keyClick(desk.find("cmdBack"), Qt::Key_Return);
        QCOMPARE(desk.windows.shown, (QStringList{"labelList", "labelList", "labelBack"}));
    }
    void enter_whileEditing_pressesNoButton()
    {
        Desk desk;
        desk.designer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&desk.designer));
        desk.click("labels_2");
        QTest::keyClicks(desk.editor(), "Song");
        QTest::keyClick(desk.editor(), Qt::Key_Return);
        QCOMPARE(desk.label(2)->text(), QString("Song"));
        QVERIFY(!desk.editor()->isVisible());
        QVERIFY(desk.windows.shown.isEmpty());
    }
    void enter_heldOnAfterAnEdit_pressesNoButton()
    {
        Desk desk;
        desk.designer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&desk.designer));
        desk.click("labels_2");
        for (const bool repeated : {false, true, true}) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", repeated);
            QCoreApplication::sendEvent(desk.designer.focusWidget(), &press);
        }
        QVERIFY(!desk.editor()->isVisible());
        QVERIFY2(desk.windows.shown.isEmpty(), qPrintable(desk.windows.shown.join(u' ')));
    }
    void longList_saysHowManyTracksFit_andFitsMore()
    {
        const Desk desk(tracks(99));
        QVERIFY(desk.find("lblFit")->isVisible());
        // Rows of 300 twips from 1200 on: the header and 22 tracks end above 8250, the next does not.
        QVERIFY(fitText(desk).startsWith("22 of 99 tracks fit."));
        desk.click("cmdFit");
        QCOMPARE(LabelDocument.RowHeight, 150);
        QVERIFY2(fitText(desk).startsWith("46 of 99 tracks fit."), qPrintable(fitText(desk)));
        QVERIFY(!desk.find("cmdFit")->isVisible());
        QCOMPARE(LabelDocument.TableRows, qint16(100));
    }
    void fit_ofThirtyTracks_fitsThemAll()
    {
        const Desk desk(tracks(30));
        QVERIFY(fitText(desk).startsWith("22 of 30 tracks fit."));
        desk.click("cmdFit");
        QVERIFY(!desk.find("lblFit")->isVisible());
        QVERIFY(!desk.find("cmdFit")->isVisible());
        const QRect last = desk.label(31 * 4)->geometry();
        QVERIFY(desk.find("Picture1")->rect().contains(last));
        QVERIFY(last.height() * 15 <= LabelDocument.RowHeight + 15);
        QVERIFY(last.height() * 15 + 2 * LabelDocument.PaddingTop <= LabelDocument.RowHeight + 45);
    }
    void shortList_saysNothing()
    {
        Desk desk(tracks(22));
        QVERIFY(!desk.find("lblFit")->isVisible());
        edit([](auto& d) { d.ColWidths[2] = 4500; });
        desk.designer.RedrawTable();
        QVERIFY(fitText(desk).startsWith("The table is wider than the label."));
    }
    void editor_neverLiesOutsideTheLabel()
    {
        Desk desk(tracks(99));
        const QRect area = desk.find("Picture1")->rect();
        edit([](auto& d) { d.TableLeft = 0, d.PaddingLeft = 1500, d.ColWidths[2] = 4500; });
        desk.designer.RedrawTable();
        QTest::keyClick(&desk.designer, Qt::Key_F2);
        int texts = 0;
        for (; desk.editor()->isVisible() && texts < 500; ++texts) {
            QVERIFY2(area.contains(desk.editor()->geometry()), qPrintable(QString::number(texts)));
            QTest::keyClicks(desk.editor(), QString(80, 'W'));
            QVERIFY2(area.contains(desk.editor()->geometry()), qPrintable(QString::number(texts)));
            QTest::keyClick(desk.editor(), Qt::Key_Tab);
        }
        QVERIFY2(texts > 60 && texts < 100,
                 qPrintable(QString::number(texts))); // Of 401; the others are not seen.
    }
    void editor_ofATitleBesideTheEdge_liesOnTheLabel()
    {
        Desk desk;
        const QRect area = desk.find("Picture1")->rect();
        for (const auto& [left, top] : {std::pair(0, 0), {6000, 3000}, {3000, 6900}, {6000, 6900}}) {
            edit([left = left, top = top](auto& d) { d.TitleLeft = left, d.TitleTop = top; });
            desk.designer.RedrawTitle();
            QTest::keyClick(&desk.designer, Qt::Key_F2);
            QVERIFY(desk.editor()->isVisible());
            QVERIFY(area.contains(desk.editor()->geometry()));
            QTest::keyClick(desk.editor(), Qt::Key_Escape);
        }
    }
    void sent_toAPrinterWithALongName_isNotCut()
    {
        Desk desk;
        desk.designer.showSent("Office_LaserJet_third_floor_room_312_left");
        QCoreApplication::processEvents();
        auto* state = desk.find<QLabel>("lblState");
        QVERIFY(state->fontMetrics().horizontalAdvance(state->text()) > 2 * state->width());
        QVERIFY2(state->height() >= 3 * state->fontMetrics().height(),
                 qPrintable(QString::number(state->height())));
        const QImage whole = state->grab().toImage();
        desk.designer.showSent("Office_LaserJet_third_floor_room_312_righ");
        QCoreApplication::processEvents();
        QVERIFY(state->grab().toImage() != whole); // The end of the name is seen.
    }
    void sent_isSaid()
    {
        Desk desk;
        desk.designer.showSent("Laser");
        QCOMPARE(desk.find<QLabel>("lblState")->text(), QString("Sent to Laser"));
        QCOMPARE(desk.find<QLabel>("lblState")->toolTip(), QString("Sent to Laser"));
        desk.click("cmdPrint");
        QCOMPARE(desk.find<QLabel>("lblState")->text(), QString());
    }
    void calibrate_opensByButtonAndKey()
    {
        Desk desk;
        desk.designer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&desk.designer));
        desk.click("cmdCalibrate");
        QTest::keyClick(&desk.designer, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(desk.windows.shown, (QStringList{"calibrate", "calibrate"}));
        desk.windows.calibrateAnswer = zib::Failure{zib::Failure::Kind::NotFound, "There is no printer."};
        desk.click("cmdCalibrate");
        QCOMPARE(desk.messages.shown, QStringList{"c: There is no printer."});
    }
    void samplePicture_broken_isToldAtOpeningOnce()
    {
        const QTemporaryDir folder;
        QFile broken(folder.filePath("Sample1.jpg"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("nothing") > 0);
        broken.close();
        zib::FakeDesk desk;
        zib::setApplicationFolder(folder.path());
        frmLabelDesigner designer(desk.services, {});
        designer.show();
        QVERIFY(desk.messages.shown.isEmpty()); // There is no window to tell it in yet.
        QTRY_COMPARE(desk.messages.shown.size(), 1);
        QVERIFY(desk.messages.shown[0].contains("Sample1.jpg"));
        QCOMPARE(desk.messages.owners[0].data(), &designer);
    }
    void buttons_openTheirWindows()
    {
        Desk desk;
        desk.click("Title");
        desk.click("cmdBack");
        desk.click("cmdList");
        desk.click("cmdPrint");
        QCOMPARE(desk.windows.shown, (QStringList{"labelTitle", "labelBack", "labelList", "preview"}));
        QVERIFY(desk.messages.shown.isEmpty());
        desk.click("cmdClose");
        QVERIFY(!desk.designer.isVisible());
    }
    void print_whenThePreviewFails_tellsItsDescription()
    {
        Desk desk;
        desk.windows.previewAnswer =
            zib::Failure{zib::Failure::Kind::UnreadableFile, "The picture is broken."};
        desk.click("cmdPrint");
        QCOMPARE(desk.messages.shown, QStringList{"c: The picture is broken."});
        QVERIFY(desk.designer.isVisible());
    }
    void background_isSeenUnderTheTexts()
    {
        Desk desk;
        edit([](auto& d) { d.UseBackImage = false, d.UseBackColor = true, d.BackColor = QColor(3, 4, 5); });
        desk.designer.RedrawBackground();
        const QPoint corner = desk.find("Picture1")->mapTo(&desk.designer, QPoint(5, 5));
        QCOMPARE(desk.designer.grab().toImage().pixelColor(corner), QColor(3, 4, 5));
    }
    void background_thatCannotBeShown_isTold()
    {
        const QTemporaryDir folder;
        QFile broken(folder.filePath("broken.jpg"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("nothing") > 0);
        broken.close();
        Desk desk;
        edit([&](auto& d) { d.BackImagePath = broken.fileName(); });
        desk.designer.RedrawBackground();
        QCOMPARE(desk.messages.shown.size(), 1);
        QVERIFY(desk.messages.shown[0].startsWith("c: ") && desk.messages.shown[0].contains("broken.jpg"));
        edit([&](auto& d) { d.BackImagePath = "/nowhere/at/all.jpg"; });
        desk.designer.RedrawBackground();
        QCOMPARE(desk.messages.shown.size(), 1);
    }
    void smallWindow_scrollsTheLabel()
    {
        Desk desk;
        desk.designer.resize(400, 300);
        QTest::qWait(0);
        QVERIFY(desk.designer.width() <= 420 && desk.designer.height() <= 320);
        QCOMPARE(desk.find("Picture1")->size(), QSize(550, 550));
        QVERIFY(desk.find("cmdClose")->isVisible());
    }
};

QTEST_MAIN(TestFrmLabelDesigner)
#include "tst_frmLabelDesigner.moc"
