#pragma once

#include "common/Services.h"
#include "tools/Transport.h"

#include <QDialog>

class QAbstractButton;
class QSlider;

namespace zib {

/// What the two players share: the transport's buttons and slider, wired to one Transport.
class TransportWindow : public QDialog
{
    Q_OBJECT
public:
    ~TransportWindow() override;
    void done(int result) override;

protected:
    /// Escape ends the playing first; it closes the window only when nothing is lost by it.
    void keyPressEvent(QKeyEvent* event) override;
    /// Whether closing the window would lose what the user has collected in it.
    virtual bool holdsWork() const { return false; }

    /// The shared controls, as the forms name them. chkPause is pushed in while paused.
    struct Controls
    {
        QAbstractButton* cmdPlay = nullptr;
        QAbstractButton* chkPause = nullptr;
        QAbstractButton* cmdStop = nullptr;
        QAbstractButton* cmdTop = nullptr;
        QAbstractButton* cmdBackward = nullptr;
        QAbstractButton* cmdForward = nullptr;
        QAbstractButton* cmdEnd = nullptr;
        QAbstractButton* cmdVol = nullptr;
        QSlider* Slider1 = nullptr;
    };

    TransportWindow(const Services& services, QWidget* parent);
    void connectTransport(const Controls& controls);

    /// Plays what the window would play now.
    virtual void cmdPlay_Click() = 0;
    /// The file has come to its end, or its device was lost; playing has stopped.
    virtual void playbackEnded() = 0;

    void PlayFile(const QString& path);
    void StopPlaying();

    const Services m_services;

private:
    void chkPause_Click();
    void cmdStop_Click();
    void cmdTop_Click();
    void cmdBackward_Click();
    void cmdForward_Click();
    void cmdEnd_Click();
    void cmdVol_Click();
    void Slider1_MouseDown();
    void Slider1_MouseUp();
    void Slider1_Scroll();
    void AudioPlayer1_BufferDone();
    void AudioPlayer1_PositionChanged(qint64 frames);
    void AudioPlayer1_PlaybackFinished();
    void Form_Unload();
    void seekFrom(int slider);
    void showState();

    Transport m_transport;
    Controls m_controls;
};

} // namespace zib
