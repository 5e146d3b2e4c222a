#pragma once

#include "Bytes.h"
#include "Sense.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zib::drive {

inline constexpr std::uint32_t kForever = 0xFFFFFFFF;
inline constexpr int kAnyOperation = -1;
inline constexpr int kMediaOperation = -2;
inline constexpr int kAnyPage = -1;
/// What the kernel calls these ends of a command (DID_TIME_OUT, DID_ERROR).
inline constexpr int kHostTimeOut = 0x03;
inline constexpr int kHostError = 0x07;

/// What a rule does to the command it strikes.
enum class FaultKind : std::uint8_t
{
    Sense,     ///< the command fails with this sense data
    Delay,     ///< the command takes longer
    Transport, ///< the host adapter reports an error; nothing is known of the command
    Error,     ///< the request itself fails with an errno
    Ignored,   ///< the drive says "good" and has done nothing
    Flip,      ///< a byte of the reply comes back with other bits
    Patch,     ///< bytes of the reply are others
    Short,     ///< the reply ends early
    Status,    ///< the command ends with a SCSI status and without sense data
    Reset,     ///< the drive forgets its modes and what it was doing
    Gone,      ///< the drive is unplugged from here on
    Pull,      ///< the disc is out of the drive from here on
    Noise,     ///< frames read come back with changed samples
    Jitter,    ///< frames read come back shifted
    Missing,   ///< a frame is left out of what is read, and all behind it stand one earlier
    Swapped    ///< two tracks are read in each other's place
};

/// One `fault =` line of the configuration.
struct FaultRule
{
    std::string text;          ///< the line itself; it identifies the rule's counter
    int operation = -1;        ///< operation code, kAnyOperation or kMediaOperation
    int page = kAnyPage;       ///< only mode commands about this page
    std::int32_t firstLba = 0; ///< the rule wants an address only if ranged
    std::int32_t lastLba = 0;
    bool ranged = false;
    std::uint32_t nth = 1;   ///< strikes from this match on
    std::uint32_t times = 1; ///< so many matches; kForever for good
    bool after = false;      ///< the command is carried out and then fails
    FaultKind kind = FaultKind::Sense;
    Sense sense;
    std::uint32_t delayMs = 0; ///< kForever hangs until the caller's time limit
    int shiftSamples = 0;
    std::int32_t missingLba = 0; ///< of a Missing rule
    int swapped[2] = {0, 0};     ///< of a Swapped rule: the numbers of both tracks
    int hostStatus = 0;          ///< of a Transport rule, as the kernel's DID_ codes
    int error = 0;               ///< of an Error rule
    std::uint32_t replyAt = 0;   ///< of a Flip, Patch or Short rule: the byte of the reply
    std::uint8_t flipMask = 0;   ///< of a Flip rule: the bits in it
    Bytes patch;                 ///< of a Patch rule
    int status = 0;              ///< of a Status rule, as in SAM
    bool deferred = false;       ///< the sense data speak of an earlier command
};

/// How often a rule has matched; lives in the drive's shared state.
struct FaultCounter
{
    std::uint64_t rule = 0;
    std::uint32_t matches = 0;
    std::uint32_t strikes = 0;
};

/// What the rules say about one command.
struct FaultVerdict
{
    std::optional<FaultRule> failure; ///< a rule that ends the command
    std::uint32_t delayMs = 0;
    std::vector<FaultRule> readFaults; ///< rules that change the reply
    std::vector<std::uint32_t> readStrikes;
};

/// The address range a command works on, or the mode page.
struct CommandRange
{
    bool known = false;
    std::int32_t first = 0;
    std::int32_t count = 0;
    int page = kAnyPage;
};

/// Reads one rule.
/// @returns nothing when the line makes no sense.
[[nodiscard]] std::optional<FaultRule> parseFault(std::string_view text);

/// The counter of @p rule among @p counters, taking a free one at first sight; null when all are taken.
[[nodiscard]] FaultCounter* counterOf(const FaultRule& rule, FaultCounter* counters, std::size_t size);

/// Counts the command against every rule and tells which of them strike.
[[nodiscard]] FaultVerdict judge(const std::vector<FaultRule>& rules, int operation,
                                 const CommandRange& range, FaultCounter* counters, std::size_t size);

/// Forgets the counters of rules that no longer stand in the configuration.
void dropCounters(const std::vector<FaultRule>& rules, FaultCounter* counters, std::size_t size);

/// Whether a rule of kind @p kind has struck and still stands.
[[nodiscard]] bool hasStruck(const std::vector<FaultRule>& rules, FaultKind kind,
                             const FaultCounter* counters, std::size_t size);

} // namespace zib::drive
