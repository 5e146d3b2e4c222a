#include "engines/rip/image/ByteOrder.h"

#include <QtEndian>

#include <cstdlib>
#include <utility>

namespace zib {

namespace {

/// The mean step of white noise at full strength is a third of the range, 21845.
constexpr double kNoiseStep = 12'000;
/// So many times smaller are the steps of music at least.
constexpr double kFarSmaller = 4;

} // namespace

void ByteOrderEar::hear(const QByteArray& sound)
{
    const auto* bytes = reinterpret_cast<const uchar*>(sound.constData());
    for (qsizetype at = 4; at + 1 < sound.size(); at += 2) {
        const uchar* now = bytes + at;
        const uchar* before = now - 4; // of the same channel
        m_asTold += std::abs(qFromLittleEndian<qint16>(now) - qFromLittleEndian<qint16>(before));
        m_swapped += std::abs(qFromBigEndian<qint16>(now) - qFromBigEndian<qint16>(before));
        ++m_steps;
    }
}

bool ByteOrderEar::hearsItSwapped() const
{
    return m_steps > 0 && m_asTold / double(m_steps) > kNoiseStep && m_swapped * kFarSmaller < m_asTold;
}

void swapBytes(char* sound, qint64 bytes)
{
    for (qint64 at = 0; at + 1 < bytes; at += 2)
        std::swap(sound[at], sound[at + 1]);
}

} // namespace zib
