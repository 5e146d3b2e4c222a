#include "platform/IniText.h"

#include "platform/IniNames.h"

namespace zib {

namespace {

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

} // namespace

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

/// The lines of a section's keys by their names in small letters; of several alike the first one.
QHash<QByteArray, qsizetype> IniText::asciiKeys(const QList<Line>& lines, qsizetype header)
{
    QHash<QByteArray, qsizetype> places;
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
    const QHash<QByteArray, qsizetype> places =
        header < 0 ? QHash<QByteArray, qsizetype>() : asciiKeys(all, header);
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
