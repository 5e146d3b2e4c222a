#include "common/FileDrop.h"

#include "common/NativeName.h"

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

} // namespace

FileDrop::FileDrop(QWidget* window, std::function<bool()> accepts,
                   std::function<void(const QStringList&)> take)
    : QObject(window), m_accepts(std::move(accepts)), m_take(std::move(take))
{
    window->installEventFilter(this);
}

bool FileDrop::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop)
        return false;
    auto* drop = static_cast<QDropEvent*>(event);
    const QList<QUrl> urls = drop->mimeData()->urls();
    const bool local =
        std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); });
    if (!local || !m_accepts()) // What no one would take is not accepted, so the pointer says so.
        return false;
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop)
        QMetaObject::invokeMethod(
            this, [this, paths = localFiles(drop->mimeData())] { m_take(paths); }, Qt::QueuedConnection);
    return true;
}

} // namespace zib
