#pragma once

#include "components/CDRipperX.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <functional>
#include <memory>
#include <tuple>

namespace zib {

/// Sound of @p frames frames that no reader takes for another byte order: slow waves and a little hiss.
inline QByteArray discSound(qint64 frames, int seed)
{
    QByteArray bytes(frames * 2352, '\0');
    auto* sample = reinterpret_cast<qint16*>(bytes.data());
    quint32 hiss = 2463534242U + quint32(seed) * 7919U;
    for (qint64 i = 0; i < frames * 588; ++i) {
        hiss ^= hiss << 13;
        hiss ^= hiss >> 17;
        hiss ^= hiss << 5;
        const double wave = std::sin(double(i) * (0.01 + seed * 0.001)) * 9000;
        sample[2 * i] = qint16(wave + int(hiss % 200) - 100);
        sample[2 * i + 1] = qint16(-wave / 2 + int(hiss / 256 % 200) - 100);
    }
    return bytes;
}

inline QByteArray fileContent(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The samples of a WAV file as the ripper writes them, without names that may follow; nothing when the
/// header is any other.
inline QByteArray wavSamples(const QString& path)
{
    const QByteArray wav = fileContent(path);
    const auto number = [&wav](int at) {
        quint32 value = 0;
        std::memcpy(&value, wav.constData() + at, 4);
        return value;
    };
    const bool sound = wav.size() >= 44 && wav.startsWith("RIFF") && wav.mid(8, 8) == "WAVEfmt " &&
                       wav.mid(36, 4) == "data" && number(4) == quint32(wav.size() - 8) && number(16) == 16 &&
                       number(20) == 0x20001 && number(24) == 44100 && number(28) == 176400 &&
                       number(32) == 0x100004 && qsizetype(number(40)) <= wav.size() - 44 &&
                       number(40) % 2 == 0;
    return sound ? wav.mid(44, number(40)) : QByteArray();
}

/// A ripper, a folder for its files, and all it says.
struct RipBench
{
    explicit RipBench(std::unique_ptr<CDRipperX> made) : ripper(std::move(made))
    {
        const auto say = [this](const char* text) { return [this, text] { said << text; }; };
        QObject::connect(ripper.get(), &CDRipperX::ExtractionStarted, say("started"));
        QObject::connect(ripper.get(), &CDRipperX::TrackFinished, say("track finished"));
        QObject::connect(ripper.get(), &CDRipperX::ExtractionFinished, say("finished"));
        QObject::connect(ripper.get(), &CDRipperX::TrackStarted,
                         [this](const QString& file, qint32 start, qint32 end, qint32 track) {
                             said << QString("track %1 %2 %3").arg(track).arg(start).arg(end);
                             files << file;
                         });
        QObject::connect(ripper.get(), &CDRipperX::ExtractionProgress, [this](int kind, qint32 position) {
            positions << std::tuple(kind, position);
            if (onProgress)
                onProgress(kind, position);
        });
    }

    QString target(int track) const { return folder.filePath(QString("Track%1.wav").arg(track)); }
    /// Selects the drive whose first text is @p name and waits for its disc.
    bool takeDisc(const QString& name)
    {
        const int device = find(name);
        return device >= 0 && ripper->selectDevice(device) &&
               QTest::qWaitFor([this] { return ripper->driveState() == CDRipperX::kDiscLoaded; }, 30'000);
    }
    /// The number of the device whose first text is @p name; it may be told late. Negative when there is
    /// none.
    int find(const QString& name)
    {
        int count = ripper->deviceCount();
        QObject::connect(ripper.get(), &CDRipperX::DevicesChanged, ripper.get(),
                         [&count](int now) { count = now; });
        int found = -1;
        const bool is = QTest::qWaitFor(
            [&] {
                for (int i = 0; i < count; ++i)
                    if (ripper->deviceText1(i) == name)
                        found = i;
                return found >= 0;
            },
            20'000);
        ripper->disconnect(ripper.get(), &CDRipperX::DevicesChanged, ripper.get(), nullptr);
        return is ? found : -1;
    }
    bool ended() const { return said.contains("finished"); }
    /// Copies tracks and waits for the end.  @returns "finished", or what went wrong instead.
    QString rip(const QList<int>& tracks, int timeoutMs = 240'000)
    {
        said.clear();
        positions.clear();
        ripper->clearQueue();
        for (const int track : tracks)
            if (!ripper->addTrack(track, target(track)))
                return QString("track %1 was refused").arg(track);
        if (!ripper->start())
            return "not started";
        if (!QTest::qWaitFor([this] { return ended(); }, timeoutMs))
            return "no end";
        return said.last();
    }
    /// Everything in the folder, hidden files included.
    QStringList left() const
    {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir folder;
    std::unique_ptr<CDRipperX> ripper;
    QStringList said;
    QStringList files;
    QList<std::tuple<int, qint32>> positions;
    std::function<void(int kind, qint32 position)> onProgress;
};

} // namespace zib
