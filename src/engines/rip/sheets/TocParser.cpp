#include "engines/rip/sheets/TocParser.h"

#include "common/CdTime.h"
#include "engines/rip/sheets/SheetText.h"
#include "engines/rip/sheets/TocTokens.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace zib {

namespace {

constexpr int kSubchannelBytes = 96;
constexpr int kBytesPerPair = 4; // left and right
/// Larger numbers tell no disc.
constexpr qint64 kMostBytes = qint64{1} << 40;

/// Takes the tokens of a TOC file one after the other.
class TocParser
{
public:
    explicit TocParser(QList<TocToken> tokens) : m_tokens(std::move(tokens)) {}
    Outcome<DiscSheet> parse();

private:
    using Statement = void (TocParser::*)();
    static const QHash<QString, Statement>& statements();
    void takeStatement();
    void takeTrack();
    void takeAudioFile();
    void takeDataFile();
    void takeSilence();
    void takeStart();
    void takePregap();
    void takeCopy();
    void takeEmphasis();
    void takeText() { next(); }
    void takeTime() { length(); }
    void takeNo() { m_negated = true; }
    void takeFifo() { fail(QStringLiteral("the sheet takes its sound from a running program")); }
    void takeCdText();
    void takeCdTextItem(const QString& item);
    void skipBlock();

    bool ended() const { return m_at >= m_tokens.size(); }
    const TocToken& peek() const { return m_tokens[m_at]; }
    QString next();
    bool nextIs(const QString& word);
    bool nextIsNumber() const;
    qint64 length();
    QString name();
    void takePartLength(SheetPiece& piece);
    int fileIndex(const SheetFile& file);
    void addPiece(const SheetPiece& piece);
    SheetTrack& track() { return m_sheet.tracks.last(); }
    bool hasTrack() const { return !m_sheet.tracks.isEmpty(); }
    void fail(const QString& words);
    void failHere();

