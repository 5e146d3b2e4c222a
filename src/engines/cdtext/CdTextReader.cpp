#include "engines/cdtext/CdText.h"
#include "engines/cdtext/Latin1Text.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <optional>

namespace zib {

namespace {

// A pack: type, track, number, position and block, twelve bytes of text, CRC.
constexpr int kHeaderBytes = 4;
constexpr int kTextBytes = 12;
constexpr int kBlockCount = 8;
constexpr uchar kTitlePack = 0x80;
constexpr uchar kPerformerPack = 0x81;
constexpr uchar kSizePack = 0x8F;
constexpr uchar kMsJis = 0x80;
/// A position in a text that is told as "this many or more".
constexpr int kFarPosition = 15;

struct Pack
{
    uchar type = 0;
    int track = 0;
    int number = 0; ///< Within its block.
    int block = 0;
    int position = 0; ///< Characters of its first text that stand in the packs before.
    bool doubleBytes = false;
    QByteArray text;
};

QList<Pack> soundPacks(const QByteArray& packs)
{
    QList<Pack> sound;
    for (qsizetype at = 0; at + kCdTextPackBytes <= packs.size(); at += kCdTextPackBytes) {
        const char* pack = packs.constData() + at;
        const auto byte = [pack](int i) { return static_cast<uchar>(pack[i]); };
        if (cdTextCrc(pack) != (byte(16) << 8 | byte(17)))
            continue;
        sound << Pack{.type = byte(0),
                      .track = byte(1) & 0x7F,
                      .number = byte(2),
                      .block = byte(3) >> 4 & 7,
                      .position = byte(3) & 0x0F,
                      .doubleBytes = (byte(3) & 0x80) != 0,
                      .text = QByteArray(pack + kHeaderBytes, kTextBytes)};
    }
    return sound;
}

/// Puts the texts of one kind and block together, pack by pack.
class TextJoiner
{
public:
    void take(const Pack& pack)
    {
        if (m_last && m_last->number == pack.number && m_last->text == pack.text)
            return; // it comes twice
        const int unit = pack.doubleBytes ? 2 : 1;
        const bool goesOn = m_track == pack.track && m_last && follows(pack) &&
                            std::min<qsizetype>(m_text.size() / unit, kFarPosition) == pack.position;
        m_lost = !goesOn && pack.position > 0;
        if (!goesOn)
            m_text.clear();
        m_track = pack.track;
        for (int i = 0; i + unit <= kTextBytes; i += unit)
            takeCharacter(pack.text.mid(i, unit));
        m_last = pack;
    }

    const QHash<int, QByteArray>& texts() const { return m_texts; }

private:
    /// Whether no pack is missing before this one, where its position does not tell.
    bool follows(const Pack& pack) const
    {
        return pack.position < kFarPosition || pack.number <= m_last->number + 1;
    }
    void takeCharacter(const QByteArray& character)
    {
        if (character.count('\0') != character.size()) {
            m_text += character;
            return;
        }
        if (!m_lost)
            m_texts.insert(m_track, isRepetition() ? m_texts.value(m_track - 1) : m_text);
        m_lost = false;
        m_text.clear();
        ++m_track;
    }
    /// A lone tabulator means: as the track before.
    bool isRepetition() const { return m_text == "\t" || m_text == "\t\t"; }

    QHash<int, QByteArray> m_texts;
    QByteArray m_text;
    int m_track = -1;
    std::optional<Pack> m_last; ///< Of this kind.
    bool m_lost = false;        ///< The beginning of the text under way stood in a pack that is missing.
};

struct Block
{
    TextJoiner titles;
    TextJoiner performers;
    bool msJis = false;

    void take(const Pack& pack)
    {
        if (pack.type == kTitlePack)
            titles.take(pack);
        else if (pack.type == kPerformerPack)
            performers.take(pack);
        else if (pack.type == kSizePack && pack.track == 0)
            msJis = static_cast<uchar>(pack.text[0]) == kMsJis;
        msJis = msJis || (pack.doubleBytes && pack.type <= kPerformerPack);
    }
    QString text(const TextJoiner& joiner, int track) const
    {
        const QByteArray bytes = joiner.texts().value(track);
        return (msJis ? textFromMsJis(bytes) : textFromLatin1(bytes)).simplified();
    }
};

} // namespace

std::optional<DiscNames> namesInPacks(const QByteArray& packs, int firstTrack, int trackCount)
{
    std::array<Block, kBlockCount> blocks;
    for (const Pack& pack : soundPacks(packs))
        blocks[static_cast<size_t>(pack.block)].take(pack);
    for (const Block& block : blocks) {
        DiscNames names{block.text(block.titles, 0), block.text(block.performers, 0), {}};
        for (int track = firstTrack; track < firstTrack + trackCount; ++track)
            names.tracks << TrackNames{block.text(block.titles, track), block.text(block.performers, track)};
        if (names.haveTracksNames() || !names.title.isEmpty() || !names.artist.isEmpty())
            return names;
    }
    return std::nullopt;
}

quint16 cdTextCrc(const char* pack)
{
    quint16 crc = 0;
    for (int i = 0; i < kHeaderBytes + kTextBytes; ++i) {
        crc = static_cast<quint16>(crc ^ static_cast<uchar>(pack[i]) << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<quint16>(crc & 0x8000 ? crc << 1 ^ 0x1021 : crc << 1);
    }
    return static_cast<quint16>(~crc);
}

} // namespace zib
