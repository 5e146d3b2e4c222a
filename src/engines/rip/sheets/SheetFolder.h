#pragma once

#include "common/Outcome.h"

#include <QByteArray>
#include <QStringList>

namespace zib {

/// Finds the files that a sheet names: beside it, below it, or where it says. A name may differ in its letter
/// case, in the way its accents are composed, in the separator, and in the encoding on the storage; a file of
/// another name is never taken. May wait for the storage.
class SheetFolder
{
public:
    /// @param sheet its path.  @param encoding what its text was decoded with.
    SheetFolder(const QString& sheet, QByteArray encoding);

    /// @returns the path as the system knows it; NotFound with the reason in words.
    Outcome<QByteArray> find(const QString& name) const;

private:
    struct Answer
    {
        QByteArray path{};
        bool several = false;
    };
    Answer resolve(QByteArray from, const QStringList& parts) const;
    Answer entryLike(const QByteArray& folder, const QString& name) const;
    bool readsAs(const QByteArray& entry, const QString& wanted) const;

    QList<QByteArray> m_folders; ///< The sheet's own, and that of the file it is a link to.
    QByteArray m_encoding;
};

} // namespace zib
