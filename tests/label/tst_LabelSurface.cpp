#include "label/LabelSurface.h"

#include "common/GenralMacro.h"
#include "label/CaptionLayout.h"
#include "label/LabelControls.h"
#include "label/LabelLayout.h"
#include "label/LabelMaker.h"
#include "label/LabelPainter.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace LabelMaker;

namespace {

const QSize kArea(8250, 8250);

/// A label surface of its own, with the controls a form would give it.
struct Surface
{
    Surface()
    {
        host.resize(550, 550);
        make<zib::ImageControl>("Image1");
        make<zib::TextControl>("cdTitle");
        make<zib::LineControl>("lines_0");
        make<zib::TextControl>("labels_0");
        surface = std::make_unique<zib::LabelSurface>(&host, kArea);
        host.show();
    }
    template <typename Control>
    void make(const char* name)
    {
        (new Control(&host))->setObjectName(name);
    }
    template <typename Control>
    Control* find(const QString& name) const
    {
        return host.findChild<Control*>(name);
    }
    zib::LineControl* line(int n) const { return find<zib::LineControl>(QString("lines_%1").arg(n)); }
    zib::TextControl* label(int n) const { return find<zib::TextControl>(QString("labels_%1").arg(n)); }
    zib::ImageControl* image() const { return find<zib::ImageControl>("Image1"); }
    int count(const QString& array) const
    {
        return static_cast<int>(
            host.findChildren<QWidget*>(QRegularExpression("^" + array + "_[1-9][0-9]*$")).size());
    }

    QImage seen() const { return const_cast<QWidget&>(host).grab().toImage(); }

    QWidget host;
    std::unique_ptr<zib::LabelSurface> surface;
};

void edit(const std::function<void(Document&)>& change)
{
    Document document = LabelDocument;
    change(document);
    setLabelDocument(document);
}

/// The smallest rectangle that holds everything dark.
QRect inkOf(const QImage& canvas)
{
    QRect ink;
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < canvas.width(); ++x)
            if (qGray(canvas.pixel(x, y)) < 128)
                ink |= QRect(x, y, 1, 1);
    return ink;
}

/// The scene as paper of 96 dots to the inch.
QImage paperOf(const zib::LabelScene& scene)
{
    QImage paper(550, 550, QImage::Format_RGB32);
    QPainter painter(&paper);
    painter.scale(1 / 15.0, 1 / 15.0);
    zib::paintScene(painter, scene);
    return paper;
}

/// A file of one colour. @returns its path.
QString pictureFile(const QTemporaryDir& folder, const QString& name, QSize size, QColor color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    const QString path = folder.filePath(name);
    return image.save(path) ? path : QString();
}

} // namespace

