#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QTest>

#include <array>

namespace {

constexpr int kRounding = 2; // Of a channel: PNG keeps colours apart from their opacity.
constexpr std::array kUsualScales{1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};

QIcon drawn(const QString& name)
{
    return QIcon(":/drawn/" + name + ".drawn");
}

QIcon vector(const QString& name)
{
    return QIcon(":/icons/" + name + ".svg");
}

int channelsApart(QRgb one, QRgb other)
{
    return std::max({std::abs(qAlpha(one) - qAlpha(other)), std::abs(qRed(one) - qRed(other)),
                     std::abs(qGreen(one) - qGreen(other)), std::abs(qBlue(one) - qBlue(other))});
}

/// Whether two pictures look the same on any background.
bool same(const QPixmap& one, const QPixmap& other)
{
    const QImage a = one.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage b = other.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (a.isNull() || a.size() != b.size() || a.devicePixelRatio() != b.devicePixelRatio())
        return false;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const auto p = reinterpret_cast<const QRgb*>(a.constScanLine(y))[x];
            const auto q = reinterpret_cast<const QRgb*>(b.constScanLine(y))[x];
            if (channelsApart(p, q) > kRounding)
                return false;
        }
    return true;
}

QStringList names()
{
    QStringList names;
    for (const QString& file : QDir(":/drawn").entryList({"*.drawn"}))
        names << QFileInfo(file).baseName();
    return names;
}

} // namespace

/// Icons drawn when the program was built look as if they were drawn now.
class TestDrawnIcon : public QObject
{
    Q_OBJECT
private slots:
    void icons_areThose_ofTheMainWindow();
    void icon_looksAsItsVectors_data();
    void icon_looksAsItsVectors();
    void usualSizes_areNotDrawnAgain();
    void nothing_isShown_forNoSize();
    void painted_fillsItsPlace_onAFineScreen();
};

void TestDrawnIcon::icons_areThose_ofTheMainWindow()
{
    for (const char* name : {"add", "write", "up", "down", "play", "delete", "ripper", "converter", "label",
                             "player", "options", "help", "zibcdburner"})
        QVERIFY2(names().contains(name), name);
    QCOMPARE(names().size(), 13);
}

void TestDrawnIcon::icon_looksAsItsVectors_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : names())
        QTest::newRow(qPrintable(name)) << name;
}

void TestDrawnIcon::icon_looksAsItsVectors()
{
    QFETCH(QString, name);
    QIcon icon = drawn(name);
    for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled, QIcon::Active, QIcon::Selected})
        for (const int side : {16, 32, 33, 64, 150}) {
            const QPixmap once = icon.pixmap(QSize(side, side), 1.0, mode);
            QVERIFY2(same(once, vector(name).pixmap(QSize(side, side), 1.0, mode)),
                     qPrintable(QString("%1 in mode %2").arg(side).arg(mode)));
        }
    for (const double scale : kUsualScales)
        QVERIFY2(same(icon.pixmap(QSize(32, 32), scale), vector(name).pixmap(QSize(32, 32), scale)),
                 qPrintable(QString::number(scale)));
    QCOMPARE(icon.actualSize(QSize(32, 32)), vector(name).actualSize(QSize(32, 32)));
    const QIcon copy = icon; // NOLINT: a second owner, so that the next line makes a copy of what draws
    icon.addFile(":/drawn/help.drawn");
    QVERIFY(same(copy.pixmap(QSize(32, 32), 1.0), vector(name).pixmap(QSize(32, 32), 1.0)));
}

/// What draws an icon again takes many times as long as what only unpacks it.
void TestDrawnIcon::usualSizes_areNotDrawnAgain()
{
    for (const double scale : kUsualScales)
        for (const QString& name : names()) {
            const int side = name == "zibcdburner" ? 64 : qRound(32 * scale);
            QFile file(":/drawn/" + name + ".drawn");
            QVERIFY(file.open(QIODevice::ReadOnly));
            QMap<int, QByteArray> pictures;
            QDataStream in(&file);
            in.setVersion(QDataStream::Qt_6_0);
            in >> pictures;
            QCOMPARE(QImage::fromData(pictures.value(side), "PNG").size(), QSize(side, side));
        }
}

void TestDrawnIcon::nothing_isShown_forNoSize()
{
    QVERIFY(drawn("add").pixmap(QSize(0, 0), 1.0).isNull());
    QVERIFY(!drawn("add").isNull());
}

void TestDrawnIcon::painted_fillsItsPlace_onAFineScreen()
{
    QImage screen(64, 64, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(2);
    screen.fill(Qt::transparent);
    QPainter painter(&screen);
    drawn("delete").paint(&painter, 0, 0, 32, 32);
    painter.end();
    QImage expected = vector("delete").pixmap(QSize(64, 64), 1.0).toImage();
    screen.setDevicePixelRatio(1);
    QVERIFY(same(QPixmap::fromImage(screen), QPixmap::fromImage(expected)));
}

QTEST_MAIN(TestDrawnIcon)
#include "tst_drawnicon.moc"
