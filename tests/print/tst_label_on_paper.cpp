#include "engines/print/makers.h"
#include "fakes/FakeSeams.h"
#include "label/LabelLayout.h"
#include "label/CalibrationPage.h"
#include "label/LabelMaker.h"
#include "label/LabelPrint.h"
#include "label/LabelSettings.h"
#include "label/frmPreview.h"
#include "platform/IniFile.h"
#include "print/PrintSystem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>

#include <pwd.h>
#include <unistd.h>

using LabelMaker::LabelDocument;

namespace {

constexpr double kTwipsPerPoint = 20;
constexpr double kPointsPerMm = 72 / 25.4;
constexpr double kNear = 0.2 * kPointsPerMm; ///< As true as lengths on paper must be.
constexpr double kMargin = 6.35 * kPointsPerMm;

QString output(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60'000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// A list whose cells are single words, so that each is found on the page by itself.
QList<zib::CompilationRow> tracks()
{
    QList<zib::CompilationRow> rows;
    for (int i = 1; i <= 12; ++i)
        rows << zib::CompilationRow{QString::number(i),
                                    "a.mp3",
                                    QString("Gnossienne%1").arg(i),
                                    QString("Sätie%1").arg(i),
                                    QString("03:%1:00").arg(i + 10),
                                    "1 KB",
                                    "/m/"};
    return rows;
}

/// Every word of a page with the upper left corner of its box, in points.
QHash<QString, QPointF> wordsOf(const QString& pdf)
{
    static const QRegularExpression word("<word xMin=\"([0-9.]+)\" yMin=\"([0-9.]+)\"[^>]*>([^<]*)</word>");
    QHash<QString, QPointF> words;
    auto found = word.globalMatch(output("pdftotext", {"-bbox", pdf, "-"}));
    while (found.hasNext()) {
        const auto match = found.next();
        words.insert(match.captured(3), QPointF(match.captured(1).toDouble(), match.captured(2).toDouble()));
    }
    return words;
}

/// Every rectangle of a page in the colour @p rgb, written as "100%,0%,0%", in points. The tool's releases
/// write a style with a colour or a colour of its own, with blanks.
QList<QRectF> rectanglesOf(const QString& pdf, const QString& rgb)
{
    const QRegularExpression path(
        "fill(?::|=\")rgb\\(" + QString(rgb).replace(",", ", ?") +
        "\\)[^>]* d=\"M ([0-9.]+) ([0-9.]+) L [0-9. ]+ L ([0-9.]+) ([0-9.]+) L [^C]*?\"");
    QList<QRectF> rectangles;
    auto found = path.globalMatch(output("pdftocairo", {"-svg", pdf, "-"}));
    while (found.hasNext()) {
        const auto match = found.next();
        rectangles << QRectF(QPointF(match.captured(1).toDouble(), match.captured(2).toDouble()),
                             QPointF(match.captured(3).toDouble(), match.captured(4).toDouble()));
    }
    return rectangles;
}

/// The label's windows and a print system whose default queue is the test's choice.
struct Desk : zib::FakeDesk
{
    explicit Desk(zib::IniFile* ini) : FakeDesk(ini)
    {
        zib::setSettingsFile(folder.filePath("settings.ini"));
        components.makePrinter = zib::makePrinter;
        zib::setApplicationFolder(ZIB_SOURCE_DIR "/data");
        LabelMaker::InitLabelDocument(tracks());
    }
    /// Shows the preview, lets it print and waits for the paper. @returns how the preview looked.
    QImage print()
    {
        frmPreview preview(services, {8250, 8250});
        preview.show();
        auto* timer = preview.findChild<QTimer*>("Timer1");
        timer->start(0);
        while (timer->isActive())
            QTest::qWait(10);
        return system.waitForJobs() ? preview.grab().toImage() : QImage();
    }

    QTemporaryDir folder;
    PrintSystem system;
};

QString home()
{
    const passwd* entry = getpwuid(geteuid());
    return entry ? QString::fromLocal8Bit(entry->pw_dir) : QDir::homePath();
}

/// What Debian's PDF printer leaves in the account's folder, removed again at the end.
class PdfFolder
{
public:
    PdfFolder() : m_existed(QDir(m_path).exists()), m_before(newestTime()) {}
    ~PdfFolder()
    {
        const QString made = newest();
        if (!made.isEmpty())
            QFile::remove(made);
        if (!m_existed)
            QDir().rmdir(m_path);
    }
    QString newest() const { return newestTime() > m_before ? files().constFirst().filePath() : QString(); }

private:
    /// One of the same name is written over, so times tell, in milliseconds.
    qint64 newestTime() const
    {
        const QFileInfoList found = files();
        return found.isEmpty() ? 0 : found.constFirst().lastModified().toMSecsSinceEpoch();
    }
    QFileInfoList files() const { return QDir(m_path).entryInfoList({"*.pdf"}, QDir::Files, QDir::Time); }

    QString m_path = home() + "/PDF";
    bool m_existed;
    qint64 m_before;
};

/// The share of points that look different, in percent.
double difference(const QImage& one, const QImage& other)
{
    int different = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            different += qAbs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y))) > 80;
    return 100.0 * different / (one.width() * one.height());
}

} // namespace

