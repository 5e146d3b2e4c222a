#pragma once

#include "engines/burn/drive/DiscPlan.h"
#include "engines/burn/drive/DiscVerdict.h"
#include "engines/burn/drive/DriveRecorder.h"
#include "engines/burn/drive/GrabbedDrive.h"
#include "engines/burn/drive/LibburnSession.h"
#include "engines/burn/drive/WritePhases.h"
#include "engines/burn/mmc/ModeGate.h"

#include <QElapsedTimer>

#include <memory>
#include <optional>

namespace burn {
struct burn_disc;
struct burn_write_opts;
struct burn_progress;
} // namespace burn

namespace zib {

/// One write from its checks to the reading back, on a drive that is already ours.
class DriveBurn
{
public:
    DriveBurn(GrabbedDrive& grabbed, const DriveRecorder::Traits& traits, const DrivePatience& patience,
              const BurnJob& job, BurnObserver& observer);

    std::optional<BurnError> run();
    /// Behind a run() that failed: whether it may have been for the names alone. The disc is blank as before.
    bool failedOverNames() const;

private:
    std::optional<BurnError> checkDisc();
    std::optional<BurnError> checkPlace();
    std::optional<BurnError> setMode();
    std::optional<BurnError> write(burn::burn_write_opts* options, const std::shared_ptr<DiscPlan>& plan);
    std::optional<BurnError> configure(burn::burn_write_opts* options, burn::burn_disc* disc);
    void watch(const std::shared_ptr<DiscPlan>& plan);
    void follow(const burn::burn_progress& progress, int status);
    void takeEnd();
    bool mayStillCancel() const;
    bool stalled(const burn::burn_progress& progress, int status);
    void stopDrive();
    void leave(const std::shared_ptr<DiscPlan>& plan);
    void seeToTheDoor();
    void tellWait();
    std::optional<BurnError> judge(const DiscPlan& plan);
    std::optional<BurnError> check();
    std::optional<BurnError> readBack();
    std::optional<BurnError> compare();
    void checkNames();
    std::optional<BurnError> lookWhetherBlank();
    BurnError failure(const DiscPlan& plan) const;
    DiscVerdict look(int patienceMs);
    QString whatBecameOfTheDisc(const DiscVerdict& verdict) const;
    BurnError driveError(const QString& description) const;

    GrabbedDrive& m_grabbed;
    const DriveRecorder::Traits& m_traits;
    const DrivePatience& m_patience;
    const BurnJob& m_job;
    BurnObserver& m_observer;
    LibburnMessages m_messages;
    const WritePlan m_mode;
    std::shared_ptr<DriveLine> m_line; ///< Beside the library's own.
    std::shared_ptr<ModeGate> m_gate;
    WritePhases m_phases;
    QByteArray m_textPacks; ///< CD-TEXT as it goes into the lead-in; may be empty.
    DiscVerdict::Truth m_truth = DiscVerdict::Truth::Unknown; ///< What a failure left.
    LibraryThread m_thread;
    bool m_cancelSent = false;
    bool m_failedFirst = false; ///< The drive, before the cancel was sent.
    bool m_doorTried = false;
    bool m_waitTold = false;
    bool m_stuck = false;
    bool m_wroteWell = false;
    qint64 m_lastSign = -1; ///< What the drive's progress looked like when it last moved.
    QElapsedTimer m_sinceSign;
    QElapsedTimer m_sinceCancel;
};

} // namespace zib
