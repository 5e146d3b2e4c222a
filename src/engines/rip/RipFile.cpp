#include "engines/rip/RipFile.h"

#include "common/CdTime.h"
#include "common/NativeName.h"

#include <QFileInfo>
#include <QtEndian>

#include <cerrno>

#include <unistd.h>

namespace zib {

namespace {

const Failure kCancelled{Failure::Kind::Cancelled};
constexpr quint32 kHeaderBytes = 44;

template <typename Number>
void put(QByteArray& bytes, Number value)
{
    const Number little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
}

/// The header of a WAV file (RIFF, format 1: PCM).  @param moreBytes what follows the sound.
QByteArray wavHeader(quint32 dataBytes, quint32 moreBytes)
{
    constexpr quint16 kBlock = kCdChannels * kCdBits / 8;
    QByteArray header("RIFF");
    put<quint32>(header, dataBytes + moreBytes + kHeaderBytes - 8);
    header += "WAVEfmt ";
    put<quint32>(header, 16);
    put<quint16>(header, 1);
    put<quint16>(header, kCdChannels);
    put<quint32>(header, kCdSampleRate);
    put<quint32>(header, quint32{kCdSampleRate} * kBlock);
    put<quint16>(header, kBlock);
    put<quint16>(header, kCdBits);
    header += "data";
    put<quint32>(header, dataBytes);
    return header;
}

} // namespace

bool RipFile::canBeMade(const QString& path, qint32 frames)
{
    const QFileInfo target(path);
    if (!target.isAbsolute() || target.isDir() || !makeFolders(target.path()))
        return false;
    return ::access(nativeName(target.path()).constData(), W_OK | X_OK) == 0 &&
           freeBytes(target.path()) >= kHeaderBytes + CdTime::fromFrames(frames).bytes();
}

Outcome<> RipFile::begin(const QString& path, qint32 frames, const QByteArray& behind,
                         const std::optional<NameBearer>& seen)
{
    const std::lock_guard lock(m_mutex);
    m_file.reset();
    m_taken = false;
    if (m_abandoned)
        return kCancelled;
    const QFileInfo target(path);
    const QString folder = target.absolutePath();
    const auto bytes = static_cast<quint32>(CdTime::fromFrames(frames).bytes());
    const auto more = static_cast<quint32>(behind.size());
    m_behind = behind;
    makeFolders(folder);
    const NameBearer bearer = bearerOf(nativeName(path));
    m_seen = seen.value_or(bearer);
    if (bearer.someone && bearer != m_seen)
        return taken();
    StagedFile::removeLeftOver(folder, target.fileName());
    m_file = std::make_unique<StagedFile>();
    auto begun = m_file->create(folder, target.fileName());
    if (begun)
        begun = m_file->reserve(qint64{kHeaderBytes} + bytes + more);
    if (begun)
        begun = m_file->write(wavHeader(bytes, more).constData(), kHeaderBytes);
    if (!begun)
        m_file.reset();
    return begun;
}

Outcome<> RipFile::write(const char* frame)
{
    const std::lock_guard lock(m_mutex);
    if (!m_file)
        return kCancelled;
    return m_file->write(frame, kBytesPerFrame);
}

Outcome<> RipFile::finish(const std::atomic<bool>& stopped)
{
    const std::lock_guard lock(m_mutex);
    if (!m_file)
        return kCancelled;
    auto done = m_file->write(m_behind.constData(), m_behind.size());
    if (done)
        done = m_file->flush();
    if (done && stopped)
        done = kCancelled;
    if (done && !(done = m_file->keepInPlaceOf(m_seen)) && errno == EEXIST)
        done = taken();
    m_file.reset();
    return done;
}

Failure RipFile::taken()
{
    m_taken = true;
    return {Failure::Kind::WriteFailed};
}

void RipFile::drop()
{
    const std::lock_guard lock(m_mutex);
    m_file.reset();
}

void RipFile::abandon()
{
    const std::lock_guard lock(m_mutex);
    m_file.reset();
    m_abandoned = true;
}

} // namespace zib
