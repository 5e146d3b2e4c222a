// CD-TEXT packs of any bytes, as they are and with their CRC made right: what comes of them are lines of text
// for the tracks that were asked for. And names of any letters fit into the packs of one block.

#include "engines/cdtext/CdText.h"
#include "engines/cdtext/Latin1Text.h"
#include "input.h"

using zib::fuzz::check;

namespace {

void checkLine(const QString& text)
{
    check(text == text.simplified(), "a name is one line without outer blanks");
}

void checkNames(const QByteArray& packs, int firstTrack, int tracks)
{
    const auto names = zib::namesInPacks(packs, firstTrack, tracks);
    if (!names)
        return;
    check(names->tracks.size() == tracks, "every track has an entry");
    checkLine(names->title);
    checkLine(names->artist);
    for (const zib::TrackNames& track : names->tracks) {
        checkLine(track.title);
        checkLine(track.artist);
    }
}

/// The same packs, as a drive would pass them on.
QByteArray withGoodCrc(QByteArray packs)
{
    for (qsizetype at = 0; at + zib::kCdTextPackBytes <= packs.size(); at += zib::kCdTextPackBytes) {
        const quint16 crc = zib::cdTextCrc(packs.constData() + at);
        packs[at + 16] = static_cast<char>(crc >> 8);
        packs[at + 17] = static_cast<char>(crc & 0xFF);
    }
    return packs;
}

void checkTexts(const QList<QByteArray>& texts, qsizetype tracks)
{
    check(texts.isEmpty() || texts.size() == tracks + 1, "a text for every track and the disc, or none");
    for (const QByteArray& text : texts)
        check(text.size() <= zib::kLongestCdText && !text.contains('\0') && text.trimmed() == text,
              "a text that every reader takes");
}

void checkWriting(const QString& text)
{
    const QByteArray spelt = zib::nearestLatin1(text);
    check(zib::nearestLatin1(QString::fromLatin1(spelt)) == spelt, "what was spelt stays as it is");
    zib::DiscNames names{text.left(20), text.right(20), {}};
    for (qsizetype at = 0; at < text.size() && names.tracks.size() < 99; at += 40)
        names.tracks << zib::TrackNames{text.mid(at, 200), text.mid(at + 10, 10)};
    const zib::CdTextTable table = zib::cdTextOf(names);
    check(zib::textPackCount(table) <= zib::kMostTextPacks, "the texts fit into one block");
    checkTexts(table.titles, names.tracks.size());
    checkTexts(table.performers, names.tracks.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    zib::fuzz::Input input(data, size);
    const int firstTrack = 1 + input.byte() % 99;
    const int tracks = std::min(1 + input.byte() % 99, 100 - firstTrack);
    const QByteArray bytes = input.bytes(static_cast<qsizetype>(size));
    checkNames(bytes, firstTrack, tracks);
    checkNames(withGoodCrc(bytes), firstTrack, tracks);
    checkWriting(QString::fromUtf8(bytes.left(4000)));
    zib::textFromMsJis(bytes);
    return 0;
}
