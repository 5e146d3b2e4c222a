#pragma once

#include "Bytes.h"
#include "Config.h"
#include "CueSheet.h"
#include "Disc.h"
#include "Sense.h"

#include <pthread.h>

#include <array>
#include <cstdint>
#include <optional>

namespace zib::drive {

inline constexpr std::size_t kMaxFaults = 64;
inline constexpr std::size_t kWriteParameterBytes = 52;
inline constexpr std::size_t kErrorRecoveryBytes = 12;

/// What the drive itself remembers, shared by all processes that use it.
struct DriveState
{
    std::uint32_t version = 0;
    pthread_mutex_t mutex{};
    std::uint64_t sequence = 0; ///< commands executed so far
    std::uint64_t disc = 0;     ///< identity of the disc seen last; 0 when there was none
    bool started = false;       ///< the first look at the disc has been taken
    bool trayOpen = false;
    bool doorLocked = false;
    bool attention = false;      ///< a changed medium is still to be reported as unit attention
    bool wasReset = false;       ///< a reset is still to be reported as unit attention
    bool mediaChanged = false;   ///< the same, for CDROM_MEDIA_CHANGED
    std::uint8_t mediaEvent = 0; ///< the same, for GET EVENT STATUS NOTIFICATION
    Sense lastSense;
    std::array<std::uint8_t, kWriteParameterBytes> writeParameters{};
    std::array<std::uint8_t, kErrorRecoveryBytes> errorRecovery{};
    int writeSpeed = 0; ///< in 1000 bytes per second, as in mode page 2A
    int readSpeed = 0;
    std::int64_t busyUntilMs = 0; ///< monotonic clock
    bool sessionRunning = false;  ///< a cue sheet has been accepted and its last block not yet written
    bool simulated = false;       ///< the running session or track leaves no trace
    std::int32_t nextBlock = 0;   ///< session at once: the address that must come next
    std::int32_t nextLeadIn = 0;
    std::uint32_t simulatedTracks = 0;
    std::int32_t simulatedNext = 0;
    bool simulatedOpen = false;
    std::uint32_t cueSerial = 0;
    std::uint32_t cueBytes = 0;
    std::array<std::uint8_t, kMaxCueBytes> cue{};
    std::array<FaultCounter, kMaxFaults> faultCounters{};
};

/// One command as it reaches the drive.
struct Request
{
    ByteView cdb; ///< 12 bytes at least, padded with zeros
    ByteView dataOut;
    std::size_t dataInBytes = 0;
    std::uint32_t timeoutMs = 0; ///< 0 for none
};

/// What the drive, or the way to it, answers.
struct Answer
{
    Sense sense;
    Bytes data;
    bool deferred = false; ///< the sense data speak of an earlier command
    int status = 0;        ///< a SCSI status that comes without sense data, 0 for none
    int error = 0;         ///< errno for the caller; the command was not executed
    int hostStatus = 0;    ///< what the host adapter reports, 0 when all is well
    std::int64_t takesMs = 0;
    std::optional<std::int32_t> address; ///< the information field of the sense data

    Answer() = default;
    Answer(Sense failure) : sense(failure) {}       // NOLINT: a sense code is an answer
    Answer(Bytes reply) : data(std::move(reply)) {} // NOLINT: so are bytes
};

/// The parts of the drive that a command works on.
struct Station
{
    const DriveConfig& config;
    DriveState& state;
    Disc* disc;    ///< null when the drive is empty or the tray is open
    CueSheet& cue; ///< the accepted cue sheet

    [[nodiscard]] std::uint8_t writeType() const { return state.writeParameters[2] & 0xFU; }
    [[nodiscard]] bool testWrite() const
    {
        return (state.writeParameters[2] & 0x10U) != 0 && config.testBit != TestBit::Ignored;
    }
    [[nodiscard]] bool multiSession() const { return (state.writeParameters[3] & 0xC0U) == 0xC0U; }
    [[nodiscard]] bool writable() const
    {
        return disc != nullptr && disc->status() != DiscStatus::Complete &&
               ((disc->state().kind == DiscKind::CdR && config.writesCdR) ||
                (disc->state().kind == DiscKind::CdRw && config.writesCdRw));
    }
};

inline constexpr std::uint8_t kTrackAtOnce = 1;
inline constexpr std::uint8_t kSessionAtOnce = 2;

/// The data rate of @p speed times 150 KiB/s, in 1000 bytes per second.
[[nodiscard]] constexpr int kilobytesPerSecond(int speed)
{
    return (speed * 1764 + 5) / 10;
}

/// Milliseconds of the monotonic clock.
[[nodiscard]] std::int64_t monotonicMs();

} // namespace zib::drive
