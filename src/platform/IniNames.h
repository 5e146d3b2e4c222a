#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// How the names of sections and keys of INI files are taken.
namespace zib {

inline bool isBlank(char16_t letter)
{
    return letter == u' ' || letter == u'\t';
}

/// @returns the text without the blanks (space and tab) round it.
QByteArray trimmedBlanks(const QByteArray& text);
bool isAscii(const QByteArray& text);
/// @returns the text of valid UTF-8, or nothing.
std::optional<QString> decoded(const QByteArray& utf8);
/// Names compare without case; names that are not UTF-8 only without the case of ASCII letters.
bool sameName(const QByteArray& one, const QByteArray& other);

} // namespace zib
