#include "DiscImage.h"

#include "common/CdTime.h"

#include <QFile>

#include <cdio/cdio.h>

namespace demo {

using zib::Failure;

void DiscImage::Close::operator()(_CdIo* disc) const
{
    cdio_destroy(disc);
}

zib::Outcome<DiscImage> DiscImage::open(const QString& cue)
{
    std::shared_ptr<_CdIo> disc(cdio_open(QFile::encodeName(cue).constData(), DRIVER_BINCUE), Close());
    if (!disc)
        return Failure{Failure::Kind::UnreadableFile, cue};
    return DiscImage(std::move(disc));
}

zib::Outcome<QList<DiscTrack>> DiscImage::tracks() const
{
    QList<DiscTrack> tracks;
    const int count = cdio_get_num_tracks(m_disc.get());
    for (int i = 1; i <= count && count != CDIO_INVALID_TRACK; ++i) {
        const auto number = static_cast<track_t>(i);
        if (cdio_get_track_format(m_disc.get(), number) != TRACK_FORMAT_AUDIO)
            return Failure{Failure::Kind::WrongMedium, QString::number(i)};
        const qint64 start = cdio_get_track_lsn(m_disc.get(), number);
        const qint64 end = qint64{cdio_get_track_last_lsn(m_disc.get(), number)} + 1;
        const auto next = static_cast<track_t>(i + 1);
        const qint64 gap = i < count ? cdio_get_track_pregap_lsn(m_disc.get(), next) : CDIO_INVALID_LSN;
        const qint64 soundEnd = gap == CDIO_INVALID_LSN ? end : gap;
        tracks << DiscTrack{start, soundEnd - start, end - soundEnd};
    }
    return tracks;
}

QByteArray DiscImage::read(qint64 first, qint64 count) const
{
    QByteArray frames(count * zib::kBytesPerFrame, '\0');
    const auto result = cdio_read_audio_sectors(m_disc.get(), frames.data(), static_cast<lsn_t>(first),
                                                static_cast<uint32_t>(count));
    return result == DRIVER_OP_SUCCESS ? frames : QByteArray();
}

} // namespace demo
