#include "engines/rip/devices/DiscWatch.h"

#include "engines/rip/drive/CdioDisc.h"
#include "engines/rip/image/ImageDisc.h"
#include "engines/rip/RipRun.h"

#include <QThread>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

namespace zib {

namespace {
constexpr qint64 kPollMs = 150;
constexpr qint64 kRefusedPollMs = 1000;
constexpr int kMostTocReadings = 3; ///< A blank disc has none however often it is read.
constexpr unsigned long kTocPauseMs = 250;
} // namespace

/// Lives as long as the last task on the thread, which may be longer than the watch.
struct DiscWatch::Shared
{
    Shared(RipDevice watched, MakeAudioFile make) : device(std::move(watched)), makeSound(std::move(make)) {}

    const RipDevice device;
    const MakeAudioFile makeSound;
    std::mutex mutex;
    std::condition_variable changed;
    DiscKnowledge knowledge; // under the mutex
    bool asking = false;     // under the mutex
    bool swapped = false;    // under the mutex

    // The thread's own.
    std::shared_ptr<CdioDisc> disc;   // in a drive
    std::shared_ptr<ImageDisc> image; // or an image
    int setSpeed = 0;

    void refresh();
    void refreshImage();
    void refreshDrive();
    void readDisc();
    void publish(const std::function<void(DiscKnowledge&)>& change);
    void publishEmpty();
    void refuse(const Failure& why);
    void extract(RipRun& run, int speed);
    void extractFromDrive(RipRun& run, int speed);
    bool isPresent();
};

void DiscWatch::Shared::publish(const std::function<void(DiscKnowledge&)>& change)
{
    const std::lock_guard lock(mutex);
    change(knowledge);
}

void DiscWatch::Shared::publishEmpty()
{
    publish([](DiscKnowledge& known) {
        known.refusal.reset();
        known.present = false;
        known.tracks.clear();
        known.remark.clear();
    });
}

void DiscWatch::Shared::refuse(const Failure& why)
{
    disc.reset();
    image.reset();
    publish([&why](DiscKnowledge& known) { known = {.refusal = why}; });
}

bool DiscWatch::Shared::isPresent()
{
    const std::lock_guard lock(mutex);
    return knowledge.present;
}

void DiscWatch::Shared::refresh()
{
    if (device.isImage)
        refreshImage();
    else
        refreshDrive();
    const std::lock_guard lock(mutex);
    asking = false;
    knowledge.answered = true;
    changed.notify_all();
}

/// An image may be written anew, or go.
void DiscWatch::Shared::refreshImage()
{
    if (image && image->isCurrent())
        return;
    const auto opened = ImageDisc::open(device.path, makeSound);
    if (!opened)
        return refuse(opened.error());
    image = opened.value();
    const QList<TocTrack> tracks = image->tracks();
    const std::lock_guard lock(mutex);
    swapped = swapped || (knowledge.present && knowledge.tracks != tracks);
    knowledge = {.present = true, .tracks = tracks, .names = image->names(), .remark = image->remark()};
}

void DiscWatch::Shared::refreshDrive()
{
    const bool fresh = !disc;
    if (const auto free = fresh ? whetherFree(device.path) : Outcome<>(); !free)
        return refuse(free.error());
    if (fresh) {
        const auto opened = CdioDisc::openDrive(device.path);
        if (!opened)
            return refuse(opened.error());
        disc = opened.value();
        const int speed = disc->maxReadSpeed();
        publish([speed](DiscKnowledge& known) { known.maxSpeed = speed; });
    }
    bool newDisc = false;
    switch (disc->presence(&newDisc)) {
    case DiscPresence::Gone:
        return refuse({Failure::Kind::DeviceGone, device.path});
    case DiscPresence::Absent:
    case DiscPresence::NotReady:
        return publishEmpty();
    case DiscPresence::Ready:
        break;
    }
    if (newDisc || !isPresent())
        readDisc();
}

/// The library remembers the disc of an opened drive, so it is opened anew for each disc, and for each
/// reading of its table of contents: a drive may fail at it that has only just started the disc.
void DiscWatch::Shared::readDisc()
{
    if (disc->readiness() != DiscPresence::Ready)
        return publishEmpty();
    QList<TocTrack> tracks;
    for (int reading = 0; reading < kMostTocReadings && tracks.isEmpty(); ++reading) {
        if (reading > 0)
            QThread::msleep(kTocPauseMs);
        const auto opened = CdioDisc::openDrive(device.path);
        if (!opened)
            return refuse(opened.error());
        disc = opened.value();
        tracks = disc->tracks();
    }
    setSpeed = 0;
    const std::lock_guard lock(mutex);
    swapped = swapped || knowledge.present;
    knowledge.refusal.reset();
    knowledge.present = true;
    knowledge.tracks = tracks;
    knowledge.remark.clear();
}

void DiscWatch::Shared::extract(RipRun& run, int speed)
{
    if (!device.isImage)
        return extractFromDrive(run, speed);
    std::unique_lock lock(mutex);
    const Outcome<> why = knowledge.refusal ? Outcome<>(*knowledge.refusal) : Outcome<>();
    lock.unlock();
    run.run(image.get(), why);
}

namespace {

/// Why a drive cannot be had, as what it means for its tracks: nothing is said of the folder.
Failure unreached(const Failure& why)
{
    switch (why.kind) {
    case Failure::Kind::NotFound:
        return {Failure::Kind::DeviceGone};
    case Failure::Kind::NoPermission:
        return {Failure::Kind::UnreadableFile, QStringLiteral("you may not use the drive")};
    default:
        return why;
    }
}

} // namespace

/// The drive is ours meanwhile. A disc that was lost on the way is looked at anew.
void DiscWatch::Shared::extractFromDrive(RipRun& run, int speed)
{
    const Outcome<> free = whetherFree(device.path);
    if (!free || !disc)
        return free ? run.run(nullptr) : run.run(nullptr, unreached(free.error()));
    if (std::exchange(setSpeed, speed) != speed)
        disc->setReadSpeed(speed);
    {
        const DriveHold hold(device.path);
        run.run(disc.get());
    }
    const QString remark = run.refusedSound() ? QStringLiteral("refuses to read sound") : QString();
    publish([&remark](DiscKnowledge& found) { found.remark = remark; });
    if (run.lostDisc()) {
        disc.reset();
        publishEmpty();
    }
}

DiscWatch::DiscWatch(const RipDevice& device, MakeAudioFile makeSound)
    : m_shared(std::make_shared<Shared>(device, std::move(makeSound))), m_worker(kFarewell)
{
}

DiscWatch::~DiscWatch() = default;

const RipDevice& DiscWatch::device() const
{
    return m_shared->device;
}

void DiscWatch::post()
{
    const std::lock_guard lock(m_shared->mutex);
    if (std::exchange(m_shared->asking, true))
        return;
    m_asked.start();
    m_worker.post([shared = m_shared] { shared->refresh(); });
}

DiscKnowledge DiscWatch::look(std::chrono::milliseconds patience)
{
    post();
    std::unique_lock lock(m_shared->mutex);
    m_shared->changed.wait_for(lock, patience, [this] { return !m_shared->asking; });
    m_shared->swapped = !m_shared->knowledge.present; // a disc that is found later is told as put in
    return m_shared->knowledge;
}

DiscKnowledge DiscWatch::known() const
{
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->knowledge;
}

void DiscWatch::poll()
{
    const qint64 gap = known().refusal ? kRefusedPollMs : kPollMs;
    if (!m_asked.isValid() || m_asked.hasExpired(gap))
        post();
}

bool DiscWatch::takeChange()
{
    const std::lock_guard lock(m_shared->mutex);
    return std::exchange(m_shared->swapped, false);
}

void DiscWatch::extract(const std::shared_ptr<RipRun>& run, int speed)
{
    m_worker.post([shared = m_shared, run, speed] { shared->extract(*run, speed); });
}

} // namespace zib
