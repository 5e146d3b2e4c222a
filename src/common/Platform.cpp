#include "common/Platform.h"

namespace zib {

namespace {
Platform g_platform;
}

bool IniService::writeAll(const QList<IniChange>& changes, const QString& file)
{
    for (const IniChange& change : changes)
        if (!WritePrivateProfileStringA(change.section, change.key, change.value, file))
            return false;
    return true;
}

const Platform& platform()
{
    return g_platform;
}

void setPlatform(const Platform& services)
{
    g_platform = services;
}

} // namespace zib
