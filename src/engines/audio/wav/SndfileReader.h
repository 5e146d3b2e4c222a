#pragma once

#include "engines/audio/SampleSource.h"
#include "engines/audio/SourceFile.h"

#include <limits>
#include <memory>

struct sf_private_tag;

namespace zib {

/// WAV files whose samples are packed (ADPCM, GSM and the like), through libsndfile; one or two channels.
class SndfileReader final : public SampleSource
{
public:
    /// Opens @p file; without @p length, which measure() tells, reading goes on until nothing more comes.
    /// @returns nothing when the library does not know the coding, or there are more channels.
    static std::unique_ptr<SndfileReader> open(const std::shared_ptr<const SourceFile>& file,
                                               qint64 length = std::numeric_limits<qint64>::max());
    /// Decodes all of it.  @returns its sample frames; the headers of such files are no measure.
    qint64 measure();
    ~SndfileReader() override;

    int rateHz() const override { return m_rateHz; }
    int channels() const override { return m_channels; }
    qint64 length() const override { return m_length; }
    AudioBlock read(qint64 frames) override;
    void seek(qint64 frame) override;
    bool failed() const override { return m_failed; }

private:
    /// The file as the library sees it.
    struct Stream
    {
        std::shared_ptr<const SourceFile> file;
        qint64 position = 0;
    };
    struct Closer
    {
        void operator()(sf_private_tag* handle) const;
    };

    SndfileReader(const std::shared_ptr<const SourceFile>& file, qint64 length);

    void begin();

    Stream m_stream;
    int m_rateHz = 0;
    int m_channels = 0;
    qint64 m_length;
    qint64 m_next = 0;
    bool m_failed = false;
    std::unique_ptr<sf_private_tag, Closer> m_handle; // reads from m_stream
};

} // namespace zib
