#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

class QWidget;

namespace demo {

/// Plays the user: looks several times a second which modal window is open, does there what that window's
/// scene says, and takes pictures. A window without a scene is pictured and closed.
class Director final : public QObject
{
    Q_OBJECT
public:
    /// What to do with a window. Called again and again while it is open; the visit counts the calls from 1.
    using Scene = std::function<void(QWidget* window, int visit)>;

    /// @param pictures folder of the pictures; made when it is missing.
    explicit Director(const QString& pictures, QObject* parent = nullptr);

    void setScene(const QString& window, const Scene& scene) { m_scenes.insert(window, scene); }
    /// Saves a picture of the window under @p name, or under the window's own name.
    void shoot(QWidget* window, const QString& name = {});
    /// Pictures taken so far.
    const QStringList& pictures() const { return m_pictures; }
    /// Windows that stayed open so long that they were given up.
    const QStringList& givenUp() const { return m_givenUp; }

private:
    void look();
    void meet(QWidget* window);

    QString m_folder;
    QHash<QString, Scene> m_scenes;
    QStringList m_pictures;
    QStringList m_givenUp;
    QTimer m_timer;
};

/// Presses a button of a window, found by its name.
void press(QWidget* window, const QString& button);

} // namespace demo