/// The label on paper, measured: as the document says, and as the preview shows it.
class TestLabelOnPaper : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_desk = std::make_unique<Desk>(&m_ini);
        if (!m_desk->system.problem().isEmpty())
            QSKIP(qPrintable(m_desk->system.problem()));
        for (const char* tool : {"pdftotext", "pdftocairo", "pdftohtml", "pdfimages"})
            if (QStandardPaths::findExecutable(tool).isEmpty())
                QSKIP(qPrintable(QString("%1 is not installed").arg(tool)));
        m_file = m_desk->system.addFileQueue("paper");
        m_desk->system.setDefault("paper");
    }
    void cleanup() { m_desk.reset(); }

    void texts_lieWhereTheDocumentSays()
    {
        QVERIFY(!m_desk->print().isNull());
        QCOMPARE(m_desk->messages.shown, QStringList());
        const auto words = wordsOf(m_file);
        for (const zib::LabelText& cell : zib::layout::cellTexts()) {
            QVERIFY2(words.contains(cell.caption), qPrintable(cell.caption));
            const QPointF off = words[cell.caption] - QPointF(kMargin + cell.left / kTwipsPerPoint,
                                                              kMargin + cell.top / kTwipsPerPoint);
            QVERIFY2(qAbs(off.x()) < kNear && qAbs(off.y()) < kNear, qPrintable(cell.caption));
        }
        QVERIFY(qAbs(words["Your"].x() - kMargin - 2700 / kTwipsPerPoint) < kNear);
    }
    void texts_haveTheirSizesAndColours()
    {
        QVERIFY(!m_desk->print().isNull());
        const QString page = output("pdftohtml", {"-xml", "-i", "-stdout", "-zoom", "3", m_file});
        QVERIFY2(page.contains("size=\"54\" family=\"LiberationSans\" color=\"#ff0000\""), qPrintable(page));
        QVERIFY(page.contains("size=\"36\" family=\"LiberationSans\" color=\"#0000ff\""));
        QVERIFY(page.contains("<b>Your CD Title</b>"));
        QCOMPARE(page.count("<fontspec"), 2);
    }
    void lines_lieWhereTheDocumentSays()
    {
        LabelMaker::Document document = LabelDocument;
        document.LineWidth = 3;
        LabelMaker::setLabelDocument(document);
        QVERIFY(!m_desk->print().isNull());
        const QList<QRectF> drawn = rectanglesOf(m_file, "100%,0%,0%");
        const QList<zib::LabelLine> lines = zib::layout::gridLines();
        QCOMPARE(drawn.size(), lines.size());
        for (int i = 0; i < lines.size(); ++i) {
            const QRectF expected = QRectF(QPointF(lines[i].x1, lines[i].y1) / kTwipsPerPoint,
                                           QPointF(lines[i].x2, lines[i].y2) / kTwipsPerPoint)
                                        .translated(kMargin, kMargin)
                                        .adjusted(-1.125, -1.125, 1.125, 1.125); // 3 of 96 to the inch.
            QVERIFY(qAbs(drawn[i].left() - expected.left()) < kNear);
            QVERIFY(qAbs(drawn[i].right() - expected.right()) < kNear);
            QVERIFY(qAbs(drawn[i].top() - expected.top()) < kNear);
            QVERIFY(qAbs(drawn[i].bottom() - expected.bottom()) < kNear);
        }
    }
    void table_of7200Twips_isFiveInches()
    {
        QVERIFY(!m_desk->print().isNull());
        const QList<QRectF> lines = rectanglesOf(m_file, "100%,0%,0%");
        QVERIFY(!lines.isEmpty());
        const double inches = (lines.last().center().x() - lines[lines.size() - 5].center().x()) / 72;
        QVERIFY2(qAbs(inches - 5) * 25.4 < 0.2, qPrintable(QString::number(inches)));
    }
    void table_throughADriverWithMargins_keepsScaleAndPlace()
    {
        if (!m_desk->system.run("lpadmin", {"-p", "paper", "-m", "drv:///sample.drv/generic.ppd"}))
            QSKIP("the generic printer driver is not installed");
        QVERIFY(m_desk->system.run("lpadmin",
                                   {"-p", "paper", "-o", "PageSize=A4", "-o", "print-scaling-default=fit"}));
        for (const char* saved :
             {"number-up-default=4", "fit-to-page-default=true", "page-border-default=double",
              "mirror-default=true", "scaling-default=50", "natural-scaling-default=50",
              "landscape-default=true", "orientation-requested-default=4", "page-ranges-default=2"})
            QVERIFY(m_desk->system.run("lpadmin", {"-p", "paper", "-o", saved}));
        QVERIFY(!m_desk->print().isNull());
        const QTemporaryDir folder;
        const QString pdf = folder.filePath("paper.pdf");
        output("ps2pdf", {m_file, pdf}); // What such a driver makes is PostScript.
        const QList<QRectF> lines = rectanglesOf(pdf, "100%,0%,0%");
        QVERIFY(lines.size() > 5);
        double left = 1e9;
        double right = 0;
        for (const QRectF& line : lines) {
            left = qMin(left, line.center().x() - line.width() / 2);
            right = qMax(right, line.center().x() + line.width() / 2);
        }
        QVERIFY2(qAbs(right - left - 360.75) < kNear, qPrintable(QString::number(right - left)));
        QVERIFY2(qAbs(left - (12 + 525 / kTwipsPerPoint - 0.375)) < kNear, qPrintable(QString::number(left)));
    }
    void label_onACrookedPrinter_isSetRightByItsNumbers_data()
    {
        QTest::addColumn<double>("acrossMm");
        QTest::addColumn<double>("downMm");
        QTest::addColumn<double>("scaleAcross");
        QTest::addColumn<double>("scaleDown");
        QTest::newRow("scaled") << 0.0 << 0.0 << 0.97 << 1.02;
        QTest::newRow("both") << -3.0 << 4.0 << 1.015 << 0.985;
    }
    void label_onACrookedPrinter_isSetRightByItsNumbers()
    {
        QFETCH(double, acrossMm);
        QFETCH(double, downMm);
        QFETCH(double, scaleAcross);
        QFETCH(double, scaleDown);
        if (QStandardPaths::findExecutable("gs").isEmpty())
            QSKIP("gs is not installed");
        const auto plain = zib::makePrinter()->target();
        QVERIFY(plain);
        const QString file =
            m_desk->system.addCrookedQueue("crooked", {acrossMm, downMm, scaleAcross, scaleDown},
                                           zib::mmFromTwips(plain->paperSize.height()));
        m_desk->system.setDefault("crooked");
        const QString paper = zib::makePrinter()->target()->paper;
        // As a user does it: measure the rulers, set the scale, print again, measure the cross, set the
        // shift.
        zib::Calibration right;
        const auto [across, down] = rulers(file);
        right.scaleAcross = 100 * 100.15 / across.width(); // The line is 0.15 mm thick.
        right.scaleDown = 100 * 100.15 / down.height();
        QVERIFY(zib::storeCalibration("crooked", paper, right));
        const auto [again, downAgain] = rulers(file);
        QVERIFY2(qAbs(again.width() - 100.15) < 0.1, qPrintable(QString::number(again.width())));
        right.shiftAcross = zib::kCrossMm - (again.left() + 0.075);
        right.shiftDown = zib::kCrossMm - again.center().y();
        QVERIFY(zib::storeCalibration("crooked", paper, right));
        QVERIFY(!m_desk->print().isNull());
        QCOMPARE(m_desk->messages.shown, QStringList());
        const QList<QRectF> drawn = rectanglesOf(file, "100%,0%,0%");
        const QList<zib::LabelLine> lines = zib::layout::gridLines();
        QCOMPARE(drawn.size(), lines.size());
        double worst = 0;
        for (int i = 0; i < lines.size(); ++i) {
            const QPointF first =
                QPointF(lines[i].x1, lines[i].y1) / kTwipsPerPoint + QPointF(kMargin, kMargin);
            const QPointF last =
                QPointF(lines[i].x2, lines[i].y2) / kTwipsPerPoint + QPointF(kMargin, kMargin);
            const QPointF off = drawn[i].normalized().center() - (first + last) / 2;
            const double length = qMax(drawn[i].normalized().width(), drawn[i].normalized().height());
            const double wanted = qMax(last.x() - first.x(), last.y() - first.y()) + 0.75;
            worst = qMax(worst, qMax(qAbs(length - wanted), qMax(qAbs(off.x()), qAbs(off.y()))));
        }
        qInfo("worst miss: %.3f mm", worst / kPointsPerMm);
        QVERIFY(worst < kNear);
    }
    void photo_of24Megapixels_isScaledAndPaintedAside()
    {
        QImage photo(6000, 4000, QImage::Format_RGB32);
        for (int y = 0; y < photo.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(photo.scanLine(y));
            for (int x = 0; x < photo.width(); ++x)
                line[x] = qRgb((x * 7 + y) / 80 % 256, (x + y * 3) / 60 % 256, (x ^ y) % 24 * 10);
        }
        LabelMaker::Document document = LabelDocument;
        document.BackImagePath = m_desk->folder.filePath("photo.jpg");
        QVERIFY(photo.save(document.BackImagePath));
        photo = {};
        LabelMaker::setLabelDocument(document);
        qint64 longest = 0;
        QElapsedTimer beat;
        QTimer heart;
        heart.callOnTimeout([&] { longest = qMax(longest, beat.restart()); });
        QElapsedTimer all;
        frmPreview preview(m_desk->services, {8250, 8250});
        preview.show();
        QTest::qWait(50); // Shown: the picture is fitted to the screen.
        QSignalSpy sent(&preview, &frmPreview::Sent);
        heart.start(5);
        beat.start();
        all.start();
        preview.findChild<QTimer*>("Timer1")->start(0);
        QTRY_COMPARE_WITH_TIMEOUT(sent.count(), 1, 120'000);
        const qint64 total = all.elapsed();
        heart.stop();
        QVERIFY(m_desk->system.waitForJobs());
        const double megabytes = static_cast<double>(QFileInfo(m_file).size()) / 1e6;
        qInfo("printed in %lld ms, longest pause of the window %lld ms (100 wanted), %.1f MB sent", total,
              longest, megabytes);
        QVERIFY2(megabytes < 16, qPrintable(QString::number(megabytes)));
        QVERIFY2(longest < 1000, qPrintable(QString::number(longest)));
        const QString pictures = output("pdfimages", {"-list", m_file});
        QVERIFY2(pictures.contains(QRegularExpression("image +3438 +3438 .* 600 +600 ")),
                 qPrintable(pictures));
    }
    void picture_keepsItsPixels()
    {
        QVERIFY(!m_desk->print().isNull());
        const QString pictures = output("pdfimages", {"-list", m_file});
        QCOMPARE(pictures.count("image"), 2); // The kind and the encoding of the one there is.
        QVERIFY2(pictures.contains(QRegularExpression("image +1575 +1575 .* 275 +275 ")),
                 qPrintable(pictures));
    }
    void page_looksLikeThePreview_data()
    {
        QTest::addColumn<bool>("debian");
        QTest::newRow("as sent") << false;
        QTest::newRow("Debian's PDF printer") << true;
    }
    void page_looksLikeThePreview()
    {
        QFETCH(bool, debian);
        const PdfFolder folder;
        if (debian && geteuid() != 0)
            QSKIP("Debian's PDF printer runs as root only");
        if (debian && !m_desk->system.addPdfQueue("pdf"))
            QSKIP("Debian's PDF printer is not installed");
        if (debian)
            m_desk->system.setDefault("pdf");
        const QImage preview = m_desk->print();
        QVERIFY(!preview.isNull());
        const QString pdf = debian ? folder.newest() : m_file;
        QVERIFY(!pdf.isEmpty());
        const QImage page = rendered(pdf).copy(QRect(debian ? QPoint() : QPoint(24, 24), preview.size()));
        const QImage screen = preview.convertToFormat(QImage::Format_RGB32);
        const double percent = difference(screen, page);
        const double shifted = difference(screen, page.copy(3, 3, page.width(), page.height()));
        QVERIFY2(percent * 3 < shifted, qPrintable(QString("%1 and %2 percent").arg(percent).arg(shifted)));
    }

private:
    /// A page at 96 dots to the inch.
    QImage rendered(const QString& pdf) const
    {
        const QTemporaryDir folder;
        output("pdftocairo", {"-png", "-singlefile", "-r", "96", pdf, folder.filePath("page")});
        return QImage(folder.filePath("page.png")).convertToFormat(QImage::Format_RGB32);
    }

    /// Prints the calibration page. @returns its rulers, across and down, in millimetres from the paper's
    /// corner.
    std::pair<QRectF, QRectF> rulers(const QString& file)
    {
        const auto sent = zib::printLabelPage(m_desk->services, &m_window, {}, &zib::calibrationPage);
        QRectF across;
        QRectF down;
        if (!sent || !m_desk->system.waitForJobs())
            return {};
        for (const QRectF& points : rectanglesOf(file, "0%,0%,0%")) {
            const QRectF mm =
                QRectF(points.topLeft() / kPointsPerMm, points.bottomRight() / kPointsPerMm).normalized();
            across = mm.width() > across.width() ? mm : across;
            down = mm.height() > down.height() ? mm : down;
        }
        return {across, down};
    }

    zib::IniFile m_ini;
    QWidget m_window;
    QString m_file;
    std::unique_ptr<Desk> m_desk;
};

QTEST_MAIN(TestLabelOnPaper)
#include "tst_label_on_paper.moc"
