#pragma once

#include <QString>

namespace zib {

/// One track of the compilation as its list shows it: the display texts of its seven columns.
struct CompilationRow
{
    QString number;   ///< "#", counted from 1.
    QString fileName; ///< Without its folder.
    QString title;
    QString artist;
    QString time;     ///< Minutes, seconds and hundredths, as FormatDuration writes them.
    QString fileSize; ///< Kilobytes, with " KB".
    QString location; ///< The folder, with its trailing separator.

    /// The file's whole path, put together from location and file name.
    QString path() const;

    bool operator==(const CompilationRow&) const = default;
};

} // namespace zib
