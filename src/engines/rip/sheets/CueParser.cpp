#include "engines/rip/sheets/CueParser.h"

#include "common/CdTime.h"
#include "engines/rip/sheets/SheetText.h"

#include <QHash>
#include <QRegularExpression>

namespace zib {

namespace {

/// Bytes of a sector in the file, by the word for the track; sound with graphics carries its subcode along.
int sectorBytesOf(const QString& mode)
{
    static const QHash<QString, int> fixed{{QStringLiteral("AUDIO"), 2352}, {QStringLiteral("CDG"), 2448}};
    static const QRegularExpression data(
        QStringLiteral("^(?:MODE1|MODE2|CDI)/(2048|2056|2324|2328|2332|2336|2352|2368|2448)$"));
    if (const auto match = data.match(mode); match.hasMatch())
        return match.captured(1).toInt();
    return fixed.value(mode, 0);
}

/// What stands between quotes, or all of it.
QString unquoted(const QString& text)
{
    const qsizetype last = text.lastIndexOf(u'"');
    const bool quoted = text.startsWith(u'"') && last > 0;
    return quoted ? text.mid(1, last - 1).replace(QStringLiteral("\\\""), QStringLiteral("\"")) : text;
}

/// Takes a sheet line by line.
class CueParser
{
public:
    Outcome<DiscSheet> parse(const QString& text);

private:
    void take(const QString& line);
    void takeFile(const QString& rest);
    void takeTrack(const QString& rest);
    void takeIndex(const QString& rest);
    void takeSilence(const QString& time, bool gap);
    void takeFlags(const QString& flags);
    void takeName(const QString& name, QString SheetTrack::*ofTrack, QString DiscSheet::*ofDisc);
    void addPiece(int index, qint64 at);
    void closeTrack();
    SheetTrack& track() { return m_sheet.tracks.last(); }
    bool hasTrack() const { return !m_sheet.tracks.isEmpty(); }
    void fail(const QString& words);
    void failHere();

    DiscSheet m_sheet;
    QString m_failure;
    int m_line = 0;
    int m_index = -1;     ///< The last index of the track; -1 before its first one.
    qint64 m_postgap = 0; ///< Of the track, in bytes.
    qint64 m_at = 0;      ///< The last index in the file: in frames,
    qint64 m_offset = 0;  ///< and in bytes.
    int m_lastSector = 0; ///< Bytes of a sector behind it; 0 before the first one of a file.
    int m_openTrack = -1; ///< The piece that the next index in the file ends.
    qsizetype m_openPiece = 0;
};

void CueParser::fail(const QString& words)
{
    if (m_failure.isEmpty())
        m_failure = words;
}

void CueParser::failHere()
{
    fail(QStringLiteral("line %1 of the sheet is damaged").arg(m_line));
}

Outcome<DiscSheet> CueParser::parse(const QString& text)
{
    for (const QString& line : linesOf(text)) {
        ++m_line;
        take(line);
    }
    if (m_sheet.files.isEmpty())
        fail(QStringLiteral("the sheet names no file"));
    if (!hasTrack())
        fail(QStringLiteral("the sheet has no tracks"));
    else
        closeTrack();
    if (!m_failure.isEmpty())
        return Failure{Failure::Kind::BadValue, m_failure};
    return m_sheet;
}

void CueParser::take(const QString& line)
{
    static const QRegularExpression firstWord(QStringLiteral("^(\\S+)\\s*(.*)$"));
    const auto match = firstWord.match(line);
    const QString word = match.captured(1).toUpper();
    const QString rest = match.captured(2);
    if (word == QStringLiteral("FILE"))
        takeFile(rest);
    else if (word == QStringLiteral("TRACK"))
        takeTrack(rest);
    else if (word == QStringLiteral("INDEX"))
        takeIndex(rest);
    else if (word == QStringLiteral("PREGAP") || word == QStringLiteral("POSTGAP"))
        takeSilence(rest, word == QStringLiteral("PREGAP"));
    else if (word == QStringLiteral("FLAGS"))
        takeFlags(rest.toUpper());
    else if (word == QStringLiteral("TITLE"))
        takeName(unquoted(rest), &SheetTrack::title, &DiscSheet::title);
    else if (word == QStringLiteral("PERFORMER"))
        takeName(unquoted(rest), &SheetTrack::performer, &DiscSheet::performer);
}

/// The name may be quoted or not, and the kind of the file may be missing.
void CueParser::takeFile(const QString& rest)
{
    static const QRegularExpression quoted(QStringLiteral("^\"(.*)\"\\s*(\\S*)$"));
    static const QRegularExpression plain(QStringLiteral("^(.*\\S)\\s+([A-Za-z0-9]+)$"));
    QString name = rest;
    QString kind;
    if (const auto match = quoted.match(rest); match.hasMatch()) {
        name = match.captured(1);
        kind = match.captured(2).toUpper();
    } else if (const auto words = plain.match(rest); words.hasMatch()) {
        name = words.captured(1);
        kind = words.captured(2).toUpper();
    }
    if (name.isEmpty())
        return failHere();
    auto is = SheetFile::Kind::Sound;
    if (kind.isEmpty() || kind == QStringLiteral("BINARY"))
        is = SheetFile::Kind::Raw;
    else if (kind == QStringLiteral("MOTOROLA"))
        is = SheetFile::Kind::RawSwapped;
    m_sheet.files << SheetFile{name, is};
    m_openTrack = -1;
    m_lastSector = 0;
    m_at = m_offset = 0;
}

void CueParser::takeTrack(const QString& rest)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,3})\\s+(\\S+)$"));
    if (hasTrack())
        closeTrack();
    const auto match = form.match(rest);
    if (!match.hasMatch())
        return failHere();
    const QString mode = match.captured(2).toUpper();
    SheetTrack next{.number = match.captured(1).toInt(), .sectorBytes = sectorBytesOf(mode)};
    next.audio = mode == QStringLiteral("AUDIO") || mode == QStringLiteral("CDG");
    if (next.sectorBytes == 0)
        fail(QStringLiteral("the kind of track %1 is not known: %2").arg(next.number).arg(match.captured(2)));
    if (next.number < 1 || next.number > kMostTracks || (hasTrack() && next.number != track().number + 1))
        fail(QStringLiteral("the tracks are not numbered in order"));
    m_sheet.tracks << next;
    m_index = -1;
    m_postgap = 0;
}

