#include "tools/TransportWindow.h"

#include "common/Platform.h"
#include "components/AudioPlayer.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QSlider>

namespace zib {

TransportWindow::TransportWindow(const Services& services, QWidget* parent)
    : QDialog(parent), m_services(services), m_transport(services.components)
{
    m_transport.onChange = [this] { showState(); };
}

TransportWindow::~TransportWindow() = default;

void TransportWindow::connectTransport(const Controls& controls)
{
    m_controls = controls;
    const AudioPlayer* player = &m_transport.player();
    connect(controls.cmdPlay, &QAbstractButton::clicked, this, &TransportWindow::cmdPlay_Click);
    connect(controls.chkPause, &QAbstractButton::clicked, this, &TransportWindow::chkPause_Click);
    connect(controls.cmdStop, &QAbstractButton::clicked, this, &TransportWindow::cmdStop_Click);
    connect(controls.cmdTop, &QAbstractButton::clicked, this, &TransportWindow::cmdTop_Click);
    connect(controls.cmdBackward, &QAbstractButton::clicked, this, &TransportWindow::cmdBackward_Click);
    connect(controls.cmdForward, &QAbstractButton::clicked, this, &TransportWindow::cmdForward_Click);
    connect(controls.cmdEnd, &QAbstractButton::clicked, this, &TransportWindow::cmdEnd_Click);
    connect(controls.cmdVol, &QAbstractButton::clicked, this, &TransportWindow::cmdVol_Click);
    connect(controls.Slider1, &QSlider::sliderPressed, this, &TransportWindow::Slider1_MouseDown);
    connect(controls.Slider1, &QSlider::sliderReleased, this, &TransportWindow::Slider1_MouseUp);
    connect(controls.Slider1, &QSlider::actionTriggered, this, &TransportWindow::Slider1_Scroll);
    connect(player, &AudioPlayer::BufferDone, this, &TransportWindow::AudioPlayer1_BufferDone);
    connect(player, &AudioPlayer::PositionChanged, this, &TransportWindow::AudioPlayer1_PositionChanged);
    connect(player, &AudioPlayer::PlaybackFinished, this, &TransportWindow::AudioPlayer1_PlaybackFinished);
}

void TransportWindow::PlayFile(const QString& path)
{
    m_transport.PlayFile(path);
    showState();
}

void TransportWindow::StopPlaying()
{
    m_transport.StopPlaying();
    showState();
}

void TransportWindow::chkPause_Click()
{
    m_transport.TogglePause();
    showState();
}

void TransportWindow::cmdStop_Click()
{
    StopPlaying();
}

void TransportWindow::cmdTop_Click()
{
    seekFrom(m_controls.Slider1->minimum());
}

void TransportWindow::cmdBackward_Click()
{
    const int slider = m_controls.Slider1->value();
    seekFrom(slider >= 2 ? slider - 1 : slider);
}

void TransportWindow::cmdForward_Click()
{
    seekFrom(m_controls.Slider1->value() + 1); // the slider stops at its end by itself
}

void TransportWindow::cmdEnd_Click()
{
    seekFrom(m_controls.Slider1->maximum());
}

void TransportWindow::cmdVol_Click()
{
    if (Shell* shell = platform().shell)
        shell->ShellExecuteA(QStringLiteral("open"), QStringLiteral("sndvol32.exe"));
}

void TransportWindow::Slider1_MouseDown()
{
    m_transport.beginDrag();
}

void TransportWindow::Slider1_MouseUp()
{
    m_transport.endDrag(m_controls.Slider1->value());
}

/// Keys and the wheel, which move the slider without dragging it.
void TransportWindow::Slider1_Scroll()
{
    if (!m_controls.Slider1->isSliderDown())
        m_transport.seekAnywhere(m_controls.Slider1->sliderPosition());
}

void TransportWindow::AudioPlayer1_BufferDone()
{
    m_transport.FeedBlock();
}

void TransportWindow::AudioPlayer1_PositionChanged(qint64 frames)
{
    if (const auto slider = m_transport.sliderFor(frames))
        m_controls.Slider1->setValue(*slider);
}

void TransportWindow::AudioPlayer1_PlaybackFinished()
{
    StopPlaying();
    playbackEnded();
}

void TransportWindow::Form_Unload()
{
    if (m_transport.isPlaying() || m_transport.isPaused())
        StopPlaying();
}

void TransportWindow::keyPressEvent(QKeyEvent* event)
{
    const bool guarded = m_transport.isPlaying() || m_transport.isOpening();
    if (event->key() != Qt::Key_Escape || (!guarded && !holdsWork()))
        return QDialog::keyPressEvent(event);
    if (guarded)
        StopPlaying();
}

void TransportWindow::done(int result)
{
    Form_Unload();
    QDialog::done(result);
}

void TransportWindow::seekFrom(int slider)
{
    m_controls.Slider1->setValue(slider);
    m_transport.SeekToSlider(m_controls.Slider1->value());
}

void TransportWindow::showState()
{
    m_controls.chkPause->setChecked(m_transport.pauseTicked());
    if (m_transport.isOpening())
        setCursor(Qt::BusyCursor);
    else
        unsetCursor();
}

} // namespace zib
