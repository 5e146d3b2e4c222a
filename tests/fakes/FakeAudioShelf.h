#pragma once

#include "components/AudioLoss.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <mutex>
#include <optional>

namespace zib {

/// One sound file as a test imagines it.
struct FakeSound
{
    int rateHz = 44100;
    int channels = 2;
    int bits = 16;
    bool isPcm = true; ///< A WAV file of plain integer samples.
    QString title;     ///< In the main tag.
    QString artist;
    QString oldTitle; ///< In the old tag.
    QString oldArtist;
    QList<qint16> samples;                ///< Interleaved; all channels together.
    std::optional<qint32> durationMs{};   ///< Told instead of what the samples give.
    std::optional<qint32> failAtSample{}; ///< Reading fails from this sample on.
    AudioLoss loss{};                     ///< Told from the opening on.

    /// Samples of one channel.
    qint64 length() const { return samples.size() / channels; }
};

/// The files that the fake audio components of one test share: what can be read, what was written, what was
/// called.
struct FakeAudioShelf
{
    /// A sound of @p frames sample frames whose samples count up, so that an order mixed up shows.
    static FakeSound ramp(qint64 frames, int rateHz = 44100, int channels = 2)
    {
        FakeSound sound;
        sound.rateHz = rateHz;
        sound.channels = channels;
        sound.samples.reserve(frames * channels);
        for (qint64 i = 0; i < frames * channels; ++i)
            sound.samples << static_cast<qint16>(i % 30011);
        return sound;
    }

    /// Notes a call of a file, on whatever thread it came.
    void note(const QString& call)
    {
        const std::lock_guard lock(mutex);
        calls << call;
    }
    /// The calls so far, while a thread may still be at work.
    QStringList noted()
    {
        const std::lock_guard lock(mutex);
        return calls;
    }

    std::mutex mutex;
    QHash<QString, FakeSound> sounds;         ///< Readable files by path; every other path is no audio.
    QStringList refusedTargets;               ///< Paths at which no file can be created.
    std::optional<int> blocksUntilDiskFull{}; ///< Blocks that still fit; then writing fails.
    QHash<QString, FakeSound> written;        ///< What was finished with close(), by path.
    QStringList discarded;                    ///< Targets that were dropped.
    std::function<void()> onRead;             ///< Runs before each block, on the reading thread.
    QStringList calls;                        ///< "open PATH", "create PATH", "close PATH" ... in order.
};

} // namespace zib
