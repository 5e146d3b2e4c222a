#include "engines/audio/SourceFile.h"

#include "common/NativeName.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

std::shared_ptr<const SourceFile> SourceFile::open(const QString& path)
{
    const QByteArray name = nativeName(path);
    if (name.isEmpty() || path.contains(QChar::Null))
        return nullptr;
    const int descriptor = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    struct stat info = {};
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(descriptor);
        return nullptr;
    }
    const Stamp stamp{info.st_dev, info.st_ino, info.st_size,
                      qint64{info.st_mtim.tv_sec} * 1'000'000'000 + info.st_mtim.tv_nsec};
    return std::shared_ptr<const SourceFile>(new SourceFile(descriptor, stamp));
}

SourceFile::~SourceFile()
{
    ::close(m_descriptor);
}

qint64 SourceFile::read(qint64 offset, std::span<uchar> into) const
{
    qint64 done = 0;
    const auto wanted = static_cast<qint64>(into.size());
    while (done < wanted) {
        const auto got =
            ::pread(m_descriptor, into.data() + done, static_cast<size_t>(wanted - done), offset + done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

QByteArray SourceFile::bytes(qint64 offset, qint64 count) const
{
    QByteArray content(std::clamp<qint64>(count, 0, std::max<qint64>(0, size() - offset)), Qt::Uninitialized);
    const qint64 got =
        read(offset, {reinterpret_cast<uchar*>(content.data()), static_cast<size_t>(content.size())});
    content.truncate(std::max<qint64>(got, 0));
    return content;
}

FileWindow::FileWindow(std::shared_ptr<const SourceFile> file, qint64 end, qint64 windowBytes)
    : m_file(std::move(file)), m_end(end), m_capacity(windowBytes),
      m_bytes(new uchar[static_cast<size_t>(windowBytes)])
{
}

const uchar* FileWindow::at(qint64 offset, qint64 count)
{
    if (offset < 0 || count > m_capacity / 4 || offset + count > m_end)
        return nullptr;
    if (offset < m_start || offset + count > m_start + m_filled)
        fill(offset);
    if (offset + count > m_start + m_filled)
        return nullptr;
    return m_bytes.get() + (offset - m_start);
}

std::span<const uchar> FileWindow::rest(qint64 offset)
{
    const uchar* first = at(offset, 1);
    if (first == nullptr)
        return {};
    return {first, static_cast<size_t>(m_start + m_filled - offset)};
}

void FileWindow::fill(qint64 offset)
{
    m_start = offset;
    const qint64 wanted = std::min(m_capacity, m_end - offset);
    const qint64 got = m_file->read(offset, {m_bytes.get(), static_cast<size_t>(wanted)});
    m_filled = std::max<qint64>(got, 0);
    m_failed = m_failed || got < 0;
}

} // namespace zib
