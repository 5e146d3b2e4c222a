#include "platform/AtomicFile.h"

#include "common/NativeName.h"

#include <QCryptographicHash>
#include <QThread>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr qint64 kLargestFile = 64 * 1024 * 1024;
constexpr int kLockTries = 200;
constexpr unsigned kLockPauseMs = 10;
constexpr int kMostLinks = 40; // As many as the kernel follows.

/// A descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Q_DISABLE_COPY_MOVE(Descriptor)
    explicit operator bool() const { return m_fd >= 0; }
    int get() const { return m_fd; }
    bool close()
    {
        const int fd = std::exchange(m_fd, -1);
        return fd < 0 || ::close(fd) == 0;
    }

private:
    int m_fd;
};

QString folderOf(const QString& file)
{
    const qsizetype slash = file.lastIndexOf(u'/');
    if (slash < 0)
        return QStringLiteral(".");
    return slash == 0 ? QStringLiteral("/") : file.left(slash);
}

void describeInto(FileSnapshot& snapshot, const struct stat& info)
{
    constexpr qint64 kNsPerSecond = 1'000'000'000;
    snapshot.exists = true;
    snapshot.device = info.st_dev;
    snapshot.inode = info.st_ino;
    snapshot.changedNs = info.st_mtim.tv_sec * kNsPerSecond + info.st_mtim.tv_nsec;
    snapshot.size = info.st_size;
    snapshot.mode = info.st_mode & 07777;
}

bool readAll(int fd, qint64 size, QByteArray& bytes)
{
    bytes.reserve(size);
    char block[65536];
    for (;;) {
        const ssize_t n = ::read(fd, block, sizeof block);
        if (n == 0)
            return true;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 || bytes.size() + n > kLargestFile)
            return false;
        bytes.append(block, n);
    }
}

bool writeAll(int fd, const QByteArray& bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += n;
    }
    return true;
}

/// The name of the file that is written beside; always short, however long the name of the file itself.
QByteArray besideName(const QString& path)
{
    const QByteArray name = nativeName(path.mid(path.lastIndexOf(u'/') + 1));
    const QByteArray hash = QCryptographicHash::hash(name, QCryptographicHash::Sha1).toHex().left(16);
    return nativeName(folderOf(path)) + "/.zib-" + hash + ".tmp";
}

bool mayWrite(const QByteArray& path, const FileSnapshot& before)
{
    return !before.exists || ((before.mode & 0222) != 0 && ::access(path.constData(), W_OK) == 0);
}

/// Whether the file is still the one of the snapshot.
bool unchanged(const QByteArray& path, const FileSnapshot& before)
{
    struct stat info = {};
    if (::stat(path.constData(), &info) != 0)
        return !before.exists && errno == ENOENT;
    FileSnapshot now;
    describeInto(now, info);
    return before.exists && now.device == before.device && now.inode == before.inode &&
           now.changedNs == before.changedNs && now.size == before.size;
}

/// Whether a call was refused for good: not this account, or not on this file system.
bool isRefused(int error)
{
    return error == EPERM || error == EACCES || error == ENOTSUP || error == ENOSYS || error == EINVAL;
}

/// Gives a new file the permissions of the old one, and its owner and group as far as the account may. A file
/// system that knows neither is as good.
bool takeRights(int fd, const QByteArray& path, const FileSnapshot& before)
{
    struct stat old = {};
    if (::stat(path.constData(), &old) != 0)
        return false;
    const bool owned =
        ::fchown(fd, old.st_uid, old.st_gid) == 0 || ::fchown(fd, static_cast<uid_t>(-1), old.st_gid) == 0;
    const auto mode = static_cast<mode_t>(owned ? before.mode : before.mode & 0777);
    return ::fchmod(fd, mode) == 0 || isRefused(errno);
}

enum class Beside
{
    Written, ///< All of it is on the disk.
    Refused, ///< The folder takes no file of this account.
    Failed
};

