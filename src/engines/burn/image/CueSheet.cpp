#include "engines/burn/image/CueSheet.h"

#include <QRegularExpression>

namespace zib {

namespace {

/// The disc is its owner's own: nothing forbids to copy it (digital copy permitted).
const QString kCopyPermitted = QStringLiteral("FLAGS DCP");

/// A time as a whole number of frames, or -1.
qint64 framesOf(const QString& minutes, const QString& seconds, const QString& frames)
{
    const int s = seconds.toInt();
    const int f = frames.toInt();
    return s < 60 && f < kFramesPerSecond ? (minutes.toLongLong() * 60 + s) * kFramesPerSecond + f : -1;
}

/// The name that a line gives: the track's, or before the first one the disc's.
QString& nameIn(CueContent& content, const QString& keyword)
{
    const bool title = keyword == QStringLiteral("TITLE");
    if (content.names.tracks.isEmpty())
        return title ? content.names.title : content.names.artist;
    TrackNames& track = content.names.tracks.last();
    return title ? track.title : track.artist;
}

/// Takes one line into @p content. @returns whether it has a place there.
bool takeLine(const QString& line, CueContent& content)
{
    static const QRegularExpression file(QStringLiteral("^FILE \"([^\"]+)\" BINARY$"));
    static const QRegularExpression track(QStringLiteral("^TRACK (\\d\\d) AUDIO$"));
    static const QRegularExpression name(QStringLiteral("^(TITLE|PERFORMER) \"(.*)\"$"));
    static const QRegularExpression index(QStringLiteral("^INDEX (0[01]) (\\d{2,}):(\\d\\d):(\\d\\d)$"));
    if (const auto m = file.match(line); m.hasMatch() && content.binName.isEmpty()) {
        content.binName = m.captured(1);
        return true;
    }
    if (const auto m = track.match(line); m.hasMatch()) {
        content.tracks << CueTrack{CdTime::fromFrames(-1), CdTime::fromFrames(-1)};
        content.names.tracks << TrackNames{};
        return m.captured(1).toInt() == content.tracks.size();
    }
    if (line == kCopyPermitted)
        return !content.tracks.isEmpty();
    if (const auto m = name.match(line); m.hasMatch()) {
        nameIn(content, m.captured(1)) = m.captured(2).replace(QStringLiteral("\\\""), QStringLiteral("\""));
        return true;
    }
    const auto m = index.match(line);
    if (!m.hasMatch() || content.tracks.isEmpty())
        return false;
    const CdTime time = CdTime::fromFrames(framesOf(m.captured(2), m.captured(3), m.captured(4)));
    CueTrack& last = content.tracks.last();
    if (m.captured(1) == QStringLiteral("01"))
        last.start = time;
    if (last.gap < CdTime())
        last.gap = time;
    return time >= CdTime();
}

/// Whether every track has its start and they follow each other.
bool inOrder(const QList<CueTrack>& tracks)
{
    CdTime at;
    for (const CueTrack& track : tracks) {
        if (track.gap < at || track.start < track.gap)
            return false;
        at = track.start;
    }
    return !tracks.isEmpty();
}

/// A name as a sheet can hold it: on one line, without control characters, and nothing that UTF-8 has no
/// bytes for, as half a letter of a damaged tag.
QString sheetName(const QString& name)
{
    QString told;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar letter = name[i];
        if (letter.isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate())
            told += name.mid(i++, 2);
        else if (letter.isSpace() || (!letter.isSurrogate() && letter.category() != QChar::Other_Control))
            told += letter;
    }
    return told.simplified();
}

/// The lines of those names that are not empty. A quote within a name is marked.
QString nameLines(const TrackNames& names, const QString& indent)
{
    const auto line = [&indent](const QString& keyword, QString name) {
        name.replace(u'"', QStringLiteral("\\\""));
        return name.isEmpty() ? QString()
                              : indent + keyword + QStringLiteral(" \"") + name + QStringLiteral("\"\n");
    };
    return line(QStringLiteral("TITLE"), names.title) + line(QStringLiteral("PERFORMER"), names.artist);
}

} // namespace

QByteArray cueText(const QString& binName, const QList<CueTrack>& tracks, const DiscNames& names)
{
    const DiscNames told = sheetNames(names, tracks.size());
    QString text = nameLines({told.title, told.artist}, {});
    text += QStringLiteral("FILE \"%1\" BINARY\n").arg(binName);
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        text += QStringLiteral("  TRACK %1 AUDIO\n").arg(i + 1, 2, 10, QLatin1Char('0'));
        text += nameLines(told.tracks.value(i), QStringLiteral("    "));
        text += QStringLiteral("    %1\n").arg(kCopyPermitted);
        if (tracks[i].gap != tracks[i].start)
            text += QStringLiteral("    INDEX 00 %1\n").arg(tracks[i].gap.toMsf());
        text += QStringLiteral("    INDEX 01 %1\n").arg(tracks[i].start.toMsf());
    }
    return text.toUtf8();
}

DiscNames sheetNames(const DiscNames& names, qsizetype trackCount)
{
    DiscNames told{sheetName(names.title), sheetName(names.artist), {}};
    for (qsizetype i = 0; i < trackCount; ++i) {
        const TrackNames track = names.tracks.value(i);
        told.tracks << TrackNames{sheetName(track.title), sheetName(track.artist)};
    }
    return told;
}

Outcome<CueContent> parseCue(const QByteArray& text)
{
    CueContent content;
    for (const QString& line : QString::fromUtf8(text).split(u'\n', Qt::SkipEmptyParts))
        if (!takeLine(line.trimmed(), content))
            return Failure{Failure::Kind::BadValue, line};
    if (content.binName.isEmpty() || !inOrder(content.tracks))
        return Failure{Failure::Kind::BadValue, content.binName};
    return content;
}

} // namespace zib
