#include "engines/burn/WriteRun.h"

#include "engines/burn/drive/DriveWords.h"
#include "engines/burn/tracks/TrackCache.h"

namespace zib {

namespace {
// The sentence number of what is found out before the drive could say it, with the sense data it would give.
constexpr qint32 kSenseNoDisc = 1033;
const QString kNoDiscData = QStringLiteral("[2 3A 00]"); // MMC: medium not present

} // namespace

void WriteRun::run()
{
    job.cancelled = &cancelled;
    const auto error = perform();
    events.push(
        {.kind = WriteEvent::Kind::Ended, .failed = error.has_value(), .error = error.value_or(BurnError{})});
}

std::optional<BurnError> WriteRun::perform()
{
    if (auto error = checkTracks())
        return error;
    if (auto error = checkDisc())
        return error;
    TrackCache copies(cacheFolder);
    if (cache) {
        const auto tell = [this](int percent) {
            events.push({.kind = WriteEvent::Kind::Caching, .done = percent});
        };
        if (auto filled = copies.fill(job, tell); !filled)
            return BurnError::from(filled.error());
    }
    if (cancelled)
        return BurnError::byUser();
    WriteReporter reporter(job, events);
    auto error = recorder->write(job, reporter);
    if (!error)
        reporter.completed();
    return error;
}

/// Whether every file is still what it was when it was added. Asked more strictly than later on: a disc that
/// was begun is not given up because somebody changed the rights of a file.
std::optional<BurnError> WriteRun::checkTracks() const
{
    for (const BurnTrack& track : job.tracks) {
        if (auto opened = TrackSource().open(track); !opened)
            return BurnError::from(opened.error());
        if (stampOf(track.path) != track.stamp)
            return BurnError::from({Failure::Kind::UnreadableFile, track.name});
    }
    return std::nullopt;
}

std::optional<BurnError> WriteRun::checkDisc()
{
    if (cancelled)
        return BurnError::byUser();
    const InspectionTalk talk{
        [this](const QString& what) { events.push({.kind = WriteEvent::Kind::Waiting, .name = what}); },
        &cancelled};
    const auto medium = recorder->inspect(talk);
    if (cancelled)
        return BurnError::byUser();
    if (!medium)
        return BurnError::from(medium.error());
    if (medium->trouble)
        return medium->trouble;
    if (medium->status == DVDWriterPro::kNoDisc)
        return BurnError::withSense(kSenseNoDisc, kNoDiscData);
    const bool writable =
        medium->status == DVDWriterPro::kBlankDisc || medium->status == DVDWriterPro::kAppendableDisc;
    if (!writable || medium->holdsData)
        return BurnError::from({Failure::Kind::WrongMedium, recorder->path()});
    // A drive that does not tell what the disc holds is left to refuse what is too long.
    if (medium->capacity.frames() == 0 || job.totalLength() <= medium->capacity)
        return std::nullopt;
    return tooLong(job.totalLength(), medium->capacity);
}

} // namespace zib
