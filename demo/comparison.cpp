#include "comparison.h"

#include "common/CdTime.h"

#include <QFile>

#include <sndfile.h>

#include <algorithm>
#include <cstring>

namespace demo {

namespace {

constexpr qint64 kFramesAtOnce = 75;
constexpr int kBytesPerPair = 4;

/// Sample pairs that differ from the expected bytes; behind their end silence is expected.
qint64 differences(const QByteArray& found, const QByteArray& expected, qint64 at)
{
    qint64 count = 0;
    for (qsizetype i = 0; i < found.size(); i += kBytesPerPair) {
        quint32 wanted = 0;
        quint32 there = 0;
        std::memcpy(&there, found.constData() + i, sizeof there);
        if (at + i < expected.size())
            std::memcpy(&wanted, expected.constData() + at + i, sizeof wanted);
        count += wanted == there ? 0 : 1;
    }
    return count;
}

TrackVerdict compareTrack(const DiscImage& disc, const DiscTrack& track, const QByteArray& sound, bool last)
{
    TrackVerdict verdict;
    verdict.frames = track.frames;
    verdict.samples = sound.size() / kBytesPerPair;
    const qint64 wanted = zib::CdTime::holdingSamples(verdict.samples).frames();
    verdict.lengthRight = track.frames == std::max<qint64>(wanted, zib::kShortestTrackFrames) &&
                          track.gapBehind == (last ? 0 : zib::kPregapFrames);
    const qint64 end = track.frames + track.gapBehind;
    for (qint64 frame = 0; frame < end; frame += kFramesAtOnce) {
        const qint64 count = std::min(kFramesAtOnce, end - frame);
        const QByteArray found = disc.read(track.start + frame, count);
        verdict.different += found.isEmpty() ? count * zib::kSamplesPerFrame
                                             : differences(found, sound, frame * zib::kBytesPerFrame);
    }
    return verdict;
}

} // namespace

std::optional<QByteArray> soundOf(const QString& wav)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(QFile::encodeName(wav).constData(), SFM_READ, &info);
    if (!file)
        return std::nullopt;
    QByteArray sound(info.frames * kBytesPerPair, '\0');
    const bool format = info.samplerate == zib::kCdSampleRate && info.channels == zib::kCdChannels &&
                        (info.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
    const bool whole =
        format && sf_readf_short(file, reinterpret_cast<short*>(sound.data()), info.frames) == info.frames;
    sf_close(file);
    return whole ? std::optional(sound) : std::nullopt;
}

std::optional<QList<TrackVerdict>> compare(const DiscImage& disc, const QList<QByteArray>& sounds)
{
    const auto tracks = disc.tracks();
    if (!tracks || tracks->size() != sounds.size())
        return std::nullopt;
    QList<TrackVerdict> verdicts;
    for (qsizetype i = 0; i < sounds.size(); ++i)
        verdicts << compareTrack(disc, tracks->at(i), sounds.at(i), i + 1 == sounds.size());
    return verdicts;
}

} // namespace demo
