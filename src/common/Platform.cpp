#include "common/Platform.h"

#include <algorithm>

namespace zib {

namespace {
Platform g_platform;
}

QList<QByteArray> IniService::readAll(const QList<IniQuery>& queries, const QString& file)
{
    QList<QByteArray> values;
    for (const IniQuery& query : queries)
        values << GetPrivateProfileStringA(query.section, query.key, query.fallback, query.size, file);
    return values;
}

bool IniService::writeAll(const QList<IniChange>& changes, const QString& file)
{
    return std::all_of(changes.cbegin(), changes.cend(), [&](const IniChange& change) {
        return WritePrivateProfileStringA(change.section, change.key, change.value, file);
    });
}

void IniService::writeLater(const QList<IniChange>& changes, const QString& file,
                            const std::function<void(bool)>& done)
{
    const bool written = writeAll(changes, file);
    if (done)
        done(written);
}

const Platform& platform()
{
    return g_platform;
}

void setPlatform(const Platform& services)
{
    g_platform = services;
}

std::shared_ptr<void> stayAwake(const QString& why)
{
    return g_platform.inhibitor ? g_platform.inhibitor->hold(why) : nullptr;
}

} // namespace zib
