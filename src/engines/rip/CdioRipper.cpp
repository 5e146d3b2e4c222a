#include "engines/rip/CdioRipper.h"

#include "common/CdTime.h"
#include "common/OwnThread.h"

#include <QPointer>

#include <chrono>
#include <future>
#include <utility>

namespace zib {

namespace {

using namespace std::chrono_literals;

/// Positions are told so often at most.
constexpr int kDeliveryMs = 50;
/// A call waits no longer for a drive or a folder; two calls in a row stay below a tenth of a second.
constexpr auto kPatience = 45ms;
/// Devices that tell something late are listened to so often.
constexpr int kNewsMs = 300;
/// A file that is to go is waited for so long.
constexpr auto kRemovalPatience = 40ms;
/// An aborted extraction that hangs in its drive loses its file after so long.
constexpr int kAbandonMs = 1000;

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

/// Takes the file of an extraction away, whose storage may hang.
void abandon(const std::shared_ptr<RipRun>& run, std::chrono::milliseconds patience)
{
    onOwnThread([run] { run->abandon(); }).wait_for(patience);
}

} // namespace

CdioRipper::CdioRipper(const QString& imagesFolder, MakeAudioFile makeSound, QObject* parent)
    : CDRipperX(parent), m_makeSound(std::move(makeSound)), m_shelf(imagesFolder, m_makeSound)
{
    m_deliveries.setInterval(kDeliveryMs);
    m_news.setInterval(kNewsMs);
    connect(&m_deliveries, &QTimer::timeout, this, &CdioRipper::deliverEvents);
    connect(&m_news, &QTimer::timeout, this, &CdioRipper::tellDevices);
}

CdioRipper::~CdioRipper()
{
    abort();
    m_watch.reset(); // waits a while for the thread
    if (m_aborted)
        abandon(m_aborted, kRemovalPatience);
}

int CdioRipper::deviceCount()
{
    if (!m_run)
        m_shelf.look(kPatience);
    m_devices = m_shelf.devices();
    m_told = deviceTexts();
    m_news.start();
    return static_cast<int>(m_devices.size());
}

QString CdioRipper::deviceText1(int device) const
{
    return m_devices.value(device).device.text1;
}

QString CdioRipper::deviceText2(int device) const
{
    return m_devices.value(device).device.text2;
}

QString CdioRipper::deviceText3(int device) const
{
    const ListedDevice listed = m_devices.value(device);
    const QString note = noteOf(listed);
    return (note.isEmpty() ? listed.device.text3 : listed.device.text3 + QStringLiteral(" (%1)").arg(note))
        .trimmed();
}

QString CdioRipper::deviceHint(int device) const
{
    const ListedDevice listed = m_devices.value(device);
    const QString note = noteOf(listed);
    return note.isEmpty() ? listed.device.path : listed.device.path + QStringLiteral(": ") + note;
}

/// Of the selected device more is known than the list knows.
QString CdioRipper::noteOf(const ListedDevice& listed) const
{
    const DiscKnowledge found = known();
    if (!found.answered || m_watch->device().path != listed.device.path)
        return listed.note;
    return found.refusal ? refusalWords(*found.refusal) : found.remark;
}

QStringList CdioRipper::deviceTexts() const
{
    QStringList all;
    for (int device = 0; device < m_devices.size(); ++device)
        all << deviceText1(device) + u' ' + deviceText2(device) + u' ' + deviceText3(device);
    return all;
}

void CdioRipper::tellDevices()
{
    if (m_run)
        return;
    m_shelf.recheck();
    m_devices = m_shelf.devices();
    if (QStringList now = deviceTexts(); now != m_told) {
        m_told = std::move(now);
        emit DevicesChanged(static_cast<int>(m_devices.size()));
    }
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
    const RipDevice& chosen = m_devices[device].device;
    if (!m_watch || m_watch->device().path != chosen.path)
        watch(chosen);
    m_queue.clear();
    const DiscKnowledge found = m_watch->look(kPatience);
    if (found.refusal)
        return refuse(statusOf(*found.refusal));
    m_status = kReady;
    return true;
}

/// The old watch may hang in its drive: another thread sees it off, for nobody waits for it here.
void CdioRipper::watch(const RipDevice& device)
{
    if (m_watch)
        onOwnThread([old = std::shared_ptr<DiscWatch>(std::move(m_watch))] {});
    m_watch = std::make_unique<DiscWatch>(device, m_makeSound);
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
    m_targetHangs = false;
}

bool CdioRipper::addTrack(int track, const QString& path, const std::optional<NameBearer>& seen)
{
    const TocTrack found = toc(track);
    if (m_run)
        return refuse(kExtracting);
    if (!found.audio || found.frames < 1)
        return refuse(kNothingToDo);
    const RipTask task{track, path, found, seen};
    if (!canTake(task))
        return refuse(kNoPermission);
    m_queue << task;
    m_status = kReady;
    return true;
}

/// A folder that does not answer in time is not asked again, and the extraction tells what becomes of it.
bool CdioRipper::canTake(const RipTask& task)
{
    if (m_targetHangs)
        return true;
    auto can = onOwnThread(
        [path = task.path, frames = task.toc.frames] { return RipFile::canBeMade(path, frames); });
    m_targetHangs = can.wait_for(kPatience) != std::future_status::ready;
    return m_targetHangs || can.get();
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
    QTimer::singleShot(kAbandonMs, this, [run = m_aborted] { zib::abandon(run, 0ms); });
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
