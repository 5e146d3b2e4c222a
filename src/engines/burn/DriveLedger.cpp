#include "engines/burn/DriveLedger.h"

#include <QList>

#include <algorithm>
#include <mutex>
#include <utility>

namespace zib::DriveLedger {

namespace {

std::mutex g_mutex;

QList<std::pair<QString, Use>>& entries()
{
    // Never destroyed: threads that hang may outlive everything else.
    static auto* const list = new QList<std::pair<QString, Use>>;
    return *list;
}

} // namespace

Entry::Entry(QString path, Use use) : m_path(std::move(path)), m_use(use)
{
    const std::lock_guard lock(g_mutex);
    entries() << std::pair(m_path, m_use);
}

Entry::~Entry()
{
    const std::lock_guard lock(g_mutex);
    entries().removeOne(std::pair(m_path, m_use));
}

Use useOf(const QString& path)
{
    const std::lock_guard lock(g_mutex);
    Use gravest = Use::None;
    for (const auto& [entered, use] : std::as_const(entries()))
        if (entered == path)
            gravest = std::max(gravest, use);
    return gravest;
}

bool anyHanging()
{
    const std::lock_guard lock(g_mutex);
    return std::any_of(entries().cbegin(), entries().cend(),
                       [](const auto& entry) { return entry.second == Use::Hanging; });
}

QStringList paths()
{
    const std::lock_guard lock(g_mutex);
    QStringList all;
    for (const auto& [path, use] : std::as_const(entries()))
        if (!all.contains(path))
            all << path;
    return all;
}

} // namespace zib::DriveLedger
