#pragma once

#include "components/CDRipperX.h"
#include "components/DVDWriterPro.h"
#include "components/Printer.h"
#include "fakes/FakeAudioShelf.h"

#include <QStringList>

/// The make-believe surroundings of the help's pictures: an album, two drives, a disc and a printer.
namespace scene {

/// Writes the album's files (sizes only) into the folder and puts their sounds onto the shelf.
/// @returns the paths in disc order.
QStringList makeAlbum(const QString& folder, zib::FakeAudioShelf& shelf);

/// Two recorders with an empty disc. A write begins and stays in the middle, so that it can be looked at.
class Recorder final : public DVDWriterPro
{
public:
    bool initializeDrives(bool) override { return true; }
    int driveCount() const override { return 2; }
    bool canWriteCdR(int) const override { return true; }
    bool canWriteCdRw(int) const override { return true; }
    bool canWriteAudio(int) const override { return true; }
    QString driveText1(int drive) const override;
    QString driveText2(int drive) const override;
    QString driveText3(int drive) const override;
    bool selectDrive(int) override { return true; }
    bool supportsBufferProtection() const override { return true; }
    int discStatus() override { return kBlankDisc; }
    bool discHoldsData() override { return false; }
    int maxWriteSpeed() override { return 48; }
    QList<zib::WriteSpeed> writeSpeeds() override;
    void setWriteSpeed(int) override {}
    void setCacheLocally(bool) override {}
    void setCacheFolder(const QString&) override {}
    void setWriteMode(int) override {}
    void setTestWrite(bool) override {}
    bool testWrite() const override { return false; }
    void setCloseSession(bool) override {}
    void setCloseDisc(bool) override {}
    void setBufferProtection(bool) override {}
    bool addAudioTrack(const QString&) override { return ++m_tracks > 0; }
    int trackCount() const override { return m_tracks; }
    bool start() override;
    void cancel() override { emit WriteCancelled(); }
    void finish(bool) override {}

private:
    int m_tracks = 0;
};

/// A drive with a disc of ten songs and a data track.
class Ripper final : public CDRipperX
{
public:
    int deviceCount() override { return 1; }
    QString deviceText1(int) const override { return QStringLiteral("/dev/sr0"); }
    QString deviceText2(int) const override { return QStringLiteral("HL-DT-ST"); }
    QString deviceText3(int) const override { return QStringLiteral("DVDRAM GH24NSD5"); }
    bool selectDevice(int) override { return true; }
    int status() const override { return 0; }
    int maxReadSpeed() override { return 48; }
    void setReadSpeed(int) override {}
    bool discPresent() override { return true; }
    int trackCount() override { return 11; }
    QString discText() override { return {}; }
    qint32 trackStart(int track) override { return track * 15000; }
    qint32 trackLength(int track) override { return 9000 + (track * 3571) % 9500; }
    bool isAudioTrack(int track) override { return track <= 10; }
    bool copyPermitted(int) override { return true; }
    QString timeText(qint32 length) const override;
    int driveState() override { return kDiscLoaded; }
    void clearQueue() override {}
    bool addTrack(int, const QString&) override { return true; }
    bool start() override { return true; }
    void abort() override {}
    QStringList unreadTracks() const override { return {}; }
};

/// Paper that nobody sees.
class PaperlessPrinter final : public Printer
{
public:
    zib::Outcome<Target> target() override
    {
        constexpr double kMargin = 360; // A quarter of an inch, in twips.
        return Target{QStringLiteral("Laser"), QStringLiteral("210x297"), QSizeF(11906, 16838),
                      QSizeF(11906 - 2 * kMargin, 16838 - 2 * kMargin), QPointF(kMargin, kMargin)};
    }
    zib::Outcome<> print(const QString&, const Page&) override { return {}; }
};

} // namespace scene
