#include "engines/burn/drive/DriveLedger.h"

#include <QList>

#include <algorithm>
#include <mutex>
#include <utility>

namespace zib::DriveLedger {

namespace {

/// Recursive, for an entry may be made under it.
std::recursive_mutex g_mutex;

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

namespace {

Use gravestUse(const QString& path)
{
    Use gravest = Use::None;
    for (const auto& [entered, use] : std::as_const(entries()))
        if (entered == path)
            gravest = std::max(gravest, use);
    return gravest;
}

} // namespace

Use useOf(const QString& path)
{
    const std::lock_guard lock(g_mutex);
    return gravestUse(path);
}

std::unique_ptr<Entry> enterIfFree(const QString& path, Use use)
{
    const std::lock_guard lock(g_mutex);
    if (gravestUse(path) != Use::None)
        return nullptr;
    return std::make_unique<Entry>(path, use);
}

QString hanging()
{
    const std::lock_guard lock(g_mutex);
    const auto hangs = [](const auto& entry) { return entry.second == Use::Hanging; };
    const auto found = std::find_if(entries().cbegin(), entries().cend(), hangs);
    return found == entries().cend() ? QString() : found->first;
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
