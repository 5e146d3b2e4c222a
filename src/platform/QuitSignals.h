#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace zib {

/// Turns the signals by which the system asks a program to end (SIGTERM, SIGINT, SIGHUP) into an event of the
/// thread that made this. At most one stands at a time; made before any thread is started.
class QuitSignals final : public QObject
{
    Q_OBJECT
public:
    QuitSignals();
    ~QuitSignals() override;

signals:
    void raised();

private:
    void take();

    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zib
