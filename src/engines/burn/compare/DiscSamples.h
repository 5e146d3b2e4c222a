#pragma once

#include "common/Outcome.h"

#include <QtGlobal>

namespace zib {

/// The sound of a disc or an image, frame by frame, as a player would get it. Calls block; one thread.
class DiscSamples
{
public:
    virtual ~DiscSamples() = default;
    /// Reads whole frames of 2352 bytes, little endian.
    /// @param frame logical block address, 0 for the first frame of the first track; below leadOut().
    /// @returns UnreadableFile where the sound cannot be read, which does not mean that its neighbours
    /// cannot; any other failure ends all reading.
    virtual Outcome<> read(qint64 frame, int count, char* buffer) = 0;
    /// The frame behind the last one.
    virtual qint64 leadOut() const = 0;
};

} // namespace zib
