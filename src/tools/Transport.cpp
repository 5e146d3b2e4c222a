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
    : m_file(components.makeFile()), m_player(components.makePlayer())
{
    m_file->setSixteenBitBlocks(true);
}

Transport::~Transport() = default;

void Transport::PlayFile(const QString& path)
{
    setCurrentFile(path);
    if (m_file->open(path) < 0)
        return;
    PlayPos = 0;
    if (m_file->length() == 0)
        return m_file->close();
    m_player->setFormat(m_file->formatRate(), m_file->formatChannels());
    BlockSamples = m_player->bufferSize(kBufferMs);
    if (m_player->open() < 0)
        return m_file->close();
    IsPlaying = true;
    m_pauseTicked = false;
    feedTwo();
}

void Transport::FeedBlock()
{
    if (!IsPlaying)
        return;
    const AudioBlock block = m_file->readBlock(BlockSamples);
    if (block.sampleCount() > 1)
        m_player->writeBlock(block);
}

void Transport::feedTwo()
{
    FeedBlock();
    FeedBlock();
}

void Transport::StopPlaying()
{
    m_player->close();
    m_file->close();
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
    m_file->seek(PlayPos);
    feedTwo();
}

void Transport::SeekToSlider(int slider)
{
    if (const auto product = narrowed<qint32>(slider * m_file->length()))
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
        seekTo(slider * m_file->length());
}

/// @param hundredths frames x 100.
void Transport::seekTo(qint64 hundredths)
{
    m_player->reset();
    PlayPos = m_file->seek(roundHalfEven(static_cast<double>(hundredths) / kSliderEnd));
    feedTwo();
}

std::optional<int> Transport::sliderFor(qint64 played) const
{
    if (IsDragging || m_file->length() == 0)
        return std::nullopt;
    const double percent =
        static_cast<double>(PlayPos + played) * kSliderEnd / static_cast<double>(m_file->length());
    return static_cast<int>(std::clamp<qint64>(roundHalfEven(percent), 0, kSliderEnd));
}

} // namespace zib
