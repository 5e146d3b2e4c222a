// Stands before the system's calls: the program's own definitions win over those of the libraries.

#include "engines/rip/StallingPlace.h"

#include <QFile>

#include <condition_variable>
#include <cstdarg>
#include <cstring>
#include <mutex>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

std::mutex gMutex;
std::condition_variable gReleased;
char gFolder[4096] = "";
int gHanging = 0;

void wait(const char* path)
{
    std::unique_lock lock(gMutex);
    const auto lies = [path] {
        return gFolder[0] && path && std::strncmp(path, gFolder, std::strlen(gFolder)) == 0;
    };
    if (!lies())
        return;
    ++gHanging;
    gReleased.wait(lock, [&lies] { return !lies(); });
    --gHanging;
}

template <typename Call>
Call next(const char* name)
{
    return reinterpret_cast<Call>(::dlsym(RTLD_NEXT, name));
}

template <typename... Arguments>
int forward(const char* name, const char* path, Arguments... arguments)
{
    wait(path);
    return next<int (*)(const char*, Arguments...)>(name)(path, arguments...);
}

mode_t modeOf(int flags, va_list list)
{
    return (flags & (O_CREAT | O_TMPFILE)) ? va_arg(list, mode_t) : 0;
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list list;
    va_start(list, flags);
    const mode_t mode = modeOf(flags, list);
    va_end(list);
    return forward("open", path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list list;
    va_start(list, flags);
    const mode_t mode = modeOf(flags, list);
    va_end(list);
    return forward("open64", path, flags, mode);
}

DIR* opendir(const char* path)
{
    wait(path);
    return next<DIR* (*)(const char*)>("opendir")(path);
}

int stat(const char* path, struct stat* info) noexcept
{
    return forward("stat", path, info);
}

int lstat(const char* path, struct stat* info) noexcept
{
    return forward("lstat", path, info);
}

int access(const char* path, int mode) noexcept
{
    return forward("access", path, mode);
}

int mkdir(const char* path, mode_t mode) noexcept
{
    return forward("mkdir", path, mode);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* info) noexcept
{
    wait(path);
    return next<int (*)(int, const char*, int, unsigned, struct statx*)>("statx")(folder, path, flags, mask,
                                                                                  info);
}

} // extern "C"

namespace zib {

StallingPlace::StallingPlace(const QString& folder)
{
    const std::lock_guard lock(gMutex);
    std::strncpy(gFolder, QFile::encodeName(folder).constData(), sizeof gFolder - 1);
}

StallingPlace::~StallingPlace()
{
    const std::lock_guard lock(gMutex);
    gFolder[0] = '\0';
    gReleased.notify_all();
}

int StallingPlace::hanging()
{
    const std::lock_guard lock(gMutex);
    return gHanging;
}

} // namespace zib
