#pragma once

#include <QString>

#include <atomic>
#include <memory>

class AudioFile;

namespace zib {

/// The pump from a reader to a writer, one file at a time. It runs on a thread, since both may stand in slow
/// places; the window asks for the percentage meanwhile.
class Conversion
{
public:
    enum class End
    {
        NotOpened, ///< Nothing was begun: no source, or no target.
        Whole,     ///< The target is there.
        Broken,    ///< The source or the storage failed; no target appeared.
        Stopped,   ///< The same, because it was told to stop.
    };

    /// Takes both files, whose calls are then the pump's alone.
    Conversion(std::unique_ptr<AudioFile> reader, std::unique_ptr<AudioFile> writer);
    ~Conversion();
    Q_DISABLE_COPY_MOVE(Conversion)

    /// The thread's.  @returns after the last byte is on the storage.
    End ConvertFile(const QString& source, const QString& target);
    /// Any thread: no further block is converted.
    void stop() { m_stopped = true; }
    /// Any thread: 0 to 100, never falling within one conversion.
    double percent() const { return ConvertPercent; }

private:
    End pump();
    End pumpBlocks(qint32 request);
    void count(qint64 blockSamples);

    const std::unique_ptr<AudioFile> m_fileReader;
    const std::unique_ptr<AudioFile> m_fileWriter;
    std::atomic<bool> m_stopped = false;
    qint64 SamplesDone = 0; ///< In the reader's units of length.
    std::atomic<double> ConvertPercent = 0;
};

} // namespace zib
