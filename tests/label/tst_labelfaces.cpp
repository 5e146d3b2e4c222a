#include "faces/Face.h"
#include "faces/Look.h"
#include "faces/PlainFont.h"
#include "faces/Strokes.h"
#include "faces/World.h"
#include "fakes/FakePrinter.h"
#include "label/DialogDesk.h"
#include "label/CalibrationPage.h"
#include "label/LabelControls.h"
#include "label/LabelLayout.h"
#include "label/LabelMaker.h"
#include "label/LabelPainter.h"
#include "label/LabelSettings.h"
#include "label/frmCalibrate.h"
#include "label/frmLabelBack.h"
#include "label/frmLabelDesigner.h"
#include "label/frmLabelList.h"
#include "label/frmLabelTitle.h"
#include "label/frmPreview.h"
#include "platform/IniFile.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QRadioButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

using namespace zib;
using LabelMaker::Document;
using LabelMaker::LabelDocument;

namespace {

/// A document of which no two lengths are the same and none is the default.
void makeOdd(Document& d)
{
    d.TitleText = "Odd title";
    d.TitleFontSize = 24;
    d.TitleFontBold = false;
    d.TitleFontItalic = true;
    d.TitleFontUnderline = true;
    d.TitleColor = QColor(1, 2, 3);
    d.TitleLeft = 45;
    d.TitleTop = 60;
    d.TableRows = 3;
    d.TableCols = 5;
    d.TableLeft = 75;
    d.TableTop = 1515;
    d.RowHeight = 405;
    d.ColWidths = {0, 300, 600, 900, 1200, 1500};
    d.LineWidth = 2;
    d.LineColor = QColor(4, 5, 6);
    d.TextFontSize = 9;
    d.TextFontBold = true;
    d.TextColor = QColor(240, 241, 242);
    d.PaddingLeft = 90;
    d.PaddingTop = 105;
    d.UseBackColor = true;
    d.BackColor = QColor(7, 8, 9);
    d.UseBackImage = false;
}

QString documentWords()
{
    const Document& d = LabelDocument;
    QStringList words;
    for (const bool on : {d.UseBackImage, d.BackImageStretch, d.BackImageOriginalSize, d.UseBackColor,
                          d.TitleFontBold, d.TitleFontItalic, d.TitleFontUnderline, d.ShowTableLines,
                          d.ShowTableText, d.TextFontBold, d.TextFontItalic, d.TextFontUnderline})
        words << (on ? "1" : "0");
    for (const int number :
         {d.BackImageLeft, d.BackImageTop, qint32{d.TitleFontSize}, d.TitleLeft, d.TitleTop,
          qint32{d.TableRows}, qint32{d.TableCols}, d.TableLeft, d.TableTop, d.RowHeight, qint32{d.LineWidth},
          qint32{d.TextFontSize}, d.PaddingLeft, d.PaddingTop})
        words << QString::number(number);
    for (const int width : d.ColWidths)
        words << QString::number(width);
    for (const QColor& color : {d.BackColor, d.TitleColor, d.LineColor, d.TextColor})
        words << color.name();
    for (const QString& text : {d.BackImagePath, d.TitleText, d.TitleFontName, d.TextFontName})
        words << '"' + text + '"';
    return words.join(' ');
}

QString itemWords(const LabelText& text)
{
    return QString("%1,%2 \"%3\" %4 %5")
        .arg(text.left)
        .arg(text.top)
        .arg(text.caption, fontWords(text.font), text.color.name());
}

/// Everything outside a label window, faked, with a printer of paper and a document of its own.
struct Desk : FakeDesk
{
    explicit Desk(const QString& name, const QList<CompilationRow>& rows = {}) : FakeDesk(&ini), face(name)
    {
        setApplicationFolder(folder.path());
        setSettingsFile(folder.filePath("settings.ini"));
        face.replace(folder.path(), "FOLDER");
        LabelMaker::InitLabelDocument(rows);
        edit([](Document& d) { d.TitleFontName = d.TextFontName = kPlainFont; });
        components.makePrinter = [this] { return std::make_unique<FakePrinter>(tray); };
    }
    Words words(QWidget& window)
    {
        QCoreApplication::processEvents();
        Words said;
        said.sayWindow(&window);
        sayWorld(said, *this);
        said.say("~document", documentWords());
        sayAll(said, "~rows", LabelDocument.TableRowText);
        said.say("~jobs", QString::number(tray.jobs.size()));
        for (const auto* text : window.findChildren<TextControl*>())
            said.say(text->objectName() + ".item", itemWords(text->item()));
        for (const auto* line : window.findChildren<LineControl*>())
            said.say(line->objectName() + ".item", QString("%1,%2 to %3,%4 wide %5 %6")
                                                       .arg(line->x1())
                                                       .arg(line->y1())
                                                       .arg(line->x2())
                                                       .arg(line->y2())
                                                       .arg(line->borderWidth())
                                                       .arg(line->borderColor().name()));
        return said;
    }
    void stage(const QString& title, QWidget& window) { face.stage(title, words(window)); }
    /// A picture in a file.
    QString picture(const QString& name, QSize size)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::red);
        if (!image.save(folder.filePath(name)))
            qFatal("no picture");
        return folder.filePath(name);
    }

    QTemporaryDir folder;
    IniFile ini;
    FakePrinter::Tray tray;
    Face face;
};

