#include "tools/HangingPlace.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <mutex>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kMostFiles = 4096;
constexpr int kStepMs = 2;
constexpr int kMainThreadMs = 1000;

std::atomic<bool> hanging = false;
std::atomic<int> waiters = 0;
std::array<std::atomic<bool>, kMostFiles> files{}; // by descriptor: opened in the place
std::mutex mutex;
std::string awaited;    // the function that begins the hanging ...
int callsToGo = 0;      // ... and how many of its calls still go through
std::string mainThread; // what kept it

bool isMainThread()
{
    return ::getpid() == ::gettid();
}

void pause(int ms)
{
    const timespec time{ms / 1000, ms % 1000 * 1'000'000L};
    ::nanosleep(&time, nullptr);
}

/// Whether this call is the one that begins the hanging.
void count(const char* function)
{
    const std::lock_guard lock(mutex);
    if (awaited == function && --callsToGo <= 0)
        hanging = true;
}

void wait(const char* function)
{
    count(function);
    if (!hanging)
        return;
    if (isMainThread()) {
        const std::lock_guard lock(mutex);
        mainThread += std::string(mainThread.empty() ? "" : " ") + function;
    }
    ++waiters;
    for (int ms = 0; hanging && !(isMainThread() && ms >= kMainThreadMs); ms += kStepMs)
        pause(kStepMs);
    --waiters;
}

void touch(const char* function, const char* path)
{
    if (path && std::strstr(path, "/hangs/"))
        wait(function);
}

void touch(const char* function, int file)
{
    if (file >= 0 && file < kMostFiles && files.at(static_cast<std::size_t>(file)))
        wait(function);
}

int remember(const char* path, int file)
{
    if (file >= 0 && file < kMostFiles)
        files.at(static_cast<std::size_t>(file)) = path && std::strstr(path, "/hangs/");
    return file;
}

template <typename Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

namespace hangingplace {

void hang()
{
    hanging = true;
}

void hangAt(const char* function, int count)
{
    const std::lock_guard lock(mutex);
    awaited = function;
    callsToGo = count;
}

void letGo()
{
    const std::lock_guard lock(mutex);
    awaited.clear();
    hanging = false;
}

int waiting()
{
    return waiters;
}

std::string onMainThread()
{
    const std::lock_guard lock(mutex);
    return mainThread;
}

void forgetMainThread()
{
    const std::lock_guard lock(mutex);
    mainThread.clear();
}

} // namespace hangingplace

// The calls. Each waits when it touches the place, and is then done by whoever would have done it otherwise.

#define ZIB_OPEN(name)                                                                                       \
    int name(const char* path, int flags, ...)                                                               \
    {                                                                                                        \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const int mode = va_arg(rest, int);                                                                  \
        va_end(rest);                                                                                        \
        touch(#name, path);                                                                                  \
        return remember(path, next<int (*)(const char*, int, ...)>(#name)(path, flags, mode));               \
    }
#define ZIB_PATH(result, name, types, ...)                                                                   \
    {                                                                                                        \
        touch(#name, path);                                                                                  \
        return next<result(*) types>(#name)(__VA_ARGS__);                                                    \
    }
#define ZIB_FILE(result, name, types, ...)                                                                   \
    {                                                                                                        \
        touch(#name, file);                                                                                  \
        return next<result(*) types>(#name)(__VA_ARGS__);                                                    \
    }

extern "C" {

ZIB_OPEN(open)
ZIB_OPEN(open64)

int mkostemps(char* path, int suffix, int flags)
{
    touch("mkostemps", path);
    return remember(path, next<int (*)(char*, int, int)>("mkostemps")(path, suffix, flags));
}

int stat(const char* path, struct stat* info) noexcept
    ZIB_PATH(int, stat, (const char*, struct stat*), path, info) int lstat(const char* path,
                                                                           struct stat* info) noexcept
    ZIB_PATH(int, lstat, (const char*, struct stat*), path, info) int statx(int folder, const char* path,
                                                                            int flags, unsigned mask,
                                                                            struct statx* info) noexcept
    ZIB_PATH(int, statx, (int, const char*, int, unsigned, struct statx*), folder, path, flags, mask,
             info) int access(const char* path, int mode) noexcept
    ZIB_PATH(int, access, (const char*, int), path, mode) int mkdir(const char* path, mode_t mode) noexcept
    ZIB_PATH(int, mkdir, (const char*, mode_t), path, mode) int unlink(const char* path) noexcept
    ZIB_PATH(int, unlink, (const char*), path) int rename(const char* path, const char* to) noexcept
    ZIB_PATH(int, rename, (const char*, const char*), path, to) DIR* opendir(const char* path)
        ZIB_PATH(DIR*, opendir, (const char*), path) ssize_t
    readlink(const char* path, char* into, size_t size) noexcept
    ZIB_PATH(ssize_t, readlink, (const char*, char*, size_t), path, into, size)

        int renameat2(int from, const char* path, int into, const char* to, unsigned flags) noexcept
    ZIB_PATH(int, renameat2, (int, const char*, int, const char*, unsigned), from, path, into, to, flags)

        ssize_t read(int file, void* into, size_t size)
            ZIB_FILE(ssize_t, read, (int, void*, size_t), file, into, size) ssize_t
    pread(int file, void* into, size_t size, off_t at)
        ZIB_FILE(ssize_t, pread, (int, void*, size_t, off_t), file, into, size, at) ssize_t
    write(int file, const void* from, size_t size)
        ZIB_FILE(ssize_t, write, (int, const void*, size_t), file, from, size) int fsync(int file)
            ZIB_FILE(int, fsync, (int), file) int close(int file)
{
    touch("close", file);
    return next<int (*)(int)>("close")(remember(nullptr, file));
}

} // extern "C"
