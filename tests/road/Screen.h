#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// A virtual screen with a keyboard: what a user at a real one would do, from outside the program.
class Screen
{
public:
    Screen();
    ~Screen();
    Q_DISABLE_COPY_MOVE(Screen)

    bool isOn() const { return !m_display.isEmpty(); }
    /// The environment of a program that is to appear here.
    QProcessEnvironment environment() const;

    /// Waits until a window whose title matches @p title (a regular expression) is there.
    /// @returns its id, or an empty text after a minute.
    QString waitForWindow(const QString& title) const;
    /// Whether such a window is there now.
    bool hasWindow(const QString& title) const { return !find(title).isEmpty(); }
    /// Presses keys with the window in front, as in "ctrl+f".
    void press(const QString& window, const QString& keys) const;
    void type(const QString& window, const QString& text) const;
    /// What is on the screen, as a PNG file.
    void picture(const QString& file) const;

private:
    QString find(const QString& title) const;
    QByteArray xdotool(const QStringList& arguments) const;

    QProcess m_server;
    QString m_display;
};