template <typename Control>
Control* find(QWidget& window, const QString& name)
{
    auto* found = window.findChild<Control*>(name);
    if (!found)
        qFatal("no control %s", qPrintable(name));
    return found;
}

void press(QWidget& window, const QString& name)
{
    find<QAbstractButton>(window, name)->click();
}

QList<CompilationRow> twoTracks()
{
    return {{"1", "a.mp3", "First", "Me", "01:02:03", "1 KB", "/m/"},
            {"2", "b.mp3", "", "", "11:12:13", "2 KB", "/m/"}};
}

bool activate(QWidget& window)
{
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window, 30'000);
}

} // namespace

/// The label maker's windows in words, and its pages stroke by stroke.
class TestLabelFaces : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { dressUp(); }

    void designer_editing()
    {
        Desk d("frmLabelDesigner");
        frmLabelDesigner window(d.services, twoTracks());
        QVERIFY(activate(window));
        d.stage("two tracks", window);
        QTest::mouseClick(find<QWidget>(window, "labels_6"), Qt::LeftButton);
        d.stage("a cell under the editor", window);
        QTest::keyClicks(find<QLineEdit>(window, "txtCursor"),
                         "A much longer title than the cell has room for");
        d.stage("typed into", window);
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Tab);
        d.stage("the next cell", window);
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Backtab, Qt::ShiftModifier);
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Backtab, Qt::ShiftModifier);
        d.stage("two cells back", window);
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Escape);
        d.stage("put away", window);
        QTest::keyClick(&window, Qt::Key_F2);
        d.stage("the title under the editor", window);
        find<QLineEdit>(window, "txtCursor")->clear();
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Return);
        d.stage("an empty title", window);
        QTest::mouseClick(find<QWidget>(window, "labels_8"), Qt::LeftButton);
        QTest::keyClicks(find<QLineEdit>(window, "txtCursor"), "1");
        QTest::mouseClick(find<QWidget>(window, "Picture1"), Qt::RightButton, {}, {5, 5});
        d.stage("the other button leaves the editor", window);
        QTest::mouseClick(find<QWidget>(window, "Picture1"), Qt::LeftButton, {}, {5, 5});
        d.stage("a click on the ground does not", window);
        QTest::mouseClick(find<QWidget>(window, "labels_12"), Qt::LeftButton);
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Tab);
        d.stage("behind the last cell", window);
        QTest::mouseClick(find<QWidget>(window, "cdTitle"), Qt::LeftButton);
        QTest::keyClick(find<QLineEdit>(window, "txtCursor"), Qt::Key_Backtab, Qt::ShiftModifier);
        d.stage("before the title", window);
        for (const char* button : {"Title", "cmdBack", "cmdList", "cmdPrint", "cmdCalibrate"})
            press(window, button);
        d.stage("every dialog", window);
        window.showSent("a printer");
        d.stage("sent", window);
        d.windows.previewAnswer = Failure{Failure::Kind::BadValue, "No preview."};
        d.windows.calibrateAnswer = Failure{Failure::Kind::BadValue, "No printer."};
        press(window, "cmdPrint");
        press(window, "cmdCalibrate");
        d.stage("dialogs that fail", window);
        press(window, "cmdClose");
        d.stage("closed", window);
        COMPARE_FACE(d.face);
    }

    void designer_fitting()
    {
        Desk d("frmLabelDesigner_fit");
        QList<CompilationRow> rows;
        for (int i = 1; i <= 40; ++i)
            rows << CompilationRow{
                QString::number(i), "a.mp3", QString("Song %1").arg(i), "Me", "01:02:03", "1 KB", "/m/"};
        frmLabelDesigner window(d.services, rows);
        QVERIFY(activate(window));
        d.face.leaveOut("labels_");
        d.face.leaveOut("lines_");
        d.face.leaveOut("~rows");
        d.face.leaveOut("Picture1.heap");
        d.face.begin(Words());
        d.stage("forty tracks", window);
        press(window, "cmdFit");
        d.stage("made to fit", window);
        edit([](Document& document) { document.ColWidths = {0, 3000, 3000, 3000, 3000}; });
        window.RedrawTable();
        d.stage("too wide", window);
        COMPARE_FACE(d.face);
    }

    void designer_ofAnOddDocument()
    {
        Desk d("frmLabelDesigner_odd");
        frmLabelDesigner window(d.services, twoTracks());
        QVERIFY(activate(window));
        d.face.begin(d.words(window));
        edit(makeOdd);
        window.RedrawTable();
        window.RedrawTitle();
        window.RedrawBackground();
        d.stage("another document", window);
        QTest::mouseClick(find<QWidget>(window, "labels_2"), Qt::LeftButton);
        d.stage("the editor on pale letters", window);
        edit([](Document& document) { document.ShowTableLines = false; });
        window.RedrawTable();
        d.stage("no lines", window);
        edit([](Document& document) { document.ShowTableText = false; });
        window.RedrawTable();
        d.stage("and no texts", window);
        edit([&d](Document& document) {
            document.UseBackImage = true;
            document.BackImagePath = "  " + d.picture("own.png", {31, 17}) + ' ';
            document.BackImageStretch = false;
            document.BackImageLeft = 150;
            document.BackImageTop = 315;
        });
        window.RedrawBackground();
        d.stage("a picture at its own size", window);
        edit([](Document& document) { document.BackImageStretch = true; });
        window.RedrawBackground();
        d.stage("and over the whole", window);
        edit([](Document& document) { document.UseBackImage = false; });
        window.RedrawBackground();
        d.stage("no picture", window);
        COMPARE_FACE(d.face);
    }

    void preview_printing()
    {
        Desk d("frmPreview");
        edit(makeOdd);
        frmPreview window(d.services, {8250, 8250});
        QVERIFY(activate(window));
        d.stage("shown", window);
        find<QTimer>(window, "Timer1")->start(0);
        QTRY_COMPARE(d.tray.jobs.size(), 1);
        d.stage("printed", window);
        QTest::keyClick(&window, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        d.stage("the test page too", window);
        d.tray.answer = Failure{Failure::Kind::BadValue, "Out of ink."};
        QTest::keyClick(&window, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        d.stage("not printed", window);
        QTest::mouseDClick(&window, Qt::LeftButton);
        d.stage("closed", window);
        COMPARE_FACE(d.face);
    }

    void preview_onSmallPaper()
    {
        Desk d("frmPreview_paper");
        frmPreview window(d.services, {8250, 8250});
        QVERIFY(activate(window));
        d.face.begin(d.words(window));
        for (const QSizeF& printable : {QSizeF(8234, 16'000), QSizeF(16'000, 8234), QSizeF(8235, 8235)}) {
            d.tray.printable = printable;
            const auto boxes = d.messages.shown.size();
            const auto jobs = d.tray.jobs.size();
            find<QTimer>(window, "Timer1")->start(0);
            QTRY_VERIFY(d.messages.shown.size() > boxes || d.tray.jobs.size() > jobs);
            QTRY_VERIFY(!find<QTimer>(window, "Timer1")->isActive());
            d.stage(QString("on %1 by %2 twips").arg(printable.width()).arg(printable.height()), window);
        }
        COMPARE_FACE(d.face);
    }

    void preview_thatScrolls()
    {
        Desk d("frmPreview_scrolling");
        frmPreview window(d.services, {4500, 15'000});
        QVERIFY(activate(window));
        d.face.leaveOut("labels_");
        d.face.leaveOut("lines_");
        d.stage("shown", window);
        COMPARE_FACE(d.face);
    }

    void back_choosing()
    {
        Desk d("frmLabelBack");
        frmLabelBack window(d.services);
        QVERIFY(activate(window));
        d.stage("shown", window);
        d.dialogs.colors = {QColor(11, 22, 33)};
        press(window, "cmdBackColor");
        press(window, "cmdBackColor");
        d.stage("a colour, and one that is cancelled", window);
        press(window, "chkBackColor");
        d.stage("no colour", window);
        press(window, "optImage_1");
        d.stage("its own size", window);
        find<QScrollBar>(window, "vsLeft")->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        find<QScrollBar>(window, "vsTop")->triggerAction(QAbstractSlider::SliderPageStepSub);
        d.stage("moved", window);
        d.dialogs.files = {"/pictures/one.jpg"};
        press(window, "cmdOpen");
        press(window, "cmdOpen");
        d.stage("a picture, and one that is cancelled", window);
        press(window, "cmdApply");
        d.stage("applied", window);
        press(window, "chkBackImage");
        d.stage("no picture", window);
        press(window, "optImage_0");
        press(window, "chkBackImage");
        press(window, "optImage_0");
        press(window, "OKButton");
        d.stage("stretched, and OK", window);
        frmLabelBack again(d.services);
        QVERIFY(activate(again));
        press(again, "chkBackColor");
        press(again, "CancelButton");
        d.stage("opened again, changed and cancelled", again);
        COMPARE_FACE(d.face);
    }

    void title_choosing()
    {
        Desk d("frmLabelTitle");
        edit([](Document& document) { document.BackColor = QColor(20, 30, 40); });
        frmLabelTitle window(d.services);
        QVERIFY(activate(window));
        d.stage("shown", window);
        auto* text = find<QLineEdit>(window, "txtTitle");
        text->selectAll();
        QTest::keyClicks(text, "Another");
        d.stage("typed", window);
        QFont letters(kPlainFont);
        letters.setPointSizeF(30.5);
        letters.setItalic(true);
        letters.setUnderline(true);
        d.dialogs.fonts = {letters};
        press(window, "cmdFont");
        press(window, "cmdFont");
        d.stage("other letters, and some that are cancelled", window);
        d.dialogs.colors = {QColor(99, 88, 77)};
        press(window, "cmdColor");
        press(window, "cmdColor");
        d.stage("a colour, and one that is cancelled", window);
        find<QScrollBar>(window, "vsLeft")->triggerAction(QAbstractSlider::SliderSingleStepSub);
        find<QScrollBar>(window, "vsTop")->triggerAction(QAbstractSlider::SliderPageStepAdd);
        d.stage("moved", window);
        press(window, "cmdApply");
        d.stage("applied", window);
        press(window, "CancelButton");
        d.stage("cancelled", window);
        frmLabelTitle again(d.services);
        QVERIFY(activate(again));
        find<QLineEdit>(again, "txtTitle")->clear();
        press(again, "OKButton");
        d.stage("opened again, cleared, and OK", again);
        COMPARE_FACE(d.face);
    }

    void list_choosing()
    {
        Desk d("frmLabelList");
        frmLabelList window(d.services);
        QVERIFY(activate(window));
        d.stage("shown", window);
        for (const char* bar : {"vsLeft", "vsTop", "vsRows", "vsCols", "vsRowHeight", "vsColWidth",
                                "vsLineWidth", "vsPaddingLeft", "vsPaddingTop"}) {
            find<QScrollBar>(window, bar)->triggerAction(QAbstractSlider::SliderSingleStepSub);
            d.stage(QString(bar) + " one up", window);
            find<QScrollBar>(window, bar)->triggerAction(QAbstractSlider::SliderToMinimum);
            d.stage(QString(bar) + " at its top", window);
        }
        find<QComboBox>(window, "cboCols")->setCurrentIndex(2);
        d.stage("the third column", window);
        d.dialogs.colors = {QColor(99, 88, 77), QColor(66, 55, 44)};
        QFont letters(kPlainFont);
        letters.setPointSizeF(7);
        letters.setBold(true);
        letters.setUnderline(true);
        d.dialogs.fonts = {letters};
        press(window, "cmdLineColor");
        press(window, "cmdTextColor");
        press(window, "cmdTextFont");
        d.stage("two colours and other letters", window);
        press(window, "cmdLineColor");
        press(window, "cmdTextColor");
        press(window, "cmdTextFont");
        d.stage("cancelled", window);
        press(window, "chkLines");
        press(window, "chkText");
        press(window, "cmdApply");
        d.stage("applied without lines and text", window);
        press(window, "OKButton");
        d.stage("OK", window);
        frmLabelList again(d.services);
        QVERIFY(activate(again));
        press(again, "chkText");
        press(again, "CancelButton");
        d.stage("opened again, changed and cancelled", again);
        COMPARE_FACE(d.face);
    }

    void list_ofALongDocument()
    {
        Desk d("frmLabelList_long");
        edit(makeOdd);
        edit([](Document& document) { document.TableRows = 31; });
        frmLabelList window(d.services);
        QVERIFY(activate(window));
        d.stage("more rows than it can choose", window);
        press(window, "cmdApply");
        d.stage("applied", window);
        find<QScrollBar>(window, "vsRows")->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        d.stage("chosen after all", window);
        press(window, "cmdApply");
        d.stage("applied again", window);
        COMPARE_FACE(d.face);
    }

    void numbers_byKeysAndWheel()
    {
        Desk d("frmLabelTitle_keys");
        frmLabelTitle window(d.services);
        QVERIFY(activate(window));
        d.face.begin(d.words(window));
        auto* box = find<QLineEdit>(window, "txtLeft");
        for (const auto& [key, name] : {std::pair{Qt::Key_Up, "Up"},
                                        {Qt::Key_Down, "Down"},
                                        {Qt::Key_PageUp, "Page Up"},
                                        {Qt::Key_PageDown, "Page Down"},
                                        {Qt::Key_Home, "Home"},
                                        {Qt::Key_End, "End"},
                                        {Qt::Key_5, "5"}}) {
            QTest::keyClick(box, key);
            d.stage(name, window);
        }
        QTest::keyClick(box, Qt::Key_Home);
        QTest::keyPress(box, Qt::Key_Up);
        QStringList numbers{box->text()};
        for (int i = 1; i <= 42; ++i) {
            QKeyEvent held(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier, QString(), true);
            QApplication::sendEvent(box, &held);
            numbers << box->text();
        }
        d.stage("held: " + numbers.join(' '), window);
        QWheelEvent wheel(QPointF(3, 3), box->mapToGlobal(QPointF(3, 3)), {}, {0, -120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(box, &wheel);
        d.stage("the wheel", window);
        COMPARE_FACE(d.face);
    }

    void layout_atItsLimits()
    {
        Desk d("layout");
        QList<CompilationRow> rows;
        for (int i = 1; i <= 9; ++i)
            rows << CompilationRow{QString::number(i), "a.mp3", "Song", "Me", "01:02:03", "1 KB", "/m/"};
        LabelMaker::InitLabelDocument(rows);
        edit([](Document& document) { document.TextFontName = kPlainFont; });
        const auto stage = [&](const QString& title) {
            const QSize area(8250, 8250);
            const layout::TrackFit fit = layout::trackFit(area);
            const auto tighter = layout::tighterRows(area);
            Words words;
            words.say("fit", QString("%1 of %2, too wide %3")
                                 .arg(fit.fitting)
                                 .arg(fit.tracks)
                                 .arg(layout::isTooWide(area)));
            words.say("tighter", tighter ? QString("%1 high, %2 pt, padding %3")
                                               .arg(tighter->rowHeight)
                                               .arg(tighter->fontSize)
                                               .arg(tighter->paddingTop)
                                         : "none");
            words.say("whole",
                      QString("%1x%2").arg(LabelMaker::TotalColumnWidth()).arg(LabelMaker::TableHeight()));
            QStringList edges;
            for (qint16 col = 1; col <= 5; ++col)
                edges << QString::number(LabelMaker::ColumnLeft(col));
            words.say("columns", edges.join(' '));
            words.say("picture", QString("%1 %2")
                                     .arg(layout::imagePlace({10, 20}, area).width())
                                     .arg(layout::imagePlace({10, 20}, area).height()));
            d.face.stage(title, words);
        };
        stage("nine tracks");
        for (const int top : {5250, 5251, 6000, 6750, 6751, 7500, 8250, 9000}) {
            edit([top](Document& document) { document.TableTop = top; });
            stage(QString("from %1 down").arg(top));
        }
        for (const int padding : {-15, 0, 15, 60}) {
            edit([padding](Document& document) {
                document.TableTop = 5700;
                document.PaddingTop = padding;
                document.BackImageStretch = padding > 0;
            });
            stage(QString("padded by %1").arg(padding));
        }
        LabelMaker::InitLabelDocument({});
        edit([](Document& document) {
            document.TextFontName = kPlainFont;
            document.TableTop = 6750;
        });
        stage("numbers alone");
        edit([](Document& document) { document.TableCols = 1; });
        stage("and nothing but their column");
        edit([](Document& document) { document.TableCols = 4; });
        for (const int width : {4275, 4276}) {
            edit([width](Document& document) { document.ColWidths = {0, 450, 3000 - width, width, width}; });
            stage(QString("columns of %1").arg(width));
        }
        COMPARE_FACE(d.face);
    }

    void calibrate_choosing()
    {
        Desk d("frmCalibrate");
        frmCalibrate window(d.services);
        QVERIFY(activate(window));
        d.stage("shown", window);
        find<QDoubleSpinBox>(window, "txtShiftAcross")->stepUp();
        find<QDoubleSpinBox>(window, "txtShiftDown")->stepDown();
        find<QDoubleSpinBox>(window, "txtScaleAcross")->stepBy(3);
        find<QDoubleSpinBox>(window, "txtScaleDown")->stepBy(-4);
        d.stage("four steps", window);
        press(window, "cmdTestPage");
        d.stage("a test page", window);
        d.tray.answer = Failure{Failure::Kind::BadValue, "Out of ink."};
        press(window, "cmdTestPage");
        d.stage("no test page", window);
        press(window, "OKButton");
        Words words = d.words(window);
        sayFile(words, "~file", gSettingsFile);
        d.face.stage("OK", words);
        d.tray.answer = {};
        frmCalibrate again(d.services);
        QVERIFY(activate(again));
        d.stage("opened again", again);
        press(again, "cmdReset");
        d.stage("reset", again);
        press(again, "CancelButton");
        d.stage("cancelled", again);
        COMPARE_FACE(d.face);
    }

    void pages_strokeByStroke()
    {
        Face face("pages");
        const auto page = [&face](const QString& title, const std::function<void(QPainter&)>& draw) {
            Words words;
            sayAll(words, "stroke", strokesOf({12'000, 17'000}, draw));
            face.stage(title, words);
        };
        Printer::Target target{};
        target.printer = "A printer";
        target.paper = "210 x 297";
        target.paperSize = QSizeF(11'906, 16'838);
        target.corner = QPointF(100, 200);
        page("calibration on A4", [&](QPainter& painter) {
            paintCalibrationPage(painter, target, {1.25, -2.5, 99.5, 101});
        });
        for (const double mm : {29.0, 30.0, 39.9, 40.0, 119.9, 120.0, 150.0}) {
            target.paperSize = QSizeF(twipsFromMm(mm), 16'838);
            Words words;
            words.say("ruler", QString::number(rulerMm(target.paperSize)));
            face.stage(QString("paper %1 mm wide").arg(mm), words);
        }
        QImage picture(400, 200, QImage::Format_RGB32);
        LabelScene scene;
        scene.area = {8250, 8000};
        scene.background = QColor(9, 8, 7);
        scene.title = {100, 200, "Title", QFont(kPlainFont, 20), QColor(1, 2, 3)};
        scene.image = {QRect(-300, 400, 3000, 1500), {picture, picture.size()}};
        scene.lines = {{0, 0, 300, 0, 1, QColor(4, 5, 6)}, {450, 600, 450, 150, 3, QColor(7, 8, 9)}};
        scene.cells = {{10, 20, "Cell", QFont(kPlainFont, 9), QColor(5, 5, 5)},
                       {30, 40, "Two\nlines\tand a tab\r\n\nfour", QFont(kPlainFont, 9), QColor(5, 5, 5)},
                       {8249, 7999, "In", QFont(kPlainFont, 9), QColor(5, 5, 5)},
                       {8250, 20, "Out", QFont(kPlainFont, 9), QColor(5, 5, 5)},
                       {10, 8000, "Below", QFont(kPlainFont, 9), QColor(5, 5, 5)},
                       {10, 90, "  ", QFont(kPlainFont, 9), QColor(5, 5, 5)}};
        page("a scene", [&](QPainter& painter) { paintScene(painter, scene); });
        scene.image.place = QRect(0, 0, 8250, 8000);
        scene.image.picture.image = QImage(2000, 2000, QImage::Format_RGB32);
        page("a large picture", [&](QPainter& painter) { paintScene(painter, scene); });
        scene.image.place = QRect(0, 0, 30'000, 30'000);
        scene.image.picture.image = QImage(2001, 2000, QImage::Format_RGB32);
        page("a photo beyond the label", [&](QPainter& painter) { paintScene(painter, scene); });
        COMPARE_FACE(face);
    }
};

QTEST_MAIN(TestLabelFaces)
#include "tst_labelfaces.moc"