void CueParser::takeIndex(const QString& rest)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,2})\\s+(\\S+)$"));
    const auto match = form.match(rest);
    const auto at = framesOfTime(match.captured(2));
    const int index = match.captured(1).toInt();
    if (!match.hasMatch() || !at || !hasTrack() || m_sheet.files.isEmpty() || index <= m_index ||
        (index > 1 && m_index < 1))
        return failHere();
    if (m_lastSector > 0 && *at < m_at)
        return fail(QStringLiteral("the times of track %1 go backwards").arg(track().number));
    addPiece(index, *at);
    m_index = index;
}

/// What lies in a file before its first index is a gap too.
void CueParser::addPiece(int index, qint64 at)
{
    const int file = static_cast<int>(m_sheet.files.size()) - 1;
    const int sector = m_lastSector > 0 ? m_lastSector : track().sectorBytes;
    const qint64 bytes = (at - m_at) * sector;
    if (m_openTrack >= 0)
        m_sheet.tracks[m_openTrack].pieces[m_openPiece].bytes = bytes;
    else if (bytes > 0)
        track().pieces << SheetPiece{.file = file, .bytes = bytes, .isGap = true};
    m_at = at;
    m_offset += bytes;
    m_lastSector = track().sectorBytes;
    m_openTrack = static_cast<int>(m_sheet.tracks.size()) - 1;
    m_openPiece = track().pieces.size();
    track().pieces << SheetPiece{.file = file, .offset = m_offset, .isGap = index == 0};
}

/// Silence that stands in no file: before a track, or behind it.
void CueParser::takeSilence(const QString& time, bool gap)
{
    const auto frames = framesOfTime(time);
    if (!frames || !hasTrack() || (gap && m_index > 0))
        return failHere();
    const qint64 bytes = *frames * track().sectorBytes;
    if (gap)
        track().pieces << SheetPiece{.bytes = bytes, .isGap = true};
    else
        m_postgap = bytes;
}

void CueParser::takeFlags(const QString& flags)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    if (!hasTrack())
        return;
    const QStringList words = flags.split(blanks);
    track().copyPermitted = words.contains(QStringLiteral("DCP"));
    track().preemphasis = words.contains(QStringLiteral("PRE"));
}

void CueParser::takeName(const QString& name, QString SheetTrack::*ofTrack, QString DiscSheet::*ofDisc)
{
    if (hasTrack())
        track().*ofTrack = name;
    else
        m_sheet.*ofDisc = name;
}

void CueParser::closeTrack()
{
    if (m_index < 1)
        fail(QStringLiteral("track %1 has no beginning").arg(track().number));
    if (m_postgap > 0)
        track().pieces << SheetPiece{.bytes = m_postgap};
}

} // namespace

Outcome<DiscSheet> parseCueSheet(const QString& text)
{
    return CueParser().parse(text);
}

} // namespace zib
