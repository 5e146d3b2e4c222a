#include "engines/audio/wav/WavWriter.h"

#include "common/NativeName.h"

#include <QtEndian>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr qint64 kHeaderBytes = 44;
constexpr qint64 kPushBytes = 1024 * 1024;
constexpr const char* kPartialNames = ".zib-??????.part";
constexpr time_t kQuietSeconds = 60; // A writer of another program has taken its lock long before.

QByteArray folderOf(const QByteArray& name)
{
    const qsizetype slash = name.lastIndexOf('/');
    return slash < 0 ? QByteArray("./") : name.first(slash + 1);
}

// A new name is only safe on the disc when its folder is.
void syncFolder(const QByteArray& folder)
{
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

// Whether a file is one that a killed writer left: nobody holds it, and nobody wrote to it lately.
bool isLeftOver(int descriptor)
{
    struct stat info = {};
    return ::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode) &&
           info.st_mtime < ::time(nullptr) - kQuietSeconds && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

void removeLeftOvers(const QByteArray& folder)
{
    DIR* entries = ::opendir(folder.constData());
    if (entries == nullptr)
        return;
    while (const dirent* entry = ::readdir(entries)) {
        if (::fnmatch(kPartialNames, entry->d_name, FNM_PERIOD) != 0)
            continue;
        const int at = ::dirfd(entries);
        const int file = ::openat(at, entry->d_name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
        if (file < 0)
            continue;
        if (isLeftOver(file))
            ::unlinkat(at, entry->d_name, 0);
        ::close(file);
    }
    ::closedir(entries);
}

// The permissions that a plainly created file would have.
void givePlainPermissions(int descriptor)
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor, 0666 & ~mask);
}

void put(uchar*& at, const char* name)
{
    std::memcpy(at, name, 4);
    at += 4;
}

template <typename Number>
void put(uchar*& at, Number value)
{
    qToLittleEndian(value, at);
    at += sizeof value;
}

} // namespace

WavWriter::~WavWriter()
{
    abandon();
}

bool WavWriter::create(const QString& path, int rateHz, int channels)
{
    abandon();
    m_target = nativeName(path);
    m_rateHz = rateHz;
    m_channels = channels;
    m_dataBytes = m_pushedOut = 0;
    m_failed = false;
    struct stat info = {};
    if (m_target.isEmpty() || path.contains(QChar::Null) ||
        (::stat(m_target.constData(), &info) == 0 && !S_ISREG(info.st_mode)))
        return false;
    m_seen = bearerOf(m_target);
    removeLeftOvers(folderOf(m_target));
    m_partial = folderOf(m_target) + ".zib-XXXXXX.part";
    m_descriptor = ::mkostemps(m_partial.data(), 5, O_CLOEXEC);
    if (m_descriptor < 0)
        return false;
    ::flock(m_descriptor, LOCK_EX | LOCK_NB);
    givePlainPermissions(m_descriptor);
    if (!writeHeader(0))
        abandon();
    return isOpen();
}

bool WavWriter::append(std::span<const qint16> samples)
{
    if (!isOpen() || m_failed)
        return false;
    const auto bytes = static_cast<qint64>(samples.size_bytes());
    if (m_dataBytes + bytes > m_mostDataBytes || !write(samples.data(), samples.size_bytes())) {
        m_failed = true;
        return false;
    }
    m_dataBytes += bytes;
    pushOut();
    return true;
}

bool WavWriter::finish()
{
    if (!isOpen())
        return false;
    bool good = !m_failed && ::lseek(m_descriptor, 0, SEEK_SET) == 0 && writeHeader(m_dataBytes) &&
                ::fsync(m_descriptor) == 0;
    const QByteArray lies = nameOfOpenFile(m_descriptor, m_partial);
    good = ::close(std::exchange(m_descriptor, -1)) == 0 && good;
    good = good && giveName(m_partial, m_target, m_seen);
    if (good)
        syncFolder(folderOf(m_target));
    else
        ::unlink(lies.constData());
    return good;
}

void WavWriter::abandon()
{
    if (!isOpen())
        return;
    const QByteArray lies = nameOfOpenFile(m_descriptor, m_partial);
    ::close(std::exchange(m_descriptor, -1));
    ::unlink(lies.constData());
}

bool WavWriter::write(const void* bytes, size_t count)
{
    const auto* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const auto done = ::write(m_descriptor, at, count);
        if (done < 0 && errno == EINTR)
            continue;
        if (done <= 0)
            return false;
        at += done;
        count -= static_cast<size_t>(done);
    }
    return true;
}

bool WavWriter::writeHeader(qint64 dataBytes)
{
    std::array<uchar, kHeaderBytes> header{};
    uchar* at = header.data();
    const int frameBytes = m_channels * 2;
    put(at, "RIFF");
    put(at, static_cast<quint32>(dataBytes + kHeaderBytes - 8));
    put(at, "WAVE");
    put(at, "fmt ");
    put(at, quint32{16});
    put(at, quint16{1});
    put(at, static_cast<quint16>(m_channels));
    put(at, static_cast<quint32>(m_rateHz));
    put(at, static_cast<quint32>(m_rateHz * frameBytes));
    put(at, static_cast<quint16>(frameBytes));
    put(at, quint16{16});
    put(at, "data");
    put(at, static_cast<quint32>(dataBytes));
    return write(header.data(), header.size());
}

// Starts the way to the disc early, so that the final flush has little left to wait for.
void WavWriter::pushOut()
{
    const qint64 written = kHeaderBytes + m_dataBytes;
    if (written - m_pushedOut < kPushBytes)
        return;
    ::sync_file_range(m_descriptor, m_pushedOut, written - m_pushedOut, SYNC_FILE_RANGE_WRITE);
    m_pushedOut = written;
}

} // namespace zib
