#include "DrawnIcon.h"

#include <QDataStream>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QtPlugin>

#include <algorithm>

Q_IMPORT_PLUGIN(DrawnIconPlugin)

void DrawnIcon::addFile(const QString& file, const QSize&, QIcon::Mode, QIcon::State)
{
    m_file = file;
}

void DrawnIcon::paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state)
{
    const qreal scale = painter->device() ? painter->device()->devicePixelRatio() : qreal(1);
    painter->drawPixmap(place, pixmap(place.size() * scale, mode, state));
}

QPixmap DrawnIcon::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state)
{
    const int side = std::min(size.width(), size.height());
    if (isNull() || side <= 0)
        return {};
    const QPixmap picture = normal(side);
    // The style knows how what cannot be clicked looks.
    return mode == QIcon::Disabled || mode == QIcon::Selected
               ? QIcon(picture).pixmap(picture.size(), 1.0, mode, state)
               : picture;
}

QSize DrawnIcon::actualSize(const QSize& size, QIcon::Mode, QIcon::State)
{
    const int side = std::min(size.width(), size.height());
    return {side, side};
}

QIconEngine* DrawnIcon::clone() const
{
    return new DrawnIcon(*this);
}

QString DrawnIcon::key() const
{
    return QStringLiteral("drawn");
}

bool DrawnIcon::isNull()
{
    return m_file.isEmpty();
}

/// What can be clicked; icons of the same file share it.  @param side device pixels.
QPixmap DrawnIcon::normal(int side) const
{
    const QString key = QStringLiteral("%1 %2").arg(m_file).arg(side);
    QPixmap picture;
    if (QPixmapCache::find(key, &picture))
        return picture;
    if (!picture.loadFromData(drawn(side), "PNG"))
        picture = QIcon(QStringLiteral(":/icons/%1.svg").arg(QFileInfo(m_file).baseName()))
                      .pixmap(QSize(side, side), 1.0);
    QPixmapCache::insert(key, picture);
    return picture;
}

/// @returns PNG data; empty where this size was not drawn.
QByteArray DrawnIcon::drawn(int side) const
{
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QMap<int, QByteArray> pictures;
    QDataStream in(&file);
    in.setVersion(QDataStream::Qt_6_0);
    in >> pictures;
    return pictures.value(side);
}

QIconEngine* DrawnIconPlugin::create(const QString& file)
{
    auto* icon = new DrawnIcon;
    if (!file.isEmpty())
        icon->addFile(file, {}, QIcon::Normal, QIcon::Off);
    return icon;
}
