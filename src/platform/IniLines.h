#pragma once

#include "platform/IniQuestions.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace zib {

/// The lines of one INI file, over the bytes it was read as.
///
/// Sections and keys compare without case; the first section of a name and the first key in it count. Lines
/// that begin with ";" are comments; lines without "=" and headers without "]" are never read. Blanks (space
/// and tab) round names and values do not belong to them. The bytes are 8-bit text, taken as UTF-8, or,
/// behind its byte order mark, UTF-16 of either order. Names and values are UTF-8 in and out; bytes that are
/// not UTF-8 pass through unchanged in an 8-bit file.
class IniLines
{
public:
    explicit IniLines(QByteArray bytes);

    /// @returns the value as it stands, without one pair of matching quotes round it; nothing when section or
    /// key is missing. An empty value is a value.
    std::optional<QByteArray> value(const QByteArray& section, const QByteArray& key) const;
    /// @returns the values of all these names, in their order, from one pass over the text.
    QList<std::optional<QByteArray>> values(const QList<IniName>& names) const;

    const QByteArray& bytes() const { return m_bytes; }

protected:
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

    char16_t at(qsizetype place) const;
    /// @returns what stands for this text in the file; nothing when its encoding cannot.
    std::optional<QByteArray> encoded(const QByteArray& utf8) const;
    QList<Line> lines() const;

    QByteArray m_bytes;
    qsizetype m_begin = 0; ///< Behind the byte order mark.
    qsizetype m_end = 0;   ///< Before an odd last byte of a 16-bit file.
    int m_unit = 1;        ///< Bytes of one code unit.

private:
    void findEncoding();
    QByteArray textOf(qsizetype begin, qsizetype end) const;
    Line lineFrom(qsizetype begin) const;
    void classify(Line& line) const;
    qsizetype skipBlanks(qsizetype begin, qsizetype end) const;
    qsizetype dropBlanks(qsizetype begin, qsizetype end) const;
    qsizetype find(char16_t letter, qsizetype begin, qsizetype end) const;
    QByteArray valueOf(const Line& line) const;

    bool m_bigEndian = false;
};

} // namespace zib
