#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtEndian>

namespace zib {

inline QByteArray little16(int value)
{
    QByteArray bytes(2, '\0');
    qToLittleEndian(static_cast<quint16>(value), bytes.data());
    return bytes;
}

inline QByteArray little32(qint64 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(static_cast<quint32>(value), bytes.data());
    return bytes;
}

inline QByteArray chunk(const char* name, const QByteArray& content)
{
    return QByteArray(name, 4) + little32(content.size()) + content + QByteArray(content.size() % 2, '\0');
}

inline QByteArray formatChunk(int tag = 1, int channels = 2, int rateHz = 44100, int bits = 16)
{
    const int frame = channels * bits / 8;
    return chunk("fmt ", little16(tag) + little16(channels) + little32(rateHz) +
                             little32(qint64{rateHz} * frame) + little16(frame) + little16(bits));
}

/// The sub-format identifier of plain PCM (1) or another plain format.
inline QByteArray extensibleChunk(int subFormat = 1, int bits = 16)
{
    const QByteArray plain = formatChunk(0xFFFE, 2, 44100, bits).mid(8);
    const QByteArray rest = QByteArray::fromHex("000000001000800000aa00389b71");
    return chunk("fmt ", plain + little16(22) + little16(bits) + little32(3) + little16(subFormat) + rest);
}

inline QByteArray riff(const QByteArray& chunks, const char* name = "RIFF")
{
    return QByteArray(name, 4) + little32(chunks.size() + 4) + "WAVE" + chunks;
}

/// @p pairs sample pairs that differ from each other and from track to track.
inline QByteArray sound(qint64 pairs, int seed = 1)
{
    QByteArray bytes;
    bytes.reserve(pairs * 4);
    quint32 state = static_cast<quint32>(seed) * 2654435761U + 1;
    for (qint64 i = 0; i < pairs; ++i) {
        state = state * 1664525U + 1013904223U;
        bytes += little32(state | 1U);
    }
    return bytes;
}

inline QByteArray cdWav(const QByteArray& samples)
{
    return riff(formatChunk() + chunk("data", samples));
}

/// @returns the path, for use in one line.
inline QString put(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return {};
    return path;
}

} // namespace zib