Beside writeBeside(const QByteArray& beside, const QByteArray& bytes, const QByteArray& path,
                   const FileSnapshot& before)
{
    constexpr mode_t kNewFile = 0666;
    ::unlink(beside.constData()); // Left by a program that was killed here.
    // Never with more rights than the old file: they may be all that the file system keeps.
    const mode_t mode = before.exists ? before.mode & 0777 : kNewFile;
    Descriptor file(::open(beside.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
    if (!file)
        return errno == EACCES || errno == EPERM ? Beside::Refused : Beside::Failed;
    if (before.exists && !takeRights(file.get(), path, before))
        return Beside::Failed;
    const bool written = writeAll(file.get(), bytes) && ::fsync(file.get()) == 0 && file.close();
    return written ? Beside::Written : Beside::Failed;
}

bool writeOver(int fd, const QByteArray& bytes)
{
    return ::lseek(fd, 0, SEEK_SET) == 0 && writeAll(fd, bytes) && ::ftruncate(fd, bytes.size()) == 0 &&
           ::fsync(fd) == 0;
}

/// For a file in a folder that takes no other one: over its old contents. Room comes first; what fails all
/// the same is put back.
Replaced overwrite(const QByteArray& path, const QByteArray& bytes, const FileSnapshot& before)
{
    const Descriptor file(::open(path.constData(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!before.exists || !file)
        return Replaced::Failed;
    const int error = bytes.size() > before.size ? ::posix_fallocate(file.get(), 0, bytes.size()) : 0;
    if ((error == 0 || isRefused(error)) && writeOver(file.get(), bytes))
        return Replaced::Done;
    writeOver(file.get(), before.bytes);
    return Replaced::Failed;
}

} // namespace

FolderLock::FolderLock(const QString& file)
    : m_folder(::open(nativeName(folderOf(file)).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    for (int i = 0; m_folder >= 0 && i < kLockTries && ::flock(m_folder, LOCK_EX | LOCK_NB) != 0; ++i) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return;
        QThread::msleep(kLockPauseMs);
    }
}

FolderLock::~FolderLock()
{
    if (m_folder >= 0)
        ::close(m_folder);
}

void FolderLock::sync() const
{
    if (m_folder >= 0)
        ::fsync(m_folder); // The file holds the change either way; some file systems cannot promise more.
}

std::optional<QString> followLinks(const QString& path)
{
    QString target = path;
    if (path.contains(QChar::Null))
        return std::nullopt;
    for (int i = 0; i < kMostLinks; ++i) {
        char text[PATH_MAX];
        const ssize_t n = ::readlink(nativeName(target).constData(), text, sizeof text);
        if (n < 0)
            return target;
        const QString next = nativeText(QByteArray(text, n));
        target = next.startsWith(u'/') ? next : folderOf(target) + u'/' + next;
    }
    return std::nullopt;
}

std::optional<FileSnapshot> readSnapshot(const QString& path)
{
    FileSnapshot snapshot;
    if (path.contains(QChar::Null))
        return std::nullopt;
    const Descriptor file(::open(nativeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        return errno == ENOENT ? std::optional(snapshot) : std::nullopt;
    struct stat info = {};
    if (::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size > kLargestFile)
        return std::nullopt;
    describeInto(snapshot, info);
    if (!readAll(file.get(), info.st_size, snapshot.bytes))
        return std::nullopt;
    return snapshot;
}

Replaced replaceFile(const QString& path, const QByteArray& bytes, const FileSnapshot& before,
                     const FolderLock& lock)
{
    const QByteArray target = nativeName(path);
    if (!unchanged(target, before))
        return Replaced::Changed;
    if (!mayWrite(target, before))
        return Replaced::Failed;
    const QByteArray beside = besideName(path);
    const Beside written = writeBeside(beside, bytes, target, before);
    if (written == Beside::Refused)
        return overwrite(target, bytes, before);
    if (written == Beside::Written && unchanged(target, before) &&
        std::rename(beside.constData(), target.constData()) == 0) {
        lock.sync();
        return Replaced::Done;
    }
    const bool foreign = errno == EPERM || errno == EACCES; // A folder where each may rename only his own.
    ::unlink(beside.constData());
    if (written == Beside::Failed)
        return Replaced::Failed;
    if (!unchanged(target, before))
        return Replaced::Changed;
    return foreign ? overwrite(target, bytes, before) : Replaced::Failed;
}

} // namespace zib