/// The label document as controls on a surface, and the same label drawn on paper.
class TestLabelSurface : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        InitLabelDocument({});
        edit([](Document& document) { document.BackImagePath = "/nowhere/none.jpg"; });
    }

    void table_ofTheDefaults_hasItsGrid()
    {
        const Surface s;
        s.surface->RedrawTable();
        QCOMPARE(s.count("lines"), 17 + 5);
        QCOMPARE(s.line(1)->item(), (zib::LabelLine{525, 1200, 7725, 1200, 1, QColor(255, 0, 0)}));
        QCOMPARE(s.line(17)->item(), (zib::LabelLine{525, 6000, 7725, 6000, 1, QColor(255, 0, 0)}));
        QCOMPARE(s.line(18)->item(), (zib::LabelLine{525, 1200, 525, 6000, 1, QColor(255, 0, 0)}));
        QCOMPARE(s.line(20)->item(), (zib::LabelLine{3975, 1200, 3975, 6000, 1, QColor(255, 0, 0)}));
        QCOMPARE(s.line(22)->item(), (zib::LabelLine{7725, 1200, 7725, 6000, 1, QColor(255, 0, 0)}));
        QCOMPARE(s.line(1)->geometry(), QRect(35, 80, 481, 1));
        QCOMPARE(s.line(22)->geometry(), QRect(515, 80, 1, 321));
        QVERIFY(s.line(1)->isVisible());
    }
    void table_ofTheDefaults_hasItsCells()
    {
        const Surface s;
        s.surface->RedrawTable();
        QCOMPARE(s.count("labels"), 64);
        const zib::TextControl* first = s.label(1);
        QCOMPARE(first->text(), QString("No"));
        QCOMPARE(first->pos(), QPoint(40, 82));
        QCOMPARE(first->item().left, 600);
        QCOMPARE(first->item().top, 1230);
        QCOMPARE(first->item().color, QColor(0, 0, 255));
        QCOMPARE(first->palette().color(QPalette::WindowText), QColor(0, 0, 255));
        QCOMPARE(first->item().font.family(), QString("Arial"));
        QCOMPARE(first->item().font.pointSize(), 12);
        QCOMPARE(s.label(5)->text(), QString("1"));
        QCOMPARE(s.label(64)->item().left, 525 + 5700 + 75);
        QCOMPARE(s.label(64)->item().top, 1200 + 15 * 300 + 30);
        QVERIFY(first->isVisible());
        QVERIFY(!s.label(0)->isVisible());
        QVERIFY(!s.line(0)->isVisible());
    }
    void table_linesAndText_areIndependent_data()
    {
        QTest::addColumn<bool>("lines");
        QTest::addColumn<bool>("text");
        QTest::newRow("both") << true << true;
        QTest::newRow("lines") << true << false;
        QTest::newRow("text") << false << true;
        QTest::newRow("neither") << false << false;
    }
    void table_linesAndText_areIndependent()
    {
        QFETCH(bool, lines);
        QFETCH(bool, text);
        const Surface s;
        s.surface->RedrawTable();
        edit([&](Document& d) { d.ShowTableLines = lines, d.ShowTableText = text; });
        s.surface->RedrawTable();
        QCOMPARE(s.count("lines"), lines ? 22 : 0);
        QCOMPARE(s.count("labels"), text ? 64 : 0);
    }
    void table_withFewerRows_leavesNothingOfTheOldOne()
    {
        const Surface s;
        s.surface->RedrawTable();
        edit([](Document& d) { d.TableRows = 5; });
        s.surface->RedrawTable();
        QCOMPARE(s.count("lines"), 6 + 5);
        QCOMPARE(s.count("labels"), 20);
        QCOMPARE(s.line(6)->item().y1, 1200 + 5 * 300);
        QCOMPARE(s.line(7)->item().y2, 1200 + 5 * 300);
    }
    void table_emptyCell_showsTenBlanks()
    {
        const Surface s;
        edit([](Document& d) {
            d.TableRowText[2] = "1#*_+{}#*_+{}x";
            d.TableCols = 5;
        });
        s.surface->RedrawTable();
        QCOMPARE(s.label(6)->text(), QString("1"));
        QCOMPARE(s.label(7)->text(), QString(10, ' '));
        QCOMPARE(s.label(8)->text(), QString("x"));
        QCOMPARE(s.label(9)->text(), QString(10, ' '));
        QVERIFY(s.label(9)->width() > 20);
        QCOMPARE(s.count("lines"), 17 + 6);
    }
    void table_longText_isNeitherCutNorInterpreted()
    {
        const Surface s;
        const QString text =
            "<b>Rhythm & Blues</b> of a very long evening that never ends " + QString(80, 'W');
        edit([&](Document& d) { d.TableRowText[1] = text; });
        s.surface->RedrawTable();
        QCOMPARE(s.label(1)->text(), text);
        QVERIFY(s.label(1)->width() > 1000);
        QCOMPARE(s.label(1)->textFormat(), Qt::PlainText);
    }
    void table_fontName_isTrimmedAndStoredBack()
    {
        const Surface s;
        edit([](Document& d) {
            d.TextFontName = "  Liberation Serif  ";
            d.TextFontBold = d.TextFontItalic = d.TextFontUnderline = true;
            d.TextFontSize = 20;
        });
        s.surface->RedrawTable();
        QCOMPARE(LabelDocument.TextFontName, QString("Liberation Serif"));
        const QFont font = s.label(3)->item().font;
        QCOMPARE(font.family(), QString("Liberation Serif"));
        QVERIFY(font.bold() && font.italic() && font.underline());
        QCOMPARE(font.pointSize(), 20);
    }
    void table_thickLine_isCentredOnItsPlace()
    {
        const Surface s;
        edit([](Document& d) { d.LineWidth = 5, d.LineColor = QColor(1, 2, 3); });
        s.surface->RedrawTable();
        QCOMPARE(s.line(1)->geometry(), QRect(33, 78, 485, 5));
        QCOMPARE(s.line(18)->geometry(), QRect(33, 78, 5, 325));
        QCOMPARE(s.line(1)->borderColor(), QColor(1, 2, 3));
    }
    void lines_letClicksThrough()
    {
        const Surface s;
        s.surface->RedrawTable();
        QVERIFY(s.line(1)->testAttribute(Qt::WA_TransparentForMouseEvents));
    }
    void fonts_onAnyScreen_keepTheirSizeInTwips_data()
    {
        QTest::addColumn<int>("dpi");
        QTest::newRow("96") << 96;
        QTest::newRow("120") << 120;
        QTest::newRow("72") << 72;
    }
    void fonts_onAnyScreen_keepTheirSizeInTwips()
    {
        QFETCH(int, dpi);
        QFont font("Arial");
        font.setPointSize(12);
        const double pixels = zib::screenFont(font, dpi).pointSizeF() * dpi / 72;
        QCOMPARE(pixels * 15, 240.0);
        QCOMPARE(zib::paperFont(font).pixelSize(), 240);
    }
    void title_withBlanksAround_isTrimmedAndStoredBack()
    {
        const Surface s;
        edit([](Document& d) {
            d.TitleText = "  Summer  ";
            d.TitleFontName = " Liberation Mono ";
            d.TitleColor = QColor(9, 8, 7);
            d.TitleLeft = 150, d.TitleTop = 4500;
            d.TitleFontItalic = d.TitleFontUnderline = true;
        });
        s.surface->RedrawTitle();
        const zib::TextControl* title = s.surface->title();
        QCOMPARE(title->text(), QString("Summer"));
        QCOMPARE(LabelDocument.TitleText, QString("Summer"));
        QCOMPARE(LabelDocument.TitleFontName, QString("Liberation Mono"));
        QCOMPARE(title->pos(), QPoint(10, 300));
        QCOMPARE(title->item().font.family(), QString("Liberation Mono"));
        QCOMPARE(title->item().font.pointSize(), 18);
        QVERIFY(title->item().font.bold() && title->item().font.italic() && title->item().font.underline());
        QCOMPARE(title->item().color, QColor(9, 8, 7));
    }
    void title_ofBlanksOnly_staysClickable()
    {
        const Surface s;
        edit([](Document& d) { d.TitleText = QString(10, ' '); });
        s.surface->RedrawTitle();
        QCOMPARE(s.surface->title()->text(), QString(10, ' '));
        QCOMPARE(LabelDocument.TitleText, QString());
        QVERIFY(s.surface->title()->width() > 20);
    }
    void background_withoutColour_keepsThePreviousOne()
    {
        const Surface s;
        edit([](Document& d) { d.BackColor = QColor(10, 20, 30); });
        QVERIFY(s.surface->RedrawBackground());
        QCOMPARE(s.host.palette().color(QPalette::Window), QColor(10, 20, 30));
        edit([](Document& d) { d.UseBackColor = false, d.BackColor = Qt::green; });
        QVERIFY(s.surface->RedrawBackground());
        QCOMPARE(s.host.palette().color(QPalette::Window), QColor(10, 20, 30));
    }
    void background_stretched_coversTheAreaWhereverItsPlaceIs()
    {
        const QTemporaryDir folder;
        const Surface s;
        edit([&](Document& d) {
            d.BackImagePath = "  " + pictureFile(folder, "a.png", {30, 20}, Qt::green) + "  ";
            d.BackImageLeft = 900, d.BackImageTop = 800;
        });
        QVERIFY(s.surface->RedrawBackground());
        QCOMPARE(LabelDocument.BackImagePath, folder.filePath("a.png"));
        QCOMPARE(s.image()->geometry(), QRect(0, 0, 550, 550));
        QCOMPARE(s.seen().pixelColor(549, 549), QColor(Qt::green));
    }
    void background_atItsOwnSize_liesAtItsPlace()
    {
        const QTemporaryDir folder;
        const Surface s;
        edit([&](Document& d) {
            d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, Qt::green);
            d.BackImageStretch = false;
        });
        QVERIFY(s.surface->RedrawBackground());
        QCOMPARE(s.image()->geometry(), QRect(100, 20, 30, 20));
        QCOMPARE(s.image()->pixmap().size(), QSize(30, 20));
        QCOMPARE(s.image()->item().place, QRect(1500, 300, 450, 300));
    }
    void background_ofAMissingFile_keepsPictureAndPlace()
    {
        const QTemporaryDir folder;
        const Surface s;
        edit([&](Document& d) { d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, Qt::green); });
        QVERIFY(s.surface->RedrawBackground());
        edit([&](Document& d) { d.BackImagePath = folder.filePath("b.png"), d.BackImageStretch = false; });
        QVERIFY(s.surface->RedrawBackground());
        QCOMPARE(s.image()->geometry(), QRect(0, 0, 550, 550));
        QVERIFY(!s.image()->item().picture.image.isNull());
        edit([&](Document& d) { d.BackImagePath = folder.path(); }); // A folder is no file.
        QVERIFY(s.surface->RedrawBackground());
        edit([&](Document& d) { d.BackImagePath.clear(); });
        QVERIFY(s.surface->RedrawBackground());
        QVERIFY(!s.image()->item().picture.image.isNull());
    }
    void background_ofABrokenFile_tellsAndKeepsThePicture()
    {
        const QTemporaryDir folder;
        const Surface s;
        QFile broken(folder.filePath("broken.jpg"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no picture at all") > 0);
        broken.close();
        edit([&](Document& d) { d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, Qt::green); });
        QVERIFY(s.surface->RedrawBackground());
        edit([&](Document& d) { d.BackImagePath = broken.fileName(); });
        const zib::Outcome<> result = s.surface->RedrawBackground();
        QVERIFY(!result);
        QVERIFY(result.error().detail.contains("broken.jpg"));
        QCOMPARE(s.image()->item().picture.image.pixelColor(0, 0), QColor(Qt::green));
        edit([](Document& d) { d.UseBackImage = false; });
        QVERIFY(s.surface->RedrawBackground());
    }
    void background_ofOneFile_isDecodedOnceForAllSurfaces()
    {
        const QTemporaryDir folder;
        edit([&](Document& d) { d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, Qt::green); });
        const Surface one;
        const Surface other;
        QVERIFY(one.surface->RedrawBackground() && other.surface->RedrawBackground());
        QVERIFY(one.image()->item().picture.image.constBits() ==
                other.image()->item().picture.image.constBits());
        QVERIFY(one.surface->scene().image.picture.image.constBits() ==
                one.image()->item().picture.image.constBits());
    }
    void background_ofAChangedFile_isReadAgain()
    {
        const QTemporaryDir folder;
        const Surface s;
        edit([&](Document& d) { d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, Qt::green); });
        QVERIFY(s.surface->RedrawBackground());
        pictureFile(folder, "a.png", {30, 20}, Qt::blue);
        QFile file(folder.filePath("a.png"));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(9), QFileDevice::FileModificationTime));
        file.close();
        QVERIFY(s.surface->RedrawBackground());
        QCOMPARE(s.image()->item().picture.image.pixelColor(0, 0), QColor(Qt::blue));
    }
    void background_unused_isHidden()
    {
        const Surface s;
        edit([](Document& d) { d.UseBackImage = false; });
        QVERIFY(s.surface->RedrawBackground());
        QVERIFY(!s.image()->isVisible());
        edit([](Document& d) { d.UseBackImage = true; });
        QVERIFY(s.surface->RedrawBackground());
        QVERIFY(s.image()->isVisible());
    }
    void stacking_putsTheTableInFrontOfThePicture()
    {
        const QTemporaryDir folder;
        const Surface s;
        edit([&](Document& d) {
            d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, Qt::green);
            d.ShowTableText = false;
        });
        QVERIFY(s.surface->RedrawLabel());
        const QImage seen = s.seen();
        QCOMPARE(seen.pixelColor(35, 80), QColor(255, 0, 0));
        QCOMPARE(seen.pixelColor(515, 400), QColor(255, 0, 0));
        QCOMPARE(seen.pixelColor(300, 85), QColor(Qt::green));
    }
    void label_clicked_tellsItsNumber()
    {
        const Surface s;
        s.surface->RedrawTable();
        QSignalSpy clicked(s.surface.get(), &zib::LabelSurface::labelClicked);
        QTest::mouseClick(s.label(7), Qt::LeftButton);
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(clicked[0][0].toInt(), 7);
        QCOMPARE(s.surface->label(7), s.label(7));
        QCOMPARE(s.surface->label(65), nullptr);
        QCOMPARE(s.surface->label(-1), nullptr);
    }
    void scene_ofASurface_holdsWhatItShows()
    {
        const Surface s;
        QVERIFY(s.surface->RedrawLabel());
        s.surface->label(2)->setCaption("edited");
        const zib::LabelScene scene = s.surface->scene();
        QCOMPARE(scene.area, kArea);
        QCOMPARE(scene.lines, zib::layout::gridLines());
        QCOMPARE(scene.cells.size(), 64);
        QCOMPARE(scene.cells[1].caption, QString("edited"));
        QCOMPARE(scene.title, zib::layout::title());
        QCOMPARE(scene.background, QColor(255, 255, 255));
    }
    void paper_atScreenScale_looksLikeTheScreen()
    {
        const QTemporaryDir folder;
        const Surface s;
        edit([&](Document& d) {
            d.BackImagePath = pictureFile(folder, "a.png", {30, 20}, QColor(200, 255, 200));
            d.LineWidth = 3;
        });
        QVERIFY(s.surface->RedrawLabel());
        const QImage screen = s.seen().convertToFormat(QImage::Format_RGB32);
        const QImage paper = paperOf(s.surface->scene());
        int different = 0;
        for (int y = 0; y < 550; ++y)
            for (int x = 0; x < 550; ++x)
                different += qAbs(qGray(screen.pixel(x, y)) - qGray(paper.pixel(x, y))) > 96;
        QVERIFY2(different < 550 * 550 / 200, qPrintable(QString::number(different)));
    }
    void paper_beyondTheArea_staysEmpty()
    {
        const Surface s;
        edit([](Document& d) { d.TableRows = 30, d.RowHeight = 1500; });
        QVERIFY(s.surface->RedrawLabel());
        QImage paper(600, 600, QImage::Format_RGB32);
        paper.fill(Qt::white);
        QPainter painter(&paper);
        painter.scale(1 / 15.0, 1 / 15.0);
        zib::paintScene(painter, s.surface->scene());
        painter.end();
        for (int x = 0; x < 600; ++x)
            QCOMPARE(paper.pixelColor(x, 560), QColor(Qt::white));
    }
    void text_ofAnyScript_liesWithinItsLabel_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("latin") << "Song";
        QTest::newRow("right to left") << QString::fromUtf8("שיר ארוך");
        QTest::newRow("two lines") << "one\ntwo";
        QTest::newRow("tab") << "one\ttwo";
    }
    void text_ofAnyScript_liesWithinItsLabel()
    {
        QFETCH(QString, text);
        QFont font("DejaVu Sans");
        font.setPixelSize(40);
        const zib::CaptionLayout layout(text, font);
        const QSize room = layout.size().toSize() + QSize(2, 2);
        QImage canvas(1200, 200, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        QPainter painter(&canvas);
        layout.paint(painter, {50, 20}, Qt::black);
        painter.end();
        const QRect ink = inkOf(canvas);
        QVERIFY(ink.width() > room.width() / 2);
        QVERIFY2(QRect(QPoint(50, 20), room).adjusted(-3, -3, 3, 3).contains(ink), qPrintable(text));
    }
    void lines_standApartByTheFontsLeading()
    {
        for (const QString& family : QFontDatabase::families()) {
            QFont font(family);
            font.setPixelSize(60);
            const QFontMetricsF metrics(font);
            const auto height = [&font](const char* text) {
                return zib::CaptionLayout(text, font).size().height();
            };
            const double one = height("a");
            QVERIFY2(qAbs(height("a\na") - 2 * one - metrics.leading()) < 0.1, qPrintable(family));
            QVERIFY2(qAbs(height("a\na\na") - 3 * one - 2 * metrics.leading()) < 0.1, qPrintable(family));
        }
    }
    void blanksAtTheEnd_takeTheirRoom()
    {
        QFont font("DejaVu Sans");
        font.setPixelSize(40);
        const auto width = [&font](const char* text) {
            return zib::CaptionLayout(text, font).size().width();
        };
        const double blank = width("a b") - width("ab");
        QVERIFY(blank > 5);
        QVERIFY(qAbs(width("ab  ") - width("ab") - 2 * blank) < 2);
        QVERIFY(qAbs(width("   ") - 3 * blank) < 2);
    }
    void tab_isBlanksUpToTheNextEighthPlace_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("drawn");
        QTest::newRow("none") << "a b"
                              << "a b";
        QTest::newRow("first") << "\tb"
                               << "        b";
        QTest::newRow("middle") << "abc\td"
                                << "abc     d";
        QTest::newRow("at a stop") << "12345678\tx"
                                   << "12345678        x";
        QTest::newRow("two") << "a\t\tb"
                             << "a               b";
        QTest::newRow("accent") << QString::fromUtf8("e\u0301\tb") << QString::fromUtf8("e\u0301       b");
        QTest::newRow("each line") << "ab\tc\r\nd\te"
                                   << "ab      c\nd       e";
        QTest::newRow("line breaks") << QString::fromUtf8("a\rb\vc\u2028d\u2029e") << "a\nb\nc\nd\ne";
    }
    void tab_isBlanksUpToTheNextEighthPlace()
    {
        QFETCH(QString, caption);
        QFETCH(QString, drawn);
        QCOMPARE(zib::withoutTabs(caption), drawn);
    }
    void tab_inATitle_losesNothingOnPaper()
    {
        const Surface s;
        edit([](Document& d) {
            d.TitleText = "MM\tMM", d.TitleColor = Qt::black, d.TitleLeft = d.TitleTop = 300;
            d.ShowTableLines = d.ShowTableText = false;
        });
        QVERIFY(s.surface->RedrawLabel());
        QCOMPARE(s.surface->title()->text(), QString("MM\tMM")); // What is edited keeps its tab.
        const QRect screen = inkOf(s.seen());
        const QRect paper = inkOf(paperOf(s.surface->scene()));
        QVERIFY(screen.width() > 100);
        QVERIFY(qAbs(screen.left() - paper.left()) <= 1 && qAbs(screen.right() - paper.right()) <= 1);
    }
    void slantedText_isNotCutOnTheScreen_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("right") << "f";
        QTest::newRow("left") << "j";
        QTest::newRow("above") << QString::fromUtf8("A\u0302\u0302\u0302");
    }
    void slantedText_isNotCutOnTheScreen()
    {
        QFETCH(QString, text);
        const Surface s;
        edit([&](Document& d) {
            d.TitleText = text, d.TitleFontName = "Liberation Serif", d.TitleFontSize = 200;
            d.TitleFontItalic = true, d.TitleColor = Qt::black, d.TitleLeft = 2700, d.TitleTop = 1800;
            d.ShowTableLines = d.ShowTableText = false;
        });
        QVERIFY(s.surface->RedrawLabel());
        const QRect screen = inkOf(s.seen());
        const QRect paper = inkOf(paperOf(s.surface->scene()));
        for (const int off : {screen.left() - paper.left(), screen.right() - paper.right(),
                              screen.top() - paper.top(), screen.bottom() - paper.bottom()})
            QVERIFY2(qAbs(off) <= 1, qPrintable(QString::number(off)));
    }
    void desktop_fromRightToLeft_movesNothing()
    {
        const auto look = [] {
            const Surface s;
            edit([](Document& d) {
                d.TitleText = QString::fromUtf8("שיר one"), d.TableRowText[2] = "1#*_+{}Song, with dots...";
            });
            static_cast<void>(s.surface->RedrawLabel());
            return s.seen();
        };
        const QImage before = look();
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        const QImage turned = look();
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QCOMPARE(turned, before);
    }
    void outline_ofTheDisc_isOnTheScreenOnly()
    {
        const Surface s;
        edit([](Document& d) { d.TitleText = "x", d.ShowTableLines = d.ShowTableText = false; });
        QVERIFY(s.surface->RedrawLabel());
        const auto* disc = s.find<QWidget>("discOutline");
        QVERIFY(disc && disc->isVisible() && disc->testAttribute(Qt::WA_TransparentForMouseEvents));
        QCOMPARE(disc->geometry(), QRect(0, 0, 550, 550));
        QCOMPARE(s.host.children().last(), disc); // Before everything else.
        const auto darkFrom = [&](const QImage& image, int radius) {
            int dark = 0;
            for (int angle = 0; angle < 360; ++angle) {
                const QPointF at = QPointF(275, 275) + QLineF::fromPolar(radius, angle).p2();
                for (int dx = -1; dx <= 1; ++dx)
                    dark += qGray(image.pixel(at.toPoint() + QPoint(dx, 0))) < 250;
            }
            return dark;
        };
        const QImage screen = s.seen();
        const QImage paper = paperOf(s.surface->scene());
        for (const int radius : {223, 42}) { // 118 and 22 mm at 96 dots to the inch.
            QVERIFY2(darkFrom(screen, radius) > 150, qPrintable(QString::number(darkFrom(screen, radius))));
            QVERIFY(darkFrom(screen, radius + 10) < 10);
            QCOMPARE(darkFrom(paper, radius), 0);
        }
    }
    void outline_staysInFrontOfANewTable()
    {
        const Surface s;
        QVERIFY(s.surface->RedrawLabel());
        s.surface->RedrawTable();
        QCOMPARE(s.host.children().last()->objectName(), QString("discOutline"));
    }
    void picture_forPaper_isCutToTheLabelAndTo600Dpi_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("place");
        QTest::addColumn<QSize>("pixels");
        QTest::addColumn<QRect>("where");
        const QRect all(0, 0, 8250, 8250);
        QTest::newRow("few pixels") << QSize(30, 20) << all << QSize(30, 20) << all;
        QTest::newRow("photo") << QSize(6000, 4000) << all << QSize(3438, 3438) << all;
        QTest::newRow("own size") << QSize(6000, 4000) << QRect(1500, 300, 90000, 60000) << QSize(450, 530)
                                  << QRect(1500, 300, 6750, 7950);
        QTest::newRow("outside") << QSize(30, 20) << QRect(9000, 0, 450, 300) << QSize() << QRect();
    }
    void picture_forPaper_isCutToTheLabelAndTo600Dpi()
    {
        QFETCH(QSize, size);
        QFETCH(QRect, place);
        QFETCH(QSize, pixels);
        QFETCH(QRect, where);
        QImage image;
        if (!size.isEmpty()) {
            image = QImage(size, QImage::Format_RGB32);
            image.fill(Qt::green);
        }
        const zib::LabelImage fitted = zib::forPaper({place, {image, size}}, kArea);
        QCOMPARE(fitted.picture.image.isNull(), pixels.isEmpty());
        if (pixels.isEmpty())
            return;
        QCOMPARE(fitted.picture.image.size(), pixels);
        QCOMPARE(fitted.place, where);
        QCOMPARE(fitted.picture.image.pixelColor(0, 0), QColor(Qt::green));
    }
    void redraw_ofThirtyByTenCells_isBenchmarked()
    {
        const Surface s;
        edit([](Document& d) {
            d.TableRows = 30;
            d.TableCols = 10;
            for (int row = 1; row <= 30; ++row)
                d.TableRowText.resize(31),
                    d.TableRowText[row] = "a#*_+{}b#*_+{}c#*_+{}d#*_+{}e#*_+{}f#*_+{}g";
        });
        QBENCHMARK
        {
            QVERIFY(s.surface->RedrawLabel());
        }
        QCOMPARE(s.count("labels"), 300);
    }
};

QTEST_MAIN(TestLabelSurface)
#include "tst_LabelSurface.moc"
