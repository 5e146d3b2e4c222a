#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <utility>

namespace zib {

/// A disc image as some program may leave it, and what is to come of it.
struct SheetRow
{
    QByteArray name{}; ///< Of the row.
    QByteArray sheet{};
    QList<QByteArray> tracks{}; ///< The bytes of each track; null for a data track.
    QString reason{};           ///< Why it is no disc, instead.
    QByteArray sheetName = "disc.cue";
    QList<std::pair<QByteArray, QByteArray>> files{}; ///< Names as the system knows them, and contents.
    QList<std::pair<QByteArray, QByteArray>> links{}; ///< Names and what they point to.
    QString remark{};                                 ///< What is amiss with a disc all the same.
    QString unread{};                                 ///< What is said of the tracks that bring no file.
};

/// All the rows, with their files.
QList<SheetRow> sheetTable();

} // namespace zib
