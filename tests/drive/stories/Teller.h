#pragma once

#include "answers/Book.h"

#include <functional>

namespace zib {

/// Every run of equal lines as one line.
QStringList withoutRuns(const QStringList& lines);

/// The commands of a drive's journal without runs of one command, with the bytes of those whose parameters
/// are chosen. Left out are those that depend on the clock or on the version of a library.
QStringList commandsIn(const QStringList& journal);

/// Plays stories, each in a process of its own and several at once, and tells them: the first one whole, the
/// others by what differs from it. Of the lines "looked" and "asked", which are lists of commands, only the
/// part that differs is told.  @param group of stories, and @param names of them, by which the processes know
/// them.
void tellAll(answers::Book& book, const QString& group, const QStringList& names);

/// The work of such a process.  @param tell plays a story of a group.  @returns whether this is such a
/// process.
bool toldOne(const QStringList& arguments,
             const std::function<answers::Answer(const QString& group, int number)>& tell);

} // namespace zib
