#include "engines/rip/sheets/SheetText.h"

#include "common/CdTime.h"

#include <QRegularExpression>
#include <QStringDecoder>

#include <algorithm>

namespace zib {

namespace {

const QByteArray kUtf8 = QByteArrayLiteral("UTF-8");
const QByteArray kWestern = QByteArrayLiteral("windows-1252");
const QByteArray kPlainWestern = QByteArrayLiteral("ISO-8859-1");
const QByteArray kJapanese = QByteArrayLiteral("Shift_JIS");

/// The encoding that the first bytes give away.
QByteArray toldByItself(const QByteArray& bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return kUtf8;
    if (bytes.startsWith("\xFF\xFE"))
        return QByteArrayLiteral("UTF-16LE");
    if (bytes.startsWith("\xFE\xFF"))
        return QByteArrayLiteral("UTF-16BE");
    if (bytes.size() < 2 || (bytes[0] == '\0') == (bytes[1] == '\0'))
        return {};
    return bytes[0] == '\0' ? QByteArrayLiteral("UTF-16BE") : QByteArrayLiteral("UTF-16LE");
}

/// Whether kana are among the letters: in a western text they would be quotation marks before capitals.
bool hasKana(const QString& text)
{
    return std::any_of(text.cbegin(), text.cend(),
                       [](QChar letter) { return letter >= QChar(0x3041) && letter <= QChar(0x30FF); });
}

} // namespace

std::optional<QString> decoded(const QByteArray& bytes, const QByteArray& encoding)
{
    if (encoding == kPlainWestern)
        return QString::fromLatin1(bytes);
    QStringDecoder decoder(encoding.constData());
    if (!decoder.isValid())
        return std::nullopt;
    const QString text = decoder.decode(bytes);
    if (decoder.hasError() || text.contains(QChar::ReplacementCharacter) ||
        (encoding == kJapanese && text.contains(QChar(0x1A)))) // what the converter puts for no letter
        return std::nullopt;
    return text;
}

QList<SheetReading> readingsOf(const QByteArray& bytes)
{
    if (const QByteArray told = toldByItself(bytes); !told.isEmpty()) {
        QStringDecoder lenient(told.constData());
        return {{lenient.decode(bytes), told}};
    }
    if (const auto text = decoded(bytes, kUtf8))
        return {{*text, kUtf8}};
    QList<SheetReading> readings;
    for (const QByteArray& encoding : {kWestern, kPlainWestern, kJapanese})
        if (const auto text = decoded(bytes, encoding))
            readings << SheetReading{*text, encoding};
    if (readings.last().encoding == kJapanese && hasKana(readings.last().text))
        readings.move(readings.size() - 1, 0);
    return readings;
}

QStringList linesOf(const QString& text)
{
    static const QRegularExpression lineEnd(QStringLiteral("\r\n|\r|\n"));
    QStringList lines = text.split(lineEnd);
    for (QString& line : lines)
        line = line.trimmed();
    if (!lines.isEmpty() && lines[0].startsWith(QChar::ByteOrderMark))
        lines[0] = lines[0].mid(1).trimmed();
    return lines;
}

std::optional<qint64> framesOfTime(const QString& time)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,4}):(\\d{1,2})(?::(\\d{1,2}))?$"),
                                         QRegularExpression::DontCaptureOption);
    if (!form.match(time).hasMatch())
        return std::nullopt;
    const QStringList parts = time.split(u':');
    const qint64 seconds = parts[1].toLongLong();
    const qint64 frames = parts.value(2).toLongLong();
    if (seconds >= 60 || frames >= kFramesPerSecond)
        return std::nullopt;
    return (parts[0].toLongLong() * 60 + seconds) * kFramesPerSecond + frames;
}

} // namespace zib
