#pragma once

#include "engines/burn/Recorder.h"

namespace zib {

/// The recorder that every machine has: it behaves as a drive with a blank 80-minute disc and writes disc
/// images, "Disc DATE TIME.bin" and ".cue", into one folder. An image has its names only when it is whole and
/// safe on the storage; what an earlier, killed run left behind is removed at the next write.
class ImageRecorder final : public Recorder
{
public:
    /// @param folder where images go; it is made when the first one is written.
    /// @param compares false only to measure what the comparing takes.
    explicit ImageRecorder(QString folder, bool compares = true);

    QString path() const override;
    QString maker() const override;
    QString model() const override;
    bool canWriteCdR() const override { return true; }
    bool canWriteCdRw() const override { return false; }
    bool canWriteAudio() const override { return true; }
    bool hasBufferProtection() const override { return false; }

    Outcome<Medium> inspect(const InspectionTalk& talk) override;
    std::optional<BurnError> write(const BurnJob& job, BurnObserver& observer) override;

private:
    QString m_folder;
    bool m_compares;
};

} // namespace zib
