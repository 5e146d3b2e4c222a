#include "answers/WavSweep.h"

#include "answers/Sweep.h"
#include "engines/burn/WavMaker.h"

namespace zib::answers {

namespace {

constexpr qsizetype kFormatAt = 20;   // content of the first chunk behind the head of the file
constexpr qsizetype kDataSizeAt = 40; // of a file with the shortest usual header

QByteArray infoList()
{
    return chunk("LIST", "INFO" + chunk("INAM", "Title") + chunk("ISFT", "x") +
                             chunk("IART", QByteArray("Some\0One", 8)));
}

const QByteArray kSound = QByteArray::fromHex("000102030405060708090a0b0c0d0e0f");

/// Everything in its usual place.
QByteArray whole()
{
    return riff(formatChunk() + chunk("data", kSound) + infoList() + chunk("id3 ", "ID3-tag"));
}

QByteArray longWav(const QByteArray& sizes, quint32 told, const QByteArray& behind = {})
{
    return riff(chunk("ds64", sizes) + formatChunk() + "data" + little32(told) + kSound + behind, "RF64");
}

QByteArray little64(qint64 value)
{
    return little32(value) + little32(value >> 32);
}

void tellFormats(Book& book, const Reader& read)
{
    const QByteArray seed = whole();
    const auto field = [&](const char* name, qsizetype at, int bytes, const QList<qint64>& values) {
        everyValue(book, "WAVE", seed, read, {name, kFormatAt + at, bytes}, values);
    };
    field("tag", 0, 2, {1, 3, 6, 0x55, 0xFFFE});
    field("channels", 2, 2, {1, 2, 3, 8, 255, 256, 0xFFFF});
    field("rate", 4, 4, {1, 44100, 4'000'000, 0x7FFFFFFF, 0xFFFFFFFF});
    field("block", 12, 2, {1, 2, 4, 8, 16, 17, 32, 0xFFFF});
    field("bits", 14, 2, {1, 8, 16, 24, 32, 64, 0xFFFF});
    book.chapter("Tag, channels, bits and bytes of a block", read(seed));
    for (const int tag : {1, 3, 6, 7})
        for (const int channels : {1, 2, 3})
            for (const int bits : {8, 12, 16, 24, 32, 33, 64})
                for (const int block : {0, 1, 2, 3, 4, 5, 6, 8, 9, 10, 12, 16, 18, 20}) {
                    const QByteArray format = little16(tag) + little16(channels) + little32(44100) +
                                              little32(0) + little16(block) + little16(bits);
                    book.tell(QString("%1, %2, %3, %4").arg(tag).arg(channels).arg(bits).arg(block),
                              read(riff(chunk("fmt ", format) + chunk("data", kSound))));
                }
    book.chapter("Formats of so many bytes", read(seed));
    for (const QByteArray& format : {formatChunk().mid(8), extensibleChunk().mid(8)})
        for (int bytes = 0; bytes < 44; ++bytes)
            book.tell(
                QString("%1 of %2").arg(bytes).arg(format.size()),
                read(riff(chunk("fmt ", format.leftJustified(bytes, '\0', true)) + chunk("data", kSound))));
    everyByte(book, "An extensible format", riff(extensibleChunk() + chunk("data", kSound)), read, kFormatAt,
              40);
}

/// Told sizes of the data that cannot be, or only just.
void tellSizes(Book& book, const Reader& read)
{
    const QByteArray plain = riff(formatChunk() + chunk("data", kSound));
    const QList<qint64> sizes{0, 1, 4, 12, 16, 17, 0x7FFFF000, 0x80000000, 0xFFFFF000, 0xFFFFFFFF};
    everyValue(book, "Plain", plain, read, {"size of the data", kDataSizeAt}, sizes);
    everyValue(book, "With chunks behind", whole(), read, {"size of the data", kDataSizeAt}, sizes);
    everyValue(book, "With a list behind that is cut short", whole().chopped(20), read,
               {"size of the data", kDataSizeAt}, {0, 16});
    for (const quint32 told : {0U, 8U, 0xFFFFFFFFU}) {
        book.chapter(QString("Long sizes, the short one is %1").arg(told));
        for (const qint64 bytes :
             QList<qint64>{-1, 0, 1, 2, 8, 15, 16, 17, 24, 25, 0x7FFFF000, 0xFFFFFFFF, (qint64{1} << 46) - 1,
                           qint64{1} << 46, (qint64{1} << 46) + 1})
            book.tell(QString("told %1").arg(bytes),
                      read(longWav(little64(1) + little64(bytes) + little64(2) + little32(0), told)));
        for (const int bytes : {0, 8, 14, 15, 16, 17, 28})
            book.tell(QString("in %1 bytes").arg(bytes),
                      read(longWav((little64(1) + little64(12)).leftJustified(bytes, '\0', true), told)));
    }
    book.chapter("An empty data chunk and so many chunks behind it");
    for (const int chunks : {0, 1, 2, 62, 63, 64, 65})
        for (const char* tail : {"", "x", "xy", "xxxx"})
            book.tell(
                QString("%1 and '%2'").arg(chunks).arg(tail),
                read(riff(formatChunk() + chunk("data", {}) + chunk("junk", "ab").repeated(chunks) + tail)));
    book.chapter("Sound of so many bytes and a chunk behind it");
    for (int bytes = 0; bytes < 10; ++bytes) {
        const QByteArray odd =
            riff(formatChunk() + "data" + little32(bytes) + kSound.first(bytes) + infoList());
        book.tell(QString("%1 without padding").arg(bytes), read(odd));
        book.tell(QString("%1").arg(bytes),
                  read(riff(formatChunk() + chunk("data", kSound.first(bytes)) + infoList())));
    }
}

void tellChunks(Book& book, const Reader& read)
{
    const QByteArray data = chunk("data", kSound);
    book.chapter("Chunks before the data", read(riff(formatChunk() + data)));
    const auto behind = [&](const QString& words, const QByteArray& chunks) {
        book.tell(words, read(riff(chunks + formatChunk() + data + infoList())));
    };
    for (const int bytes : {0, 1, 2, 3}) {
        const QByteArray content(bytes, 'x');
        behind(QString("of %1 bytes").arg(bytes), chunk("junk", content));
        behind(QString("of %1 bytes without padding").arg(bytes), "junk" + little32(bytes) + content);
        behind(QString("of %1 bytes and two of padding").arg(bytes), chunk("junk", content) + '\0');
    }
    behind("that reaches beyond the end", "junk" + little32(10'000));
    for (const int letter : {0x1F, 0x20, 0x7E, 0x7F, 0x80})
        for (int at = 0; at < 4; ++at)
            behind(QString("with %1 at %2").arg(letter).arg(at),
                   chunk(QByteArray("junk").replace(at, 1, QByteArray(1, char(letter))).constData(), "ab"));
    for (const int count : {9'996, 9'997, 9'998, 9'999, 10'000})
        behind(QString("%1 empty ones").arg(count), chunk("junk", {}).repeated(count));
    book.chapter("Other orders", read(riff(formatChunk() + data)));
    const QByteArray other = chunk("data", "other sound....");
    const QList<std::pair<const char*, QByteArray>> orders{
        {"data first", data + formatChunk()},
        {"two of data", formatChunk() + data + other},
        {"two formats", formatChunk() + formatChunk(1, 1, 8000, 8) + data},
        {"two formats, the first too short", chunk("fmt ", "short") + formatChunk() + data},
        {"two formats, the first of 13 bytes", chunk("fmt ", QByteArray(13, '\1')) + formatChunk() + data},
        {"two formats, the first of 14 bytes", chunk("fmt ", QByteArray(14, '\1')) + formatChunk() + data},
        {"two formats, the first of 15 bytes", chunk("fmt ", QByteArray(15, '\1')) + formatChunk() + data},
        {"no format", data},
        {"no data", formatChunk()},
        {"another letter case", chunk("FMT ", formatChunk().mid(8)) + data},
        {"two lists", infoList() + chunk("LIST", "INFO" + chunk("INAM", "Other")) + formatChunk() + data},
        {"tag first", chunk("ID3 ", "ID3-tag") + formatChunk() + data},
        {"an empty tag", formatChunk() + data + chunk("id3 ", {})}};
    for (const auto& [words, chunks] : orders)
        book.tell(words, read(riff(chunks)));
    book.chapter("Names of the file", read(riff(formatChunk() + data)));
    for (const char* name : {"RIFF", "RF64", "BW64", "RIFX", "riff", "FFIR"})
        book.tell(name, read(riff(formatChunk() + data, name)));
}

void tellLists(Book& book, const Reader& read)
{
    const QByteArray before = formatChunk() + chunk("data", kSound);
    const auto withList = [&](const QByteArray& content) {
        return read(riff(before + chunk("LIST", content)));
    };
    const QByteArray items = infoList().mid(8);
    book.chapter("A list cut off behind so many bytes", withList(items));
    for (qsizetype bytes = 0; bytes <= items.size(); ++bytes)
        book.tell(QString::number(bytes), withList(items.first(bytes)));
    everyByte(book, "A list", riff(before + infoList()), read, 12 + before.size() + 8, items.size());
    book.chapter("Two titles, the last one so many bytes at the end of the list", withList(items));
    for (int bytes = 0; bytes < 4; ++bytes)
        book.tell(QString::number(bytes), withList("INFO" + chunk("INAM", "First.") + "INAM" +
                                                   little32(bytes) + QByteArray("abc").first(bytes)));
    book.chapter("A title of so many bytes", withList(items));
    for (int bytes = 0; bytes < 9; ++bytes)
        book.tell(QString::number(bytes), withList("INFOINAM" + little32(bytes) + "abcdef"));
    book.chapter("A list of so many bytes", withList(items));
    for (const int bytes : {262'143, 262'144, 262'145})
        book.tell(QString::number(bytes), withList(items + QByteArray(bytes - items.size(), '\0')));
}

} // namespace

void everyWav(Book& book, const Reader& read)
{
    const QByteArray seed = whole();
    book.chapter("The file as it is");
    book.tell("all", read(seed));
    everyLength(book, "WAVE", seed, read);
    everyByte(book, "WAVE", seed, read, 0, seed.size());
    tellFormats(book, read);
    tellSizes(book, read);
    tellChunks(book, read);
    tellLists(book, read);
}

} // namespace zib::answers
