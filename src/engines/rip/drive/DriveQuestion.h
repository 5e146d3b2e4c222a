#pragma once

#include <QtGlobal>

#include <cstddef>
#include <initializer_list>

struct _CdIo; // NOLINT(bugprone-reserved-identifier): an open drive, as libcdio names it

namespace zib {

/// What a drive said of a command that failed (sense data, SPC-4).
struct Sense
{
    int key = 0;
    int asc = 0;
};

/// Time limit of a single command. libcdio hands it to the kernel, which counts in hundredths of a second: a
/// drive that hangs has ten times as long.
inline constexpr unsigned kQuestionMs = 2000;

/// Sends a command that reads.  @param command its bytes, filled up with zeros.  @param reply room for
/// @p size bytes.
/// @returns whether the drive carried it out; errno tells of a drive that has gone.
bool askDrive(_CdIo* drive, std::initializer_list<int> command, quint8* reply, std::size_t size);
/// What the drive said of the last command; zeros when nothing.
Sense lastSense(const _CdIo* drive);
/// Whether the drive does not do such a thing, which no second try mends.
bool isRefusal(const Sense& sense);

} // namespace zib
