#include "engines/rip/drive/TrackReader.h"

#include "common/CdTime.h"
#include "components/CDRipperX.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <cdio/cdio.h>
#include <cdio/paranoia/cdda.h>
#include <cdio/paranoia/paranoia.h>

namespace zib {

namespace {

constexpr int kMostRetries = 20;

/// The library calls back without saying for whom; a reader works on one thread at a time.
thread_local TrackReader* working = nullptr;

/// The library's kinds of work as the component's. @returns a negative number for what is not told.
int kindOf(int what)
{
    switch (what) {
    case PARANOIA_CB_READ:
        return CDRipperX::kReadingProgress;
    case PARANOIA_CB_VERIFY:
    case PARANOIA_CB_OVERLAP:
    case PARANOIA_CB_BACKOFF:
        return CDRipperX::kVerifyingProgress;
    case PARANOIA_CB_SKIP:
        return CDRipperX::kSkippingProgress;
    case PARANOIA_CB_READERR:
        return CDRipperX::kReadErrorProgress;
    case PARANOIA_CB_WROTE:
    case PARANOIA_CB_FINISHED:
        return -1;
    default:
        return CDRipperX::kRepairingProgress;
    }
}

} // namespace

TrackReader::TrackReader(const CdioDisc& disc, const std::atomic<bool>& stopped, Disc::Progress progress,
                         qint64 framePatienceMs)
    : m_disc(disc), m_stopped(stopped), m_progress(std::move(progress)), m_patienceMs(framePatienceMs)
{
}

TrackReader::~TrackReader()
{
    closeTrack();
    if (m_drive)
        cdio_cddap_close_no_free_cdio(m_drive);
}

Outcome<> TrackReader::open()
{
    const Failure closed{Failure::Kind::DeviceGone};
    m_drive = cdio_cddap_identify_cdio(m_disc.handle(), CDDA_MESSAGE_FORGETIT, nullptr);
    if (!m_drive)
        return closed;
    cdio_cddap_verbose_set(m_drive, CDDA_MESSAGE_FORGETIT, CDDA_MESSAGE_FORGETIT);
    if (cdio_cddap_open(m_drive) != 0)
        return whyClosed();
    m_drive->bigendianp = 0; // as READ CD is defined; otherwise the library guesses by listening
    m_drive->read_audio = &TrackReader::readGuarded;
    return {};
}

/// The library does not say why; the first frame of sound does.
Failure TrackReader::whyClosed() const
{
    const QList<TocTrack> tracks = m_disc.tracks();
    const auto sound =
        std::find_if(tracks.cbegin(), tracks.cend(), [](const TocTrack& track) { return track.audio; });
    QByteArray frame(kBytesPerFrame, '\0');
    const auto read = sound == tracks.cend() ? Outcome<>(Failure{Failure::Kind::DeviceGone})
                                             : m_disc.read(frame.data(), sound->start, 1);
    return read ? Failure{Failure::Kind::Unsupported} : read.error();
}

void TrackReader::begin(const TocTrack& track)
{
    closeTrack();
    m_track = track;
    m_failure.reset();
    m_reading = cdio_paranoia_init(m_drive);
    cdio_paranoia_modeset(m_reading, PARANOIA_MODE_FULL ^ PARANOIA_MODE_NEVERSKIP);
    cdio_paranoia_set_range(m_reading, track.start, track.start + track.frames - 1);
    cdio_paranoia_seek(m_reading, track.start, SEEK_SET);
}

Outcome<const char*> TrackReader::next()
{
    m_skipped = m_unreadable = false;
    m_frameTime.start();
    working = this;
    const int16_t* frame = cdio_paranoia_read_limited(
        m_reading, [](long words, paranoia_cb_mode_t what) { working->told(words, what); }, kMostRetries);
    working = nullptr;
    if (m_stopped)
        return Failure{Failure::Kind::Cancelled};
    if (m_failure)
        return *m_failure;
    if (!frame)
        return Failure{Failure::Kind::DeviceGone};
    if (m_skipped)
        return Failure{Failure::Kind::UnreadableFile};
    return reinterpret_cast<const char*>(frame);
}

void TrackReader::told(long words, int what)
{
    const auto frame = static_cast<qint32>(words / CD_FRAMEWORDS);
    if (what == PARANOIA_CB_SKIP && !std::exchange(m_skipped, true) && !m_unreadable)
        m_badFrame = frame;
    if (const int kind = kindOf(what); kind >= 0 && m_progress)
        m_progress(kind, frame);
}

/// Without @p data the library only wants to have other frames read in between.
long TrackReader::readGuarded(cdrom_drive_s*, void* data, int first, long count)
{
    const auto frames = static_cast<qint32>(count);
    if (data)
        return working->read(static_cast<char*>(data), first, frames);
    working->m_unwanted.resize(count * kBytesPerFrame);
    if (const auto got = working->readOnce(working->m_unwanted.data(), first, frames); !got)
        return 0;
    return count;
}

/// Once the frame is lost anyhow, silence is handed out: the library comes to its end only with data.
Outcome<> TrackReader::readOnce(char* data, qint32 first, qint32 count)
{
    if (m_frameTime.hasExpired(m_patienceMs) && !std::exchange(m_skipped, true) && !m_unreadable)
        m_badFrame = first;
    if (m_stopped || m_failure || m_skipped) {
        std::memset(data, 0, static_cast<size_t>(count) * kBytesPerFrame);
        return {};
    }
    const auto got = m_disc.read(data, first, count);
    if (!got && endsEverything(got.error().kind, first))
        m_failure = got.error();
    return got;
}

/// The library reads a little beyond the track too, where a drive may rightly refuse to read sound.
bool TrackReader::endsEverything(Failure::Kind kind, qint32 frame) const
{
    const bool within = frame >= m_track.start && frame < m_track.start + m_track.frames;
    return kind == Failure::Kind::NoMedium || kind == Failure::Kind::WrongMedium ||
           kind == Failure::Kind::DeviceGone || (kind == Failure::Kind::Unsupported && within);
}

/// A request that fails is tried in smaller steps, down to the frame that is to blame.
/// @returns how many frames from the first on were read.
long TrackReader::read(char* data, qint32 first, qint32 count)
{
    qint32 done = 0;
    qint32 step = count;
    while (done < count) {
        step = std::min(step, count - done);
        if (readOnce(data + qint64{done} * kBytesPerFrame, first + done, step)) {
            done += step;
        } else if (step > 1) {
            step = (step + 1) / 2;
        } else {
            const qint32 bad = first + done;
            m_badFrame = std::exchange(m_unreadable, true) ? std::min(m_badFrame, bad) : bad;
            break;
        }
    }
    return done;
}

void TrackReader::closeTrack()
{
    if (m_reading)
        cdio_paranoia_free(std::exchange(m_reading, nullptr));
}

} // namespace zib
