#pragma once

namespace zib::bench {

/// Prints how clean generated tones come through the program's conversion.  @returns whether every one keeps
/// to its limit.
bool measureQuality();

} // namespace zib::bench
