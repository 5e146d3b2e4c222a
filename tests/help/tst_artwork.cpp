#include <QColor>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QSet>
#include <QStringDecoder>
#include <QTest>

#include <cmath>

namespace {

double linear(double channel)
{
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(QColor colour)
{
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// Contrast as WCAG 2 counts it, 1 to 21.
double contrast(QColor one, QColor other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// The share of all pixels that stand out clearly from the background, in percent.
double clearShare(const QImage& picture, QColor background)
{
    int clear = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            clear += pixel.alpha() > 200 && contrast(pixel, background) >= 2.2;
        }
    }
    return 100.0 * clear / (picture.width() * picture.height());
}

QStringList icons()
{
    return QDir(":/icons").entryList({"*.svg"});
}

} // namespace

/// Icons, pictures and tips: there, whole, and fit for what they are shown on.
class TestArtwork : public QObject
{
    Q_OBJECT
private slots:
    void icons_areAllThere();
    void icon_onLightAndDark_isClear_data();
    void icon_onLightAndDark_isClear();
    void icons_differFromEachOther();
    void splash_hasTwiceThePixelsAtTwiceTheScale();
    void label_isPale_soThatTextStandsOut();
    void tips_areManyAndDifferent();
    void programFolder_holdsTipsAndLabel();
};

void TestArtwork::icons_areAllThere()
{
    for (const char* key :
         {"add",     "write",  "up",      "down", "play",   "delete", "ripper", "converter",
          "label",   "player", "options", "help", "pause",  "stop",   "top",    "backward",
          "forward", "end",    "volume",  "open", "remove", "repeat", "list",   "zibcdburner"}) {
        QVERIFY2(icons().contains(QString(key) + ".svg"), key);
    }
}

void TestArtwork::icon_onLightAndDark_isClear_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : icons()) {
        QTest::newRow(qPrintable(name)) << name;
    }
}

void TestArtwork::icon_onLightAndDark_isClear()
{
    QFETCH(QString, name);
    for (int size : {24, 48}) {
        const QImage picture = QIcon(":/icons/" + name).pixmap(size).toImage();
        QCOMPARE(picture.size(), QSize(size, size));
        for (const QColor background : {QColor("#ffffff"), QColor("#f0f0f0"), QColor("#2b2b2b")}) {
            QVERIFY2(
                clearShare(picture, background) >= 9,
                qPrintable(QString("%1 on %2").arg(clearShare(picture, background)).arg(background.name())));
        }
    }
}

void TestArtwork::icons_differFromEachOther()
{
    QSet<QByteArray> seen;
    for (const QString& name : icons()) {
        const QImage picture =
            QIcon(":/icons/" + name).pixmap(24).toImage().convertToFormat(QImage::Format_ARGB32);
        seen.insert(QByteArray(reinterpret_cast<const char*>(picture.constBits()), picture.sizeInBytes()));
    }
    QCOMPARE(seen.size(), icons().size());
}

void TestArtwork::splash_hasTwiceThePixelsAtTwiceTheScale()
{
    QCOMPARE(QImage(":/splash/splash.png").size(), QSize(480, 300));
    QCOMPARE(QImage(":/splash/splash@2x.png").size(), QSize(960, 600));
}

void TestArtwork::label_isPale_soThatTextStandsOut()
{
    const QImage picture = QImage(ZIB_SOURCE_DIR "/data/Sample1.jpg")
                               .scaled(150, 150, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QVERIFY(!picture.isNull());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const bool table = y < 110; // where the title and the table stand at first
            QVERIFY(contrast(picture.pixelColor(x, y), Qt::blue) >= (table ? 6.0 : 3.0));
            QVERIFY(contrast(picture.pixelColor(x, y), Qt::red) >= (table ? 2.8 : 1.5));
        }
    }
}

void TestArtwork::tips_areManyAndDifferent()
{
    QFile file(ZIB_SOURCE_DIR "/data/TIPOFDAY.TXT");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(file.readAll());
    QVERIFY(!decode.hasError());
    QVERIFY(
        text.endsWith('\n')); // a line end after the last tip, and no empty line: it would be shown as a tip
    const QStringList tips = text.chopped(1).split('\n');
    QVERIFY(tips.size() >= 25);
    QCOMPARE(QSet<QString>(tips.cbegin(), tips.cend()).size(), tips.size());
    for (const QString& tip : tips) {
        QCOMPARE(tip, tip.simplified());
        QVERIFY2(tip.size() > 30 && tip.size() < 220, qPrintable(tip));
    }
}

void TestArtwork::programFolder_holdsTipsAndLabel()
{
    for (const QString name : {"TIPOFDAY.TXT", "Sample1.jpg"}) {
        QFile there(ZIB_PROGRAM_DIR "/" + name);
        QFile here(ZIB_SOURCE_DIR "/data/" + name);
        QVERIFY2(there.open(QIODevice::ReadOnly), qPrintable(name));
        QVERIFY(here.open(QIODevice::ReadOnly));
        QCOMPARE(there.readAll(), here.readAll());
    }
}

QTEST_MAIN(TestArtwork)
#include "tst_artwork.moc"
