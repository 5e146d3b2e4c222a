#include "ClientBench.h"

#include <QDataStream>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>

namespace zib {
namespace {

constexpr int kTimeoutMs = 120000;

QByteArray waveHeader(int bytes)
{
    QByteArray header;
    QDataStream out{&header, QIODevice::WriteOnly};
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("RIFF", 4);
    out << quint32(36 + bytes);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << quint16(1) << quint16(2) << quint32(44100) << quint32(176400) << quint16(4)
        << quint16(16);
    out.writeRawData("data", 4);
    out << quint32(bytes);
    return header;
}

// Smooth, because ripping programs find out the byte order of a drive by listening.
QByteArray smoothSound(int samples, unsigned seed)
{
    QByteArray sound;
    QDataStream out{&sound, QIODevice::WriteOnly};
    out.setByteOrder(QDataStream::LittleEndian);
    unsigned state = seed;
    int level[2]{};
    for (int i = 0; i < 2 * samples; ++i) {
        state = state * 1664525U + 1013904223U;
        int& value = level[i % 2];
        value += static_cast<int>(state >> 20U) - 2048 - value / 32;
        out << static_cast<qint16>(std::clamp(value, -32768, 32767));
    }
    return sound;
}

} // namespace

bool ClientBench::has(const QString& program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

ClientBench::Run ClientBench::run(const QString& commandLine) const
{
    QStringList words = commandLine.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QProcess process;
    // The wrapper sets the variables for the client alone: a sanitizer's runtime would not like the library.
    process.setProgram(QStringLiteral("env"));
    process.setArguments(recorder.environment(QStringLiteral(ZIB_EMULATED_DRIVE)) + words);
    process.setWorkingDirectory(recorder.folder());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start();
    Run run;
    if (process.waitForFinished(kTimeoutMs) && process.exitStatus() == QProcess::NormalExit) {
        run.status = process.exitCode();
    }
    run.output = QString::fromLocal8Bit(process.readAll());
    return run;
}

QByteArray ClientBench::makeWave(const QString& name, int samples, unsigned seed) const
{
    const QByteArray sound = smoothSound(samples, seed);
    makeFile(name + QStringLiteral(".wav"), waveHeader(static_cast<int>(sound.size())) + sound);
    return sound;
}

void ClientBench::makeFile(const QString& name, const QByteArray& content) const
{
    QFile file{path(name)};
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(file.fileName()));
    }
}

QByteArray ClientBench::fileContent(const QString& name) const
{
    QFile file{path(name)};
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray{};
}

QByteArray padded(const QByteArray& samples)
{
    constexpr int kFrameBytes = 2352;
    const auto missing = (kFrameBytes - samples.size() % kFrameBytes) % kFrameBytes;
    return samples + QByteArray(missing, '\0');
}

} // namespace zib
