#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace zib {

/// A text in ISO 8859-1, the letters that players show: letters of that set stay, others become their nearest
/// ones ("ł" an "l", Cyrillic, Greek and kana by how they are spoken), and what has none is left out. White
/// space of every kind is a single blank, none at the ends; there are no control characters.
QByteArray nearestLatin1(const QString& text);

/// Text of a disc in ISO 8859-1, or in Windows-1252 where it has letters that only that set has: many
/// programs write it and call it the former.
QString textFromLatin1(QByteArrayView bytes);

/// Text of a disc in MS-JIS (Shift-JIS, code page 932), the double-byte set of CD-TEXT.
QString textFromMsJis(QByteArrayView bytes);

} // namespace zib
