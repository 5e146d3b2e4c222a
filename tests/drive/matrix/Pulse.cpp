#include "Pulse.h"

#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <qpa/qwindowsysteminterface.h>

#include <algorithm>
#include <chrono>

namespace zib {

namespace {

constexpr int kBeatMs = 10;

/// The window that takes the user's input at the moment.
QWindow* inputWindow()
{
    const QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr)
        return modal->windowHandle();
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (window->isVisible() && window->type() != Qt::Desktop)
            return window;
    return nullptr;
}

} // namespace

Pulse::Pulse(QObject* parent) : QObject(parent), m_sleeper([this] { oversleep(); })
{
    qApp->installEventFilter(this);
    connect(&m_timer, &QTimer::timeout, this, &Pulse::beat);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.start(kBeatMs);
    m_sinceAnswer.start();
}

Pulse::~Pulse()
{
    m_ends = true;
    m_sleeper.join();
}

void Pulse::reset()
{
    m_longest = 0;
    m_starvation = 0;
    m_sinceAnswer.restart();
}

/// The event goes into the queue of the window system; what excludes user input leaves it there.
void Pulse::beat()
{
    QWindow* window = inputWindow();
    if (window == nullptr) {
        m_sinceAnswer.restart(); // nothing the user could point at
        return;
    }
    m_side = 3 - m_side; // a pointer that stays where it is does not move
    const QPointF local(m_side, 1);
    QWindowSystemInterface::handleMouseEvent<QWindowSystemInterface::AsynchronousDelivery>(
        window, local, window->mapToGlobal(local), Qt::NoButton, Qt::NoButton, QEvent::MouseMove);
    m_longest = std::max(m_longest, m_sinceAnswer.elapsed());
}

bool Pulse::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseMove && watched->isWindowType())
        m_longest = std::max(m_longest, m_sinceAnswer.restart());
    return QObject::eventFilter(watched, event);
}

void Pulse::oversleep()
{
    while (!m_ends) {
        const auto before = std::chrono::steady_clock::now();
        std::this_thread::sleep_for(std::chrono::milliseconds(kBeatMs));
        const auto slept =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - before);
        m_starvation = std::max<qint64>(m_starvation, slept.count() - kBeatMs);
    }
}

} // namespace zib
