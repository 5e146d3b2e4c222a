// Draws an icon at the sizes it usually has: draw ICON.svg ICON.drawn packed|plain SIDE...
// Plain pictures are read at once, and take four bytes a pixel.
#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QImage>
#include <QMap>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace {

constexpr int kPlain = 100; // What the PNG writer calls its best quality is no compression.

QByteArray drawn(QSvgRenderer& icon, int side, int quality)
{
    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    icon.render(&painter);
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, "PNG", quality) ? png : QByteArray();
}

} // namespace

int main(int argc, char* argv[])
{
    QSvgRenderer icon;
    if (argc < 5 || !icon.load(QFile::decodeName(argv[1]))) {
        std::fputs("usage: draw ICON.svg ICON.drawn packed|plain SIDE...\n", stderr);
        return 1;
    }
    QMap<int, QByteArray> pictures;
    const int quality = QByteArray(argv[3]) == "plain" ? kPlain : -1;
    for (int i = 4; i < argc; ++i)
        pictures.insert(QByteArray(argv[i]).toInt(), drawn(icon, QByteArray(argv[i]).toInt(), quality));
    QFile file(QFile::decodeName(argv[2]));
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    QDataStream out(&file);
    out.setVersion(QDataStream::Qt_6_0);
    out << pictures;
    return file.flush() ? 0 : 1;
}
