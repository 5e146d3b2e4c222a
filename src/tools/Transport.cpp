#include "tools/Transport.h"

#include "common/GenralMacro.h"
#include "common/Numbers.h"
#include "components/Components.h"

#include <algorithm>

namespace zib {

namespace {

constexpr qint32 kBufferMs = 1000;
constexpr int kSliderEnd = 100;

} // namespace

Transport::Transport(const Components& components)
    : m_makeFile(components.makeFile), m_player(components.makePlayer())
{
    takeFile();
}

/// A file that hangs is let go of by the thread that hangs with it.
Transport::~Transport()
{
    m_errands.forget();
    m_errands.tell([file = std::move(m_file)] {});
}

void Transport::takeFile()
{
    m_file = m_makeFile();
    m_file->setSixteenBitBlocks(true);
}

void Transport::PlayFile(const QString& path)
{
    setCurrentFile(path);
    m_opening = true;
    m_errands.ask<Opened>(
        [file = m_file, path] {
            const int status = file->open(path);
            return Opened{status, file->length(), file->formatRate(), file->formatChannels()};
        },
        [this](const Opened& file) { opened(file); });
}

void Transport::opened(const Opened& file)
{
    m_opening = false;
    if (file.status >= 0)
        play(file);
    if (onChange)
        onChange();
}

void Transport::play(const Opened& file)
{
    PlayPos = 0;
    m_length = file.length;
    if (m_length == 0)
        return closeFile();
    m_player->setFormat(file.rateHz, file.channels);
    BlockSamples = m_player->bufferSize(kBufferMs);
    if (m_player->open() < 0)
        return closeFile();
    IsPlaying = true;
    m_pauseTicked = false;
    feedTwo();
}

void Transport::closeFile()
{
    m_length = 0;
    m_errands.ask<bool>(
        [file = m_file] {
            file->close();
            return true;
        },
        [](bool) {});
}

void Transport::FeedBlock()
{
    if (!IsPlaying)
        return;
    ++m_awaited;
    m_player->setExpecting(true);
    m_errands.ask<AudioBlock>([file = m_file, samples = BlockSamples] { return file->readBlock(samples); },
                              [this](const AudioBlock& block) { fed(block); });
}

void Transport::fed(const AudioBlock& block)
{
    --m_awaited;
    if (block.sampleCount() > 1)
        m_player->writeBlock(block);
    m_player->setExpecting(m_awaited > 0);
}

void Transport::feedTwo()
{
    FeedBlock();
    FeedBlock();
}

/// What was asked for belongs to a place that has been left.
void Transport::forgetBlocks()
{
    m_errands.forget();
    m_awaited = 0;
}

void Transport::StopPlaying()
{
    m_player->close();
    m_awaited = 0;
    if (m_errands.abandon())
        takeFile();
    closeFile();
    m_opening = false;
    IsPlaying = false;
    m_pauseTicked = false;
}

void Transport::TogglePause()
{
    if (!IsPlaying)
        return;
    if (IsPaused)
        return resume();
    m_pauseTicked = true;
    IsPaused = true;
    forgetBlocks();
    // Closed first: the device consumes until then, and what it has consumed is not played again.
    m_player->close();
    PlayPos += m_player->position();
}

void Transport::resume()
{
    m_pauseTicked = false;
    IsPaused = false;
    if (m_player->open() < 0)
        return StopPlaying();
    seekFile();
    feedTwo();
}

void Transport::SeekToSlider(int slider)
{
    if (m_opening)
        return; // there is no place to go to yet, and what was asked for must not be forgotten
    if (const auto product = narrowed<qint32>(slider * m_length))
        seekTo(*product);
}

void Transport::endDrag(int slider)
{
    IsDragging = false;
    seekAnywhere(slider);
}

void Transport::seekAnywhere(int slider)
{
    if (IsPlaying)
        seekTo(slider * m_length);
}

/// @param hundredths frames x 100.
void Transport::seekTo(qint64 hundredths)
{
    m_player->reset();
    forgetBlocks();
    PlayPos = std::clamp<qint64>(roundHalfEven(static_cast<double>(hundredths) / kSliderEnd), 0, m_length);
    seekFile();
    feedTwo();
}

void Transport::seekFile()
{
    m_errands.ask<qint64>([file = m_file, place = PlayPos] { return file->seek(place); },
                          [this](qint64 reached) { PlayPos = reached; });
}

std::optional<int> Transport::sliderFor(qint64 played) const
{
    if (IsDragging || m_length == 0)
        return std::nullopt;
    const double percent = static_cast<double>(PlayPos + played) * kSliderEnd / static_cast<double>(m_length);
    return static_cast<int>(std::clamp<qint64>(roundHalfEven(percent), 0, kSliderEnd));
}

} // namespace zib
