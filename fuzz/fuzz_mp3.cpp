// MP3 streams of any bytes: frames are found, counted and decoded; the count is what comes.

#include "fuzz_audio.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return zib::fuzz::checkAll(data, size);
}
