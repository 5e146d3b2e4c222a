#include "road/Screen.h"

#include <QElapsedTimer>
#include <QThread>

namespace {

constexpr int kPatienceMs = 60000;
constexpr int kPollMs = 100;

} // namespace

Screen::Screen()
{
    // Without resetting: a program that comes while the last tool goes would find nobody.
    m_server.start("Xvfb",
                   {"-displayfd", "1", "-screen", "0", "1600x1200x24", "-nolisten", "tcp", "-noreset"});
    if (m_server.waitForStarted() && m_server.waitForReadyRead(kPatienceMs))
        m_display = ":" + QString::fromLatin1(m_server.readLine()).trimmed();
}

Screen::~Screen()
{
    m_server.terminate();
    if (!m_server.waitForFinished(10000))
        m_server.kill();
    m_server.waitForFinished();
}

QProcessEnvironment Screen::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", m_display);
    environment.insert("QT_QPA_PLATFORM", "xcb");
    environment.remove("WAYLAND_DISPLAY");
    return environment;
}

QByteArray Screen::xdotool(const QStringList& arguments) const
{
    QProcess tool;
    tool.setProcessEnvironment(environment());
    tool.start("xdotool", arguments);
    tool.waitForFinished(kPatienceMs);
    return tool.readAllStandardOutput();
}

QString Screen::find(const QString& title) const
{
    const QByteArray ids = xdotool({"search", "--onlyvisible", "--name", title});
    return QString::fromLatin1(ids.trimmed().split('\n').last());
}

QString Screen::waitForWindow(const QString& title) const
{
    QElapsedTimer clock;
    clock.start();
    QString window = find(title);
    while (window.isEmpty() && !clock.hasExpired(kPatienceMs)) {
        QThread::msleep(kPollMs);
        window = find(title);
    }
    return window;
}

void Screen::press(const QString& window, const QString& keys) const
{
    xdotool({"windowfocus", "--sync", window, "key", "--clearmodifiers", keys});
}

void Screen::type(const QString& window, const QString& text) const
{
    xdotool({"windowfocus", "--sync", window, "type", "--delay", "15", text});
}

void Screen::picture(const QString& file) const
{
    QProcess tool;
    tool.setProcessEnvironment(environment());
    tool.start("import", {"-window", "root", file});
    tool.waitForFinished(kPatienceMs);
}
