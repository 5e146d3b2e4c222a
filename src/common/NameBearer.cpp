#include "common/NameBearer.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

/// Whether the file system, and not the names, is what refused.
bool isUnknownToStorage(int error)
{
    return error == EINVAL || error == ENOSYS || error == EPERM || error == EOPNOTSUPP || error == EMLINK;
}

bool renamed(const QByteArray& from, const QByteArray& to, unsigned flags)
{
    return ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), flags) == 0;
}

/// Takes the name with an empty file of our own, which is then replaced: for storages without links.
bool moveOverPlaceholder(const QByteArray& from, const QByteArray& to)
{
    const int fd = ::open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    ::close(fd);
    if (::rename(from.constData(), to.constData()) == 0)
        return true;
    const int error = errno;
    ::unlink(to.constData());
    errno = error;
    return false;
}

bool moveToFree(const QByteArray& from, const QByteArray& to)
{
    if (renamed(from, to, RENAME_NOREPLACE))
        return true;
    if (!isUnknownToStorage(errno))
        return false;
    if (::link(from.constData(), to.constData()) == 0)
        return ::unlink(from.constData()) == 0;
    return isUnknownToStorage(errno) && moveOverPlaceholder(from, to);
}

NameBearer toBearer(const struct stat& found)
{
    return {.someone = true, .device = found.st_dev, .inode = found.st_ino};
}

bool isTaken()
{
    errno = EEXIST;
    return false;
}

/// The two change places first, so that what is removed is certainly what was seen.
bool moveInPlaceOf(const QByteArray& from, const QByteArray& to, const NameBearer& seen)
{
    if (bearerOf(to) != seen)
        return bearerOf(to).someone ? isTaken() : moveToFree(from, to);
    if (!renamed(from, to, RENAME_EXCHANGE))
        return isUnknownToStorage(errno) && ::rename(from.constData(), to.constData()) == 0;
    if (bearerOf(from) == seen)
        return ::unlink(from.constData()) == 0;
    return renamed(from, to, RENAME_EXCHANGE) && isTaken();
}

} // namespace

NameBearer bearerOf(const QByteArray& path)
{
    struct stat found = {};
    return ::lstat(path.constData(), &found) == 0 ? toBearer(found) : NameBearer();
}

NameBearer bearerOf(int file)
{
    struct stat found = {};
    return ::fstat(file, &found) == 0 ? toBearer(found) : NameBearer();
}

QByteArray nameOfOpenFile(int file, const QByteArray& opened)
{
    QByteArray now(PATH_MAX, '\0');
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(file);
    now.truncate(std::max<ssize_t>(0, ::readlink(link.constData(), now.data(), PATH_MAX)));
    for (const QByteArray& name : {now, opened})
        if (const NameBearer bearer = bearerOf(name); bearer.someone && bearer == bearerOf(file))
            return name;
    return {};
}

bool giveName(const QByteArray& from, const QByteArray& to, const NameBearer& seen)
{
    return seen.someone ? moveInPlaceOf(from, to, seen) : moveToFree(from, to);
}

} // namespace zib
