#include "engines/burn/image/ImageRecorder.h"

#include "common/FileStamp.h"
#include "common/NativeName.h"
#include "common/StagedFile.h"
#include "engines/burn/compare/DiscCheck.h"
#include "engines/burn/compare/ImageFollower.h"
#include "engines/burn/image/CueSheet.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cstring>
#include <future>
#include <utility>

namespace zib {

namespace {

constexpr CdTime kCapacity = CdTime::fromFrames(80 * 60 * kFramesPerSecond);
/// Read at once; a cancel is heard between two of them.
constexpr qint64 kPieceBytes = 32 * kBytesPerFrame;
/// Written at once, up to the next multiple or the end of the track: the system keeps what comes in large
/// pieces in large pages, and those are looked at in half the time when the image is compared.
constexpr qint64 kBlockBytes = qint64{4} * 1024 * 1024;

/// A name without extension that no image in @p folder has.
QString freeStem(const QString& folder)
{
    const QString plain = QDateTime::currentDateTime().toString(QStringLiteral("'Disc' yyyy-MM-dd HH.mm.ss"));
    const auto taken = [&](const QString& stem) {
        const QDir dir(folder);
        return pathExists(dir.filePath(stem + QStringLiteral(".bin"))) ||
               pathExists(dir.filePath(stem + QStringLiteral(".cue"))) ||
               pathExists(dir.filePath(u'.' + stem + QStringLiteral(".bin.part")));
    };
    QString stem = plain;
    for (int n = 2; taken(stem); ++n)
        stem = QStringLiteral("%1 (%2)").arg(plain).arg(n);
    return stem;
}

/// One write of one image, or its simulation.
class ImageRun
{
public:
    ImageRun(const BurnJob& job, BurnObserver& observer, QString folder, bool follows)
        : m_job(job), m_pieces(piecesOf(job.tracks)), m_observer(observer), m_folder(std::move(folder)),
          m_follows(follows), m_block(kBlockBytes, Qt::Uninitialized)
    {
    }

    /// Everything but the names.
    Outcome<> write()
    {
        if (auto opened = begin(); !opened)
            return opened;
        for (int track = 1; track <= m_job.tracks.size(); ++track)
            if (auto written = writeTrack(track); !written)
                return written;
        m_observer.closingDisc();
        return m_job.simulate ? endOfWork() : close();
    }
    std::optional<BurnError> compare();
    Outcome<> giveNames();
    /// Whether the image still lies where it was written.
    bool isThere() const { return m_bin.isInPlace(); }
    QString sheet() const { return QDir(m_folder).filePath(m_stem + QStringLiteral(".cue")); }

private:
    /// What an unfinished step answers when the user asked to stop.
    Outcome<> endOfWork() const
    {
        if (m_job.isCancelled())
            return Failure{Failure::Kind::Cancelled};
        return {};
    }

    Outcome<> begin();
    Outcome<> takeName();
    Outcome<> writeTrack(int track);
    Outcome<> writeGap();
    Outcome<> writeSound(int track);
    char* room() { return m_block.data() + m_filled; }
    /// How much of what is still to come is taken at once.
    qint64 roomFor(qint64 bytes) const
    {
        return std::min({bytes, kPieceBytes, kBlockBytes - m_written % kBlockBytes});
    }
    Outcome<> put(qint64 bytes);
    Outcome<> writeBlock();
    CdTime written() const { return CdTime::fromFrames(m_written / kBytesPerFrame); }
    Outcome<> close();
    Outcome<> readBack() const;

