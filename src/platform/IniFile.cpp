#include "platform/IniFile.h"

#include "platform/AtomicFile.h"
#include "platform/IniText.h"

#include <QSet>

#include <algorithm>

namespace zib {

namespace {

constexpr int kMostTries = 8; // Against a program that keeps changing the file.

/// The bytes that fit a buffer of @p size with its NUL; a UTF-8 character that does not fit whole is left
/// out.
QByteArray fitted(const QByteArray& text, int size)
{
    const qsizetype room = size > 0 ? size - 1 : 0;
    if (text.size() <= room)
        return text;
    const auto continues = [&text](qsizetype i) { return (static_cast<uchar>(text[i]) & 0xC0) == 0x80; };
    qsizetype end = room;
    while (end > 0 && room - end < 3 && continues(end))
        --end;
    return text.left(continues(end) ? room : end);
}

QByteArray withoutTrailingBlanks(QByteArray text)
{
    while (text.endsWith(' '))
        text.chop(1);
    return text;
}

/// Whether a change gives a key, of ASCII letters, in this section its value.
bool setsKeyOf(const QByteArray& section, const IniChange& change)
{
    const auto ascii = [](char letter) { return static_cast<uchar>(letter) < 0x80; };
    return change.key && change.value && change.section == section &&
           std::all_of(change.key->begin(), change.key->end(), ascii);
}

/// The entries that @p changes set in one section from @p first on, up to a key that comes again.
QList<IniText::Entry> entriesFrom(const QList<IniChange>& changes, qsizetype first)
{
    QList<IniText::Entry> entries;
    QSet<QByteArray> seen;
    for (qsizetype i = first; i < changes.size() && setsKeyOf(changes[first].section, changes[i]); ++i) {
        const QByteArray name = changes[i].key->trimmed().toLower();
        if (seen.contains(name))
            break;
        seen.insert(name);
        entries.append({*changes[i].key, *changes[i].value});
    }
    return entries;
}

bool apply(IniText& text, const IniChange& change)
{
    if (!change.key)
        text.removeSection(change.section);
    else if (!change.value)
        text.removeKey(change.section, *change.key);
    else
        return text.set(change.section, *change.key, *change.value);
    return true;
}

/// Applies changes in their order, those of one section together.
bool applyAll(IniText& text, const QList<IniChange>& changes)
{
    for (qsizetype i = 0; i < changes.size();) {
        const QList<IniText::Entry> entries = entriesFrom(changes, i);
        const bool done =
            entries.isEmpty() ? apply(text, changes[i]) : text.setAll(changes[i].section, entries);
        if (!done)
            return false;
        i += std::max<qsizetype>(entries.size(), 1);
    }
    return true;
}

/// The text with lists of changes made, but for the lists that cannot be made whole.
QByteArray changed(const QByteArray& bytes, const QList<QList<IniChange>>& lists)
{
    QByteArray result = bytes;
    for (const QList<IniChange>& changes : lists)
        if (IniText text(result); applyAll(text, changes))
            result = text.bytes();
    return result;
}

QList<IniName> namesOf(const QList<IniQuery>& queries)
{
    QList<IniName> names;
    for (const IniQuery& query : queries)
        names.append({query.section, query.key});
    return names;
}

Replaced changeOnce(const QList<IniChange>& changes, const QString& target, const FolderLock& lock)
{
    const auto before = readSnapshot(target);
    if (!before)
        return Replaced::Failed;
    IniText text(before->bytes);
    if (!applyAll(text, changes))
        return Replaced::Failed;
    if (text.bytes() == before->bytes)
        return Replaced::Done;
    return replaceFile(target, text.bytes(), *before, lock);
}

} // namespace

QByteArray IniFile::GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                             const QByteArray& fallback, int size, const QString& file)
{
    return readAll({{section, key, fallback, size}}, file).first();
}

QList<QByteArray> IniFile::readAll(const QList<IniQuery>& queries, const QString& file)
{
    return readWith({}, queries, file);
}

QList<QByteArray> IniFile::readWith(const QList<QList<IniChange>>& changes, const QList<IniQuery>& queries,
                                    const QString& file) const
{
    const auto snapshot = readSnapshot(file);
    const QByteArray bytes = changed(snapshot ? snapshot->bytes : QByteArray(), changes);
    const auto found = IniLines(bytes).values(namesOf(queries));
    QList<QByteArray> values;
    for (qsizetype i = 0; i < queries.size(); ++i)
        values << fitted(found[i] ? *found[i] : withoutTrailingBlanks(queries[i].fallback), queries[i].size);
    return values;
}

bool IniFile::WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                         const std::optional<QByteArray>& value, const QString& file)
{
    return writeAll({{section, key, value}}, file);
}

bool IniFile::writeAll(const QList<IniChange>& changes, const QString& file)
{
    const auto target = followLinks(file);
    if (!target)
        return false;
    const FolderLock lock(*target);
    Replaced result = Replaced::Changed;
    for (int i = 0; i < kMostTries && result == Replaced::Changed; ++i)
        result = changeOnce(changes, *target, lock);
    return result == Replaced::Done;
}

} // namespace zib
