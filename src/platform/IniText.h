#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>

#include <optional>

namespace zib {

/// The text of one INI file, held as the bytes it was read as. A change touches the bytes it is about and no
/// others: comments, order, unknown lines, line ends and encoding stay.
///
/// Sections and keys compare without case; the first section of a name and the first key in it count. Lines
/// that begin with ";" are comments; lines without "=" and headers without "]" are kept and never read.
/// Blanks (space and tab) round names and values do not belong to them. The bytes are 8-bit text, taken as
/// UTF-8, or, behind its byte order mark, UTF-16 of either order; a mark is kept. Names and values are UTF-8
/// in and out; bytes that are not UTF-8 pass through unchanged in an 8-bit file.
class IniText
{
public:
    struct Entry
    {
        QByteArray key;
        QByteArray value;
    };

    explicit IniText(QByteArray bytes);

    /// @returns the value as it stands, without one pair of matching quotes round it; nothing when section or
    /// key is missing. An empty value is a value.
    std::optional<QByteArray> value(const QByteArray& section, const QByteArray& key) const;
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

    const QByteArray& bytes() const { return m_bytes; }

private:
    enum class Kind
    {
        Blank,
        Comment,
        Section,
        Key,
        Unknown
    };

    /// Places are byte offsets.
    struct Line
    {
        qsizetype begin = 0;
        qsizetype end = 0;  ///< Where the line's text ends.
        qsizetype next = 0; ///< Where the next line begins.
        Kind kind = Kind::Blank;
        QByteArray name{};         ///< Of a section or key, in UTF-8.
        qsizetype afterEquals = 0; ///< Of a key.
        qsizetype valueBegin = 0;  ///< Of a key, behind the blanks.
    };

    void findEncoding();
    char16_t at(qsizetype place) const;
    QByteArray textOf(qsizetype begin, qsizetype end) const;
    std::optional<QByteArray> encoded(const QByteArray& utf8) const;
    QByteArray lineEnd() const;
    QByteArray withLineEnd(QByteArray text, qsizetype place) const;

    Line lineFrom(qsizetype begin) const;
    void classify(Line& line) const;
    qsizetype skipBlanks(qsizetype begin, qsizetype end) const;
    qsizetype dropBlanks(qsizetype begin, qsizetype end) const;
    qsizetype find(char16_t letter, qsizetype begin, qsizetype end) const;

    QList<Line> lines() const;
    static qsizetype findSection(const QList<Line>& lines, const QByteArray& name, qsizetype from = 0);
    static qsizetype sectionEnd(const QList<Line>& lines, qsizetype header);
    static qsizetype findKey(const QList<Line>& lines, qsizetype header, const QByteArray& name);
    static QHash<QByteArray, qsizetype> asciiKeys(const QList<Line>& lines, qsizetype header);
    bool insertAt(qsizetype place, const QByteArray& utf8Lines);
    bool replaceValues(const QList<Line>& lines, const QMap<qsizetype, QByteArray>& valuesByLine);
    static qsizetype lastContent(const QList<Line>& lines, qsizetype header);

    QByteArray m_bytes;
    qsizetype m_begin = 0; ///< Behind the byte order mark.
    qsizetype m_end = 0;   ///< Before an odd last byte of a 16-bit file.
    int m_unit = 1;        ///< Bytes of one code unit.
    bool m_bigEndian = false;
};

} // namespace zib
