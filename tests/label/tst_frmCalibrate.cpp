#include "label/frmCalibrate.h"

#include "fakes/FakePrinter.h"
#include "fakes/FakeSeams.h"
#include "label/CalibrationPage.h"
#include "label/LabelSettings.h"
#include "platform/IniFile.h"

#include <QAbstractButton>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

namespace {

const zib::Calibration kCrooked{1.25, -0.5, 99.5, 101};

/// The dialog with a settings file of its own.
struct Desk
{
    Desk()
    {
        zib::setSettingsFile(folder.filePath("settings.ini"));
        fake.components.makePrinter = [this] { return std::make_unique<zib::FakePrinter>(tray); };
    }
    void open()
    {
        dialog = std::make_unique<frmCalibrate>(fake.services);
        dialog->show();
    }
    double number(const char* name) const { return dialog->findChild<QDoubleSpinBox*>(name)->value(); }
    void set(const char* name, double value) const
    {
        dialog->findChild<QDoubleSpinBox*>(name)->setValue(value);
    }
    void click(const char* name) const { dialog->findChild<QAbstractButton*>(name)->click(); }
    zib::Calibration stored() const { return zib::calibrationFor("paper", "210x297"); }

    zib::IniFile ini;
    QTemporaryDir folder;
    zib::FakeDesk fake{&ini};
    zib::FakePrinter::Tray tray;
    std::unique_ptr<frmCalibrate> dialog;
};

} // namespace

