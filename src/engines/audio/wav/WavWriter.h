#pragma once

#include "common/NameBearer.h"

#include <QByteArray>
#include <QString>

#include <span>

namespace zib {

/// Writes a 16-bit PCM WAV file that appears under its name only when it is whole and on the disc.
///
/// Until then it stands beside its place under a name of its own. What a killed program left there under such
/// a name goes when the next file is begun in that folder.
class WavWriter
{
public:
    /// What the format's 32-bit sizes allow.
    static constexpr qint64 kMostDataBytes = 0xFFFFFFFFLL - 44;

    /// @param mostDataBytes of samples; more is refused.
    explicit WavWriter(qint64 mostDataBytes = kMostDataBytes) : m_mostDataBytes(mostDataBytes) {}
    ~WavWriter(); ///< Drops what was not finished.
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    /// Begins a file.  @returns false when nothing can be written there.
    bool create(const QString& path, int rateHz, int channels);
    /// Appends interleaved samples.  @returns false from the first failure on: full disc, or more than the 4
    /// GiB that such a file can hold.
    bool append(std::span<const qint16> samples);
    /// Completes the header, flushes everything to the disc and gives the file its name, replacing the file
    /// that bore it when this one was begun.  @returns false when that failed, or when another file has got
    /// the name since; then nothing of it is left.
    bool finish();
    /// Drops everything.
    void abandon();
    bool isOpen() const { return m_descriptor >= 0; }

private:
    bool write(const void* bytes, size_t count);
    bool writeHeader(qint64 dataBytes);
    void pushOut();

    qint64 m_mostDataBytes;
    QByteArray m_target;
    QByteArray m_partial;
    NameBearer m_seen; ///< Who bore the name when the file was begun.
    int m_descriptor = -1;
    int m_rateHz = 0;
    int m_channels = 0;
    qint64 m_dataBytes = 0;
    qint64 m_pushedOut = 0;
    bool m_failed = false;
};

} // namespace zib
