#pragma once

#include <QCursor>
#include <QPointer>
#include <QWidget>

namespace zib {

/// Shows the hourglass over a window for as long as it lives, and always puts the old pointer back.
class WaitPointer
{
public:
    explicit WaitPointer(QWidget* window) : m_window(window) { m_window->setCursor(Qt::WaitCursor); }
    ~WaitPointer()
    {
        if (m_window)
            m_window->unsetCursor();
    }
    Q_DISABLE_COPY_MOVE(WaitPointer)

private:
    QPointer<QWidget> m_window;
};

} // namespace zib
