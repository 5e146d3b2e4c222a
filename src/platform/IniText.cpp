#include "platform/IniText.h"

#include <QString>
#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>

namespace zib {

namespace {

bool isBlank(char16_t letter)
{
    return letter == u' ' || letter == u'\t';
}

QByteArray trimmedBlanks(QByteArray text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(static_cast<uchar>(text[begin])))
        ++begin;
    while (end > begin && isBlank(static_cast<uchar>(text[end - 1])))
        --end;
    return text.mid(begin, end - begin);
}

/// The text of valid UTF-8, or nothing.
std::optional<QString> decoded(const QByteArray& utf8)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(utf8);
    if (decoder.hasError() || text.toUtf8() != utf8)
        return std::nullopt;
    return text;
}

bool isAscii(const QByteArray& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char letter) { return static_cast<uchar>(letter) < 0x80; });
}

/// Names compare without case; names that are not UTF-8 only without the case of ASCII letters.
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

bool holdsLineBreak(const QByteArray& text)
{
    return text.contains('\n') || text.contains('\r') || text.contains('\0');
}

bool usableSection(const QByteArray& name)
{
    return !name.isEmpty() && !holdsLineBreak(name) && !name.contains(']');
}

bool usableKey(const QByteArray& name)
{
    return !name.isEmpty() && !holdsLineBreak(name) && !name.contains('=') && name[0] != ';' &&
           name[0] != '[' && !name.startsWith("\xEF\xBB\xBF");
}

using KeyPlaces = QHash<QByteArray, qsizetype>;

QByteArray withoutQuotes(const QByteArray& value)
{
    const bool quoted =
        value.size() >= 2 && (value[0] == '"' || value[0] == '\'') && value.back() == value[0];
    return quoted ? value.mid(1, value.size() - 2) : value;
}

} // namespace

IniText::IniText(QByteArray bytes) : m_bytes(std::move(bytes))
{
    findEncoding();
}

void IniText::findEncoding()
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

char16_t IniText::at(qsizetype place) const
{
    const auto byte = [this](qsizetype i) { return static_cast<char16_t>(static_cast<uchar>(m_bytes[i])); };
    if (m_unit == 1)
        return byte(place);
    const char16_t high = byte(m_bigEndian ? place : place + 1);
    const char16_t low = byte(m_bigEndian ? place + 1 : place);
    return static_cast<char16_t>(high << 8 | low);
}

QByteArray IniText::textOf(qsizetype begin, qsizetype end) const
{
    const QByteArray raw = m_bytes.mid(begin, end - begin);
    if (m_unit == 1)
        return raw;
    QStringDecoder decoder(m_bigEndian ? QStringDecoder::Utf16BE : QStringDecoder::Utf16LE,
                           QStringConverter::Flag::ConvertInitialBom);
    const QString text = decoder(raw);
    return text.toUtf8();
}

std::optional<QByteArray> IniText::encoded(const QByteArray& utf8) const
{
    if (m_unit == 1)
        return utf8;
    const auto text = decoded(utf8);
    if (!text)
        return std::nullopt;
    QStringEncoder encoder(m_bigEndian ? QStringEncoder::Utf16BE : QStringEncoder::Utf16LE);
    return QByteArray(encoder(*text));
}

/// The line end that the file uses first, or a line feed.
QByteArray IniText::lineEnd() const
{
    for (qsizetype place = m_begin; place < m_end; place += m_unit) {
        if (at(place) == u'\n')
            return "\n";
        if (at(place) == u'\r')
            return place + m_unit < m_end && at(place + m_unit) == u'\n' ? "\r\n" : "\r";
    }
    return "\n";
}

qsizetype IniText::skipBlanks(qsizetype begin, qsizetype end) const
{
    while (begin < end && isBlank(at(begin)))
        begin += m_unit;
    return begin;
}

qsizetype IniText::dropBlanks(qsizetype begin, qsizetype end) const
{
    while (end > begin && isBlank(at(end - m_unit)))
        end -= m_unit;
    return end;
}

/// @returns the place of a letter, or @p end.
qsizetype IniText::find(char16_t letter, qsizetype begin, qsizetype end) const
{
    while (begin < end && at(begin) != letter)
        begin += m_unit;
    return begin;
}

IniText::Line IniText::lineFrom(qsizetype begin) const
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

void IniText::classify(Line& line) const
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

QList<IniText::Line> IniText::lines() const
{
    QList<Line> all;
    for (qsizetype place = m_begin; place < m_end; place = all.last().next)
        all.append(lineFrom(place));
    return all;
}

qsizetype IniText::findSection(const QList<Line>& lines, const QByteArray& name, qsizetype from)
{
    for (qsizetype i = from; i < lines.size(); ++i)
        if (lines[i].kind == Kind::Section && sameName(lines[i].name, name))
            return i;
    return -1;
}

/// @returns the index of the header behind a section, or the number of lines.
qsizetype IniText::sectionEnd(const QList<Line>& lines, qsizetype header)
{
    qsizetype i = header + 1;
    while (i < lines.size() && lines[i].kind != Kind::Section)
        ++i;
    return i;
}

qsizetype IniText::findKey(const QList<Line>& lines, qsizetype header, const QByteArray& name)
{
    for (qsizetype i = header + 1; i < lines.size() && lines[i].kind != Kind::Section; ++i)
        if (lines[i].kind == Kind::Key && sameName(lines[i].name, name))
            return i;
    return -1;
}

