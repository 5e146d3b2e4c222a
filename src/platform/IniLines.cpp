#include "platform/IniLines.h"

#include "platform/IniNames.h"

#include <QString>
#include <QStringDecoder>
#include <QStringEncoder>

namespace zib {

namespace {

QByteArray withoutQuotes(const QByteArray& value)
{
    const bool quoted =
        value.size() >= 2 && (value[0] == '"' || value[0] == '\'') && value.back() == value[0];
    return quoted ? value.mid(1, value.size() - 2) : value;
}

} // namespace

IniLines::IniLines(QByteArray bytes) : m_bytes(std::move(bytes))
{
    findEncoding();
}

void IniLines::findEncoding()
{
    if (m_bytes.startsWith("\xEF\xBB\xBF"))
        m_begin = 3;
    m_bigEndian = m_bytes.startsWith("\xFE\xFF");
    if (m_bigEndian || m_bytes.startsWith("\xFF\xFE")) {
        m_unit = 2;
        m_begin = 2;
    }
    m_end = m_bytes.size() - (m_bytes.size() - m_begin) % m_unit;
}

char16_t IniLines::at(qsizetype place) const
{
    const auto byte = [this](qsizetype i) { return static_cast<char16_t>(static_cast<uchar>(m_bytes[i])); };
    if (m_unit == 1)
        return byte(place);
    const char16_t high = byte(m_bigEndian ? place : place + 1);
    const char16_t low = byte(m_bigEndian ? place + 1 : place);
    return static_cast<char16_t>(high << 8 | low);
}

QByteArray IniLines::textOf(qsizetype begin, qsizetype end) const
{
    const QByteArray raw = m_bytes.mid(begin, end - begin);
    if (m_unit == 1)
        return raw;
    QStringDecoder decoder(m_bigEndian ? QStringDecoder::Utf16BE : QStringDecoder::Utf16LE,
                           QStringConverter::Flag::ConvertInitialBom);
    const QString text = decoder(raw);
    return text.toUtf8();
}

std::optional<QByteArray> IniLines::encoded(const QByteArray& utf8) const
{
    if (m_unit == 1)
        return utf8;
    const auto text = decoded(utf8);
    if (!text)
        return std::nullopt;
    QStringEncoder encoder(m_bigEndian ? QStringEncoder::Utf16BE : QStringEncoder::Utf16LE);
    return QByteArray(encoder(*text));
}

qsizetype IniLines::skipBlanks(qsizetype begin, qsizetype end) const
{
    while (begin < end && isBlank(at(begin)))
        begin += m_unit;
    return begin;
}

qsizetype IniLines::dropBlanks(qsizetype begin, qsizetype end) const
{
    while (end > begin && isBlank(at(end - m_unit)))
        end -= m_unit;
    return end;
}

/// @returns the place of a letter, or @p end.
qsizetype IniLines::find(char16_t letter, qsizetype begin, qsizetype end) const
{
    while (begin < end && at(begin) != letter)
        begin += m_unit;
    return begin;
}

IniLines::Line IniLines::lineFrom(qsizetype begin) const
{
    Line line{.begin = begin, .end = begin};
    while (line.end < m_end && at(line.end) != u'\n' && at(line.end) != u'\r')
        line.end += m_unit;
    line.next = line.end;
    if (line.next < m_end && at(line.next) == u'\r')
        line.next += m_unit;
    if (line.next < m_end && at(line.next) == u'\n' && (line.next == line.end || at(line.end) == u'\r'))
        line.next += m_unit;
    classify(line);
    return line;
}

void IniLines::classify(Line& line) const
{
    const qsizetype first = skipBlanks(line.begin, line.end);
    if (first == line.end)
        return;
    if (at(first) == u';') {
        line.kind = Kind::Comment;
        return;
    }
    line.kind = Kind::Unknown;
    const bool header = at(first) == u'[';
    const qsizetype stop = find(header ? u']' : u'=', first, line.end);
    if (stop == line.end)
        return;
    line.name = trimmedBlanks(textOf(header ? first + m_unit : first, stop));
    if (header) {
        line.kind = Kind::Section;
    } else if (!line.name.isEmpty()) {
        line.kind = Kind::Key;
        line.afterEquals = stop + m_unit;
        line.valueBegin = skipBlanks(line.afterEquals, line.end);
    }
}

QList<IniLines::Line> IniLines::lines() const
{
    QList<Line> all;
    for (qsizetype place = m_begin; place < m_end; place = all.last().next)
        all.append(lineFrom(place));
    return all;
}

QByteArray IniLines::valueOf(const Line& line) const
{
    return withoutQuotes(textOf(line.valueBegin, dropBlanks(line.valueBegin, line.end)));
}

std::optional<QByteArray> IniLines::value(const QByteArray& section, const QByteArray& key) const
{
    return values({{section, key}}).first();
}

QList<std::optional<QByteArray>> IniLines::values(const QList<IniName>& names) const
{
    IniQuestions questions(names);
    for (qsizetype place = m_begin; place < m_end;) {
        const Line line = lineFrom(place);
        place = line.next;
        if (line.kind == Kind::Section)
            questions.enter(line.name);
        else if (line.kind == Kind::Key)
            questions.take(line.name, [&] { return valueOf(line); });
    }
    return questions.answers();
}

} // namespace zib
