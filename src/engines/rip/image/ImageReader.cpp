#include "engines/rip/image/ImageReader.h"

#include "common/CdTime.h"
#include "engines/rip/image/ImageDisc.h"

#include <algorithm>

namespace zib {

namespace {
constexpr qint32 kFramesAtOnce = 64;
} // namespace

void ImageReader::begin(const TocTrack& track)
{
    m_frames.resize(kFramesAtOnce * kBytesPerFrame);
    m_firstRead = m_next = track.start;
    m_read = 0;
    m_end = track.start + track.frames;
}

Outcome<const char*> ImageReader::next()
{
    if (m_stopped)
        return Failure{Failure::Kind::Cancelled};
    if (m_next >= m_firstRead + m_read) {
        m_firstRead = m_next;
        m_read = m_disc.read(m_frames.data(), m_next, std::clamp(m_end - m_next, 1, kFramesAtOnce));
    }
    if (m_read == 0)
        return Failure{Failure::Kind::UnreadableFile,
                       QStringLiteral("the file %1 cannot be read there").arg(m_disc.fileAt(m_next))};
    const qint64 at = qint64{m_next - m_firstRead} * kBytesPerFrame;
    ++m_next;
    return m_frames.constData() + at;
}

} // namespace zib
