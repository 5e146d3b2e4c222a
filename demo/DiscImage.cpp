#include "DiscImage.h"

#include "common/CdTime.h"

#include <QFile>

#include <algorithm>

#include <cdio/cdio.h>
#include <cdio/logging.h>

namespace demo {

using zib::Failure;

namespace {

constexpr qint64 kMostFramesAtOnce = 75; // libcdio 2.2 refuses long reads of images

} // namespace

void DiscImage::Close::operator()(_CdIo* disc) const
{
    cdio_destroy(disc);
}

zib::Outcome<DiscImage> DiscImage::open(const QString& cue)
{
    cdio_log_set_handler([](cdio_log_level_t, const char*) {}); // the library's own ends the program
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
    for (qint64 done = 0; done < count; done += kMostFramesAtOnce) {
        const auto step = static_cast<uint32_t>(std::min(count - done, kMostFramesAtOnce));
        if (cdio_read_audio_sectors(m_disc.get(), frames.data() + done * zib::kBytesPerFrame,
                                    static_cast<lsn_t>(first + done), step) != DRIVER_OP_SUCCESS)
            return {};
    }
    return frames;
}

} // namespace demo
