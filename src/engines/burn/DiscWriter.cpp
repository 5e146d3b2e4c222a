#include "engines/burn/DiscWriter.h"

#include "engines/burn/WriteRun.h"

#include <QPointer>

#include <utility>

namespace zib {

namespace {
/// Positions are told so often at most.
constexpr int kDeliveryMs = 50;
/// So long one look at the disc answers all questions about it.
constexpr qint64 kRecentMs = 3000;
} // namespace

DiscWriter::DiscWriter(FindRecorders find, std::shared_ptr<Recorder> image, QObject* parent)
    : DVDWriterPro(parent), m_find(std::move(find)), m_image(std::move(image)), m_inquirer(this)
{
    m_deliveries.setInterval(kDeliveryMs);
    connect(&m_deliveries, &QTimer::timeout, this, &DiscWriter::deliverEvents);
}

DiscWriter::~DiscWriter()
{
    if (m_run)
        m_run->cancelled = true;
}

void DiscWriter::abandon()
{
    m_inquirer.abandon();
}

bool DiscWriter::initializeDrives(bool)
{
    if (m_run)
        return false;
    FoundRecorders found;
    if (m_find) {
        auto answer = m_inquirer.ask<FoundRecorders>(m_find);
        if (!answer)
            return false;
        found = std::move(*answer);
    }
    m_recorders = std::move(found.recorders);
    m_recorders.push_back(m_image);
    m_selected.reset();
    m_mediumAge.invalidate();
    if (!found.trouble.isEmpty())
        emit Remark(found.trouble);
    return found.allUsable;
}

int DiscWriter::driveCount() const
{
    return static_cast<int>(m_recorders.size());
}

const Recorder* DiscWriter::recorder(int drive) const
{
    return drive >= 0 && drive < driveCount() ? m_recorders[static_cast<size_t>(drive)].get() : nullptr;
}

bool DiscWriter::canWriteCdR(int drive) const
{
    return recorder(drive) && recorder(drive)->canWriteCdR();
}

bool DiscWriter::canWriteCdRw(int drive) const
{
    return recorder(drive) && recorder(drive)->canWriteCdRw();
}

bool DiscWriter::canWriteAudio(int drive) const
{
    return recorder(drive) && recorder(drive)->canWriteAudio();
}

QString DiscWriter::driveText1(int drive) const
{
    return recorder(drive) ? recorder(drive)->path() : QString();
}

QString DiscWriter::driveText2(int drive) const
{
    return recorder(drive) ? recorder(drive)->maker() : QString();
}

QString DiscWriter::driveText3(int drive) const
{
    return recorder(drive) ? recorder(drive)->model() : QString();
}

bool DiscWriter::selectDrive(int drive)
{
    if (m_run || !recorder(drive))
        return false;
    m_selected = m_recorders[static_cast<size_t>(drive)];
    m_mediumAge.invalidate();
    m_job.speed = 0;
    return true;
}

bool DiscWriter::supportsBufferProtection() const
{
    return m_selected && m_selected->hasBufferProtection();
}

Medium DiscWriter::medium(Look look)
{
    if (!m_selected)
        return {};
    const bool recent = m_mediumAge.isValid() && !m_mediumAge.hasExpired(kRecentMs);
    if (m_run || (recent && look == Look::RecentWillDo))
        return m_medium;
    const auto asked = m_selected;
    const QPointer<DiscWriter> self(this);
    const auto answer = m_inquirer.inspect(asked, [this](const QString& what) { emit Waiting(what); });
    if (!self || !answer)
        return {};
    if (asked == m_selected) {
        m_medium = *answer;
        m_mediumAge.start();
    }
    return *answer;
}

int DiscWriter::discStatus()
{
    return medium(Look::Afresh).status;
}

bool DiscWriter::discHoldsData()
{
    return medium(Look::RecentWillDo).holdsData;
}

int DiscWriter::maxWriteSpeed()
{
    const QList<WriteSpeed> speeds = writeSpeeds();
    return speeds.isEmpty() ? 0 : speeds.first().value;
}

QList<WriteSpeed> DiscWriter::writeSpeeds()
{
    return medium(Look::RecentWillDo).speeds;
}

void DiscWriter::setWriteSpeed(int value)
{
    m_job.speed = qMax(value, 0);
}

void DiscWriter::setCacheLocally(bool on)
{
    m_cache = on;
}

void DiscWriter::setCacheFolder(const QString& folder)
{
    m_cacheFolder = folder;
}

void DiscWriter::setWriteMode(int mode)
{
    m_job.writeMode = mode;
}

void DiscWriter::setTestWrite(bool on)
{
    m_job.simulate = on;
}

bool DiscWriter::testWrite() const
{
    return m_job.simulate;
}

void DiscWriter::setCloseSession(bool on)
{
    m_job.closeSession = on;
}

void DiscWriter::setCloseDisc(bool on)
{
    m_job.closeDisc = on;
}

void DiscWriter::setBufferProtection(bool on)
{
    m_job.bufferProtection = on;
}

void DiscWriter::setVerify(bool on)
{
    m_job.verify = on;
}

bool DiscWriter::addAudioTrack(const QString& path)
{
    if (m_job.tracks.size() >= kMostTracks)
        return false;
    const auto track = findTrack(path);
    if (!track)
        return false;
    m_job.tracks << *track;
    m_trackNames << TrackNames{};
    return true;
}

void DiscWriter::nameTrack(int track, const TrackNames& names)
{
    if (track >= 1 && track <= trackCount())
        m_trackNames[track - 1] = names;
}

void DiscWriter::nameDisc(const QString& title)
{
    m_discTitle = title;
}

int DiscWriter::trackCount() const
{
    return static_cast<int>(m_job.tracks.size());
}

bool DiscWriter::start()
{
    if (m_run || !m_selected || m_job.tracks.isEmpty())
        return false;
    m_run = std::make_shared<WriteRun>();
    m_run->recorder = m_selected;
    m_run->job = m_job;
    m_run->job.names = namesOfDisc(m_discTitle, m_trackNames);
    m_run->cache = m_cache;
    m_run->cacheFolder = m_cacheFolder;
    m_run->events.push({.kind = WriteEvent::Kind::Preparing});
    m_inquirer.post([run = m_run] { run->run(); });
    m_deliveries.start();
    QMetaObject::invokeMethod(this, &DiscWriter::deliverEvents, Qt::QueuedConnection);
    return true;
}

void DiscWriter::cancel()
{
    if (m_run)
        m_run->cancelled = true;
}

void DiscWriter::finish(bool eject)
{
    m_mediumAge.invalidate();
    if (eject && m_selected && !m_run)
        m_inquirer.post([ejected = m_selected] { ejected->eject(); });
}

/// A receiver may open a box and come back here through its event loop: events leave one by one, in order.
void DiscWriter::deliverEvents()
{
    const QPointer<DiscWriter> self(this);
    while (self && m_run) {
        const auto event = m_run->events.take();
        if (!event)
            return;
        deliver(*event);
    }
}

void DiscWriter::deliver(const WriteEvent& event)
{
    switch (event.kind) {
    case WriteEvent::Kind::Preparing:
        emit PreparingToWrite();
        break;
    case WriteEvent::Kind::Caching:
        emit CachingProgress(static_cast<qint16>(event.done));
        break;
    case WriteEvent::Kind::Reading:
        emit ReadingTrack(event.name, event.size, event.track);
        break;
    case WriteEvent::Kind::Progress:
        emit WritingProgress(event.track, event.done, event.size);
        break;
    case WriteEvent::Kind::ClosingTrack:
        emit ClosingTrack(event.track);
        break;
    case WriteEvent::Kind::ClosingDisc:
        emit ClosingDisc();
        break;
    case WriteEvent::Kind::Comparing:
        emit ComparingTrack(event.track, event.done, event.size);
        break;
    case WriteEvent::Kind::Waiting:
        emit Waiting(event.name);
        break;
    case WriteEvent::Kind::Remark:
        emit Remark(event.name);
        break;
    case WriteEvent::Kind::Ended:
        end(event);
        break;
    }
}

/// The only door to the three end events.
void DiscWriter::end(const WriteEvent& event)
{
    m_deliveries.stop();
    m_run.reset();
    m_mediumAge.invalidate();
    const BurnError& error = event.error;
    if (!event.failed)
        emit WriteCompleted();
    else if (error.cancelled)
        emit WriteCancelled();
    else
        emit WriteError(error.error, error.sense, error.description, error.senseData);
}

} // namespace zib
