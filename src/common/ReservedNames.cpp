#include "common/ReservedNames.h"

#include "common/NameBearer.h"
#include "common/NativeName.h"

#include <QCryptographicHash>
#include <QDir>
#include <QtEndian>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr int kAttempts = 100;
constexpr mode_t kAnybody = 0666; // another account may share the folder

/// The byte that stands for a name; the same for names that some storages take for one.
off_t byteOf(const QString& name)
{
    const QByteArray hash = QCryptographicHash::hash(name.toLower().toUtf8(), QCryptographicHash::Sha1);
    return static_cast<off_t>(qFromLittleEndian<quint64>(hash.constData()) >> 2U);
}

/// @param bytes 0 for all from @p first on.
bool locked(int file, off_t first, off_t bytes)
{
    struct flock range = {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = first;
    range.l_len = bytes;
    return ::fcntl(file, F_OFD_SETLK, &range) == 0;
}

/// Whether @p path still leads to the open @p file: its last user removes it.
bool leadsTo(const QByteArray& path, int file)
{
    struct stat open = {};
    return ::fstat(file, &open) == 0 &&
           bearerOf(path) == NameBearer{.someone = true, .device = open.st_dev, .inode = open.st_ino};
}

} // namespace

ReservedNames::ReservedNames(QString folder)
    : m_folder(std::move(folder)), m_path(nativeName(QDir(m_folder).filePath(QStringLiteral(".zib.names"))))
{
}

ReservedNames::~ReservedNames()
{
    // Our own locks do not stand in our way.
    if (m_file >= 0 && locked(m_file, 0, 0))
        ::unlink(m_path.constData());
    close();
}

bool ReservedNames::open()
{
    if (m_file < 0)
        m_file = ::open(m_path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kAnybody);
    return m_file >= 0;
}

void ReservedNames::close()
{
    if (m_file >= 0)
        ::close(std::exchange(m_file, -1));
}

bool ReservedNames::take(const QString& name)
{
    if (lock(name) == Lock::Others)
        return false;
    // Only now: whoever kept the name before us may have given it to a file.
    return !bearerOf(nativeName(QDir(m_folder).filePath(name))).someone;
}

ReservedNames::Lock ReservedNames::lock(const QString& name)
{
    for (int attempt = 0; attempt < kAttempts && m_kept < kMostKept && open(); ++attempt) {
        const bool ours = locked(m_file, byteOf(name), 1);
        if (!ours)
            return errno == EAGAIN || errno == EACCES ? Lock::Others : Lock::Impossible;
        if (leadsTo(m_path, m_file)) {
            ++m_kept;
            return Lock::Ours;
        }
        close();
        m_kept = 0;
    }
    return Lock::Impossible;
}

} // namespace zib
