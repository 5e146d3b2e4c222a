#include "common/FileStamp.h"

#include "common/NativeName.h"

#include <sys/stat.h>

namespace zib {

namespace {
constexpr qint64 kNsPerSecond = 1'000'000'000;
}

FileStamp stampOf(const struct stat& found)
{
    return {.device = found.st_dev,
            .inode = found.st_ino,
            .bytes = found.st_size,
            .changedNs = found.st_mtim.tv_sec * kNsPerSecond + found.st_mtim.tv_nsec};
}

std::optional<FileStamp> stampOf(const QString& path)
{
    struct stat found = {};
    if (::stat(nativeName(path).constData(), &found) != 0)
        return std::nullopt;
    return stampOf(found);
}

} // namespace zib
