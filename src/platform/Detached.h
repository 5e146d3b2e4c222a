#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace zib {

/// A program by its full path, and its arguments.
struct Command
{
    QString program;
    QStringList arguments;

    bool operator==(const Command&) const = default;
};

/// Starts the first command in a process of its own that is never waited for: own session, no inherited
/// descriptors, nothing on its standard streams, no shell. When a command ends with a failure, the next one
/// is tried in its place.
/// @returns whether the first process could be made.
bool startDetached(const QList<Command>& commands, const QString& folder = {});

/// @returns the full path of the first of these programs that is installed, or an empty text.
QString firstInstalled(const QStringList& names);

} // namespace zib
