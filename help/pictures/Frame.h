#pragma once

#include <QPixmap>
#include <QString>

/// Puts a window's picture into a plain frame with a title bar, as a desktop would.
QPixmap framed(const QPixmap& window, const QString& title, bool dialog);
