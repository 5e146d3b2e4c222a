#include "engines/audio/mp3/Mp3Tags.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace zib {

qint64 id3v2Bytes(const uchar* tag)
{
    if (std::memcmp(tag, "ID3", 3) != 0 || ((tag[6] | tag[7] | tag[8] | tag[9]) & 0x80) != 0)
        return 0;
    const qint64 content = tag[6] << 21 | tag[7] << 14 | tag[8] << 7 | tag[9];
    return 10 + content + ((tag[5] & 0x10) != 0 ? 10 : 0);
}

qint64 leadingTagBytes(const uchar* tag)
{
    constexpr qint64 kOldTag = 128;
    if (std::memcmp(tag, "TAG", 3) == 0)
        return kOldTag;
    if (std::memcmp(tag, "APETAGEX", 8) == 0)
        return kTagHead + qint64{qFromLittleEndian<quint32>(tag + 12)};
    return id3v2Bytes(tag);
}

qint64 trailingTagBytes(const SourceFile& file, qint64 begin, qint64 end)
{
    const QByteArray tail = file.bytes(std::max(begin, end - 160), std::min<qint64>(160, end - begin));
    const auto within = [=](qint64 bytes) { return bytes > 0 && bytes <= end - begin ? bytes : 0; };
    if (tail.size() >= 128 && tail.last(128).startsWith("TAG"))
        return 128;
    if (tail.size() >= 32 && tail.last(32).startsWith("APETAGEX")) {
        const auto* footer = tail.constData() + tail.size() - 32;
        const bool hasHeader = (qFromLittleEndian<quint32>(footer + 20) & 0x80000000U) != 0;
        return within(qFromLittleEndian<quint32>(footer + 12) + (hasHeader ? 32 : 0));
    }
    if (tail.size() >= 15 && tail.endsWith("LYRICS200"))
        return within(tail.last(15).first(6).toLongLong() + 15);
    if (tail.size() >= 10 && tail.last(10).startsWith("3DI")) {
        const auto* size = reinterpret_cast<const uchar*>(tail.constData()) + tail.size() - 4;
        return within((size[0] << 21 | size[1] << 14 | size[2] << 7 | size[3]) + 20);
    }
    return 0;
}

} // namespace zib
