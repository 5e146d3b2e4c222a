#include "engines/burn/TrackSource.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr qint64 kBytesPerPair = 4;
/// A file with more chunks before its samples is made to keep its reader busy.
constexpr int kMostChunks = 10'000;
constexpr quint16 kPcm = 1;
constexpr quint16 kExtensible = 0xFFFE;
/// Behind the two bytes of the format: the rest of the identifier that marks a sub-format as a plain one.
constexpr std::array<uchar, 14> kPlainSubFormat = {0, 0, 0,    0, 0x10, 0,    0x80,
                                                   0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};

Failure unreadableFile(const QString& name)
{
    return {Failure::Kind::UnreadableFile, name};
}

FileStamp stampOf(const struct stat& s)
{
    return {.device = s.st_dev,
            .inode = s.st_ino,
            .bytes = s.st_size,
            .changedNs = qint64{s.st_mtim.tv_sec} * 1'000'000'000 + s.st_mtim.tv_nsec};
}

/// Opens a regular file and nothing else: opening a pipe would wait and opening a device might move it.
/// @returns the descriptor, or -1.
int openToRead(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat s
    {
    };
    if (::stat(name.constData(), &s) != 0 || !S_ISREG(s.st_mode))
        return -1;
    return ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

/// An open file that closes itself.
struct Input
{
    explicit Input(const QString& path) : fd(openToRead(path))
    {
        struct stat s
        {
        };
        if (fd >= 0 && fstat(fd, &s) == 0)
            stamp = stampOf(s);
    }
    ~Input()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Q_DISABLE_COPY_MOVE(Input)

    bool readAt(qint64 offset, void* target, qint64 size) const
    {
        return pread(fd, target, static_cast<size_t>(size), offset) == size;
    }

    int fd;
    FileStamp stamp;
};

/// What a walk over the chunks of a RIFF file found.
struct WavLayout
{
    bool rf64 = false;
    bool cdFormat = false;
    qint64 rf64DataBytes = -1;
    qint64 dataOffset = -1;
    qint64 dataBytes = 0;
};

bool isCdFormat(const std::array<uchar, 40>& format, qint64 size)
{
    const auto word = [&](int at) { return qFromLittleEndian<quint16>(format.data() + at); };
    if (size < 16 || word(2) != kCdChannels || word(14) != kCdBits || word(12) != kBytesPerPair)
        return false;
    if (qFromLittleEndian<quint32>(format.data() + 4) != kCdSampleRate)
        return false;
    if (word(0) == kPcm)
        return true;
    return word(0) == kExtensible && size >= 40 && word(24) == kPcm &&
           std::equal(kPlainSubFormat.begin(), kPlainSubFormat.end(), format.begin() + 26);
}

void readFormat(const Input& file, qint64 offset, qint64 size, WavLayout& layout)
{
    std::array<uchar, 40> format{};
    const qint64 wanted = std::min<qint64>(size, qint64{format.size()});
    layout.cdFormat = file.readAt(offset, format.data(), wanted) && isCdFormat(format, size);
}

void readData(const Input& file, qint64 offset, qint64 size, WavLayout& layout)
{
    if (layout.rf64 && size == 0xFFFFFFFF && layout.rf64DataBytes >= 0)
        size = layout.rf64DataBytes;
    const qint64 there = std::clamp<qint64>(file.stamp.bytes - offset, 0, size);
    layout.dataOffset = offset;
    layout.dataBytes = there / kBytesPerPair * kBytesPerPair;
}

void readSizes(const Input& file, qint64 offset, qint64 size, WavLayout& layout)
{
    std::array<uchar, 16> sizes{};
    if (size >= qint64{sizes.size()} && file.readAt(offset, sizes.data(), sizes.size()))
        layout.rf64DataBytes = qFromLittleEndian<qint64>(sizes.data() + 8);
}

WavLayout walkChunks(const Input& file)
{
    WavLayout layout;
    std::array<char, 12> head{};
    if (!file.readAt(0, head.data(), head.size()) || std::memcmp(head.data() + 8, "WAVE", 4) != 0)
        return layout;
    layout.rf64 = std::memcmp(head.data(), "RF64", 4) == 0;
    if (!layout.rf64 && std::memcmp(head.data(), "RIFF", 4) != 0)
        return layout;
    std::array<char, 8> chunk{};
    qint64 at = 12;
    for (int n = 0; n < kMostChunks && layout.dataOffset < 0 && file.readAt(at, chunk.data(), chunk.size());
         ++n) {
        const qint64 size = qFromLittleEndian<quint32>(chunk.data() + 4);
        at += 8;
        if (std::memcmp(chunk.data(), "fmt ", 4) == 0)
            readFormat(file, at, size, layout);
        else if (std::memcmp(chunk.data(), "ds64", 4) == 0)
            readSizes(file, at, size, layout);
        else if (std::memcmp(chunk.data(), "data", 4) == 0)
            readData(file, at, size, layout);
        at += size + (size & 1);
    }
    return layout;
}

CdTime lengthOnDisc(qint64 dataBytes)
{
    return std::max(CdTime::holdingSamples(dataBytes / kBytesPerPair),
                    CdTime::fromFrames(kShortestTrackFrames));
}

} // namespace

Outcome<BurnTrack> findTrack(const QString& path)
{
    const Input file(path);
    if (file.fd < 0)
        return QFile::exists(path) ? unreadableFile(path) : Failure{Failure::Kind::NotFound, path};
    const WavLayout layout = walkChunks(file);
    if (!layout.cdFormat || layout.dataBytes == 0)
        return unreadableFile(path);
    return BurnTrack{.path = path,
                     .name = path,
                     .dataOffset = layout.dataOffset,
                     .dataBytes = layout.dataBytes,
                     .length = lengthOnDisc(layout.dataBytes),
                     .stamp = file.stamp};
}

BurnTrack atCopy(const BurnTrack& track, const QString& path)
{
    return {.path = path,
            .name = track.name,
            .dataOffset = 0,
            .dataBytes = track.length.bytes(),
            .length = track.length,
            .stamp = Input(path).stamp};
}

TrackSource::~TrackSource()
{
    close();
}

void TrackSource::close()
{
    if (m_file >= 0)
        ::close(m_file);
    m_file = -1;
}

Outcome<> TrackSource::open(const BurnTrack& track)
{
    close();
    m_track = track;
    m_done = 0;
    m_file = openToRead(track.path);
    struct stat s
    {
    };
    if (m_file < 0 || fstat(m_file, &s) != 0 || stampOf(s) != track.stamp)
        return unreadableFile(m_track.name);
    posix_fadvise(m_file, track.dataOffset, track.dataBytes, POSIX_FADV_SEQUENTIAL);
    return {};
}

Outcome<qint64> TrackSource::read(char* buffer, qint64 size)
{
    const qint64 wanted = std::min(size, m_track.length.bytes() - m_done);
    const qint64 sound = std::clamp<qint64>(m_track.dataBytes - m_done, 0, wanted);
    qint64 got = 0;
    while (got < sound) {
        const ssize_t n =
            pread(m_file, buffer + got, static_cast<size_t>(sound - got), m_track.dataOffset + m_done + got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return unreadableFile(m_track.name);
        got += n;
    }
    std::memset(buffer + sound, 0, static_cast<size_t>(wanted - sound));
    m_done += wanted;
    struct stat s
    {
    };
    if (sound > 0 && m_done >= m_track.dataBytes && (fstat(m_file, &s) != 0 || stampOf(s) != m_track.stamp))
        return unreadableFile(m_track.name);
    return wanted;
}

} // namespace zib
