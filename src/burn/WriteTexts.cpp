#include "burn/WriteTexts.h"

#include "burn/CDWriterAPI.h"
#include "components/DVDWriterPro.h"

namespace WriteTexts {

namespace {

/// A track's number with at least two digits.
QString twoDigits(qint32 number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

} // namespace

QString reading(qint32 track, qint32 number, const QString& fileName)
{
    return QStringLiteral("Track: ") + twoDigits(track) + QStringLiteral(" - Reading...") +
           QString::number(number) + QStringLiteral(" - ") + fileName;
}

QString closingTrack(qint32 track)
{
    return QStringLiteral("Closing Track...#") + twoDigits(track);
}

QString error(qint32 code, qint32 sense, const QString& description, const QString& senseData)
{
    const QString text = QStringLiteral("Writing Error: (%1)   ").arg(code) + description + u'\n';
    if (code != DVDWriterPro::kDriveError)
        return text;
    return text + CDWriterAPI::WriterErrorText(sense) + u'\n' + QStringLiteral(" Error Sense Data: ") +
           senseData;
}

} // namespace WriteTexts
