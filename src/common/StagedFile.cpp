#include "common/StagedFile.h"

#include "common/NativeName.h"

#include <QDir>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

const QString kHiddenPrefix = QStringLiteral(".");
const QString kHiddenSuffix = QStringLiteral(".part");
/// So much is handed to the storage at a time.
constexpr qint64 kStepBytes = qint64{8} << 20;
/// A storage that takes more than a step in this time may be so far behind: the last flush never takes long.
constexpr std::chrono::milliseconds kLead{100};
constexpr qint64 kMostLeadBytes = qint64{64} << 20;
constexpr mode_t kFileRights = 0666;

/// Makes a folder's entries safe: a name is on the storage only after its folder is.
void flushFolder(const QString& folder)
{
    const int fd = ::open(nativeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
}

/// Whether @p path still leads to the open @p file.
bool leadsTo(const QString& path, int file)
{
    const NameBearer there = bearerOf(nativeName(path));
    return there.someone && there == bearerOf(file);
}

/// Whether a call did nothing because the storage has no such call.
bool isNoSuchCall(int error)
{
    return error == EOPNOTSUPP || error == ENOSYS || error == EINVAL || error == ESPIPE;
}

/// Nobody holds the lock of a file whose writer was killed.
void removeUnlessLocked(const QString& path)
{
    const int fd = ::open(nativeName(path).constData(), O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (fd < 0)
        return;
    struct stat info = {};
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && ::flock(fd, LOCK_EX | LOCK_NB) == 0 &&
        leadsTo(path, fd))
        removeFile(path);
    ::close(fd);
}

} // namespace

StagedFile::~StagedFile()
{
    if (m_file >= 0)
        remove();
}

void StagedFile::close()
{
    if (m_file >= 0)
        ::close(m_file);
    m_file = -1;
}

Failure StagedFile::storageFailure() const
{
    const bool forbidden = errno == EACCES || errno == EPERM || errno == EROFS;
    return {forbidden ? Failure::Kind::NoPermission : Failure::Kind::WriteFailed, m_folder};
}

Outcome<> StagedFile::create(const QString& folder, const QString& name)
{
    m_folder = folder;
    m_path = QDir(folder).filePath(name);
    m_hiddenPath = QDir(folder).filePath(kHiddenPrefix + name + kHiddenSuffix);
    m_size = m_handedOver = m_settled = 0;
    m_lead = kStepBytes;
    m_begun = Clock::now();
    m_kept = m_nameless = false;
    // Between making and locking it, somebody who tidies up may take the file for a left-over.
    do {
        close();
        m_file =
            ::open(nativeName(m_hiddenPath).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileRights);
        if (m_file < 0)
            return storageFailure();
        ::flock(m_file, LOCK_EX);
    } while (!leadsTo(m_hiddenPath, m_file));
    return {};
}

Outcome<> StagedFile::reserve(qint64 bytes)
{
    if (::fallocate(m_file, FALLOC_FL_KEEP_SIZE, 0, bytes) == 0 || isNoSuchCall(errno))
        return {};
    return storageFailure();
}

Outcome<> StagedFile::write(const char* data, qint64 size)
{
    for (qint64 done = 0; done < size;) {
        const ssize_t n = ::write(m_file, data + done, static_cast<size_t>(size - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return storageFailure();
        done += n;
    }
    m_size += size;
    return m_size - m_handedOver >= kStepBytes ? handOver() : Outcome<>();
}

/// Waits for a storage that is too far behind, by its own measure. A failure that the system tells here it
/// does not tell the last flush once more.
Outcome<> StagedFile::handOver()
{
    ::sync_file_range(m_file, m_handedOver, m_size - m_handedOver, SYNC_FILE_RANGE_WRITE);
    m_handedOver = m_size;
    const qint64 late = m_size - m_lead - m_settled;
    if (late <= 0)
        return {};
    if (::sync_file_range(m_file, m_settled, late, SYNC_FILE_RANGE_WAIT_BEFORE) != 0 && !isNoSuchCall(errno))
        return storageFailure();
    m_settled += late;
    const std::chrono::duration<double> taken = Clock::now() - m_begun;
    const double inLead = static_cast<double>(m_settled) * (kLead / taken);
    m_lead = static_cast<qint64>(std::clamp<double>(inLead, kStepBytes, kMostLeadBytes));
    return {};
}

Outcome<> StagedFile::flush()
{
    if (::fsync(m_file) != 0)
        return storageFailure();
    return {};
}

Outcome<> StagedFile::keep()
{
    return keepInPlaceOf({});
}

Outcome<> StagedFile::keepInPlaceOf(const NameBearer& seen)
{
    if (!giveName(nativeName(m_hiddenPath), nativeName(m_path), seen))
        return storageFailure();
    m_kept = true;
    flushFolder(m_folder);
    close();
    return {};
}

void StagedFile::makeNameless()
{
    removeFile(m_hiddenPath);
    m_nameless = true;
}

QString StagedFile::currentPath() const
{
    if (m_nameless)
        return QStringLiteral("/proc/self/fd/%1").arg(m_file);
    return m_kept ? m_path : m_hiddenPath;
}

bool StagedFile::isInPlace() const
{
    return leadsTo(currentPath(), m_file);
}

void StagedFile::remove()
{
    if (!m_nameless) {
        const QByteArray name = nativeName(currentPath());
        ::unlink((m_file < 0 ? name : nameOfOpenFile(m_file, name)).constData());
    }
    close();
}

void StagedFile::removeLeftOvers(const QString& folder, const QString& names)
{
    const QString pattern = kHiddenPrefix + names + kHiddenSuffix;
    for (const QString& name : folderEntries(folder))
        if (QDir::match(pattern, name))
            removeUnlessLocked(QDir(folder).filePath(name));
}

void StagedFile::removeLeftOver(const QString& folder, const QString& name)
{
    removeUnlessLocked(QDir(folder).filePath(kHiddenPrefix + name + kHiddenSuffix));
}

} // namespace zib
