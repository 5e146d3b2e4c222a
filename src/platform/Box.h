#pragma once

#include <QMessageBox>

namespace zib {

/// Shows one modal message box of the program's own look and waits for it. The texts are plain text.
/// @param owner nullptr stands for the active window.
/// @param preset the button that Enter presses; NoButton leaves it to the desktop.
/// @param remark stands below the text, as a paragraph of its own.
/// @returns the button that closed the box; a box closed without one gives its escape button.
QMessageBox::StandardButton showBox(QWidget* owner, QMessageBox::Icon icon, const QString& title,
                                    const QString& text,
                                    QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                                    QMessageBox::StandardButton preset = QMessageBox::NoButton,
                                    const QString& remark = {});

} // namespace zib
