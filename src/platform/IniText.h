#pragma once

#include "platform/IniLines.h"

#include <QHash>
#include <QMap>

namespace zib {

/// The text of one INI file that can be changed. A change touches the bytes it is about and no others:
/// comments, order, unknown lines, line ends, byte order mark and encoding stay.
class IniText : public IniLines
{
public:
    struct Entry
    {
        QByteArray key;
        QByteArray value;
    };

    using IniLines::IniLines;

    /// Replaces the value of a key, or adds the key, or section and key.
    /// @returns false, with nothing changed, for names or values that could not be read back as lines:
    /// empty names, line breaks, NUL, "=" in a key, "]" in a section, a key that would read as header or
    /// comment.
    bool set(const QByteArray& section, const QByteArray& key, const QByteArray& value);
    /// Does so for many keys of one section in one pass over the text, no two of them alike.
    bool setAll(const QByteArray& section, const QList<Entry>& entries);
    /// Removes every line of that key from every section of that name.
    void removeKey(const QByteArray& section, const QByteArray& key);
    /// Removes every section of that name with its lines; comments right above the next header stay.
    void removeSection(const QByteArray& section);

private:
    QByteArray lineEnd() const;
    static qsizetype findSection(const QList<Line>& lines, const QByteArray& name, qsizetype from = 0);
    static qsizetype sectionEnd(const QList<Line>& lines, qsizetype header);
    static qsizetype findKey(const QList<Line>& lines, qsizetype header, const QByteArray& name);
    static QHash<QByteArray, qsizetype> asciiKeys(const QList<Line>& lines, qsizetype header);
    bool insertAt(qsizetype place, const QByteArray& utf8Lines);
    bool replaceValues(const QList<Line>& lines, const QMap<qsizetype, QByteArray>& valuesByLine);
    static qsizetype lastContent(const QList<Line>& lines, qsizetype header);
};

} // namespace zib
