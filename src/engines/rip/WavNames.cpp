#include "engines/rip/WavNames.h"

#include <QtEndian>

#include <algorithm>

#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>

namespace zib {

namespace {

TagLib::String tagText(const QString& text)
{
    return {text.toUtf8().toStdString(), TagLib::String::UTF8};
}

QByteArray chunk(const char* name, const TagLib::ByteVector& content)
{
    const quint32 size = qToLittleEndian(static_cast<quint32>(content.size()));
    QByteArray bytes(name);
    bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    bytes.append(content.data(), static_cast<qsizetype>(content.size()));
    return bytes.size() % 2 ? bytes + '\0' : bytes;
}

template <typename Tag>
TagLib::ByteVector rendered(const TrackNames& names)
{
    Tag tag;
    tag.setTitle(tagText(names.title));
    tag.setArtist(tagText(names.artist));
    return tag.render();
}

bool isAscii(const QString& text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar letter) { return letter.unicode() < 0x80; });
}

} // namespace

QByteArray nameChunks(const TrackNames& names)
{
    if (names.isEmpty())
        return {};
    QByteArray chunks = chunk("LIST", rendered<TagLib::RIFF::Info::Tag>(names));
    if (!isAscii(names.title + names.artist))
        chunks += chunk("id3 ", rendered<TagLib::ID3v2::Tag>(names));
    return chunks;
}

} // namespace zib
