#include "engines/audio/mp3/Mp3LossNotes.h"

#include <algorithm>

namespace zib {

void Mp3LossNotes::noteSilence(qint64 frame)
{
    if (!m_losses.isEmpty() && m_losses.last().isSilent &&
        m_losses.last().frame + m_losses.last().frames == frame)
        ++m_losses.last().frames;
    else
        m_losses << Mp3Loss{frame, 1, true};
}

void Mp3LossNotes::noteGap(qint64 frame, qint64 frames)
{
    if (frames > 0)
        m_losses << Mp3Loss{frame, frames, false};
}

void Mp3LossNotes::noteCutFrame(qint64 frame)
{
    m_endsCut = true;
    noteGap(frame, 1);
}

QList<Mp3Loss> Mp3LossNotes::settled(const std::optional<Mp3InfoFrame>& info, qint64 frames,
                                     qint64 bytes) const
{
    if (!info || info->frames < frames)
        return m_losses;
    qint64 left = info->frames - frames;
    QList<Mp3Loss> losses;
    for (Mp3Loss loss : m_losses) {
        if (!loss.isSilent) {
            loss.frames = std::min(loss.frames, left);
            left -= loss.frames;
        }
        if (loss.frames > 0)
            losses << loss;
    }
    const bool isShort = info->bytes < 0 || info->bytes > bytes;
    if (isShort && left > (m_endsCut ? 0 : 1))
        losses << Mp3Loss{frames, left, false};
    return losses;
}

} // namespace zib
