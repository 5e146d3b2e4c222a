#pragma once

#include "components/AudioBlock.h"
#include "engines/audio/BoundedQueue.h"
#include "engines/audio/convert/Ditherer.h"
#include "engines/audio/convert/RateConverter.h"
#include "engines/audio/wav/WavWriter.h"

#include <atomic>
#include <memory>
#include <span>
#include <thread>

namespace zib {

/// The rate and channels of a sound.
struct SoundFormat
{
    int rateHz = 44100;
    int channels = 2;

    bool operator==(const SoundFormat&) const = default;
};

/// Brings blocks to another format and into a file, on a thread of its own; where samples are rounded, they
/// are written on another one.
class WriteBehind
{
public:
    /// Takes over @p writer, which has been created in the format @p output.
    WriteBehind(std::unique_ptr<WavWriter> writer, SoundFormat input, SoundFormat output);
    ~WriteBehind(); ///< Drops the file when it was not finished.

    /// Queues a block; waits while a few are queued already.
    void write(const AudioBlock& block);
    /// Whether a block could not be written.
    bool failed() const { return m_failed; }
    /// Waits until everything is written, and finishes the file.  @returns false when any of it failed.
    bool finish();

private:
    void work();
    void take(const AudioBlock& block);
    void takeNarrow(const QList<qint16>& samples);
    void takeWide(std::span<const float> samples);
    void emitWide(std::span<const float> samples);
    void emitNarrow(QList<qint16> samples);
    void append(const QList<qint16>& samples);
    QList<float> mono(std::span<const float> samples) const;
    bool converts() const { return m_input.rateHz != m_output.rateHz; }

    std::unique_ptr<WavWriter> m_writer;
    SoundFormat m_input;
    SoundFormat m_output;
    int m_channels; // between mixing and doubling
    std::unique_ptr<RateConverter> m_converter;
    Ditherer m_ditherer;
    BoundedQueue<AudioBlock> m_blocks{8};
    BoundedQueue<QList<qint16>> m_rounded{4};
    std::atomic<bool> m_failed = false;
    std::thread m_writing;
    std::thread m_thread; // last: it uses everything above
};

} // namespace zib
