#pragma once

#include "answers/Book.h"
#include "drive/burn/DiscTruth.h"

#include <functional>

namespace zib {

/// What is done with the drive: how it is, and what the user and the drive do.
struct Story
{
    QString name;
    std::function<void(BurnBench&)> prepare{};                   ///< Before the drive is looked for.
    std::function<void(BurnBench&)> choose{};                    ///< Between the look and the write.
    std::function<void(BurnBench&, const QString&)> meanwhile{}; ///< Whenever the writer says something.
    bool isWritten = true;                                       ///< Only looked at otherwise.
};

/// Plays a story on a drive of its own and tells all of it, a line for each: what the look at the drive
/// found, what the writer said, how the write ended, what disc and drive are then, and which commands the
/// drive was sent. Runs of one command are one, and left out are those that depend on the clock or on the
/// version of the burning library.
answers::Answer told(const Story& story);

/// Plays each story in a process of its own, several at once, and tells them, all but the first one by what
/// differs from the first.  @param group of stories, by which the processes know them.
void tellAll(answers::Book& book, const QString& group, const QList<Story>& stories);

/// The work of such a process.  @returns whether this is one.
bool toldOne(const QStringList& arguments, const std::function<QList<Story>(const QString& group)>& find);

} // namespace zib