std::optional<QByteArray> IniText::value(const QByteArray& section, const QByteArray& key) const
{
    const QByteArray sectionName = trimmedBlanks(section);
    const QByteArray keyName = trimmedBlanks(key);
    const QList<Line> all = lines();
    const qsizetype header = sectionName.isEmpty() ? -1 : findSection(all, sectionName);
    const qsizetype found = header < 0 || keyName.isEmpty() ? -1 : findKey(all, header, keyName);
    if (found < 0)
        return std::nullopt;
    const Line& line = all[found];
    return withoutQuotes(textOf(line.valueBegin, dropBlanks(line.valueBegin, line.end)));
}

/// The lines of a section's keys by their names in small letters; of several alike the first one.
QHash<QByteArray, qsizetype> IniText::asciiKeys(const QList<Line>& lines, qsizetype header)
{
    KeyPlaces places;
    for (qsizetype i = sectionEnd(lines, header) - 1; i > header; --i)
        if (lines[i].kind == Kind::Key && isAscii(lines[i].name))
            places.insert(lines[i].name.toLower(), i);
    return places;
}

/// @returns the last line of a section that is neither blank nor a comment; the header when there is none.
qsizetype IniText::lastContent(const QList<Line>& lines, qsizetype header)
{
    qsizetype last = header;
    const qsizetype end = sectionEnd(lines, header);
    for (qsizetype i = header + 1; i < end; ++i)
        if (lines[i].kind == Kind::Key || lines[i].kind == Kind::Unknown)
            last = i;
    return last;
}

/// Inserts whole lines, ended by "\n" here and by the file's line end there.
bool IniText::insertAt(qsizetype place, const QByteArray& utf8Lines)
{
    QByteArray text = utf8Lines;
    const bool openLine = place > m_begin && at(place - m_unit) != u'\n' && at(place - m_unit) != u'\r';
    if (openLine)
        text.prepend('\n');
    const auto raw = encoded(text.replace("\n", lineEnd()));
    if (!raw)
        return false;
    m_bytes.insert(place, *raw);
    m_end += raw->size();
    return true;
}

bool IniText::set(const QByteArray& section, const QByteArray& key, const QByteArray& value)
{
    return setAll(section, {{key, value}});
}

bool IniText::setAll(const QByteArray& section, const QList<Entry>& entries)
{
    const QByteArray sectionName = trimmedBlanks(section);
    const QList<Line> all = lines();
    const qsizetype header = findSection(all, sectionName);
    const KeyPlaces places = header < 0 ? KeyPlaces() : asciiKeys(all, header);
    const auto placeOf = [&](const QByteArray& key) {
        if (header < 0 || isAscii(key))
            return places.value(key.toLower(), -1);
        return findKey(all, header, key);
    };
    QByteArray added;
    QMap<qsizetype, QByteArray> changed;
    for (const Entry& entry : entries) {
        const QByteArray key = trimmedBlanks(entry.key);
        if (!usableSection(sectionName) || !usableKey(key) || holdsLineBreak(entry.value))
            return false;
        const QByteArray text = trimmedBlanks(entry.value);
        const qsizetype there = placeOf(key);
        if (there < 0)
            added += key + '=' + text + '\n';
        else
            changed.insert(there, text);
    }
    if (header < 0)
        return insertAt(m_end, '[' + sectionName + "]\n" + added);
    // What is added stands behind every line that changes.
    return (added.isEmpty() || insertAt(all[lastContent(all, header)].next, added)) &&
           replaceValues(all, changed);
}

bool IniText::replaceValues(const QList<Line>& lines, const QMap<qsizetype, QByteArray>& valuesByLine)
{
    QByteArray bytes;
    qsizetype from = 0;
    for (auto at = valuesByLine.cbegin(); at != valuesByLine.cend(); ++at) {
        const Line& place = lines[at.key()];
        const auto raw = encoded(at.value());
        if (!raw)
            return false;
        const bool blank = at.value().isEmpty() || place.valueBegin == place.end;
        const qsizetype begin = blank ? place.afterEquals : place.valueBegin;
        bytes += m_bytes.sliced(from, begin - from) + *raw;
        from = place.end;
    }
    bytes += m_bytes.sliced(from);
    m_end += bytes.size() - m_bytes.size();
    m_bytes = bytes;
    return true;
}

void IniText::removeKey(const QByteArray& section, const QByteArray& key)
{
    const QByteArray sectionName = trimmedBlanks(section);
    const QByteArray keyName = trimmedBlanks(key);
    const QList<Line> all = lines();
    bool inside = false;
    qsizetype removed = 0;
    for (const Line& line : all) {
        if (line.kind == Kind::Section)
            inside = !sectionName.isEmpty() && sameName(line.name, sectionName);
        if (!inside || line.kind != Kind::Key || !sameName(line.name, keyName))
            continue;
        m_bytes.remove(line.begin - removed, line.next - line.begin);
        removed += line.next - line.begin;
    }
    m_end -= removed;
}

void IniText::removeSection(const QByteArray& section)
{
    const QByteArray name = trimmedBlanks(section);
    if (name.isEmpty())
        return;
    for (;;) {
        const QList<Line> all = lines();
        const qsizetype header = findSection(all, name);
        if (header < 0)
            return;
        qsizetype last = sectionEnd(all, header);
        while (last < all.size() && last > header + 1 && all[last - 1].kind == Kind::Comment)
            --last;
        const qsizetype stop = last < all.size() ? all[last].begin : m_end;
        m_bytes.remove(all[header].begin, stop - all[header].begin);
        m_end -= stop - all[header].begin;
    }
}

} // namespace zib
