#include "engines/rip/drive/CdioDisc.h"

#include "common/CdTime.h"
#include "engines/rip/drive/DriveQuestion.h"
#include "engines/rip/drive/TrackReader.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <cmath>
#include <mutex>

#include <cdio/cdio.h>
#include <cdio/logging.h>
#include <cdio/mmc.h>
#include <cdio/mmc_cmds.h>
#include <unistd.h>

namespace zib {

namespace {

/// Lead-out of the first session, lead-in and first gap of the second (Orange Book): frames of no track.
constexpr qint32 kBetweenSessions = 11400;
/// Speed of sound in kB/s of 1000 bytes: 75 frames of 2352 bytes a second.
constexpr double kSingleSpeed = 176.4;
constexpr int kMostSpeed = 72;

// Sense data (SPC-4, annex D).
constexpr int kNotReady = 0x2;
constexpr int kUnitAttention = 0x6;
constexpr int kMediumNotPresent = 0x3A;
constexpr int kMediumMayHaveChanged = 0x28;

bool isGone(int error)
{
    return error == ENODEV || error == ENXIO;
}

template <std::size_t size>
bool ask(_CdIo* disc, std::initializer_list<int> command, std::array<quint8, size>& reply)
{
    return askDrive(disc, command, reply.data(), size);
}

/// The library speaks to nobody: what it has to say shows in its answers. Its own listener would do more than
/// print, it ends the program at the first error.
void silenceLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] { cdio_log_set_handler([](cdio_log_level_t, const char*) {}); });
}

std::shared_ptr<_CdIo> opened(const QString& device)
{
    silenceLibrary();
    return {cdio_open(QFile::encodeName(device).constData(), DRIVER_LINUX), cdio_destroy};
}

} // namespace

CdioDisc::CdioDisc(std::shared_ptr<_CdIo> disc, QString path)
    : m_disc(std::move(disc)), m_path(std::move(path)), m_details(m_disc.get())
{
}

Outcome<std::shared_ptr<CdioDisc>> CdioDisc::openDrive(const QString& device)
{
    errno = 0;
    if (auto disc = opened(device))
        return std::shared_ptr<CdioDisc>(new CdioDisc(std::move(disc), device));
    const bool denied = errno == EACCES || errno == EPERM;
    return Failure{denied ? Failure::Kind::NoPermission : Failure::Kind::NotFound, device};
}

DriveIdentity CdioDisc::identity() const
{
    cdio_hwinfo_t info{};
    if (!cdio_get_hwinfo(m_disc.get(), &info))
        return {};
    return {QString::fromLatin1(info.psz_vendor).simplified(),
            QString::fromLatin1(info.psz_model).simplified()};
}

DiscPresence CdioDisc::presence(bool* newDisc) const
{
    // GET EVENT STATUS NOTIFICATION, polled, media class (MMC-5, 6.7).
    constexpr int kMediaClass = 4;
    std::array<quint8, 8> reply{};
    if (!ask(m_disc.get(), {0x4A, 1, 0, 0, 1 << kMediaClass, 0, 0, 0, reply.size(), 0}, reply))
        return isGone(errno) ? DiscPresence::Gone : readiness();
    if ((reply[2] & 0x80) || (reply[2] & 7) != kMediaClass)
        return readiness();
    const int event = reply[4] & 0xF;
    if (newDisc)
        *newDisc = event == 2 || event == 3; // NewMedia, MediaRemoval
    return (reply[5] & 2) ? DiscPresence::Ready : DiscPresence::Absent;
}

DiscPresence CdioDisc::readiness() const
{
    mmc_cdb_t cdb{};
    errno = 0;
    for (int attempt = 0; attempt < 2; ++attempt) { // the first answer may only tell of a change
        if (mmc_run_cmd(m_disc.get(), kQuestionMs, &cdb, SCSI_MMC_DATA_NONE, 0, nullptr) == DRIVER_OP_SUCCESS)
            return DiscPresence::Ready;
        if (isGone(errno))
            return DiscPresence::Gone;
        const Sense sense = lastSense(m_disc.get());
        if (sense.key == kNotReady && sense.asc == kMediumNotPresent)
            return DiscPresence::Absent;
        if (sense.key != kUnitAttention)
            break;
    }
    return DiscPresence::NotReady;
}

