#pragma once

#include "engines/audio/Mp3FrameWalk.h"

#include <QList>

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
    Mp3Decoder(std::shared_ptr<const SourceFile> file, int channels, SampleKind kind);
    ~Mp3Decoder();
    Mp3Decoder(const Mp3Decoder&) = delete;
    Mp3Decoder& operator=(const Mp3Decoder&) = delete;

    /// Goes to the frame at @p offset of @p run, with nothing remembered of what was decoded before.
    void start(const Mp3Run& run, qint64 offset);
    /// Decodes the next frame.  @returns its interleaved samples as bytes of the wanted kind, valid until the
    /// next call; empty when the run has no more frame or the file cannot be read.
    std::span<const uchar> next();
    /// Bytes of one sample frame.
    qsizetype frameBytes() const { return m_channels * (m_kind == SampleKind::Narrow ? 2 : 4); }
    bool failed() const { return m_window.failed() || !m_handle; }

private:
    struct Closer
    {
        void operator()(mpg123_handle_struct* handle) const;
    };
    bool configure();
    std::span<const uchar> decode(const uchar* frame, int bytes);
    std::span<const uchar> silence();

    FileWindow m_window;
    int m_channels;
    SampleKind m_kind;
    Mp3Run m_run;
    qint64 m_offset = 0;
    QByteArray m_silence;
    std::unique_ptr<mpg123_handle_struct, Closer> m_handle;
};

} // namespace zib
