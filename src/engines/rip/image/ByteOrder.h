#pragma once

#include <QByteArray>

namespace zib {

/// Listens whether sound was told with the wrong byte order. Read the wrong way round, music is noise at full
/// strength, and nothing else is; sound that is noise either way keeps the order that was told.
class ByteOrderEar
{
public:
    /// @param sound whole samples of 16 bits for two channels, low byte first as far as one knows.
    void hear(const QByteArray& sound);
    bool hearsItSwapped() const;

private:
    double m_asTold = 0; ///< Sums of the steps from sample to sample.
    double m_swapped = 0;
    qint64 m_steps = 0;
};

/// Exchanges the two bytes of every sample.
void swapBytes(char* sound, qint64 bytes);

} // namespace zib
