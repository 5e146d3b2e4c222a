#pragma once

#include "EmulatedRecorder.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace zib {

/// Runs Debian's burning and ripping programs on an emulated recorder of its own.
class ClientBench
{
public:
    /// What a client said and how it ended; status -1 when it did not end by itself.
    struct Run
    {
        int status = -1;
        QString output;
    };

    EmulatedRecorder recorder;

    /// Whether the program is installed.
    [[nodiscard]] static bool has(const QString& program);
    /// Runs a whole command line, split at blanks, in the bench's folder, with the recorder under it.
    Run run(const QString& commandLine) const;

    /// Makes NAME.wav of smooth sound (44100 Hz, 16 bits, stereo). @returns its samples.
    QByteArray makeWave(const QString& name, int samples, unsigned seed) const;
    /// Makes a text file in the bench's folder.
    void makeFile(const QString& name, const QByteArray& content) const;
    /// The content of a file in the bench's folder; empty when there is none.
    [[nodiscard]] QByteArray fileContent(const QString& name) const;
    /// The samples of a WAV file with a plain 44-byte header.
    [[nodiscard]] QByteArray waveContent(const QString& name) const { return fileContent(name).mid(44); }
    [[nodiscard]] QString path(const QString& name) const
    {
        return recorder.folder() + QLatin1Char('/') + name;
    }
};

/// The samples padded with silence to whole frames of 2352 bytes.
[[nodiscard]] QByteArray padded(const QByteArray& samples);

} // namespace zib
