#include "engines/rip/image/ImageDisc.h"

#include "common/CdTime.h"
#include "common/NativeName.h"
#include "engines/rip/image/ByteOrder.h"
#include "engines/rip/image/ImageReader.h"
#include "engines/rip/sheets/CueParser.h"
#include "engines/rip/sheets/SheetFolder.h"
#include "engines/rip/sheets/SheetText.h"
#include "engines/rip/sheets/TocParser.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace zib {

namespace {

constexpr qint64 kLargestSheet = 1024 * 1024;
/// Of so many places, and so much of each, the byte order is judged.
constexpr int kProbes = 24;
constexpr qint64 kProbeBytes = 4 * kBytesPerFrame;

Failure unreadable(const QString& words)
{
    return {Failure::Kind::UnreadableFile, words};
}

Outcome<QByteArray> textOf(const QString& sheet)
{
    const auto file =
        openImageFile(nativeName(sheet), QStringLiteral("of the sheet"), SheetFile::Kind::Raw, {});
    if (!file && file.error().kind == Failure::Kind::NoPermission)
        return Failure{Failure::Kind::NoPermission, QStringLiteral("the sheet may not be read")};
    if (!file)
        return unreadable(QStringLiteral("the sheet cannot be read"));
    const qint64 bytes = file.value()->bytes();
    if (bytes > kLargestSheet)
        return unreadable(QStringLiteral("the sheet is too large"));
    QByteArray text(bytes, '\0');
    if (file.value()->read(text.data(), 0, bytes) != bytes)
        return unreadable(QStringLiteral("the sheet cannot be read"));
    return text.trimmed().isEmpty() ? Outcome<QByteArray>(unreadable(QStringLiteral("the sheet is empty")))
                                    : text;
}

} // namespace

/// The encoding under which all files are found is the sheet's; the reason of the likeliest one is told.
Outcome<std::shared_ptr<ImageDisc>> ImageDisc::open(const QString& sheet, const MakeAudioFile& makeSound)
{
    const Stamp stamp = stampOf(nativeName(sheet));
    const auto text = textOf(sheet);
    if (!text)
        return text.error();
    const bool isToc = sheet.endsWith(QStringLiteral(".toc"), Qt::CaseInsensitive);
    std::optional<Failure> why;
    for (const SheetReading& reading : readingsOf(*text)) {
        const auto parsed = isToc ? parseTocSheet(reading.text) : parseCueSheet(reading.text);
        const std::shared_ptr<ImageDisc> disc(new ImageDisc);
        disc->m_stamps << stamp;
        Outcome<> opened = parsed ? disc->openParts(*parsed, SheetFolder(sheet, reading.encoding), makeSound)
                                  : parsed.error();
        if (opened)
            opened = disc->arrange(*parsed);
        if (opened)
            return disc;
        if (!why)
            why = opened.error();
    }
    return *why;
}

Outcome<> ImageDisc::openParts(const DiscSheet& sheet, const SheetFolder& folder,
                               const MakeAudioFile& makeSound)
{
    for (const SheetFile& file : sheet.files) {
        const auto path = folder.find(file.name);
        if (!path)
            return path.error();
        m_stamps << stampOf(*path);
        const auto opened = openImageFile(*path, file.name, file.kind, makeSound);
        if (!opened)
            return opened.error();
        m_parts << Part{file.name, *opened,
                        file.kind == SheetFile::Kind::RawSwapped && opened.value()->isRaw()};
    }
    return {};
}

Outcome<> ImageDisc::arrange(const DiscSheet& sheet)
{
    QList<qint64> bytes;
    for (const Part& part : std::as_const(m_parts))
        bytes << part.file->bytes();
    auto layout = layOut(sheet, bytes);
    if (!layout)
        return layout.error();
    m_layout = std::move(layout).value();
    m_names = {sheet.title, sheet.performer, {}};
    for (const TocTrack& track : std::as_const(m_layout.tracks))
        m_names.tracks << track.names;
    return {};
}

