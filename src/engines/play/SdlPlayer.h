#pragma once

#include "components/AudioPlayer.h"

#include <QTimer>

#include <chrono>
#include <memory>

namespace zib {

class SampleQueue;
class SdlDevice;

/// Plays on SDL 2 audio. The device's thread pulls from a queue of our own; news of it crosses to the owner's
/// thread before a signal leaves.
class SdlPlayer final : public AudioPlayer
{
    Q_OBJECT
public:
    SdlPlayer();
    ~SdlPlayer() override;

    void setFormat(int rateHz, int channels) override;
    qint32 bufferSize(qint32 milliseconds) const override;
    int open() override;
    int status() const override { return m_status; }
    void writeBlock(const AudioBlock& block) override;
    void setExpecting(bool on) override;
    qint64 position() const override;
    void reset() override;
    void close() override;

private:
    void collect();
    void lookAround();
    bool hasStalled();
    void endWhenDry();
    void finish(int status);

    int m_rateHz = 0;
    int m_channels = 0;
    int m_status = 0;
    std::shared_ptr<SampleQueue> m_queue; // of the current or the last opening
    std::unique_ptr<SdlDevice> m_device;  // null while closed
    QTimer m_ticks;
    bool m_ending = false;
    bool m_expecting = false;
    qint64 m_lastHanded = 0;
    std::chrono::steady_clock::time_point m_lastMove{};
};

} // namespace zib