    const BurnJob& m_job;
    const QList<DiscPiece> m_pieces;
    BurnObserver& m_observer;
    QString m_folder;
    bool m_follows; ///< Compares while it writes.
    QString m_stem;
    StagedFile m_bin;
    StagedFile m_cue;
    QList<CueTrack> m_layout;
    qint64 m_written = 0; ///< Bytes of the image so far, with those that wait in the block.
    QByteArray m_block;
    qint64 m_filled = 0; ///< Bytes that wait in the block.
    std::optional<ImageFollower> m_follower;
    std::future<Outcome<>> m_flushed; ///< Whether the image is on the storage; last, for its end is awaited.
};

Outcome<> ImageRun::begin()
{
    if (m_job.simulate)
        return {};
    if (!makeFolders(m_folder))
        return Failure{Failure::Kind::WriteFailed, m_folder};
    StagedFile::removeLeftOvers(m_folder, QStringLiteral("Disc *"));
    if (auto created = takeName(); !created)
        return created;
    const CdTime inFile = m_job.totalLength() - CdTime::fromFrames(kPregapFrames);
    if (auto reserved = m_bin.reserve(inFile.bytes()); !reserved)
        return reserved;
    if (m_follows)
        m_follower.emplace(m_bin.handle(), m_pieces);
    return {};
}

/// Another instance may begin an image in the same second: whoever comes second takes the next name.
Outcome<> ImageRun::takeName()
{
    for (;;) {
        m_stem = freeStem(m_folder);
        const auto created = m_bin.create(m_folder, m_stem + QStringLiteral(".bin"));
        if (created || freeStem(m_folder) == m_stem)
            return created;
    }
}

Outcome<> ImageRun::writeTrack(int track)
{
    m_observer.readingTrack(track);
    CueTrack place{.gap = written()};
    if (track > 1)
        if (auto gap = writeGap(); !gap)
            return gap;
    place.start = written();
    m_layout << place;
    if (auto sound = writeSound(track); !sound)
        return sound;
    if (auto block = writeBlock(); !block)
        return block;
    m_observer.closingTrack(track);
    return {};
}

Outcome<> ImageRun::writeGap()
{
    for (qint64 left = kPregapFrames * kBytesPerFrame; left > 0;) {
        const qint64 now = roomFor(left);
        std::memset(room(), 0, static_cast<std::size_t>(now));
        if (auto done = put(now); !done)
            return done;
        left -= now;
    }
    return {};
}

Outcome<> ImageRun::writeSound(int track)
{
    TrackSource source;
    if (auto opened = source.open(m_job.tracks[track - 1]); !opened)
        return opened;
    for (qint64 done = 0; done < source.size();) {
        const auto got = source.read(room(), roomFor(source.size() - done));
        if (!got)
            return got.error();
        if (auto written = put(*got); !written)
            return written;
        done += *got;
        m_observer.progress(track, done, source.size());
    }
    return {};
}

/// Takes over what stands in the room.
Outcome<> ImageRun::put(qint64 bytes)
{
    m_written += bytes;
    m_filled += bytes;
    if (auto end = endOfWork(); !end)
        return end;
    return m_written % kBlockBytes > 0 ? Outcome<>() : writeBlock();
}

Outcome<> ImageRun::writeBlock()
{
    const qint64 bytes = std::exchange(m_filled, 0);
    if (m_job.simulate)
        return {};
    auto done = m_bin.write(m_block.constData(), bytes);
    if (done && m_follower)
        m_follower->written(written().frames());
    return done;
}

Outcome<> ImageRun::close()
{
    const QByteArray text = cueText(m_stem + QStringLiteral(".bin"), m_layout, m_job.names);
    m_flushed = std::async([this] { return m_bin.flush(); });
    if (auto created = m_cue.create(m_folder, m_stem + QStringLiteral(".cue")); !created)
        return created;
    if (auto written = m_cue.write(text.constData(), text.size()); !written)
        return written;
    if (auto flushed = m_cue.flush(); !flushed)
        return flushed;
    if (auto same = readBack(); !same)
        return same;
    return endOfWork();
}

/// Reads the sheet from the storage as a stranger would and compares it with the job.
Outcome<> ImageRun::readBack() const
{
    const Failure differs{Failure::Kind::DeviceError, m_folder};
    QFile cue;
    if (!openForReading(cue, m_cue.currentPath()))
        return differs;
    const auto content = parseCue(cue.readAll());
    if (!content || content->tracks.size() != m_job.tracks.size() ||
        content->names != sheetNames(m_job.names, m_job.tracks.size()))
        return differs;
    CdTime at;
    for (qsizetype i = 0; i < m_job.tracks.size(); ++i) {
        const CdTime gap = CdTime::fromFrames(i == 0 ? 0 : kPregapFrames);
        if (content->tracks[i] != CueTrack{at, at + gap})
            return differs;
        at = at + gap + m_job.tracks[i].length;
    }
    if (fileSize(m_bin.currentPath()) != at.bytes())
        return differs;
    return {};
}

/// What another program changed until all of it was on the storage is compared once more.
std::optional<BurnError> ImageRun::compare()
{
    const auto stamp = [this] { return stampOf(m_bin.currentPath()).value_or(FileStamp()); };
    const auto compareFrom = [this](qint64 frame) {
        return compareWithFiles(m_bin.currentPath(), m_pieces, frame, m_job, m_observer);
    };
    m_observer.readingBack();
    const qint64 seen = m_follower->finish();
    const FileStamp before = stamp();
    if (auto wrong = compareFrom(isThere() ? seen : 0); wrong || m_job.isCancelled())
        return wrong;
    m_flushed.wait();
    return stamp().sameContent(before) ? std::nullopt : compareFrom(0);
}

Outcome<> ImageRun::giveNames()
{
    if (auto flushed = m_flushed.get(); !flushed)
        return flushed;
    if (auto same = readBack(); !same)
        return same;
    if (auto kept = m_bin.keep(); !kept)
        return kept;
    if (auto kept = m_cue.keep(); !kept) {
        m_bin.remove();
        return kept;
    }
    m_observer.remark(QStringLiteral("The disc image: ") + sheet());
    return {};
}

const QString kAgain = QStringLiteral(" Look after the drive that holds its folder, then write again.");
const QString kNotKept = QStringLiteral(" The image was not kept.") + kAgain;

/// A storage that does not give back what was written is no matter of discs.
BurnError errorOf(const Failure& failure)
{
    BurnError error = BurnError::from(failure);
    if (failure.kind == Failure::Kind::DeviceError)
        error.description =
            QStringLiteral("Read back, the image in \"%1\" does not show the tracks that were written.")
                .arg(failure.detail) +
            kNotKept;
    return error;
}

/// What the comparing found wrong. An image whose files went away meanwhile is kept: it may well be right.
BurnError errorOf(BurnError wrong, ImageRun& run)
{
    if (!run.isThere())
        return {.error = BurnErrorCode::kStorage,
                .description =
                    QStringLiteral("The image \"%1\" went away while it was compared.").arg(run.sheet()) +
                    kAgain};
    const bool kept = wrong.error != BurnErrorCode::kVerify && run.giveNames();
    wrong.description += kept ? QStringLiteral(" The disc image: ") + run.sheet() : kNotKept;
    return wrong;
}

} // namespace

ImageRecorder::ImageRecorder(QString folder, bool compares)
    : m_folder(std::move(folder)), m_compares(compares)
{
}

QString ImageRecorder::path() const
{
    return QStringLiteral("Images");
}

QString ImageRecorder::maker() const
{
    return QStringLiteral("Disc image");
}

QString ImageRecorder::model() const
{
    return QStringLiteral("(CUE and BIN file)");
}

Outcome<Medium> ImageRecorder::inspect(const InspectionTalk&)
{
    return Medium{.status = DVDWriterPro::kBlankDisc, .capacity = kCapacity};
}

std::optional<BurnError> ImageRecorder::write(const BurnJob& job, BurnObserver& observer)
{
    ImageRun run(job, observer, m_folder, m_compares);
    if (auto written = run.write(); !written)
        return errorOf(written.error());
    if (job.simulate)
        return std::nullopt;
    if (const auto wrong = m_compares ? run.compare() : std::nullopt)
        return errorOf(*wrong, run);
    if (auto named = run.giveNames(); !named)
        return errorOf(named.error());
    return std::nullopt;
}

} // namespace zib
