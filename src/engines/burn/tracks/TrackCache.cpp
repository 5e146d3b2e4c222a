#include "engines/burn/tracks/TrackCache.h"

#include "common/NativeName.h"
#include "common/StagedFile.h"

#include <QCoreApplication>

#include <utility>

namespace zib {

namespace {
constexpr int kFramesCopied = 32;
} // namespace

TrackCache::TrackCache(QString folder) : m_folder(std::move(folder)) {}

TrackCache::~TrackCache() = default;

Outcome<> TrackCache::fill(BurnJob& job, const std::function<void(int)>& progress)
{
    m_progress = progress;
    m_copied = m_total = 0;
    for (const BurnTrack& track : job.tracks)
        m_total += track.length.bytes();
    if (auto reserved = reserve(job); !reserved)
        return reserved;
    for (qsizetype i = 0; i < job.tracks.size(); ++i) {
        StagedFile& copied = *m_files[static_cast<size_t>(i)];
        if (auto done = copy(job.tracks[i], copied, job); !done)
            return done;
        job.tracks[i] = atCopy(job.tracks[i], copied.currentPath());
    }
    return {};
}

/// Takes the room for all copies first: a full storage then shows at once.
Outcome<> TrackCache::reserve(const BurnJob& job)
{
    if (!makeFolders(m_folder))
        return Failure{Failure::Kind::WriteFailed, m_folder};
    for (qsizetype i = 0; i < job.tracks.size(); ++i) {
        const QString name =
            QStringLiteral("zib-track-%1-%2").arg(QCoreApplication::applicationPid()).arg(i + 1);
        auto file = std::make_unique<StagedFile>();
        if (auto created = file->create(m_folder, name); !created)
            return created;
        file->makeNameless();
        if (auto reserved = file->reserve(job.tracks[i].length.bytes()); !reserved)
            return reserved;
        m_files.push_back(std::move(file));
    }
    return {};
}

Outcome<> TrackCache::copy(const BurnTrack& track, StagedFile& target, const BurnJob& job)
{
    TrackSource source;
    QByteArray buffer(kFramesCopied * kBytesPerFrame, Qt::Uninitialized);
    if (auto opened = source.open(track); !opened)
        return opened;
    for (qint64 done = 0; done < source.size();) {
        if (job.isCancelled())
            return Failure{Failure::Kind::Cancelled};
        const auto got = source.read(buffer.data(), buffer.size());
        if (!got)
            return got.error();
        if (auto written = target.write(buffer.constData(), *got); !written)
            return written;
        done += *got;
        m_copied += *got;
        m_progress(static_cast<int>(m_copied * 100 / m_total));
    }
    return {};
}

} // namespace zib
