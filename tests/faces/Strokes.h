#pragma once

#include <QStringList>

#include <functional>

class QPainter;
class QSize;
class QWidget;

namespace zib {

/// What is drawn, command by command: shapes, texts and pictures with their places in logical units, rounded
/// to hundredths, and what they are drawn with.
QStringList strokesOf(QWidget* widget);
QStringList strokesOf(QSize area, const std::function<void(QPainter&)>& draw);

} // namespace zib
