#pragma once

#include "Config.h"
#include "Faults.h"
#include "SharedFile.h"
#include "Station.h"

#include <memory>
#include <string>

namespace zib::drive {

/// One emulated MMC drive. Several processes and threads may use it at once; commands run one after the other.
class Drive
{
public:
    explicit Drive(DriveConfig config);

    /// Takes over a changed configuration; a changed disc counts as inserted or removed.
    void configure(const DriveConfig& config);

    [[nodiscard]] const DriveConfig& config() const { return m_config; }

    /// Carries out one command, with faults, and writes it down in the journal.
    [[nodiscard]] Answer execute(const Request& request);

    /// Whether a fault has unplugged the drive.
    [[nodiscard]] bool gone();
    /// Whether the medium has changed since this was asked last.
    [[nodiscard]] bool takeMediaChanged();
    /// Writes a line about opening the node into the journal.
    void noteOpening(const std::string& how, const std::string& answer);

private:
    class Lock;

    void refreshDisc();
    void swapDisc(std::uint64_t identity);
    void refreshCue();
    [[nodiscard]] Answer answerTo(const Request& request, const FaultVerdict& verdict);
    [[nodiscard]] Answer commanded(const Request& request);
    [[nodiscard]] Sense readiness(int operation);
    void applyReadFaults(Answer& answer, const Request& request, const FaultVerdict& verdict) const;
    void wait(Answer& answer, const Request& request, std::uint32_t delayMs) const;
    void note(const Request& request, const Answer& answer, const FaultVerdict& verdict);

    DriveConfig m_config;
    SharedFile<DriveState> m_state;
    std::unique_ptr<Disc> m_disc;
    std::string m_discStem;
    CueSheet m_cue;
    std::uint32_t m_cueSerial = 0;
};

} // namespace zib::drive
