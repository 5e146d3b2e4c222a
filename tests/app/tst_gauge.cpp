#include "app/CapacityGauge.h"
#include "common/GenralMacro.h"

#include <QImage>
#include <QTest>

namespace {

const QColor kGrey(128, 128, 128);
const QColor kBlue(0, 0, 255);
const QColor kGreen(0, 255, 0);
const QColor kYellow(255, 255, 0);
const QColor kRed(255, 0, 0);

/// A gauge of 1001 pixels, so that a minute is ten pixels wide.
QImage painted(double minutes, const QPalette& palette = {})
{
    zib::GlobalsScope globals;
    zib::setTotalMinutes(minutes);
    zib::CapacityGauge gauge;
    gauge.setPalette(palette);
    gauge.resize(1001, gauge.sizeHint().height());
    return gauge.grab().toImage();
}

/// The colour of the trough at @p minute, or the frame's own.
QColor bandAt(const QImage& image, double minute)
{
    return image.pixelColor(static_cast<int>(1 + minute * 10), 8);
}

int darkPixels(const QImage& image, const QRect& area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixelColor(x, y).lightness() < 90 ? 1 : 0;
    return count;
}

} // namespace

/// The capacity gauge, pixel by pixel: 15 twips to the pixel.
class TestGauge : public QObject
{
    Q_OBJECT
private slots:
    void bands_upToTheTotal_haveTheirColours_data()
    {
        QTest::addColumn<double>("minutes");
        QTest::addColumn<double>("at");
        QTest::addColumn<QColor>("color");
        const QColor white(Qt::white);
        QTest::newRow("empty") << 0.0 << 0.2 << white;
        QTest::newRow("half a minute") << 0.5 << 0.2 << kBlue;
        QTest::newRow("behind it") << 0.5 << 0.8 << white;
        QTest::newRow("below 60") << 60.0 << 59.8 << kBlue;
        QTest::newRow("at 60 no green") << 60.0 << 60.2 << white;
        QTest::newRow("green") << 70.0 << 65.0 << kGreen;
        QTest::newRow("behind green") << 70.0 << 70.2 << white;
        QTest::newRow("yellow") << 85.0 << 77.0 << kYellow;
        QTest::newRow("red") << 85.0 << 84.8 << kRed;
        QTest::newRow("behind red") << 85.0 << 85.2 << white;
        QTest::newRow("85 keeps blue") << 85.0 << 30.0 << kBlue;
        QTest::newRow("85 keeps green") << 85.0 << 73.8 << kGreen;
        QTest::newRow("85, below 60") << 85.0 << 59.8 << kBlue;
        QTest::newRow("85, above 60") << 85.0 << 60.2 << kGreen;
        QTest::newRow("85, above 74") << 85.0 << 74.2 << kYellow;
        QTest::newRow("85, below 80") << 85.0 << 79.8 << kYellow;
        QTest::newRow("85, above 80") << 85.0 << 80.2 << kRed;
        QTest::newRow("full") << 100.0 << 99.5 << kRed;
        QTest::newRow("beyond the scale") << 5000.0 << 99.5 << kRed;
    }
    void bands_upToTheTotal_haveTheirColours()
    {
        QFETCH(double, minutes);
        QFETCH(double, at);
        QTEST(bandAt(painted(minutes), at), "color");
    }
    void bands_whateverTheTotal_stayInsideTheFrame()
    {
        const QImage image = painted(5000);
        QCOMPARE(image.pixelColor(500, 4), kGrey);
        QCOMPARE(image.pixelColor(500, 5), kBlue);
        QCOMPARE(image.pixelColor(500, 11), kBlue);
        QCOMPARE(image.pixelColor(500, 12), kGrey);
        QCOMPARE(image.pixelColor(1000, 8), kGrey);
        QCOMPARE(image.pixelColor(0, 8), kGrey);
    }
    void scale_hasTicksOfThreeLengths()
    {
        const QImage image = painted(0);
        const QColor background = image.pixelColor(3, 2);
        for (int minute = 0; minute <= 100; ++minute) {
            const int x = minute * 10;
            const int bottom = minute % 10 == 0 ? 23 : minute % 5 == 0 ? 21 : 19;
            QCOMPARE(image.pixelColor(x, 15), kGrey);
            QCOMPARE(image.pixelColor(x, bottom - 1), kGrey);
            if (minute % 10 != 0)
                QCOMPARE(image.pixelColor(x, bottom), background);
        }
        QCOMPARE(image.pixelColor(5, 15), kGrey);
        QCOMPARE(image.pixelColor(5, 16), background);
    }
    void labels_standBelowTheirTicksAndInsideThePanel()
    {
        const QImage image = painted(0);
        const int top = 24;
        const int height = image.height() - top;
        QVERIFY(darkPixels(image, {0, top, 27, height}) > 10);
        for (int i = 1; i < 10; ++i)
            QVERIFY(darkPixels(image, {i * 100 - 13, top, 27, height}) > 10);
        QVERIFY(darkPixels(image, {974, top, 26, height}) > 20);
        QCOMPARE(darkPixels(image, {1000, top, 1, height}), 0); // Nothing is cut off at the edge.
        QCOMPARE(darkPixels(image, {940, top, 33, height}), 0);
        QCOMPARE(darkPixels(image, {40, top, 40, height}), 0);
    }
    void labels_inEveryTheme_areBlack()
    {
        QPalette palette;
        palette.setColor(QPalette::Window, Qt::white);
        const QImage usual = painted(0, palette);
        for (const QColor& letters : {QColor(Qt::white), kRed, kBlue}) {
            palette.setColor(QPalette::WindowText, letters);
            QCOMPARE(painted(0, palette), usual);
        }
        QVERIFY(darkPixels(usual, {0, 24, usual.width(), usual.height() - 24}) > 50);
    }

    void background_followsALightThemeAndStaysReadableInADarkOne()
    {
        QPalette light;
        light.setColor(QPalette::Window, QColor(250, 240, 230));
        QCOMPARE(painted(0, light).pixelColor(3, 2), QColor(250, 240, 230));
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(30, 30, 30));
        const QImage image = painted(0, dark);
        QVERIFY(image.pixelColor(3, 2).lightness() > 160);
        QVERIFY(darkPixels(image, {974, 24, 26, image.height() - 24}) > 20);
        for (const auto& [window, shown] : {std::pair(160, 160), {159, 200}}) {
            QPalette grey;
            grey.setColor(QPalette::Window, QColor(window, window, window));
            QCOMPARE(painted(0, grey).pixelColor(3, 2), QColor(shown, shown, shown));
        }
    }
};

QTEST_MAIN(TestGauge)
#include "tst_gauge.moc"
