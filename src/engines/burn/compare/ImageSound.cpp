#include "engines/burn/compare/ImageSound.h"

#include "common/CdTime.h"
#include "common/NativeName.h"

namespace zib {

ImageSound::ImageSound(const QString& path)
{
    if (openForReading(m_file, path))
        m_frames = m_file.size() / kBytesPerFrame;
}

Outcome<> ImageSound::read(qint64 frame, int count, char* buffer)
{
    const qint64 bytes = qint64{count} * kBytesPerFrame;
    if (m_file.seek(frame * kBytesPerFrame) && m_file.read(buffer, bytes) == bytes)
        return {};
    return Failure{Failure::Kind::UnreadableFile};
}

} // namespace zib
