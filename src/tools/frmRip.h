#pragma once

#include "common/Errands.h"
#include "common/Services.h"
#include "tools/OutputPlace.h"

#include <QDialog>
#include <QTimer>

#include <memory>

class CDRipperX;

namespace Ui {
class frmRip;
}

/// Copies tracks of an audio CD, or of a disc image, into WAV files.
///
/// The drives are looked for once the window is shown. Closing it by its frame ends a running extraction with
/// the component, as the Close button does by asking.
class frmRip final : public QDialog
{
    Q_OBJECT
public:
    explicit frmRip(const zib::Services& services, QWidget* parent = nullptr);
    ~frmRip() override;
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectControls();
    void connectRipper();
    void Form_Load();
    void cboDevices_Click();
    void cboDevices_activated(int index);
    void cboSpeeds_Click();
    void cmdFolder_Click();
    void cmdExplore_Click();
    void cmdRip_Click();
    void cmdOptions_Click();
    void cmdClose_Click();
    void Timer1_Timer();
    void CDRipperX1_DevicesChanged(int count);
    void CDRipperX1_ExtractionStarted();
    void CDRipperX1_TrackStarted(const QString& file, qint32 start, qint32 end, qint32 track);
    void CDRipperX1_ExtractionProgress(int kind, qint32 position);
    void CDRipperX1_TrackFinished();
    void CDRipperX1_ExtractionFinished();

    void startUnlessRefused(const zib::OutputPlace::Folder& folder);
    bool leaveTaken(const zib::OutputPlace::Folder& folder);
    void LoadDevices();
    void showDevices(int count);
    void showDeviceHint();
    void LoadSpeeds();
    void EnableControls(bool enabled);
    qint16 CountCheckedTracks() const;
    void queueTracks(const zib::OutputPlace::Folder& folder);
    void queueTrack(int track, const zib::OutputPlace::Folder& folder);
    bool startExtraction();

    std::unique_ptr<Ui::frmRip> ui;
    const zib::Services m_services;
    const std::unique_ptr<CDRipperX> m_ripper;
    zib::Errands m_errands;
    QTimer m_timer{this};
    std::shared_ptr<void> m_awake; ///< While tracks are copied.
    QString m_devicesToolTip;      ///< Of cboDevices, without what is said of the device.
    int m_activated = 0;           ///< The entry of cboDevices that the user chose last.
    bool m_loaded = false;
    bool m_selected = false; ///< Whether the entry of cboDevices can be used.
    bool m_starting = false; ///< The output folder has not answered yet.
    int m_fastest = 0;       ///< What the list of speeds was made from.
    qint16 RipTotal = 0;     ///< Rows that were checked when the extraction began.
    qint16 RipDone = 0;
    qint32 TrackStartPos = 0; ///< Bounds of the track under way, in the component's positions.
    qint32 TrackEndPos = 0;
    bool IsRipping = false;
    bool DiscReloadPending = false; ///< The drive was seen empty: the next disc is to be read.
};
