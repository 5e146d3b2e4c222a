#include "Director.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QPixmap>

namespace demo {

namespace {

constexpr const char* kVisits = "demoVisits";
constexpr int kLookMs = 15;
constexpr int kMostVisits = 5 * 60 * 1000 / kLookMs; ///< Looks at one window before it is given up.

} // namespace

Director::Director(const QString& pictures, QObject* parent) : QObject(parent), m_folder(pictures)
{
    QDir().mkpath(pictures);
    connect(&m_timer, &QTimer::timeout, this, &Director::look);
    m_timer.start(kLookMs);
}

void Director::shoot(QWidget* window, const QString& name)
{
    const QString file = (name.isEmpty() ? window->objectName() : name) + QStringLiteral(".png");
    if (window->grab().save(m_folder + u'/' + file) && !m_pictures.contains(file))
        m_pictures << file;
}

/// A timer does not fire inside its own event, so the scene is played behind it: then windows that the scene
/// opens are met too.
void Director::look()
{
    if (QWidget* window = QApplication::activeModalWidget())
        QMetaObject::invokeMethod(
            window, [this, window] { meet(window); }, Qt::QueuedConnection);
}

void Director::meet(QWidget* window)
{
    if (window != QApplication::activeModalWidget())
        return;
    const int visit = window->property(kVisits).toInt() + 1;
    window->setProperty(kVisits, visit);
    if (visit > kMostVisits) {
        m_givenUp << window->objectName();
        window->close();
    } else if (const auto scene = m_scenes.constFind(window->objectName()); scene != m_scenes.constEnd()) {
        const Scene play = *scene;
        play(window, visit);
    } else if (visit == 3) { // Painted by now.
        shoot(window, window->objectName().isEmpty() ? QStringLiteral("box") : QString());
        window->close();
    }
}

void press(QWidget* window, const QString& button)
{
    if (auto* found = window->findChild<QAbstractButton*>(button))
        found->click();
}

} // namespace demo
