#pragma once

#include "common/FileStamp.h"

#include <QString>

#include <optional>

namespace zib {

/// What the files of the track file list were when they were prepared, so that the writing window can tell
/// that another program has put something else in their place, and why there is none. GUI thread.
namespace PreparedFiles {

/// Remembers @p path as it is now; a file that is not there is forgotten.
void note(const QString& path);
/// The same with its stamp, which was asked for elsewhere.
void note(const QString& path, const std::optional<FileStamp>& stamp);
/// Whether @p path was noted and is another file by now: replaced, rewritten, cut or grown. Its absence is
/// none of that.
bool wasChanged(const QString& path);
/// Remembers why no file could be made at @p path, as a sentence for the user; empty when one was made.
void noteTrouble(const QString& path, const QString& trouble);
/// @returns what was remembered so.
QString trouble(const QString& path);

} // namespace PreparedFiles

} // namespace zib