    const QList<TocToken> m_tokens;
    qsizetype m_at = 0;
    int m_line = 1;
    bool m_negated = false;
    DiscSheet m_sheet;
    QString m_failure;
};

void TocParser::fail(const QString& words)
{
    if (m_failure.isEmpty())
        m_failure = words;
}

void TocParser::failHere()
{
    fail(QStringLiteral("line %1 of the sheet is damaged").arg(m_line));
}

QString TocParser::next()
{
    if (ended()) {
        failHere();
        return {};
    }
    m_line = peek().line;
    return m_tokens[m_at++].text;
}

bool TocParser::nextIs(const QString& word)
{
    if (ended() || peek().quoted || peek().text.compare(word, Qt::CaseInsensitive) != 0)
        return false;
    next();
    return true;
}

bool TocParser::nextIsNumber() const
{
    return !ended() && !peek().quoted && peek().text[0] >= u'0' && peek().text[0] <= u'9';
}

/// A time or a plain number, as bytes: numbers count samples of sound, or bytes of data.
qint64 TocParser::length()
{
    const QString text = next();
    if (const auto frames = framesOfTime(text); frames && hasTrack())
        return *frames * track().sectorBytes;
    bool isNumber = false;
    const qint64 count = text.toLongLong(&isNumber);
    const int unit = hasTrack() && track().audio ? kBytesPerPair : 1;
    if (!isNumber || count < 0 || count > kMostBytes)
        failHere();
    return isNumber ? std::clamp<qint64>(count, 0, kMostBytes) * unit : 0;
}

QString TocParser::name()
{
    if (ended() || !peek().quoted || peek().text.isEmpty())
        failHere();
    return next();
}

int TocParser::fileIndex(const SheetFile& file)
{
    if (!m_sheet.files.contains(file))
        m_sheet.files << file;
    return static_cast<int>(m_sheet.files.indexOf(file));
}

void TocParser::addPiece(const SheetPiece& piece)
{
    if (!hasTrack())
        return failHere();
    track().pieces << piece;
    track().pieces.last().wholeFrames = false;
}

const QHash<QString, TocParser::Statement>& TocParser::statements()
{
    static const QHash<QString, Statement> all{
        {QStringLiteral("TRACK"), &TocParser::takeTrack},
        {QStringLiteral("FILE"), &TocParser::takeAudioFile},
        {QStringLiteral("AUDIOFILE"), &TocParser::takeAudioFile},
        {QStringLiteral("DATAFILE"), &TocParser::takeDataFile},
        {QStringLiteral("SILENCE"), &TocParser::takeSilence},
        {QStringLiteral("ZERO"), &TocParser::takeSilence},
        {QStringLiteral("FIFO"), &TocParser::takeFifo},
        {QStringLiteral("START"), &TocParser::takeStart},
        {QStringLiteral("PREGAP"), &TocParser::takePregap},
        {QStringLiteral("INDEX"), &TocParser::takeTime},
        {QStringLiteral("CATALOG"), &TocParser::takeText},
        {QStringLiteral("ISRC"), &TocParser::takeText},
        {QStringLiteral("CD_TEXT"), &TocParser::takeCdText},
        {QStringLiteral("NO"), &TocParser::takeNo},
        {QStringLiteral("COPY"), &TocParser::takeCopy},
        {QStringLiteral("PRE_EMPHASIS"), &TocParser::takeEmphasis},
    };
    return all;
}

Outcome<DiscSheet> TocParser::parse()
{
    while (!ended() && m_failure.isEmpty())
        takeStatement();
    if (!hasTrack())
        fail(QStringLiteral("the sheet has no tracks"));
    for (const SheetTrack& each : std::as_const(m_sheet.tracks))
        if (each.pieces.isEmpty())
            fail(QStringLiteral("track %1 is empty").arg(each.number));
    if (!m_failure.isEmpty())
        return Failure{Failure::Kind::BadValue, m_failure};
    return m_sheet;
}

/// Words that are not known are passed over.
void TocParser::takeStatement()
{
    const bool quoted = peek().quoted;
    const QString word = next().toUpper();
    if (word == u"{")
        return skipBlock();
    if (const Statement taken = quoted ? nullptr : statements().value(word, nullptr))
        (this->*taken)();
    if (word != QStringLiteral("NO"))
        m_negated = false;
}

void TocParser::takeTrack()
{
    static const QHash<QString, int> sectors{
        {QStringLiteral("AUDIO"), 2352},       {QStringLiteral("MODE0"), 2336},
        {QStringLiteral("MODE1"), 2048},       {QStringLiteral("MODE1_RAW"), 2352},
        {QStringLiteral("MODE2"), 2336},       {QStringLiteral("MODE2_FORM1"), 2048},
        {QStringLiteral("MODE2_FORM2"), 2324}, {QStringLiteral("MODE2_FORM_MIX"), 2336},
        {QStringLiteral("MODE2_RAW"), 2352},
    };
    const QString mode = next().toUpper();
    const int number = static_cast<int>(m_sheet.tracks.size()) + 1;
    SheetTrack begun{.number = number, .audio = mode == QStringLiteral("AUDIO")};
    begun.sectorBytes = sectors.value(mode);
    if (begun.sectorBytes == 0)
        fail(QStringLiteral("the kind of track %1 is not known: %2").arg(number).arg(mode));
    if (number > kMostTracks)
        fail(QStringLiteral("the sheet has more than %1 tracks").arg(kMostTracks));
    if (nextIs(QStringLiteral("RW")) || nextIs(QStringLiteral("RW_RAW")))
        begun.sectorBytes += kSubchannelBytes;
    m_sheet.tracks << begun;
}

/// Raw sound has its high byte first, unless the sheet says otherwise.
void TocParser::takeAudioFile()
{
    SheetFile file{.name = name(), .kind = SheetFile::Kind::RawSwapped};
    SheetPiece piece;
    if (file.name.endsWith(QStringLiteral(".wav"), Qt::CaseInsensitive))
        file.kind = SheetFile::Kind::Sound;
    if (nextIs(QStringLiteral("SWAP")) && file.kind == SheetFile::Kind::RawSwapped)
        file.kind = SheetFile::Kind::Raw;
    if (!ended() && !peek().quoted && peek().text.startsWith(u'#'))
        piece.offset = std::clamp<qint64>(next().mid(1).toLongLong(), 0, kMostBytes);
    piece.offset += length();
    takePartLength(piece);
    piece.file = fileIndex(file);
    addPiece(piece);
}

/// Nothing and nought mean all that is left.
void TocParser::takePartLength(SheetPiece& piece)
{
    if (const qint64 bytes = nextIsNumber() ? length() : 0; bytes > 0)
        piece.bytes = bytes;
}

void TocParser::takeDataFile()
{
    SheetPiece piece{.file = fileIndex({.name = name()})};
    if (!ended() && !peek().quoted && peek().text.startsWith(u'#'))
        piece.offset = std::clamp<qint64>(next().mid(1).toLongLong(), 0, kMostBytes);
    takePartLength(piece);
    addPiece(piece);
}

/// The kind of the silent sectors may stand before their length.
void TocParser::takeSilence()
{
    while (!ended() && !nextIsNumber() && !peek().quoted && peek().text != u"{")
        next();
    addPiece({.bytes = length()});
}

/// Without a time, all that the track has so far is its gap.
void TocParser::takeStart()
{
    if (!hasTrack())
        return failHere();
    if (nextIsNumber()) {
        track().gapFrames = length() / track().sectorBytes;
        return;
    }
    for (SheetPiece& piece : track().pieces)
        piece.isGap = true;
}

void TocParser::takePregap()
{
    addPiece({.bytes = length(), .isGap = true});
}

void TocParser::takeCopy()
{
    if (hasTrack())
        track().copyPermitted = !m_negated;
}

void TocParser::takeEmphasis()
{
    if (hasTrack())
        track().preemphasis = !m_negated;
}

void TocParser::skipBlock()
{
    for (int depth = 1; depth > 0 && !ended();) {
        const bool quoted = peek().quoted;
        const QString text = next();
        if (!quoted)
            depth += text == u"{" ? 1 : text == u"}" ? -1 : 0;
    }
}

/// Of several languages the first one that has the item counts.
void TocParser::takeCdText()
{
    if (!nextIs(QStringLiteral("{")))
        return failHere();
    for (int depth = 1; depth > 0 && !ended();) {
        const bool quoted = peek().quoted;
        const QString text = next();
        if (quoted)
            continue;
        depth += text == u"{" ? 1 : text == u"}" ? -1 : 0;
        if (!ended() && peek().quoted)
            takeCdTextItem(text.toUpper());
    }
}

void TocParser::takeCdTextItem(const QString& item)
{
    const QString value = next();
    QString* target = nullptr;
    if (item == QStringLiteral("TITLE"))
        target = hasTrack() ? &track().title : &m_sheet.title;
    else if (item == QStringLiteral("PERFORMER"))
        target = hasTrack() ? &track().performer : &m_sheet.performer;
    if (target && target->isEmpty())
        *target = value;
}

} // namespace

Outcome<DiscSheet> parseTocSheet(const QString& text)
{
    auto tokens = tocTokens(text);
    if (!tokens)
        return Failure{Failure::Kind::BadValue, QStringLiteral("a text in the sheet has no end")};
    return TocParser(std::move(*tokens)).parse();
}

} // namespace zib
