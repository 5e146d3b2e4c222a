#include "engines/audio/AudioKit.h"

#include "engines/audio/makers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>
#include <memory>
#include <numbers>

#include <mpg123.h>

namespace zib::kit {

namespace {

template <typename Number>
QByteArray little(Number value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

using Handle = std::unique_ptr<mpg123_handle, decltype(&mpg123_delete)>;

Handle opened(const QString& path, bool isWide)
{
    mpg123_init();
    Handle handle(mpg123_new(nullptr, nullptr), &mpg123_delete);
    mpg123_param(handle.get(), MPG123_RESYNC_LIMIT, -1, 0);
    mpg123_param(handle.get(), MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_GAPLESS, 0);
    mpg123_format_none(handle.get());
    for (const long rate : {8000L, 11025L, 12000L, 16000L, 22050L, 24000L, 32000L, 44100L, 48000L})
        mpg123_format(handle.get(), rate, MPG123_MONO | MPG123_STEREO,
                      isWide ? MPG123_ENC_FLOAT_32 : MPG123_ENC_SIGNED_16);
    if (mpg123_open(handle.get(), QFile::encodeName(path).constData()) != MPG123_OK)
        handle.reset();
    return handle;
}

template <typename Sample>
QList<Sample> decodeAll(const QString& path, bool isWide)
{
    QList<Sample> samples;
    const Handle handle = opened(path, isWide);
    if (!handle)
        return samples;
    QByteArray buffer(1 << 16, '\0');
    int result = MPG123_OK;
    while (result == MPG123_OK || result == MPG123_NEW_FORMAT) {
        size_t done = 0;
        result = mpg123_read(handle.get(), buffer.data(), static_cast<size_t>(buffer.size()), &done);
        const auto* begin = reinterpret_cast<const Sample*>(buffer.constData());
        samples.append(QList<Sample>(begin, begin + done / sizeof(Sample)));
    }
    return samples;
}

} // namespace

QList<float> music(qint64 frames, int channels, int rateHz)
{
    QList<float> samples;
    samples.reserve(frames * channels);
    quint32 noise = 12345;
    for (qint64 i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rateHz;
        for (int channel = 0; channel < channels; ++channel) {
            const double pitch = 220.0 * (channel + 1) + 200.0 * std::sin(t * 0.7);
            double value = 0.4 * std::sin(2 * std::numbers::pi * pitch * t) +
                           0.2 * std::sin(2 * std::numbers::pi * (pitch * 5.3 + channel) * t);
            noise = noise * 1664525U + 1013904223U;
            value += 0.05 * (static_cast<double>(noise >> 8) / (1 << 23) - 1.0);
            if (i % (rateHz / 2) < 20)
                value += 0.3;
            samples << static_cast<float>(value);
        }
    }
    return samples;
}

QList<qint16> music16(qint64 frames, int channels, int rateHz)
{
    QList<qint16> samples;
    for (const float value : music(frames, channels, rateHz))
        samples << static_cast<qint16>(std::lrint(value * 32767.0F));
    return samples;
}

QByteArray chunk(const QByteArray& name, const QByteArray& content)
{
    return name + little(static_cast<quint32>(content.size())) + content +
           QByteArray(content.size() & 1, '\0');
}

QByteArray format(int tag, int channels, int rateHz, int bits, int bytesPerSample)
{
    const int bytes = bytesPerSample > 0 ? bytesPerSample : (bits + 7) / 8;
    return little(static_cast<quint16>(tag)) + little(static_cast<quint16>(channels)) +
           little(static_cast<quint32>(rateHz)) + little(static_cast<quint32>(rateHz * channels * bytes)) +
           little(static_cast<quint16>(channels * bytes)) + little(static_cast<quint16>(bits));
}

QByteArray extensibleFormat(int tag, int channels, int rateHz, int bits, int bytesPerSample, quint32 speakers)
{
    QByteArray content = format(0xFFFE, channels, rateHz, bytesPerSample * 8, bytesPerSample);
    content += little(quint16{22}) + little(static_cast<quint16>(bits)) + little(speakers);
    content += little(static_cast<quint16>(tag)) + QByteArray::fromHex("000000001000800000aa00389b71");
    return content;
}

QByteArray riff(const QByteArray& chunks)
{
    return "RIFF" + little(static_cast<quint32>(chunks.size() + 4)) + "WAVE" + chunks;
}

QByteArray bytes16(const QList<qint16>& samples)
{
    return {reinterpret_cast<const char*>(samples.constData()), samples.size() * 2};
}

QByteArray wav16(const QList<qint16>& samples, int channels, int rateHz)
{
    return riff(chunk("fmt ", format(1, channels, rateHz, 16)) + chunk("data", bytes16(samples)));
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

QString lameFile(const QString& name, qint64 frames, int channels, int rateHz, const QStringList& options)
{
    const QString folder = ZIB_BINARY_DIR "/testdata/audio";
    const QString path = folder + "/" + name + ".mp3";
    if (QFileInfo::exists(path))
        return path;
    QDir().mkpath(folder);
    const QTemporaryDir work(folder + "/making-XXXXXX");
    const QString source = work.filePath("source.wav");
    const QString made = work.filePath("made.mp3");
    write(source, wav16(music16(frames, channels, rateHz), channels, rateHz));
    if (!run("lame", QStringList{"--silent"} + options + QStringList{source, made}))
        return {};
    QFile::rename(made, path); // another test may have been quicker: its file is the same
    return path;
}

QList<qint16> libraryDecode(const QString& path)
{
    return decodeAll<qint16>(path, false);
}

QList<float> libraryDecodeWide(const QString& path)
{
    return decodeAll<float>(path, true);
}

qint64 libraryScan(const QString& path)
{
    const Handle handle = opened(path, false);
    if (!handle || mpg123_scan(handle.get()) != MPG123_OK)
        return -1;
    return mpg123_length(handle.get());
}

QList<qint16> readNarrow(AudioFile& reader, qint32 blockSamples)
{
    QList<qint16> samples;
    for (AudioBlock block = reader.readBlock(blockSamples); !block.isEmpty();
         block = reader.readBlock(blockSamples)) {
        if (block.narrow() == nullptr)
            return {};
        samples += *block.narrow();
    }
    return samples;
}

QList<float> readWide(AudioFile& reader, qint32 blockSamples)
{
    QList<float> samples;
    for (AudioBlock block = reader.readBlock(blockSamples); !block.isEmpty();
         block = reader.readBlock(blockSamples)) {
        if (const auto* wide = block.wide())
            samples += *wide;
        else
            for (const qint16 sample : *block.narrow())
                samples << static_cast<float>(sample) / 32768.0F;
    }
    return samples;
}

int convert(const QString& source, const QString& target, int rateHz, int channels)
{
    const auto reader = makeAudioFile();
    const auto writer = makeAudioFile();
    writer->setOutputFormat(rateHz, channels, 16);
    if (reader->open(source) < 0)
        return reader->status();
    if (writer->create(target) < 0)
        return writer->status();
    writer->setInputFormat(reader->formatRate(), reader->formatChannels());
    const qint32 count = reader->formatRate() * reader->formatChannels();
    for (AudioBlock block = reader->readBlock(count); !block.isEmpty(); block = reader->readBlock(count))
        writer->writeBlock(block);
    if (reader->status() < 0)
        writer->discard();
    else
        writer->close();
    return reader->status() < 0 ? reader->status() : writer->status();
}

QList<qint16> wavSamples(const QString& path)
{
    const QByteArray content = contentOf(path).mid(44);
    const auto* begin = reinterpret_cast<const qint16*>(content.constData());
    return QList<qint16>(begin, begin + content.size() / 2);
}

} // namespace zib::kit
