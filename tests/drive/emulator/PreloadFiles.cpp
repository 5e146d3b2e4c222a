// Stands in front of the C library's functions that take a path, and lets the device nodes of emulated drives
// appear. Built without the 64-bit renaming of <sys/stat.h>, so that every public name can be defined here.

#include "Machine.h"
#include "Real.h"

#include <fcntl.h>
#include <glob.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fnmatch.h>
#include <string_view>

#define ZIB_EXPORT extern "C" __attribute__((visibility("default")))

namespace zib::drive {

thread_local int Inside::depth = 0;

namespace {

constexpr const char* kProcInfo = "/proc/sys/dev/cdrom/info";

/// The machine, when @p path may concern it: a first look that costs next to nothing.
Machine* machineFor(const char* path)
{
    const bool candidate = path != nullptr && std::strncmp(path, "/dev/sr", 7) == 0;
    return candidate && !Inside::already() ? Machine::instance() : nullptr;
}

bool isProcInfo(const char* path)
{
    return path != nullptr && !Inside::already() && std::strcmp(path, kProcInfo) == 0 &&
           Machine::instance() != nullptr;
}

template <typename Stat>
void copyStat(const struct ::stat& from, Stat& to)
{
    static_assert(sizeof(Stat) == sizeof(struct ::stat), "64-bit file sizes throughout");
    std::memcpy(&to, &from, sizeof from);
}

template <typename Stat>
int describe(Machine& machine, const char* path, Stat* info)
{
    const Inside inside;
    struct ::stat node
    {
    };
    const int result = machine.describe(path, node);
    if (result == 0) {
        copyStat(node, *info);
    }
    return result;
}

template <typename Stat>
int disguised(int result, Stat* info)
{
    Machine* machine = Inside::already() ? nullptr : Machine::existing();
    if (result == 0 && machine != nullptr && S_ISREG(info->st_mode)) {
        const Inside inside;
        struct ::stat node
        {
        };
        std::memcpy(&node, info, sizeof node);
        if (machine->disguise(node)) {
            copyStat(node, *info);
        }
    }
    return result;
}

int openProcInfo()
{
    const Inside inside;
    FILE* file = ::tmpfile();
    if (file == nullptr) {
        return -1;
    }
    const std::string text = Machine::instance()->procInfo();
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
    const int fd = ::dup(::fileno(file));
    std::fclose(file);
    return fd;
}

/// Opens a node or the list of drives. @returns false when the path is none of the emulator's business.
bool openOurs(const char* path, int flags, int& fd)
{
    if (isProcInfo(path)) {
        fd = openProcInfo();
        return true;
    }
    Machine* machine = machineFor(path);
    if (machine != nullptr) {
        const Inside inside;
        fd = machine->open(path, flags);
    }
    return machine != nullptr;
}

mode_t modeOf(int flags, va_list arguments)
{
    const bool creates = (flags & (O_CREAT | O_TMPFILE)) != 0;
    return creates ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

template <typename Glob>
int globbed(int result, const char* pattern, int flags, Glob* found,
            int (*plain)(const char*, int, int (*)(const char*, int), Glob*))
{
    const bool ours =
        !Inside::already() && std::strncmp(pattern, "/dev/", 5) == 0 && Machine::instance() != nullptr;
    if (!ours) {
        return result;
    }
    std::vector<std::string> nodes;
    {
        const Inside inside;
        nodes = Machine::instance()->nodes();
    }
    bool any = result == 0;
    for (const auto& node : nodes) {
        if (::fnmatch(pattern, node.c_str(), FNM_PATHNAME) == 0) {
            const int append = any ? GLOB_APPEND : flags & GLOB_APPEND;
            plain(node.c_str(), (flags & ~GLOB_APPEND) | append | GLOB_NOCHECK, nullptr, found);
            any = true;
        }
    }
    return any ? 0 : result;
}

} // namespace
} // namespace zib::drive

using namespace zib::drive;

#define ZIB_OPEN(NAME)                                                                                       \
    ZIB_EXPORT int NAME(const char* path, int flags, ...)                                                    \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        int fd = -1;                                                                                         \
        static auto* const next = real<int(const char*, int, ...)>(#NAME);                                   \
        return openOurs(path, flags, fd) ? fd : next(path, flags, mode);                                     \
    }

ZIB_OPEN(open)
ZIB_OPEN(open64)

#define ZIB_OPENAT(NAME)                                                                                     \
    ZIB_EXPORT int NAME(int folder, const char* path, int flags, ...)                                        \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        int fd = -1;                                                                                         \
        static auto* const next = real<int(int, const char*, int, ...)>(#NAME);                              \
        return openOurs(path, flags, fd) ? fd : next(folder, path, flags, mode);                             \
    }

ZIB_OPENAT(openat)
ZIB_OPENAT(openat64)

#define ZIB_OPEN_CHECKED(NAME)                                                                               \
    ZIB_EXPORT int NAME(const char* path, int flags)                                                         \
    {                                                                                                        \
        int fd = -1;                                                                                         \
        static auto* const next = real<int(const char*, int)>(#NAME);                                        \
        return openOurs(path, flags, fd) ? fd : next(path, flags);                                           \
    }

ZIB_OPEN_CHECKED(__open_2)
ZIB_OPEN_CHECKED(__open64_2)

#define ZIB_FOPEN(NAME)                                                                                      \
    ZIB_EXPORT FILE* NAME(const char* path, const char* mode)                                                \
    {                                                                                                        \
        static auto* const next = real<FILE*(const char*, const char*)>(#NAME);                              \
        if (!isProcInfo(path)) {                                                                             \
            return next(path, mode);                                                                         \
        }                                                                                                    \
        const int fd = openProcInfo();                                                                       \
        return fd < 0 ? nullptr : ::fdopen(fd, "r");                                                         \
    }

ZIB_FOPEN(fopen)
ZIB_FOPEN(fopen64)

#define ZIB_STAT(NAME, STAT)                                                                                 \
    ZIB_EXPORT int NAME(const char* path, struct STAT* info)                                                 \
    {                                                                                                        \
        static auto* const next = real<int(const char*, struct STAT*)>(#NAME);                               \
        Machine* machine = machineFor(path);                                                                 \
        return machine != nullptr ? describe(*machine, path, info) : next(path, info);                       \
    }

ZIB_STAT(stat, stat)
ZIB_STAT(stat64, stat64)
ZIB_STAT(lstat, stat)
ZIB_STAT(lstat64, stat64)

#define ZIB_XSTAT(NAME, STAT)                                                                                \
    ZIB_EXPORT int NAME(int version, const char* path, struct STAT* info)                                    \
    {                                                                                                        \
        static auto* const next = real<int(int, const char*, struct STAT*)>(#NAME);                          \
        Machine* machine = machineFor(path);                                                                 \
        return machine != nullptr ? describe(*machine, path, info) : next(version, path, info);              \
    }

ZIB_XSTAT(__xstat, stat)
ZIB_XSTAT(__xstat64, stat64)
ZIB_XSTAT(__lxstat, stat)
ZIB_XSTAT(__lxstat64, stat64)

#define ZIB_FSTAT(NAME, STAT)                                                                                \
    ZIB_EXPORT int NAME(int fd, struct STAT* info)                                                           \
    {                                                                                                        \
        static auto* const next = real<int(int, struct STAT*)>(#NAME);                                       \
        return disguised(next(fd, info), info);                                                              \
    }

ZIB_FSTAT(fstat, stat)
ZIB_FSTAT(fstat64, stat64)

#define ZIB_FXSTAT(NAME, STAT)                                                                               \
    ZIB_EXPORT int NAME(int version, int fd, struct STAT* info)                                              \
    {                                                                                                        \
        static auto* const next = real<int(int, int, struct STAT*)>(#NAME);                                  \
        return disguised(next(version, fd, info), info);                                                     \
    }

ZIB_FXSTAT(__fxstat, stat)
ZIB_FXSTAT(__fxstat64, stat64)

#define ZIB_FSTATAT(NAME, STAT)                                                                              \
    ZIB_EXPORT int NAME(int folder, const char* path, struct STAT* info, int flags)                          \
    {                                                                                                        \
        static auto* const next = real<int(int, const char*, struct STAT*, int)>(#NAME);                     \
        Machine* machine = machineFor(path);                                                                 \
        return machine != nullptr ? describe(*machine, path, info) : next(folder, path, info, flags);        \
    }

ZIB_FSTATAT(fstatat, stat)
ZIB_FSTATAT(fstatat64, stat64)

ZIB_EXPORT int statx(int folder, const char* path, int flags, unsigned mask, struct statx* info)
{
    static auto* const next = real<int(int, const char*, int, unsigned, struct statx*)>("statx");
    Machine* machine = machineFor(path);
    if (machine == nullptr) {
        return next(folder, path, flags, mask, info);
    }
    struct stat node
    {
    };
    const int result = describe(*machine, path, &node);
    *info = {};
    info->stx_mask = STATX_BASIC_STATS;
    info->stx_mode = static_cast<decltype(info->stx_mode)>(node.st_mode);
    info->stx_nlink = 1;
    info->stx_uid = node.st_uid;
    info->stx_gid = node.st_gid;
    info->stx_rdev_major = major(node.st_rdev);
    info->stx_rdev_minor = minor(node.st_rdev);
    return result;
}

ZIB_EXPORT int access(const char* path, int mode)
{
    static auto* const next = real<int(const char*, int)>("access");
    Machine* machine = machineFor(path);
    if (machine == nullptr) {
        return next(path, mode);
    }
    const Inside inside;
    return machine->access(path, mode);
}

ZIB_EXPORT int faccessat(int folder, const char* path, int mode, int flags)
{
    static auto* const next = real<int(int, const char*, int, int)>("faccessat");
    return machineFor(path) != nullptr ? access(path, mode) : next(folder, path, mode, flags);
}

ZIB_EXPORT char* realpath(const char* path, char* resolved)
{
    static auto* const next = real<char*(const char*, char*)>("realpath");
    Machine* machine = machineFor(path);
    if (machine == nullptr) {
        return next(path, resolved);
    }
    const Inside inside;
    if (!machine->isNode(path)) {
        errno = ENOENT;
        return nullptr;
    }
    return resolved == nullptr ? ::strdup(path) : std::strcpy(resolved, path);
}

ZIB_EXPORT char* __realpath_chk(const char* path, char* resolved, std::size_t)
{
    return realpath(path, resolved);
}

#define ZIB_GLOB(NAME, GLOB)                                                                                 \
    ZIB_EXPORT int NAME(const char* pattern, int flags, int (*onError)(const char*, int), GLOB* found)       \
    {                                                                                                        \
        static auto* const next = real<int(const char*, int, int (*)(const char*, int), GLOB*)>(#NAME);      \
        return globbed(next(pattern, flags, onError, found), pattern, flags, found, next);                   \
    }

ZIB_GLOB(glob, glob_t)
ZIB_GLOB(glob64, glob64_t)
