// WAV files of any bytes: whatever the chunks claim, the announced samples come and nothing else happens.

#include "fuzz_audio.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Nearly every change of the first twelve bytes makes it no WAV file: they are given.
    static constexpr std::uint8_t kHead[] = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'};
    std::vector<std::uint8_t> whole(std::begin(kHead), std::end(kHead));
    if (size > sizeof kHead)
        whole.insert(whole.end(), data + sizeof kHead, data + size);
    return zib::fuzz::checkAll(whole.data(), whole.size());
}
