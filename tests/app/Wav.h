#pragma once

#include <QByteArray>

inline QByteArray number(quint32 value, int bytes)
{
    QByteArray text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

/// A WAV file in CD format that claims @p claimed bytes of samples and holds @p held.
inline QByteArray wav(quint32 claimed, quint32 held)
{
    return "RIFF" + number(36 + claimed, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) + number(2, 2) +
           number(44100, 4) + number(176400, 4) + number(4, 2) + number(16, 2) + "data" + number(claimed, 4) +
           QByteArray(static_cast<qsizetype>(held), '\x11');
}