/// The numbers that set a printer right: the dialog, the settings file and the page to measure.
class TestFrmCalibrate : public QObject
{
    Q_OBJECT
private slots:
    void load_showsThePrinterAndItsNumbers()
    {
        Desk desk;
        QVERIFY(zib::storeCalibration("paper", "210x297", kCrooked));
        QVERIFY(zib::storeCalibration("other", "210x297", {9, 9, 109, 109}));
        desk.open();
        QCOMPARE(desk.dialog->findChild<QLabel*>("lblPrinter")->text(), QString("paper, 210x297 mm"));
        const QString help = desk.dialog->findChild<QLabel*>("lblHelp")->text();
        QVERIFY(help.contains("should lie 30 mm from the left"));
        QVERIFY(help.contains("each ruler should be 100 mm long"));
        QCOMPARE(desk.number("txtShiftAcross"), 1.25);
        QCOMPARE(desk.number("txtShiftDown"), -0.5);
        QCOMPARE(desk.number("txtScaleAcross"), 99.5);
        QCOMPARE(desk.number("txtScaleDown"), 101.0);
    }
    void ok_storesForThisPrinterAndPaper()
    {
        Desk desk;
        desk.open();
        desk.set("txtShiftAcross", 1.25);
        desk.set("txtShiftDown", -0.5);
        desk.set("txtScaleAcross", 99.5);
        desk.set("txtScaleDown", 101);
        QCOMPARE(desk.stored(), zib::Calibration());
        desk.click("OKButton");
        QVERIFY(!desk.dialog->isVisible());
        QCOMPARE(desk.stored(), kCrooked);
        QCOMPARE(zib::calibrationFor("paper", "148x210"), zib::Calibration());
        QFile file(gSettingsFile);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()), QString("[Label, paper, 210x297]\nShift Across=1.25\n"
                                                            "Shift Down=-0.50\nScale Across=99.50\n"
                                                            "Scale Down=101.00\n"));
    }
    void numbers_ofAPrinterWithBrackets_areItsOwn()
    {
        Desk desk;
        QVERIFY(zib::storeCalibration("Laser [2] up", "210x297", kCrooked));
        QFile file(gSettingsFile);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().startsWith("[Label, Laser _2_ up, 210x297]\n"));
    }
    void cancel_storesNothing()
    {
        Desk desk;
        desk.open();
        desk.set("txtShiftAcross", 1);
        desk.click("CancelButton");
        QVERIFY(!desk.dialog->isVisible());
        QCOMPARE(desk.stored(), zib::Calibration());
    }
    void reset_putsBackWhatChangesNothing()
    {
        Desk desk;
        QVERIFY(zib::storeCalibration("paper", "210x297", kCrooked));
        desk.open();
        desk.click("cmdReset");
        QCOMPARE(desk.stored(), kCrooked);
        desk.click("OKButton");
        QCOMPARE(desk.stored(), zib::Calibration());
    }
    void testPage_isPrintedWithTheNumbersShown()
    {
        Desk desk;
        desk.open();
        desk.set("txtShiftAcross", 10);
        desk.click("cmdTestPage");
        QCOMPARE(desk.tray.jobs.size(), 1);
        QCOMPARE(desk.dialog->findChild<QLabel*>("lblState")->text(), QString("Sent to paper"));
        QCOMPARE(desk.stored(), zib::Calibration()); // It is a trial.
        const QImage paper = desk.tray.jobs[0].paper;
        const int y = qRound(30 / 25.4 * 96 - 24);
        QVERIFY(qGray(paper.pixel(qRound(139 / 25.4 * 96 - 24), y)) < 200);
        QCOMPARE(paper.pixelColor(qRound(142 / 25.4 * 96 - 24), y), QColor(Qt::white));
        desk.tray.answer = zib::Failure{zib::Failure::Kind::Busy, "The printer is busy."};
        desk.click("cmdTestPage");
        QCOMPARE(desk.fake.messages.shown, QStringList{"c: The printer is busy."});
        QCOMPARE(desk.dialog->findChild<QLabel*>("lblState")->text(), QString());
    }
    void load_withoutAPrinter_saysWhy()
    {
        Desk desk;
        desk.tray.answer = zib::Failure{zib::Failure::Kind::NotFound, "There is no default printer."};
        desk.open();
        QVERIFY(!desk.dialog->loaded());
        QCOMPARE(desk.dialog->loaded().error().detail, QString("There is no default printer."));
    }
    void ok_whenTheFileCannotBeWritten_tellsAndStays()
    {
        Desk desk;
        zib::setSettingsFile("/nowhere/settings.ini");
        desk.open();
        desk.click("OKButton");
        QCOMPARE(desk.fake.messages.shown.size(), 1);
        QVERIFY(desk.fake.messages.shown[0].contains("/nowhere/settings.ini"));
        QVERIFY(desk.dialog->isVisible());
    }
    void numbers_thatAreNone_changeNothing_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("shift");
        QTest::newRow("comma") << "1,5" << 1.5;
        QTest::newRow("words") << "much" << 0.0;
        QTest::newRow("too far") << "26" << 0.0;
        QTest::newRow("endless") << "inf" << 0.0;
        QTest::newRow("nothing") << "" << 0.0;
    }
    void numbers_thatAreNone_changeNothing()
    {
        QFETCH(QString, text);
        QFETCH(double, shift);
        const Desk desk;
        QFile file(gSettingsFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Label, paper, 210x297]\nShift Across=" + text.toUtf8() + "\nScale Across=50\n");
        file.close();
        QCOMPARE(desk.stored(), (zib::Calibration{shift, 0, 100, 100}));
    }
    void decimals_areTypedWithPointOrComma_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("typed");
        for (const QLocale& locale : {QLocale(QLocale::English), QLocale(QLocale::German)})
            for (const char* typed : {"0.5", "0,5"})
                QTest::addRow("%s %s", qPrintable(locale.name()), typed) << locale << QString(typed);
    }
    void decimals_areTypedWithPointOrComma()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, typed);
        Desk desk;
        desk.open();
        for (auto* box : desk.dialog->findChildren<QDoubleSpinBox*>()) {
            box->setLocale(locale);
            box->setMinimum(0);
            box->selectAll();
            QTest::keyClicks(box, typed);
            QCOMPARE(box->value(), 0.5);
        }
    }
    void testPage_namesAPrinterOfAnyName()
    {
        Printer::Target odd;
        QImage pages[2];
        for (int i = 0; i < 2; ++i) {
            odd.printer = i ? "Laser%3" : "Laser30";
            odd.paper = "210x297";
            odd.paperSize = QSizeF(11906, 16838);
            pages[i] = QImage(800, 400, QImage::Format_RGB32);
            pages[i].fill(Qt::white);
            QPainter painter(&pages[i]);
            painter.scale(1 / 15.0, 1 / 15.0);
            zib::paintCalibrationPage(painter, odd, {});
        }
        QVERIFY(pages[0] != pages[1]); // "%3" is a part of the name, not the place of a number.
    }
    void testPage_hasACrossAndTwoRulers()
    {
        Printer::Target target;
        target.paperSize = QSizeF(11906, 16838);
        constexpr int kDpi = 300; // every mark is wider than a dot
        QImage page(8 * kDpi, 12 * kDpi, QImage::Format_RGB32);
        page.fill(Qt::white);
        QPainter painter(&page);
        painter.scale(kDpi / 1440.0, kDpi / 1440.0);
        zib::paintCalibrationPage(painter, target, {});
        painter.end();
        const auto isInked = [&page](double xMm, double yMm) {
            const QPoint at(qRound(xMm / 25.4 * kDpi), qRound(yMm / 25.4 * kDpi));
            int darkest = 255;
            for (int x = -1; x <= 1; ++x)
                for (int y = -1; y <= 1; ++y)
                    darkest = std::min(darkest, qGray(page.pixel(at + QPoint(x, y))));
            return darkest < 200;
        };
        for (const auto& [along, inked] : QList<std::pair<double, bool>>{{18, false},
                                                                         {21, true},
                                                                         {24, true},
                                                                         {29, true},
                                                                         {31, true},
                                                                         {80, true},
                                                                         {129, true},
                                                                         {132, false}}) {
            QCOMPARE(isInked(along, 30), inked);
            QCOMPARE(isInked(30, along), inked);
        }
        for (const auto& [mm, length] : QList<std::pair<int, double>>{
                 {1, 2}, {4, 2}, {5, 3.5}, {6, 2}, {10, 5}, {12, 2}, {55, 3.5}, {90, 5}, {99, 2}}) {
            QVERIFY(isInked(30 + mm, 30.5 - length) && isInked(30.5 - length, 30 + mm));
            QVERIFY(!isInked(30 + mm, 29.2 - length) && !isInked(29.2 - length, 30 + mm));
        }
    }
    void disc_hasTheSizeOfTheSettingsFile()
    {
        const Desk desk;
        QCOMPARE(zib::discSize().outer, 118.0);
        QCOMPARE(zib::discSize().hub, 22.0);
        QFile file(gSettingsFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Label]\nDisc Diameter=116.5\nHub Hole=46\n");
        file.close();
        QCOMPARE(zib::discSize().outer, 116.5);
        QCOMPARE(zib::discSize().hub, 46.0);
    }
    void rulers_fitTheirPaper()
    {
        QCOMPARE(zib::rulerMm(QSizeF(11906, 16838)), 100.0); // A4
        QCOMPARE(zib::rulerMm(QSizeF(5953, 8391)), 60.0);    // A6
    }
};

QTEST_MAIN(TestFrmCalibrate)
#include "tst_frmCalibrate.moc"
