#include "app/TipList.h"

#include "common/NativeName.h"

#include <QFile>
#include <QStringDecoder>

namespace zib {

namespace {

constexpr qint64 kMostBytes = 16 * 1024 * 1024; // A larger file is no list of tips.

QString decoded(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    return decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

} // namespace

QStringList TipList::linesOf(const QByteArray& text)
{
    QString lines = decoded(text);
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    if (lines.endsWith(u'\n'))
        lines.chop(1);
    else if (lines.isEmpty())
        return {};
    return lines.split(u'\n');
}

bool TipList::load(const QString& path)
{
    m_tips.clear();
    QFile file;
    if (!openForReading(file, path) || file.size() > kMostBytes)
        return false;
    m_tips = linesOf(file.readAll());
    return true;
}

std::optional<QString> TipList::any()
{
    if (m_tips.isEmpty())
        return std::nullopt;
    const int number = static_cast<int>(count() * m_random.generateDouble()) + 1;
    return m_tips[number - 1];
}

} // namespace zib
