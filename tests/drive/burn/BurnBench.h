#pragma once

#include "EmulatedRecorder.h"
#include "engines/burn/DiscWriter.h"
#include "engines/burn/drive/DriveRecorder.h"
#include "engines/burn/image/ImageRecorder.h"
#include "engines/burn/WavMaker.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

namespace zib {

/// Patience for an emulated drive: short enough for a test, long enough for a loaded machine.
inline DrivePatience testPatience()
{
    return {.pollMs = 20,
            .readyMs = 6000,
            .callMs = 15'000,
            .writeMs = 6000,
            .closeMs = 9000,
            .cancelMs = 20'000};
}

/// The writer of the program on an emulated recorder, with tracks to write and all it says.
struct BurnBench
{
    explicit BurnBench(const DrivePatience& patience = testPatience())
        : writer([patience] { return findDrives(patience); },
                 std::make_shared<ImageRecorder>(folder.path() + "/Images"))
    {
        const auto say = [this](const char* text) { return [this, text] { tell(text); }; };
        QObject::connect(&writer, &DVDWriterPro::PreparingToWrite, say("preparing"));
        QObject::connect(&writer, &DVDWriterPro::ClosingDisc, say("closing disc"));
        QObject::connect(&writer, &DVDWriterPro::WriteCompleted, say("completed"));
        QObject::connect(&writer, &DVDWriterPro::WriteCancelled, say("cancelled"));
        QObject::connect(&writer, &DVDWriterPro::ReadingTrack, [this](const QString&, qint32, qint32 track) {
            tell(QString("reading %1").arg(track));
        });
        QObject::connect(&writer, &DVDWriterPro::WritingProgress,
                         [this](qint32 track, qint32 done, qint32 size) {
                             positions << std::tuple(track, done, size);
                             if (onSaid && track == 1 && done > size / 2)
                                 onSaid("progress");
                             if (onSaid && track == 1 && done > size / 2)
                                 onSaid("progress");
                             if (onProgress)
                                 onProgress(track, done);
                         });
        QObject::connect(&writer, &DVDWriterPro::CachingProgress, [this](qint16 percent) {
            if (onSaid && percent > 0)
                onSaid("caching");
        });
        QObject::connect(&writer, &DVDWriterPro::WriteError,
                         [this](qint32 code, qint32 number, const QString& words, const QString& data) {
                             said << "error";
                             error = code;
                             sense = number;
                             description = words;
                             senseData = data;
                         });
    }

    /// Adds a track of @p pairs sample pairs.  @returns its samples as they must lie on the disc.
    QByteArray addTrack(qint64 pairs, int seed)
    {
        const QByteArray samples = sound(pairs, seed);
        const QString path =
            put(folder.filePath(QString("track%1.wav").arg(writer.trackCount() + 1)), cdWav(samples));
        files << path;
        if (!writer.addAudioTrack(path))
            return {};
        const qint64 frames = std::max<qint64>((samples.size() + 2351) / 2352, 300);
        return samples + QByteArray(frames * 2352 - samples.size(), '\0');
    }

    /// Finds the drives and takes the first one.
    bool takeDrive()
    {
        return writer.initializeDrives(false) && writer.driveCount() > 1 && writer.selectDrive(0);
    }

    void configure()
    {
        writer.setCacheLocally(cache);
        writer.setCacheFolder(folder.filePath("cache"));
        writer.setWriteMode(0);
        writer.setTestWrite(false);
        writer.setCloseSession(true);
        writer.setCloseDisc(true);
    }

    void tell(const QString& text)
    {
        said << text;
        if (onSaid)
            onSaid(text);
    }

    bool ended() const { return ends() > 0; }
    int ends() const { return int(said.count("completed") + said.count("cancelled") + said.count("error")); }
    /// Starts, and waits for the end.  @returns "completed", "cancelled", "error", or what went wrong
    /// instead.
    QString write(int timeoutMs = 120'000)
    {
        said.clear();
        positions.clear();
        if (!writer.start())
            return "not started";
        if (!QTest::qWaitFor([this] { return ended(); }, timeoutMs))
            return "no end";
        QTest::qWait(100);
        return ended() && ends() == 1 ? said.last() : QString("%1 ends").arg(ends());
    }
    /// What is left in the folder of local copies, hidden files included.
    QStringList leftCopies() const
    {
        return QDir(folder.filePath("cache"))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    EmulatedRecorder recorder;
    QTemporaryDir folder;
    QStringList files;
    DiscWriter writer;
    bool cache = false;
    QStringList said;
    QList<std::tuple<qint32, qint32, qint32>> positions;
    std::function<void(qint32 track, qint32 done)> onProgress;
    std::function<void(const QString& text)>
        onSaid; ///< Also for "caching", and for "progress" once past the middle.
    qint32 error = 0;
    qint32 sense = 0;
    QString description;
    QString senseData;
};

} // namespace zib
