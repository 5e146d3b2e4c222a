#pragma once

#include "Config.h"
#include "Faults.h"
#include "SharedFile.h"
#include "Station.h"

#include <memory>
#include <mutex>
#include <string>

namespace zib::drive {

/// One emulated MMC drive. Several processes and threads may use it at once; commands run one after the
/// other.
class Drive
{
public:
    explicit Drive(DriveConfig config);

    /// Sets the configuration for the next command; a changed disc counts as inserted or removed. Never
    /// waits.
    void configure(const DriveConfig& config);
    /// The configuration set last. Never waits.
    [[nodiscard]] std::shared_ptr<const DriveConfig> config() const;

    /// Carries out one command, with faults, and writes it down in the journal.
    [[nodiscard]] Answer execute(const Request& request);

    /// Whether a fault has unplugged the drive. Never waits.
    [[nodiscard]] bool gone() const;
    /// Whether a disc lies in the closed drive. Never waits.
    [[nodiscard]] bool loaded() const;
    /// Whether the medium has changed since this was asked last.
    [[nodiscard]] bool takeMediaChanged();
    /// Writes a line about opening the node into the journal. Never waits.
    void noteOpening(const std::string& how, const std::string& answer);

private:
    class Lock;

    void takeConfig();
    [[nodiscard]] bool struck(FaultKind kind) const;
    [[nodiscard]] std::uint64_t nextNumber();
    void refreshDisc();
    void swapDisc(std::uint64_t identity);
    void refreshCue();
    [[nodiscard]] Answer answerTo(const Request& request, const FaultVerdict& verdict);
    [[nodiscard]] Answer commanded(const Request& request);
    [[nodiscard]] Sense readiness(int operation);
    void applyReadFaults(Answer& answer, const Request& request, const FaultVerdict& verdict) const;
    [[nodiscard]] bool released(std::uint32_t delayMs) const;
    void wait(Answer& answer, const Request& request, std::uint32_t delayMs) const;
    void note(std::uint64_t number, const Request& request, const Answer& answer,
              const FaultVerdict& verdict);

    mutable std::mutex m_latestMutex;
    std::shared_ptr<const DriveConfig> m_latest; ///< what the next command goes by
    std::shared_ptr<const DriveConfig> m_config; ///< what the running command goes by
    SharedFile<DriveState> m_state;
    std::unique_ptr<Disc> m_disc;
    std::string m_discStem;
    CueSheet m_cue;
    std::uint32_t m_cueSerial = 0;
};

} // namespace zib::drive
