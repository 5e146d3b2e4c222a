#pragma once

#include "common/LateLibrary.h"

#include <sndfile.h>

namespace zib {

// Only WAV files of packed samples need libsndfile, and it brings all its codecs along.
inline constinit LateLibrary sndfileLibrary("libsndfile.so.1");

ZIB_LATE_FUNCTION(sndfileLibrary, sf_close);
ZIB_LATE_FUNCTION(sndfileLibrary, sf_open_virtual);
ZIB_LATE_FUNCTION(sndfileLibrary, sf_readf_short);

} // namespace zib
