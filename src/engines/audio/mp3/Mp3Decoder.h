#pragma once

#include "engines/audio/mp3/Mp3FrameWalk.h"

#include <memory>
#include <span>

struct mpg123_handle_struct;

namespace zib {

/// How decoded samples are wanted.
enum class SampleKind
{
    Narrow,
    Wide
};

/// Decodes the frames of one run, one after the other: every whole frame gives exactly its number of samples.
///
/// A frame that the library cannot decode gives silence, so that positions always hold.
class Mp3Decoder
{
public:
    /// @param channels of the output: 1 only when the run is mono; 2 doubles a mono run.
    Mp3Decoder(const std::shared_ptr<const SourceFile>& file, int channels, SampleKind kind);
    ~Mp3Decoder();
    Mp3Decoder(const Mp3Decoder&) = delete;
    Mp3Decoder& operator=(const Mp3Decoder&) = delete;

    /// Goes to the beginning of @p run, with nothing remembered of what was decoded before.
    void start(const Mp3Run& run);
    /// Goes to @p entry of @p run. Frames that refer to sound data from before it give silence, so that the
    /// next ones find the decoder in just the state it would have come to from the beginning.
    void start(const Mp3Run& run, const Mp3Entry& entry);
    /// Frames of a run after which nothing reminds of where decoding began.
    static qint64 settlingFrames(const Mp3Run& run);
    /// Decodes the next frame.  @returns its interleaved samples as bytes of the wanted kind, valid until the
    /// next call; empty when the run has no more frame or the file cannot be read.
    std::span<const uchar> next();
    /// Whether the last frame could not be decoded.
    bool isSilent() const { return m_isSilent; }
    /// Bytes of one sample frame.
    qsizetype frameBytes() const { return m_channels * (m_kind == SampleKind::Narrow ? 2 : 4); }
    bool failed() const { return m_window.failed() || !m_handle; }

private:
    struct Closer
    {
        void operator()(mpg123_handle_struct* handle) const;
    };
    bool configure();
    void begin(const Mp3Run& run, qint64 offset);
    const uchar* settled(const Mp3Header& head, const uchar* frame, int bytes);
    std::span<const uchar> decode(const uchar* frame, int bytes);
    std::span<const uchar> silence();

    FileWindow m_window;
    int m_channels;
    SampleKind m_kind;
    Mp3Run m_run;
    qint64 m_offset = 0;
    bool m_isSettling = false; // some frames may still refer to data from before the first one
    int m_reservoir = 0;       // bytes they may refer to
    QByteArray m_muted;
    QByteArray m_silence;
    bool m_isSilent = false; // the last frame gave it
    std::unique_ptr<mpg123_handle_struct, Closer> m_handle;
};

} // namespace zib