int CdioDisc::maxReadSpeed() const
{
    // MODE SENSE (10), page 2A; the fastest reading stands at bytes 8 and 9 of the page, behind the header.
    constexpr std::size_t kHeader = 8;
    std::array<quint8, 32> reply{};
    if (!ask(m_disc.get(), {0x5A, 8, 0x2A, 0, 0, 0, 0, 0, reply.size(), 0}, reply))
        return 0;
    const std::size_t page = kHeader + static_cast<std::size_t>(reply[6] << 8 | reply[7]);
    if (page + 10 > reply.size() || (reply[page] & 0x3F) != 0x2A)
        return 0;
    const int rate = reply[page + 8] << 8 | reply[page + 9];
    return qMin(static_cast<int>(std::lround(rate / kSingleSpeed)), kMostSpeed);
}

void CdioDisc::setReadSpeed(int factor) const
{
    cdio_set_speed(m_disc.get(), factor);
}

QList<TocTrack> CdioDisc::tracks() const
{
    const track_t first = cdio_get_first_track_num(m_disc.get());
    const track_t count = cdio_get_num_tracks(m_disc.get());
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK || count > kMostTracks)
        return {};
    QList<TocTrack> tracks;
    for (int n = first; n < first + count; ++n) {
        const auto number = static_cast<track_t>(n);
        TocTrack track{.number = n, .start = cdio_get_track_lsn(m_disc.get(), number)};
        track.audio = cdio_get_track_format(m_disc.get(), number) == TRACK_FORMAT_AUDIO;
        track.copyPermitted = cdio_get_track_copy_permit(m_disc.get(), number) == CDIO_TRACK_FLAG_TRUE;
        track.preemphasis = cdio_get_track_preemphasis(m_disc.get(), number) == CDIO_TRACK_FLAG_TRUE;
        tracks << track;
    }
    lsn_t lastSession = 0;
    if (cdio_get_last_session(m_disc.get(), &lastSession) != DRIVER_OP_SUCCESS)
        lastSession = 0;
    tracks << TocTrack{.start = cdio_get_track_lsn(m_disc.get(), CDIO_CDROM_LEADOUT_TRACK)};
    for (qsizetype i = 0; i + 1 < tracks.size(); ++i) {
        tracks[i].frames =
            tracks[i + 1].start - tracks[i].start - sessionCut(tracks[i], tracks[i + 1], lastSession);
        if (tracks[i].start < 0 || tracks[i].frames <= 0)
            return {};
    }
    tracks.removeLast();
    return tracks;
}

const QList<TocTrack>& CdioDisc::known() const
{
    if (m_tracks.isEmpty())
        m_tracks = tracks();
    return m_tracks;
}

DiscNames CdioDisc::names() const
{
    return m_details.names(known());
}

qint32 CdioDisc::gapBehind(const TocTrack& track, const std::atomic<bool>& stopped) const
{
    for (const TocTrack& next : known())
        if (next.number == track.number + 1)
            return m_details.gapBetween(track, next, stopped);
    return 0;
}

std::unique_ptr<FrameReader> CdioDisc::makeReader(const std::atomic<bool>& stopped, Progress progress) const
{
    return std::make_unique<TrackReader>(*this, stopped, std::move(progress));
}

qint32 CdioDisc::sessionCut(const TocTrack& track, const TocTrack& next, qint32 lastSession) const
{
    const bool crosses = lastSession > 0 && track.start < lastSession && next.start >= lastSession &&
                         next.start - track.start > kBetweenSessions && next.number > 0;
    return crosses ? kBetweenSessions : 0;
}

Outcome<> CdioDisc::read(char* data, qint32 first, qint32 count) const
{
    errno = 0;
    const auto answer = cdio_read_audio_sectors(m_disc.get(), data, first, static_cast<uint32_t>(count));
    if (answer == DRIVER_OP_SUCCESS)
        return {};
    return whyFailed(errno);
}

Failure CdioDisc::whyFailed(int error) const
{
    if (isGone(error) || ::access(QFile::encodeName(m_path).constData(), F_OK) != 0)
        return {Failure::Kind::DeviceGone, m_path};
    const Sense sense = lastSense(m_disc.get());
    if (error == ENOMEDIUM || (sense.key == kNotReady && sense.asc == kMediumNotPresent))
        return {Failure::Kind::NoMedium, m_path};
    if (sense.key == kUnitAttention && sense.asc == kMediumMayHaveChanged)
        return {Failure::Kind::WrongMedium, m_path};
    if (sense.key == kNotReady)
        return {Failure::Kind::Busy, m_path};
    if (isRefusal(sense))
        return {Failure::Kind::Unsupported, m_path};
    return {Failure::Kind::UnreadableFile};
}

} // namespace zib
