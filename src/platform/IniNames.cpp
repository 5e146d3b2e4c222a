#include "platform/IniNames.h"

#include <QStringDecoder>

#include <algorithm>

namespace zib {

QByteArray trimmedBlanks(const QByteArray& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(static_cast<uchar>(text[begin])))
        ++begin;
    while (end > begin && isBlank(static_cast<uchar>(text[end - 1])))
        --end;
    return text.mid(begin, end - begin);
}

bool isAscii(const QByteArray& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<uchar>(letter) < 0x80; });
}

bool sameName(const QByteArray& one, const QByteArray& other)
{
    if (one.compare(other, Qt::CaseInsensitive) == 0)
        return true;
    if (isAscii(one) || isAscii(other))
        return false;
    const auto left = decoded(one);
    const auto right = decoded(other);
    return left && right && left->compare(*right, Qt::CaseInsensitive) == 0;
}

std::optional<QString> decoded(const QByteArray& utf8)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(utf8);
    if (decoder.hasError() || text.toUtf8() != utf8)
        return std::nullopt;
    return text;
}

} // namespace zib
