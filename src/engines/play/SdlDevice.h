#pragma once

#include <QtGlobal>

#include <memory>

namespace zib {

class SampleQueue;

/// The desktop's default sound device, taken for as long as the object lives.
///
/// Every opening connects to the sound server afresh, so that a restarted server or another default device is
/// found. A server that does not answer cannot hold the caller: each call waits a bounded time, and what
/// hangs stays behind on a thread of its own.
class SdlDevice
{
public:
    /// Takes the device; sound is pulled from @p queue at once.  @returns nullptr when there is none.
    static std::unique_ptr<SdlDevice> open(int rateHz, int channels, std::shared_ptr<SampleQueue> queue);
    /// Plays what was handed over and gives the device back. The queue must have been shut.
    ~SdlDevice();
    Q_DISABLE_COPY_MOVE(SdlDevice)

    /// Whether the device has gone: unplugged, or its server ended.
    bool isLost() const;

private:
    SdlDevice(quint32 id, std::shared_ptr<SampleQueue> queue);

    const quint32 m_id;
    const std::shared_ptr<SampleQueue> m_queue; // the device's thread uses it until the very end
};

} // namespace zib
