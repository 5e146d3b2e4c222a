#pragma once

#include "common/NameBearer.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace zib {
class Errands;
}

/// Looks at the places that files are to be written to, before anything is begun. The looking may be done on
/// any thread, and takes as long as the place does.
namespace zib::OutputPlace {

/// Makes a folder as GeneralAPI::MakeFolderPath does, box included, but waits for no place that is slow.
void makeFolder(Errands& errands, const QString& folder);

/// What was found out about a folder for several files.
struct Folder
{
    QString path;      ///< As typed when there is such a folder, else without the blanks at its ends.
    QString reason;    ///< Why it cannot be used; empty when it can.
    QStringList taken; ///< Those of the names that are there already.
    QHash<QString, NameBearer> seen{}; ///< Who bears each of the names.
};

/// Makes the folder if it is missing, and tries a file in it.
Folder lookAtFolder(const QString& typed, const QStringList& names);

/// Why nothing can be saved in a folder, in a sentence.
QString refusal(const Folder& folder);
/// Whether the files that are there may be replaced.
QString replaceQuestion(const Folder& folder);

/// What was found out about a source and the file to be made of it.
struct Target
{
    enum class Kind
    {
        NoSource,
        Free,      ///< Nothing is there; its folder is.
        Taken,     ///< A file that may be replaced.
        IsSource,  ///< By whatever path, link or case of letters.
        Protected, ///< A file that nobody may write to.
        NoFolder,  ///< Its folder cannot be used; the reason says why.
    };

    Kind kind = Kind::Free;
    QString source; ///< As typed when there is such a file, else without the blanks at its ends.
    QString path;   ///< Without the blanks at its ends; links followed, so that they stay.
    QString reason{};
};

Target lookAtTarget(const QString& source, const QString& target);

} // namespace zib::OutputPlace
