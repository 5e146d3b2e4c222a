#include "engines/rip/CdioRipper.h"

#include "common/CdTime.h"
#include "common/Worker.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStorageInfo>

#include <chrono>
#include <utility>

#include <unistd.h>

namespace zib {

namespace {

using namespace std::chrono_literals;

/// Positions are told so often at most.
constexpr int kDeliveryMs = 50;
/// A call waits no longer for a drive.
constexpr auto kPatience = 90ms;
/// The list of drives may wait longer, while the owner's windows repaint.
constexpr auto kIdentityPatience = 2000ms;
/// An aborted extraction that hangs in its drive loses its file after so long.
constexpr int kAbandonMs = 1000;
constexpr qint64 kHeaderBytes = 44;

int statusOf(const Failure& why)
{
    switch (why.kind) {
    case Failure::Kind::Busy:
        return CDRipperX::kHeldByAnother;
    case Failure::Kind::NoPermission:
        return CDRipperX::kNoPermission;
    default:
        return CDRipperX::kNoSuchDevice;
    }
}

/// Whether a file of this length can be made; its folder is made for it.
bool canBeMade(const QString& path, qint64 bytes)
{
    const QFileInfo target(path);
    if (!target.isAbsolute() || target.isDir() || !QDir().mkpath(target.path()))
        return false;
    return ::access(QFile::encodeName(target.path()).constData(), W_OK | X_OK) == 0 &&
           QStorageInfo(target.path()).bytesAvailable() >= bytes;
}

} // namespace

CdioRipper::CdioRipper(QString imagesFolder, QObject* parent)
    : CDRipperX(parent), m_imagesFolder(std::move(imagesFolder))
{
    m_deliveries.setInterval(kDeliveryMs);
    connect(&m_deliveries, &QTimer::timeout, this, &CdioRipper::deliverEvents);
}

CdioRipper::~CdioRipper()
{
    abort();
    m_watch.reset(); // waits a while for the thread
    if (m_aborted)
        m_aborted->abandon();
}

int CdioRipper::deviceCount()
{
    m_devices = findReaders();
    if (!m_devices.isEmpty() && !m_run) {
        Worker asking(0ms);
        const auto drives = m_devices;
        const auto identified = asking.ask<QList<RipDevice>>(
            this,
            [drives] {
                QList<RipDevice> all;
                for (const RipDevice& drive : drives)
                    all << withIdentity(drive);
                return all;
            },
            kIdentityPatience);
        m_devices = identified.value_or(drives);
    }
    m_devices << findImages(m_imagesFolder);
    return static_cast<int>(m_devices.size());
}

QString CdioRipper::deviceText1(int device) const
{
    return m_devices.value(device).text1;
}

QString CdioRipper::deviceText2(int device) const
{
    return m_devices.value(device).text2;
}

QString CdioRipper::deviceText3(int device) const
{
    return m_devices.value(device).text3;
}

bool CdioRipper::refuse(int status)
{
    m_status = status;
    return false;
}

bool CdioRipper::selectDevice(int device)
{
    if (m_run)
        return refuse(kExtracting);
    if (device < 0 || device >= m_devices.size()) {
        m_watch.reset();
        return refuse(kNoSuchDevice);
    }
    if (!m_watch || m_watch->device() != m_devices[device])
        watch(m_devices[device]);
    m_queue.clear();
    const DiscKnowledge found = m_watch->look(kPatience);
    if (found.refusal)
        return refuse(statusOf(*found.refusal));
    m_status = kReady;
    return true;
}

/// A watch that hangs in its drive is put aside, for nobody waits for it here.
void CdioRipper::watch(const RipDevice& device)
{
    if (m_watch && m_watch->isAsking())
        m_putAside.push_back(std::move(m_watch));
    m_watch = std::make_unique<DiscWatch>(device);
}

int CdioRipper::status() const
{
    return m_status;
}

DiscKnowledge CdioRipper::known() const
{
    return m_watch ? m_watch->known() : DiscKnowledge{};
}

TocTrack CdioRipper::toc(int track) const
{
    return known().tracks.value(track - 1);
}

int CdioRipper::maxReadSpeed()
{
    return known().maxSpeed;
}

void CdioRipper::setReadSpeed(int factor)
{
    m_speed = qMax(factor, 0);
}

bool CdioRipper::discPresent()
{
    return known().present;
}

int CdioRipper::trackCount()
{
    return static_cast<int>(known().tracks.size());
}

QString CdioRipper::discText()
{
    const QList<TocTrack> tracks = known().tracks;
    if (tracks.isEmpty())
        return {};
    const CdTime end = CdTime::fromFrames(tracks.last().start + tracks.last().frames);
    return QStringLiteral("%1 tracks, %2").arg(tracks.size()).arg(end.toMsf());
}

qint32 CdioRipper::trackStart(int track)
{
    return toc(track).start;
}

qint32 CdioRipper::trackLength(int track)
{
    return toc(track).frames;
}

bool CdioRipper::isAudioTrack(int track)
{
    return toc(track).audio;
}

bool CdioRipper::copyPermitted(int track)
{
    return toc(track).copyPermitted;
}

QString CdioRipper::timeText(qint32 length) const
{
    return CdTime::fromFrames(length).toMsf();
}

int CdioRipper::driveState()
{
    if (m_run)
        return kPlaying;
    if (!m_watch)
        return kNoDisc;
    m_watch->poll();
    const bool loaded = known().present && !m_watch->takeChange();
    return loaded ? kDiscLoaded : kNoDisc;
}

void CdioRipper::clearQueue()
{
    m_queue.clear();
}

bool CdioRipper::addTrack(int track, const QString& path)
{
    const TocTrack found = toc(track);
    if (m_run)
        return refuse(kExtracting);
    if (!found.audio)
        return refuse(kNothingToDo);
    if (!canBeMade(path, kHeaderBytes + CdTime::fromFrames(found.frames).bytes()))
        return refuse(kNoPermission);
    m_queue << RipTask{track, path, found};
    m_status = kReady;
    return true;
}

bool CdioRipper::start()
{
    if (m_run)
        return refuse(kExtracting);
    if (!m_watch || m_queue.isEmpty() || !known().present)
        return refuse(kNothingToDo);
    m_status = kReady;
    m_unread.clear();
    m_run = std::make_shared<RipRun>(m_queue);
    m_watch->extract(m_run, m_speed);
    m_deliveries.start();
    return true;
}

void CdioRipper::abort()
{
    if (!m_run)
        return;
    m_deliveries.stop();
    m_run->stop();
    m_aborted = std::move(m_run);
    m_run.reset();
    QTimer::singleShot(kAbandonMs, this, [run = m_aborted] { run->abandon(); });
}

QStringList CdioRipper::unreadTracks() const
{
    return m_unread;
}

/// A receiver may open a box and come back here through its event loop: events leave one by one, in order.
void CdioRipper::deliverEvents()
{
    const QPointer<CdioRipper> self(this);
    while (self && m_run) {
        const auto event = m_run->events().take();
        if (!event)
            return;
        deliver(*event);
    }
}

void CdioRipper::deliver(const RipEvent& event)
{
    switch (event.kind) {
    case RipEvent::Kind::Started:
        emit ExtractionStarted();
        break;
    case RipEvent::Kind::TrackStarted:
        emit TrackStarted(event.file, event.position, event.end, event.track);
        break;
    case RipEvent::Kind::Progress:
        emit ExtractionProgress(event.progress, event.position);
        break;
    case RipEvent::Kind::TrackFinished:
        emit TrackFinished();
        break;
    case RipEvent::Kind::Finished:
        m_deliveries.stop();
        m_unread = m_run->unread();
        m_run.reset();
        m_queue.clear();
        emit ExtractionFinished();
        break;
    }
}

} // namespace zib
