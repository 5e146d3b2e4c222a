#pragma once

#include "engines/rip/Disc.h"

#include <QByteArray>

#include <atomic>

namespace zib {

class ImageDisc;

/// Reads the tracks of a disc image as they stand there. The worker's thread only.
class ImageReader final : public FrameReader
{
public:
    /// Both outlive the reader.
    ImageReader(const ImageDisc& disc, const std::atomic<bool>& stopped) : m_disc(disc), m_stopped(stopped) {}

    Outcome<> open() override { return {}; }
    void begin(const TocTrack& track) override;
    Outcome<const char*> next() override;
    qint32 badFrame() const override { return m_next; }

private:
    const ImageDisc& m_disc;
    const std::atomic<bool>& m_stopped;
    QByteArray m_frames; ///< Read ahead within the track.
    qint32 m_firstRead = 0;
    qint32 m_read = 0;
    qint32 m_next = 0;
    qint32 m_end = 0;
};

} // namespace zib
