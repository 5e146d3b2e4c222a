#include "common/FileStamp.h"

#include "common/NativeName.h"

#include <sys/stat.h>

namespace zib {

namespace {

qint64 nanoseconds(const timespec& time)
{
    constexpr qint64 kNsPerSecond = 1'000'000'000;
    return time.tv_sec * kNsPerSecond + time.tv_nsec;
}

} // namespace

bool FileStamp::sameContent(const FileStamp& other) const
{
    FileStamp touchedAlike = other;
    touchedAlike.touchedNs = touchedNs;
    return *this == touchedAlike;
}

FileStamp stampOf(const struct stat& found)
{
    return {.device = found.st_dev,
            .inode = found.st_ino,
            .bytes = found.st_size,
            .changedNs = nanoseconds(found.st_mtim),
            .touchedNs = nanoseconds(found.st_ctim)};
}

std::optional<FileStamp> stampOf(const QString& path)
{
    struct stat found = {};
    if (::stat(nativeName(path).constData(), &found) != 0)
        return std::nullopt;
    return stampOf(found);
}

} // namespace zib
