#include "common/FileDrop.h"

#include "common/NativeName.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include <algorithm>

namespace zib {

namespace {

QStringList localFiles(const QMimeData* data)
{
    QStringList paths;
    for (const QUrl& url : data->urls())
        if (const QString path = pathOfUrl(url); !path.isEmpty())
            paths << path;
    return paths;
}

/// Whether another window has to be answered first. Keys and clicks end there, but not what is dropped.
bool isBlocked(const QObject* window)
{
    const QWidget* modal = QApplication::activeModalWidget();
    return modal != nullptr && static_cast<const QObject*>(modal) != window;
}

} // namespace

FileDrop::FileDrop(QWidget* window, std::function<bool()> accepts,
                   std::function<void(const QStringList&)> take)
    : QObject(window), m_accepts(std::move(accepts)), m_take(std::move(take))
{
    window->installEventFilter(this);
}

bool FileDrop::eventFilter(QObject* window, QEvent* event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return false;
    auto* drop = static_cast<QDropEvent*>(event);
    const QList<QUrl> urls = drop->mimeData()->urls();
    const bool local =
        std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); });
    if (!local || isBlocked(window) || !m_accepts())
        return false; // What no one would take is not accepted, so the pointer says so.
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop)
        QMetaObject::invokeMethod(
            this, [this, paths = localFiles(drop->mimeData())] { m_take(paths); }, Qt::QueuedConnection);
    return true;
}

} // namespace zib
