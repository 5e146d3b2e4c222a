#pragma once

#include <QByteArray>
#include <QString>

namespace zib {

/// The bytes by which the system knows @p path.
///
/// A name that is not valid UTF-8 reaches us with replacement characters; the folder is then searched for the
/// one entry that reads like it.
QByteArray nativeName(const QString& path);

/// Whether @p path names something, its links followed.
bool pathExists(const QString& path);

} // namespace zib
