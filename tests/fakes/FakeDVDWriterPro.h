#pragma once

#include "components/DVDWriterPro.h"

#include <QList>
#include <QMap>
#include <QStringList>

#include <functional>

namespace zib {

/// A drive as a test imagines it.
struct FakeDrive
{
    QString path = "/dev/sr0";
    QString maker = "MAKER";
    QString model = "MODEL";
    bool writesCdR = true;
    bool writesCdRw = true;
    bool writesAudio = true;
    bool bufferProtection = false;
    int status = DVDWriterPro::kBlankDisc;
    bool holdsData = false;
    QList<WriteSpeed> speeds{};
};

/// A disc writer that writes nothing and remembers every call. Its events are the test's own to emit, unless
/// it is told to play a whole write.
class FakeDVDWriterPro final : public DVDWriterPro
{
    Q_OBJECT
public:
    using DVDWriterPro::DVDWriterPro;

    bool initializeDrives(bool exclusive) override;
    int driveCount() const override { return static_cast<int>(drives.size()); }
    bool canWriteCdR(int drive) const override { return at(drive).writesCdR; }
    bool canWriteCdRw(int drive) const override { return at(drive).writesCdRw; }
    bool canWriteAudio(int drive) const override { return at(drive).writesAudio; }
    QString driveText1(int drive) const override { return at(drive).path; }
    QString driveText2(int drive) const override { return at(drive).maker; }
    QString driveText3(int drive) const override { return at(drive).model; }
    bool selectDrive(int drive) override;
    bool supportsBufferProtection() const override { return at(selected).bufferProtection; }
    int discStatus() override;
    bool discHoldsData() override;
    int maxWriteSpeed() override;
    QList<WriteSpeed> writeSpeeds() override;
    void setWriteSpeed(int value) override;
    void setCacheLocally(bool on) override;
    void setCacheFolder(const QString& folder) override;
    void setWriteMode(int mode) override;
    void setTestWrite(bool on) override;
    bool testWrite() const override { return testing; }
    void setCloseSession(bool on) override;
    void setCloseDisc(bool on) override;
    void setBufferProtection(bool on) override;
    void setVerify(bool on) override;
    bool addAudioTrack(const QString& path) override;
    void nameTrack(int track, const TrackNames& names) override { trackNames[track] = names; }
    void nameDisc(const QString& title) override { discTitle = title; }
    int trackCount() const override { return toldTracks < 0 ? static_cast<int>(tracks.size()) : toldTracks; }
    bool start() override;
    void cancel() override;
    void abandon() override { note("abandon"); }
    void finish(bool eject) override;

    QList<FakeDrive> drives{FakeDrive{}};
    bool initializes = true; ///< What initializeDrives answers.
    bool starts = true;      ///< What start answers.
    bool plays = false;      ///< start() plays a whole write, event by event, from the event loop.
    bool obeysCancel = true; ///< cancel() ends a running write, from the event loop.
    QStringList refused;     ///< Files that addAudioTrack refuses; a missing file is refused anyway.
    int toldTracks = -1;     ///< What trackCount tells; negative: the truth.
    std::function<void()> onInitialize; ///< Runs inside initializeDrives.
    std::function<void()> onDiscStatus; ///< Runs inside discStatus.

    QStringList
        calls; ///< "setTestWrite 1", "start" ... in order; questions without side effect are left out.
    QStringList tracks;
    QMap<int, TrackNames> trackNames; ///< By the track's number.
    QString discTitle;
    int selected = -1;
    bool testing = false;
    bool running = false;

private:
    FakeDrive at(int drive) const { return drives.value(drive); }
    void note(const QString& call) { calls << call; }
    void playNext(int step);
    void playEnd();
    void end(void (FakeDVDWriterPro::*signal)());
};

} // namespace zib
