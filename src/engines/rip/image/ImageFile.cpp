#include "engines/rip/image/ImageFile.h"

#include "common/CdTime.h"
#include "common/NativeName.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr int kBytesPerSample = kCdChannels * kCdBits / 8;
constexpr qint32 kBlockSamples = 64 * kSamplesPerFrame;

class RawFile final : public ImageFile
{
public:
    RawFile(int file, qint64 bytes) : m_file(file), m_bytes(bytes) {}
    ~RawFile() override { ::close(m_file); }
    Q_DISABLE_COPY_MOVE(RawFile)

    bool isRaw() const override { return true; }
    qint64 bytes() const override { return m_bytes; }
    qint64 read(char* data, qint64 offset, qint64 count) override
    {
        qint64 done = 0;
        while (done < count) {
            const ssize_t got =
                ::pread(m_file, data + done, static_cast<size_t>(count - done), offset + done);
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                break;
            done += got;
        }
        return done;
    }

private:
    const int m_file;
    const qint64 m_bytes;
};

/// Reads through a decoder, which delivers block by block.
class SoundFile final : public ImageFile
{
public:
    explicit SoundFile(std::unique_ptr<AudioFile> sound) : m_sound(std::move(sound)) {}

    bool isRaw() const override { return false; }
    qint64 bytes() const override { return m_sound->length() * kBytesPerSample; }
    qint64 read(char* data, qint64 offset, qint64 count) override;

private:
    bool fetch(qint64 offset);

    const std::unique_ptr<AudioFile> m_sound;
    QByteArray m_block;
    qint64 m_blockAt = 0;
};

qint64 SoundFile::read(char* data, qint64 offset, qint64 count)
{
    qint64 done = 0;
    while (done < count) {
        const qint64 at = offset + done;
        if ((at < m_blockAt || at >= m_blockAt + m_block.size()) && !fetch(at))
            break;
        const qint64 part = std::min(count - done, m_blockAt + m_block.size() - at);
        std::memcpy(data + done, m_block.constData() + (at - m_blockAt), static_cast<size_t>(part));
        done += part;
    }
    return done;
}

/// Makes the block the one with the byte at @p offset. One channel becomes two.
bool SoundFile::fetch(qint64 offset)
{
    const qint64 sample = offset / kBytesPerSample;
    if (offset != m_blockAt + m_block.size() && m_sound->seek(sample) != sample)
        return false;
    const int channels = m_sound->formatChannels();
    const AudioBlock block = m_sound->readBlock(kBlockSamples * channels);
    const QList<qint16>* samples = block.narrow();
    if (samples == nullptr || samples->isEmpty())
        return false;
    m_blockAt = sample * kBytesPerSample;
    m_block.resize(samples->size() / channels * kBytesPerSample);
    auto* out = reinterpret_cast<qint16*>(m_block.data());
    if (channels == kCdChannels)
        std::copy(samples->cbegin(), samples->cend(), out);
    else
        for (const qint16 value : *samples) {
            *out++ = value;
            *out++ = value;
        }
    return true;
}

/// Whether a file begins as sound with a header or a coding of its own does, whatever a sheet calls it: WAVE,
/// AIFF, FLAC, Ogg, or MP3 with a tag. Ripped as it lies it would be noise.
bool looksLikeSound(int file)
{
    char head[12] = {};
    if (::pread(file, head, sizeof head, 0) != sizeof head)
        return false;
    const auto begins = [&head](int at, const char* mark) {
        return std::memcmp(head + at, mark, std::strlen(mark)) == 0;
    };
    return ((begins(0, "RIFF") || begins(0, "RF64")) && begins(8, "WAVE")) ||
           (begins(0, "FORM") && begins(8, "AIF")) || begins(0, "fLaC") || begins(0, "OggS") ||
           begins(0, "ID3");
}

Failure unreadable(const QString& words, const QString& name)
{
    return {Failure::Kind::UnreadableFile, words.arg(name)};
}

Outcome<std::shared_ptr<ImageFile>> openSound(const QByteArray& path, const QString& name,
                                              const MakeAudioFile& makeSound)
{
    auto sound = makeSound ? makeSound() : nullptr;
    if (sound == nullptr)
        return unreadable(QStringLiteral("the file %1 is not of a kind that is read here"), name);
    sound->setSixteenBitBlocks(true);
    if (sound->open(nativeText(path)) < 0)
        return unreadable(QStringLiteral("the file %1 is no sound that can be read"), name);
    if (sound->formatRate() != kCdSampleRate)
        return Failure{Failure::Kind::UnreadableFile,
                       QStringLiteral("the file %1 has %2 Hz, and a disc has %3")
                           .arg(name)
                           .arg(sound->formatRate())
                           .arg(kCdSampleRate)};
    return std::shared_ptr<ImageFile>(std::make_shared<SoundFile>(std::move(sound)));
}

} // namespace

Outcome<std::shared_ptr<ImageFile>> openImageFile(const QByteArray& path, const QString& name,
                                                  SheetFile::Kind kind, const MakeAudioFile& makeSound)
{
    const int file = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0 && (errno == EACCES || errno == EPERM))
        return Failure{Failure::Kind::NoPermission, QStringLiteral("the file %1 may not be read").arg(name)};
    if (file < 0)
        return unreadable(QStringLiteral("the file %1 cannot be read"), name);
    struct stat info = {};
    auto raw = std::make_shared<RawFile>(file, ::fstat(file, &info) == 0 ? info.st_size : 0);
    if (!S_ISREG(info.st_mode))
        return unreadable(QStringLiteral("%1 is not a file"), name);
    if (kind == SheetFile::Kind::Sound || looksLikeSound(file))
        return openSound(path, name, makeSound);
    return std::shared_ptr<ImageFile>(std::move(raw));
}

} // namespace zib
