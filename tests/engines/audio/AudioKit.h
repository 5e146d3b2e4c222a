#pragma once

#include "components/AudioFile.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace zib::kit {

/// Deterministic music of a kind: gliding tones, clicks and noise, different in every channel.
QList<float> music(qint64 frames, int channels, int rateHz);
/// The same, rounded to 16 bits.
QList<qint16> music16(qint64 frames, int channels, int rateHz);

/// One chunk: name, size, content, padding byte.
QByteArray chunk(const QByteArray& name, const QByteArray& content);
/// The content of a plain "fmt " chunk.
QByteArray format(int tag, int channels, int rateHz, int bits, int bytesPerSample = 0);
/// The content of an extensible "fmt " chunk.
QByteArray extensibleFormat(int tag, int channels, int rateHz, int bits, int bytesPerSample,
                            quint32 speakers);
/// A whole RIFF file out of chunks.
QByteArray riff(const QByteArray& chunks);
/// Samples as little-endian bytes.
QByteArray bytes16(const QList<qint16>& samples);
/// A plain 16-bit PCM file.
QByteArray wav16(const QList<qint16>& samples, int channels, int rateHz);

/// Writes @p content to @p path.
void write(const QString& path, const QByteArray& content);
QByteArray contentOf(const QString& path);

/// Runs a program of this system; true when it ended well.
bool run(const QString& program, const QStringList& arguments);
/// An MP3 file made by lame from music(): made once, kept beside the build. Empty when lame is missing.
QString lameFile(const QString& name, qint64 frames, int channels, int rateHz, const QStringList& options);

/// The whole file as the MP3 library decodes it by itself, from front to back, with its own cutting of delay.
QList<qint16> libraryDecode(const QString& path);
/// The same as floats.
QList<float> libraryDecodeWide(const QString& path);
/// The length that the MP3 library finds by scanning all frames.
qint64 libraryScan(const QString& path);

/// Everything a reader gives, in blocks of @p blockSamples; wide blocks are refused.
QList<qint16> readNarrow(AudioFile& reader, qint32 blockSamples = 88200);
/// Everything as floats.
QList<float> readWide(AudioFile& reader, qint32 blockSamples = 88200);
/// Converts a whole file as the windows do, to 44.1 kHz stereo.  @returns the writer's status.
int convert(const QString& source, const QString& target, int rateHz = 44100, int channels = 2);
/// The samples of a plain 44-byte-header WAV file.
QList<qint16> wavSamples(const QString& path);

} // namespace zib::kit
