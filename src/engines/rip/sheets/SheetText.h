#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace zib {

/// The text of a sheet as one encoding reads it.
struct SheetReading
{
    QString text{};
    QByteArray encoding{};
};

/// Decodes all of @p bytes, or nothing when they are not text in this encoding.
std::optional<QString> decoded(const QByteArray& bytes, const QByteArray& encoding);

/// How the bytes of a sheet can be read, the likeliest first. A mark at the beginning, noughts between the
/// letters, or sound UTF-8 leave no choice; otherwise it is the writer's code page, which nothing tells.
QList<SheetReading> readingsOf(const QByteArray& bytes);

/// The lines of a text, whichever system ended them, without blanks around.
QStringList linesOf(const QString& text);

/// Minutes, seconds and frames as frames: "mm:ss:ff", digits left out at will, or "mm:ss".
std::optional<qint64> framesOfTime(const QString& time);

} // namespace zib
