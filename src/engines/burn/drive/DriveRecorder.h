#pragma once

#include "engines/burn/Recorder.h"

#include <optional>

namespace zib {

/// How long a drive may take before it counts as stuck, in milliseconds. Real drives calibrate, spin up and
/// close within these; tests shorten them.
struct DrivePatience
{
    int pollMs = 100;      ///< Between two looks at the drive.
    int searchMs = 5'000;  ///< For telling who it is.
    int readyMs = 20'000;  ///< For a disc that is being loaded.
    int callMs = 60'000;   ///< For taking the drive, asking it afresh and giving it back.
    int writeMs = 120'000; ///< Without one more sector while writing.
    int closeMs = 600'000; ///< For lead-in, lead-out and closing.
    int cancelMs = 60'000; ///< From a cancel until the drive is idle.
};

class DriveLine;
class GrabbedDrive;
class LibburnSession;

/// A CD recorder of this machine, through libburn. See Recorder for the calls; each takes the drive for
/// itself, and gives it back unlocked.
class DriveRecorder final : public Recorder
{
public:
    /// What a drive says it can do.
    struct Traits
    {
        QString path;
        QString maker;
        QString model;
        bool writesCdR = false;
        bool writesCdRw = false;
        bool sessionAtOnce = false;
        bool trackAtOnce = false;
        bool simulates = false;
        bool bufferProtection = false;
        bool told =
            false; ///< By the drive itself; else they are guessed, for a drive that could not be asked.
    };
    /// Asks the drive at the end of @p line.  @returns nothing when it does not answer.
    static std::optional<Traits> traitsOf(DriveLine& line);

    explicit DriveRecorder(Traits traits, DrivePatience patience = {});

    QString path() const override { return m_traits.path; }
    QString maker() const override { return m_traits.maker; }
    QString model() const override { return m_traits.model; }
    bool canWriteCdR() const override { return m_traits.writesCdR; }
    bool canWriteCdRw() const override { return m_traits.writesCdRw; }
    bool canWriteAudio() const override { return m_traits.sessionAtOnce || m_traits.trackAtOnce; }
    bool hasBufferProtection() const override { return m_traits.bufferProtection; }

    Outcome<Medium> inspect(const InspectionTalk& talk) override;
    std::optional<BurnError> write(const BurnJob& job, BurnObserver& observer) override;
    void eject() override;

private:
    std::optional<BurnError> writeGrabbed(LibburnSession& session, const BurnJob& job,
                                          BurnObserver& observer);
    std::optional<BurnError> writeNamed(GrabbedDrive& grabbed, const Traits& traits, const BurnJob& job,
                                        BurnObserver& observer);
    Traits currentTraits() const;

    Traits m_traits;
    DrivePatience m_patience;
};

/// Looks for recorders; takes up to some seconds for each drive, so never on the thread of a window.
FoundRecorders findDrives(const DrivePatience& patience = {});

} // namespace zib
