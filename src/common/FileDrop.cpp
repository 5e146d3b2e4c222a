#include "common/FileDrop.h"

#include "common/NativeName.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

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
    if (!drop->mimeData()->hasUrls() || !m_accepts())
        return false;
    drop->acceptProposedAction();
    if (event->type() == QEvent::Drop)
        QMetaObject::invokeMethod(
            this, [this, paths = localFiles(drop->mimeData())] { m_take(paths); }, Qt::QueuedConnection);
    return true;
}

} // namespace zib
