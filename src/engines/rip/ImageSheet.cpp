#include "engines/rip/ImageSheet.h"

#include "common/CdTime.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QRegularExpression>

namespace zib {

namespace {

constexpr qint64 kLargestSheet = 64 * 1024;

/// What a sheet says, as far as it must be right for reading.
struct Sheet
{
    QString binary{};       ///< As written.
    QList<qint64> starts{}; ///< INDEX 01 of each track in frames; -1 until it is read.
    int lastNumber = 0;     ///< The number of the last track.
    bool sound = true;
};

/// A time as frames, or -1.
qint64 framesOf(const QRegularExpressionMatch& time, int from)
{
    const int seconds = time.captured(from + 1).toInt();
    const int frames = time.captured(from + 2).toInt();
    if (seconds >= 60 || frames >= kFramesPerSecond)
        return -1;
    return (time.captured(from).toLongLong() * 60 + seconds) * kFramesPerSecond + frames;
}

bool takeFile(const QString& line, Sheet& sheet)
{
    static const QRegularExpression file(
        QStringLiteral("^FILE\\s+(?:\"([^\"/]+)\"|([^\"/\\s]+))\\s+BINARY$"));
    const auto match = file.match(line);
    if (!match.hasMatch() || !sheet.binary.isEmpty() || !sheet.starts.isEmpty())
        return false;
    sheet.binary = match.captured(1) + match.captured(2);
    return sheet.binary != QStringLiteral("..");
}

bool takeTrack(const QString& line, Sheet& sheet)
{
    static const QRegularExpression track(
        QStringLiteral("^TRACK\\s+(\\d{1,2})\\s+(?:AUDIO|MODE1/2352|MODE2/2352)$"));
    const auto match = track.match(line);
    const int number = match.captured(1).toInt();
    const bool follows = sheet.starts.isEmpty() ? number >= 1 : number == sheet.lastNumber + 1;
    const bool complete = sheet.starts.isEmpty() || sheet.starts.last() >= 0;
    if (!match.hasMatch() || !follows || !complete || sheet.binary.isEmpty())
        return false;
    sheet.lastNumber = number;
    sheet.starts << -1;
    return true;
}

bool takeIndex(const QString& line, Sheet& sheet)
{
    static const QRegularExpression index(
        QStringLiteral("^INDEX\\s+(\\d{1,2})\\s+(\\d{1,4}):(\\d\\d):(\\d\\d)$"));
    const auto match = index.match(line);
    const qint64 at = match.hasMatch() ? framesOf(match, 2) : -1;
    if (at < 0 || sheet.starts.isEmpty())
        return false;
    const qsizetype count = sheet.starts.size();
    const qint64 before = count > 1 ? sheet.starts[count - 2] : -1;
    if (at <= before && count > 1)
        return false;
    if (match.captured(1).toInt() != 1)
        return true;
    const bool first = sheet.starts.last() < 0;
    sheet.starts.last() = at;
    return first;
}

void take(const QString& line, Sheet& sheet)
{
    const QString word = line.section(QRegularExpression(QStringLiteral("\\s")), 0, 0);
    bool good = true;
    if (word == QStringLiteral("FILE"))
        good = takeFile(line, sheet);
    else if (word == QStringLiteral("TRACK"))
        good = takeTrack(line, sheet);
    else if (word == QStringLiteral("INDEX"))
        good = takeIndex(line, sheet);
    sheet.sound = sheet.sound && good;
}

} // namespace

Outcome<QString> soundBinaryOf(const QString& sheet)
{
    const Failure unsound{Failure::Kind::UnreadableFile, sheet};
    QFile file(sheet);
    if (!QFileInfo(sheet).isFile() || file.size() > kLargestSheet || !file.open(QIODevice::ReadOnly))
        return unsound;
    Sheet found;
    for (const QByteArray& line : file.readAll().split('\n'))
        take(QFile::decodeName(line).trimmed(), found);
    if (!found.sound || found.starts.isEmpty() || found.starts.last() < 0)
        return unsound;
    const QString binary = QFileInfo(sheet).absolutePath() + u'/' + found.binary;
    const QFileInfo info(binary);
    if (!info.isFile() || !info.isReadable() || info.size() / kBytesPerFrame <= found.starts.last())
        return unsound;
    return binary;
}

} // namespace zib
