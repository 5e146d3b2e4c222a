#pragma once

#include "common/Errands.h"
#include "components/AudioBlock.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

class AudioFile;
class AudioPlayer;

namespace zib {

struct Components;

/// The pump between a reader and a player, and the rules of stopping, pausing and seeking. Knows no widgets;
/// a window forwards its events and shows what it is told.
///
/// The reader is asked on a thread, since a file may stand in a place that is slow or hangs: what it answers
/// within a moment is there when a call returns, as if it had been asked directly. What comes later changes
/// the state by itself and is told by onChange; the device waits meanwhile.
///
/// Positions are sample frames of the reader, counted in 64 bits; the slider runs from 0 to 100, the percent
/// of the file. GUI thread only.
class Transport
{
public:
    explicit Transport(const Components& components);
    ~Transport();
    Q_DISABLE_COPY_MOVE(Transport)

    /// The player whose events the window connects to FeedBlock, sliderFor and its own end of playback.
    AudioPlayer& player() const { return *m_player; }

    /// Called when an answer that took long has changed what the queries below tell.
    std::function<void()> onChange;

    /// Whether a file that was to be played has not answered yet.
    bool isOpening() const { return m_opening; }

    bool isPlaying() const { return IsPlaying; }
    /// Set by pausing, cleared by resuming; a stop leaves it as it is.
    bool isPaused() const { return IsPaused; }
    /// Whether the pause button stands pushed in.
    bool pauseTicked() const { return m_pauseTicked; }
    /// Where the current buffers start in the file.
    qint64 playPos() const { return PlayPos; }

    /// Plays a file from its start and makes it the shared CurrentFile. What cannot be opened ends silently.
    void PlayFile(const QString& path);
    /// Queues the next second of the file, if there is more than one sample of it.
    void FeedBlock();
    void StopPlaying();
    /// Pausing gives the sound device back; resuming takes it again. Only while playing.
    void TogglePause();
    /// Plays on from the slider's place. When slider x length leaves 32 bits, nothing changes.
    void SeekToSlider(int slider);

    void beginDrag() { IsDragging = true; }
    /// Ends a drag at the slider's place: while playing, sound goes on from there.
    void endDrag(int slider);
    /// Plays on from the slider's place while playing, whatever the length of the file.
    void seekAnywhere(int slider);
    /// The slider's place after @p played frames of the current buffers; nothing while it is being dragged.
    std::optional<int> sliderFor(qint64 played) const;

private:
    struct Opened
    {
        int status = 0;
        qint64 length = 0;
        int rateHz = 0;
        int channels = 0;
    };

    void takeFile();
    void opened(const Opened& file);
    void play(const Opened& file);
    void closeFile();
    void feedTwo();
    void fed(const AudioBlock& block);
    void forgetBlocks();
    void resume();
    void seekTo(qint64 hundredths);
    void seekFile();

    const std::function<std::unique_ptr<AudioFile>()> m_makeFile;
    std::shared_ptr<AudioFile> m_file; // its calls are the errands' alone
    const std::unique_ptr<AudioPlayer> m_player;
    Errands m_errands;
    qint64 m_length = 0;
    int m_awaited = 0; // blocks that were asked for and have not come
    bool m_opening = false;
    qint64 PlayPos = 0;
    qint32 BlockSamples = 0;
    bool IsDragging = false;
    bool IsPlaying = false;
    bool IsPaused = false;
    bool m_pauseTicked = false;
};

} // namespace zib
