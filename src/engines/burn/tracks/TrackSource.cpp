#include "engines/burn/tracks/TrackSource.h"

#include "common/NativeName.h"
#include "engines/burn/tracks/FileView.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

/// A file with more chunks is made to keep its reader busy.
constexpr int kMostChunks = 10'000;
/// So many chunks behind an empty one must lead to the end of the file to make it believable.
constexpr int kMostChunksToTheEnd = 64;
constexpr quint32 kUnknownSize = 0xFFFFFFFF;
constexpr quint16 kPcm = 1;
constexpr quint16 kExtensible = 0xFFFE;
constexpr qint64 kShortestFormat = 14;

Failure unreadableFile(const QString& name)
{
    return {Failure::Kind::UnreadableFile, name};
}

/// Opens a regular file and nothing else: opening a pipe would wait and opening a device might move it.
/// @returns the descriptor, or -1.
int openToRead(const QString& path)
{
    const QByteArray name = nativeName(path);
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

/// Finds format and samples among the chunks of a RIFF, RF64 or BW64 file, forgiving what writers get wrong:
/// sizes that lie, an unfinished header, a missing padding byte. Of several chunks of a kind the first one
/// counts.
class WavWalk
{
public:
    explicit WavWalk(const Input& file) : m_file(file) {}

    /// @returns whether the file holds samples in CD format.
    bool run();
    qint64 dataOffset() const { return m_dataOffset; }
    qint64 dataBytes() const { return m_dataBytes / kBytesPerPair * kBytesPerPair; }

private:
    struct Chunk
    {
        std::array<char, 4> name{};
        qint64 offset = 0; ///< Of its content.
        quint32 told = 0;  ///< Its size as it says.

        bool is(const char* other) const { return std::memcmp(name.data(), other, name.size()) == 0; }
    };

    bool beginsAsWave() const;
    std::optional<Chunk> chunkAt(qint64 offset) const;
    bool leadsToTheEnd(qint64 offset) const;
    /// @returns the bytes of its content.
    qint64 take(const Chunk& chunk);
    void takeFormat(const Chunk& chunk);
    void takeSizes(const Chunk& chunk);
    void takeData(const Chunk& chunk);

    const Input& m_file;
    bool m_hasFormat = false;
    bool m_isCdFormat = false;
    qint64 m_longData = 0; ///< The 64-bit size of the samples.
    qint64 m_dataOffset = -1;
    qint64 m_dataBytes = 0;
};

bool WavWalk::run()
{
    if (!beginsAsWave())
        return false;
    qint64 at = 12;
    for (int count = 0; count < kMostChunks; ++count) {
        const auto chunk = chunkAt(at);
        if (!chunk)
            break;
        const qint64 bytes = take(*chunk);
        at = chunk->offset + bytes + (bytes & 1);
        if (chunk->offset != m_dataOffset && !chunkAt(at) && chunkAt(at - 1))
            --at;
    }
    return m_isCdFormat && dataBytes() > 0;
}

bool WavWalk::beginsAsWave() const
{
    std::array<char, 12> head{};
    const auto has = [&](int at, const char* name) { return std::memcmp(head.data() + at, name, 4) == 0; };
    return m_file.readAt(0, head.data(), head.size()) && has(8, "WAVE") &&
           (has(0, "RIFF") || has(0, "RF64") || has(0, "BW64"));
}

std::optional<WavWalk::Chunk> WavWalk::chunkAt(qint64 offset) const
{
    std::array<char, 8> head{};
    if (offset < 12 || !m_file.readAt(offset, head.data(), head.size()))
        return std::nullopt;
    const auto isPrintable = [](char letter) { return letter >= ' ' && letter <= '~'; };
    if (!std::all_of(head.begin(), head.begin() + 4, isPrintable))
        return std::nullopt;
    Chunk chunk{.offset = offset + 8, .told = qFromLittleEndian<quint32>(head.data() + 4)};
    std::copy_n(head.begin(), chunk.name.size(), chunk.name.begin());
    return chunk;
}

/// Whether chunks follow each other from here exactly to the end of the file.
bool WavWalk::leadsToTheEnd(qint64 offset) const
{
    for (int count = 0; count < kMostChunksToTheEnd; ++count) {
        if (offset == m_file.stamp.bytes || offset == m_file.stamp.bytes + 1)
            return true;
        const auto chunk = chunkAt(offset);
        if (!chunk || chunk->offset + chunk->told > m_file.stamp.bytes)
            return false;
        offset = chunk->offset + chunk->told + (chunk->told & 1);
    }
    return false;
}

qint64 WavWalk::take(const Chunk& chunk)
{
    if (chunk.is("fmt ") && !m_hasFormat) {
        takeFormat(chunk);
    } else if (chunk.is("ds64")) {
        takeSizes(chunk);
    } else if (chunk.is("data") && m_dataOffset < 0) {
        takeData(chunk);
        return m_dataBytes;
    }
    return chunk.told;
}

void WavWalk::takeFormat(const Chunk& chunk)
{
    std::array<uchar, 40> format{};
    const qint64 size = std::clamp<qint64>(m_file.stamp.bytes - chunk.offset, 0,
                                           std::min<qint64>(chunk.told, qint64{format.size()}));
    if (size < kShortestFormat || !m_file.readAt(chunk.offset, format.data(), size))
        return;
    m_hasFormat = true;
    const auto word = [&](int at) { return qFromLittleEndian<quint16>(format.data() + at); };
    const bool extensible = word(0) == kExtensible && size >= 26;
    const quint16 coding =
        extensible ? word(24) : word(0); // a sub-format begins with the plain format's number
    const int block = word(12);
    const bool wideBlock = block % kCdChannels == 0 && block > kBytesPerPair && block <= 8 * kCdChannels;
    m_isCdFormat = coding == kPcm && word(2) == kCdChannels && !wideBlock && size >= 16 &&
                   word(14) == kCdBits && qFromLittleEndian<quint32>(format.data() + 4) == kCdSampleRate;
}

void WavWalk::takeSizes(const Chunk& chunk)
{
    std::array<uchar, 16> sizes{};
    if (chunk.told >= sizes.size() && m_file.readAt(chunk.offset, sizes.data(), sizes.size()))
        m_longData = qFromLittleEndian<qint64>(sizes.data() + 8);
}

void WavWalk::takeData(const Chunk& chunk)
{
    const qint64 there = m_file.stamp.bytes - chunk.offset;
    qint64 bytes = chunk.told;
    if (chunk.told == kUnknownSize)
        bytes = m_longData > 0 ? m_longData : there;
    else if (chunk.told == 0 && !leadsToTheEnd(chunk.offset))
        bytes = there;
    m_dataOffset = chunk.offset;
    m_dataBytes = std::clamp<qint64>(bytes, 0, there);
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
        return pathExists(path) ? unreadableFile(path) : Failure{Failure::Kind::NotFound, path};
    WavWalk walk(file);
    if (!walk.run())
        return unreadableFile(path);
    return BurnTrack{.path = path,
                     .name = path,
                     .dataOffset = walk.dataOffset(),
                     .dataBytes = walk.dataBytes(),
                     .length = lengthOnDisc(walk.dataBytes()),
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
    if (m_file < 0 || !isUnchanged())
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
    if (sound > 0 && m_done >= m_track.dataBytes && !isUnchanged())
        return unreadableFile(m_track.name);
    return wanted;
}

bool TrackSource::show(FileView& view, qint64 offset, qint64 size) const
{
    return view.show(m_file, m_track.dataOffset + offset, size);
}

bool TrackSource::isUnchanged() const
{
    struct stat s
    {
    };
    return fstat(m_file, &s) == 0 && stampOf(s).sameContent(m_track.stamp);
}

} // namespace zib
