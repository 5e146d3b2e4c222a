#pragma once

#include <QString>

namespace zib {

/// The folder that holds the program's files and the user's: settings, Temp, WAV, Images.
struct ProgramFolder
{
    QString path;
    QString trouble{}; ///< Why nothing can be kept there, in words for the user; empty when all is well.
};

/// Decides where that folder is. Where the executable's own folder may be written, it is that one, and
/// nothing is touched. Where not, and for root too where the program is installed in /usr, it is the user's
/// own, which is made when it is missing and gets the data files; those that an update of the program brings
/// anew replace the old ones, unless the user changed them.
ProgramFolder findProgramFolder();
/// The same for other folders than this program's.
ProgramFolder findProgramFolder(const QString& executableFolder, const QString& userFolder);

/// The user's own program folder: $XDG_DATA_HOME/ZibCDBurner, or the one in ~/.local/share.
QString userProgramFolder();

} // namespace zib
