#pragma once

#include <QIcon>
#include <QIconEngine>
#include <QIconEnginePlugin>

/// An icon of the program whose usual sizes were drawn when the program was built; all others are drawn from
/// its SVG file when they are asked for, which takes a hundred times as long.
class DrawnIcon final : public QIconEngine
{
public:
    /// @param file ":/drawn/NAME.drawn", made from ":/icons/NAME.svg".
    void addFile(const QString& file, const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QIconEngine* clone() const override;
    QString key() const override;
    bool isNull() override;

private:
    QPixmap normal(int side) const;
    QByteArray drawn(int side) const;

    QString m_file;
};

/// Lets the forms name such icons as they name any other.
class DrawnIconPlugin final : public QIconEnginePlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QIconEngineFactoryInterface" FILE "drawnicon.json")
public:
    QIconEngine* create(const QString& file) override;
};
