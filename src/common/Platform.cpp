#include "common/Platform.h"

namespace zib {

namespace {
Platform g_platform;
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
