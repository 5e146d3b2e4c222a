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
    m_playPos = 0;
    if (m_file->length() == 0)
        return m_file->close();
    m_player->setFormat(m_file->formatRate(), m_file->formatChannels());
    m_blockSamples = m_player->bufferSize(kBufferMs);
    if (m_player->open() < 0)
        return m_file->close();
    m_isPlaying = true;
    m_pauseTicked = false;
    feedTwo();
}

void Transport::FeedBlock()
{
    if (!m_isPlaying)
        return;
    const AudioBlock block = m_file->readBlock(m_blockSamples);
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
    m_isPlaying = false;
    m_pauseTicked = false;
}

void Transport::TogglePause()
{
    if (!m_isPlaying)
        return;
    if (m_isPaused)
        return resume();
    m_pauseTicked = true;
    m_isPaused = true;
    // Closed first: the device consumes until then, and what it has consumed is not played again.
    m_player->close();
    m_playPos += m_player->position();
}

void Transport::resume()
{
    m_pauseTicked = false;
    m_isPaused = false;
    if (m_player->open() < 0)
        return StopPlaying();
    m_file->seek(m_playPos);
    feedTwo();
}

void Transport::SeekToSlider(int slider)
{
    if (const auto product = narrowed<qint32>(slider * m_file->length()))
        seekTo(*product);
}

void Transport::endDrag(int slider)
{
    m_isDragging = false;
    seekAnywhere(slider);
}

void Transport::seekAnywhere(int slider)
{
    if (m_isPlaying)
        seekTo(slider * m_file->length());
}

/// @param hundredths frames x 100.
void Transport::seekTo(qint64 hundredths)
{
    m_player->reset();
    m_playPos = m_file->seek(roundHalfEven(static_cast<double>(hundredths) / kSliderEnd));
    feedTwo();
}

std::optional<int> Transport::sliderFor(qint64 played) const
{
    if (m_isDragging || m_file->length() == 0)
        return std::nullopt;
    const double percent =
        static_cast<double>(m_playPos + played) * kSliderEnd / static_cast<double>(m_file->length());
    return static_cast<int>(std::clamp<qint64>(roundHalfEven(percent), 0, kSliderEnd));
}

} // namespace zib
