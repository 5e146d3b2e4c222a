#pragma once

#include "common/Outcome.h"

#include <QString>
#include <QStringList>

namespace zib {

/// A project file: the paths of a compilation, in order, as an INI file with the section "General", key
/// "FileCount", and the section "Files", keys "File1", "File2" and so on. A path that no line can hold, since
/// it has line breaks, is written as the address of a file. Usable from any thread.
class ProjectFile
{
public:
    /// Most files that a project opens with.
    static constexpr int kMostFiles = 200;

    explicit ProjectFile(QString path) : m_path(std::move(path)) {}

    /// @returns the files of the project that exist, in order; those that do not are left out.
    /// Fails with NotFound when there is no such file, with BadValue, and reads nothing more, when the number
    /// of files is missing, no number, below 1 or above kMostFiles.
    Outcome<QStringList> read() const;

    /// Writes the number of files and every path in one replacement of the file, so that it holds either the
    /// old list or the new one. Other sections, and "File" keys above the number, stay.
    /// @returns the paths that cannot be written (with a NUL, or not Unicode): their keys are
    /// removed, and reading passes over them. Fails, and leaves the file as it was, with NotFound when its
    /// folder is missing, BadValue when it is a folder itself, NoPermission, MediumTooSmall when the disk is
    /// full, and WriteFailed for all else.
    Outcome<QStringList> write(const QStringList& paths) const;

private:
    QString m_path;
};

} // namespace zib