ImageDisc::Stamp ImageDisc::stampOf(const QByteArray& path)
{
    struct stat info = {};
    if (::stat(path.constData(), &info) != 0)
        return {.path = path};
    constexpr qint64 kNsPerSecond = 1'000'000'000;
    return {path, info.st_dev, info.st_ino, info.st_size,
            info.st_mtim.tv_sec * kNsPerSecond + info.st_mtim.tv_nsec};
}

bool ImageDisc::isCurrent() const
{
    return std::all_of(m_stamps.cbegin(), m_stamps.cend(),
                       [](const Stamp& stamp) { return stampOf(stamp.path) == stamp; });
}

qint32 ImageDisc::gapBehind(const TocTrack& track, const std::atomic<bool>&) const
{
    for (const TocTrack& next : m_layout.tracks)
        if (next.audio && next.start == track.start + track.frames)
            return next.gap;
    return 0;
}

std::unique_ptr<FrameReader> ImageDisc::makeReader(const std::atomic<bool>& stopped, Progress) const
{
    return std::make_unique<ImageReader>(*this, stopped);
}

qint32 ImageDisc::read(char* data, qint32 first, qint32 count) const
{
    const qint64 begin = CdTime::fromFrames(first).bytes();
    qint64 end = begin + CdTime::fromFrames(count).bytes();
    std::memset(data, 0, static_cast<size_t>(end - begin));
    for (const DiscRun& run : m_layout.runs) {
        const qint64 from = std::max(begin, run.at);
        const qint64 bytes = std::min(end, run.at + run.bytes) - from;
        if (bytes <= 0)
            continue;
        if (const qint64 got = readRun(data + (from - begin), run, from - run.at, bytes); got < bytes)
            end = from + got;
    }
    return static_cast<qint32>(std::max<qint64>(end - begin, 0) / kBytesPerFrame);
}

/// Where the file has more in a sector than the frame, the frame comes first.
qint64 ImageDisc::readRun(char* data, const DiscRun& run, qint64 from, qint64 bytes) const
{
    const Part& part = m_parts[run.file];
    qint64 done = 0;
    while (done < bytes) {
        const qint64 frame = (from + done) / kBytesPerFrame;
        const qint64 within = (from + done) % kBytesPerFrame;
        const bool plain = run.sectorBytes == kBytesPerFrame;
        const qint64 step = plain ? bytes - done : std::min(bytes - done, kBytesPerFrame - within);
        const qint64 offset = plain ? from + done : frame * run.sectorBytes + within;
        const qint64 got = part.file->read(data + done, run.offset + offset, step);
        done += got;
        if (got < step)
            break;
    }
    if (isSwapped(run.file))
        swapBytes(data, done);
    return done;
}

bool ImageDisc::isSwapped(int part) const
{
    if (!m_parts[part].file->isRaw())
        return false;
    if (!m_swapped.contains(part))
        m_swapped.insert(part, m_parts[part].swapped != listen(part));
    return m_swapped.value(part);
}

/// Whether the order of the bytes is not as the sheet tells.
bool ImageDisc::listen(int part) const
{
    ByteOrderEar ear;
    for (const DiscRun& run : m_layout.runs) {
        if (run.file != part || !run.audio || run.sectorBytes != kBytesPerFrame)
            continue;
        for (int probe = 0; probe < kProbes; ++probe) {
            QByteArray sound(std::min(kProbeBytes, run.bytes), '\0');
            const qint64 at = (run.bytes - sound.size()) / kProbes * probe / 4 * 4;
            sound.resize(m_parts[part].file->read(sound.data(), run.offset + at, sound.size()));
            if (m_parts[part].swapped)
                swapBytes(sound.data(), sound.size());
            ear.hear(sound);
        }
    }
    return ear.hearsItSwapped();
}

QString ImageDisc::fileAt(qint32 frame) const
{
    const qint64 begin = CdTime::fromFrames(frame).bytes();
    for (const DiscRun& run : m_layout.runs)
        if (run.at < begin + kBytesPerFrame && run.at + run.bytes > begin)
            return m_parts[run.file].name;
    return {};
}

} // namespace zib
