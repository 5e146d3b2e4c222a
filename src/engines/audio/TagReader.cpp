#include "engines/audio/TagReader.h"

#include <QStringDecoder>

#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/taglib.h>
#include <taglib/tbytevectorstream.h>

#include <algorithm>
#include <array>
#include <optional>

namespace zib {

namespace {

constexpr qint64 kMostTagBytes = 64 * 1024 * 1024;
constexpr qsizetype kMostLetters = 1000; // Of a title: one of a megabyte is no title.

// Windows-1252 from 0x80 to 0x9F; its five holes stay what they are in Latin-1.
constexpr std::array<char16_t, 32> kWindows1252{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool isAscii(char16_t letter)
{
    return letter < 0x80;
}

QString fromWindows1252(const QByteArray& bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar& letter : text)
        if (letter.unicode() >= 0x80 && letter.unicode() < 0xA0)
            letter = QChar(kWindows1252[letter.unicode() - 0x80U]);
    return text;
}

// Text that was cut in the middle of its last letter, as in a field of fixed length, still counts as UTF-8.
std::optional<QString> fromUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(bytes);
    const bool isPlain =
        std::all_of(bytes.cbegin(), bytes.cend(), [](char c) { return isAscii(static_cast<uchar>(c)); });
    const bool hasWholeLetter =
        std::any_of(text.cbegin(), text.cend(), [](QChar c) { return !isAscii(c.unicode()); });
    if (decoder.hasError() || (!isPlain && !hasWholeLetter))
        return std::nullopt;
    return text;
}

class PlainTextHandler final : public TagLib::ID3v2::Latin1StringHandler
{
public:
    TagLib::String parse(const TagLib::ByteVector& data) const override
    {
        const QString text = plainTagText(QByteArray(data.data(), static_cast<qsizetype>(data.size())));
        return {text.toUtf8().toStdString(), TagLib::String::UTF8};
    }
};

void teachPlainText()
{
    static const PlainTextHandler handler;
    static const bool done = (TagLib::ID3v2::Tag::setLatin1StringHandler(&handler), true);
    Q_UNUSED(done)
}

QString text(const TagLib::String& from)
{
    return QString::fromUtf8(from.toCString(true)).trimmed();
}

bool endsALine(QChar letter)
{
    return (letter >= u'\n' && letter <= u'\r') || letter == u'\x85' || letter == QChar::LineSeparator ||
           letter == QChar::ParagraphSeparator;
}

// What a line of a list shows of it.
QString shown(const QString& whole)
{
    const QString text = whole.trimmed();
    QString line(text.cbegin(), std::find_if(text.cbegin(), text.cend(), endsALine) - text.cbegin());
    if (line.size() > kMostLetters)
        line.truncate(line[kMostLetters - 1].isHighSurrogate() ? kMostLetters - 1 : kMostLetters);
    return line.trimmed();
}

qint64 toldBytes(const QByteArray& head)
{
    if (head.size() < 10 || !head.startsWith("ID3"))
        return 0;
    const auto digit = [&](qsizetype at) { return qint64{static_cast<uchar>(head[at]) & 0x7F}; };
    return 10 + (digit(6) << 21 | digit(7) << 14 | digit(8) << 7 | digit(9));
}

// The tag alone is handed to the library, as a file in memory.
Tag readId3v2At(const SourceFile& file, qint64 offset, qint64 most)
{
    const qint64 told = toldBytes(file.bytes(offset, 10));
    if (told == 0)
        return {};
    teachPlainText();
    const QByteArray bytes = file.bytes(offset, std::min({told, most, kMostTagBytes}));
    TagLib::ByteVectorStream stream(
        TagLib::ByteVector(bytes.constData(), static_cast<unsigned>(bytes.size())));
#if TAGLIB_MAJOR_VERSION >= 2
    TagLib::MPEG::File parsed(&stream, false);
#else
    TagLib::MPEG::File parsed(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
#endif
    const TagLib::ID3v2::Tag* tag = parsed.ID3v2Tag();
    if (tag == nullptr)
        return {};
    return {shown(text(tag->title())), shown(text(tag->artist()))};
}

} // namespace

QString plainTagText(const QByteArray& bytes)
{
    QByteArray used(bytes.constData(),
                    static_cast<qsizetype>(qstrnlen(bytes.constData(), static_cast<size_t>(bytes.size()))));
    while (used.startsWith("\xEF\xBB\xBF")) // some programs mark UTF-8, and some twice
        used.remove(0, 3);
    const auto decoded = fromUtf8(used);
    return (decoded ? *decoded : fromWindows1252(used)).trimmed();
}

Tag readId3v2(const SourceFile& file)
{
    return readId3v2At(file, 0, file.size());
}

Tag readId3v1(const SourceFile& file)
{
    const QByteArray tag = file.bytes(file.size() - 128, 128);
    if (file.size() < 128 || !tag.startsWith("TAG"))
        return {};
    return {shown(plainTagText(tag.mid(3, 30))), shown(plainTagText(tag.mid(33, 30)))};
}

Tag readWavTag(const SourceFile& file, const WavHeader& header)
{
    Tag tag{shown(plainTagText(header.title)), shown(plainTagText(header.artist))};
    if (header.id3Offset == 0 || (!tag.title.isEmpty() && !tag.artist.isEmpty()))
        return tag;
    const Tag other = readId3v2At(file, header.id3Offset, header.id3Bytes);
    tag.title = tag.title.isEmpty() ? other.title : tag.title;
    tag.artist = tag.artist.isEmpty() ? other.artist : tag.artist;
    return tag;
}

} // namespace zib
