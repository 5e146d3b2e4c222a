#pragma once

#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>

namespace zib {

/// A place with sound files, real or imagined, and the components that know them.
class AudioWorld
{
public:
    virtual ~AudioWorld() = default;

    virtual std::unique_ptr<AudioFile> makeFile() = 0;
    virtual std::unique_ptr<AudioInformation> makeInformation() = 0;
    /// Puts a 16-bit WAV file there, cut off by what it is to lose.
    virtual void add(const QString& path, const FakeSound& sound) = 0;
    /// The samples of a finished target, or nothing when there is none.
    virtual std::optional<QList<qint16>> target(const QString& path) = 0;

    QString path(const QString& name) const { return m_folder.filePath(name); }
    /// A target that cannot be created.
    virtual QString refusedTarget() = 0;

    /// Adds the column and the rows by which every test runs in both worlds.
    static void rows()
    {
        QTest::addColumn<bool>("isFake");
        QTest::newRow("fake") << true;
        QTest::newRow("engine") << false;
    }
    static std::unique_ptr<AudioWorld> ofRow();

private:
    QTemporaryDir m_folder;
};

/// Stand-ins over a shelf.
class FakeAudioWorld final : public AudioWorld
{
public:
    std::unique_ptr<AudioFile> makeFile() override { return std::make_unique<FakeAudioFile>(shelf); }
    std::unique_ptr<AudioInformation> makeInformation() override
    {
        return std::make_unique<FakeAudioInformation>(shelf);
    }
    void add(const QString& path, const FakeSound& sound) override { shelf.sounds.insert(path, sound); }
    std::optional<QList<qint16>> target(const QString& path) override
    {
        if (!shelf.written.contains(path))
            return std::nullopt;
        return shelf.written.value(path).samples;
    }
    QString refusedTarget() override
    {
        shelf.refusedTargets << path("refused.wav");
        return path("refused.wav");
    }

    FakeAudioShelf shelf;
};

/// The engine over real files.
class RealAudioWorld final : public AudioWorld
{
public:
    std::unique_ptr<AudioFile> makeFile() override { return makeAudioFile(); }
    std::unique_ptr<AudioInformation> makeInformation() override { return makeAudioInformation(); }
    void add(const QString& path, const FakeSound& sound) override
    {
        QByteArray info = "INFO";
        if (!sound.title.isEmpty())
            info += kit::chunk("INAM", sound.title.toUtf8());
        if (!sound.artist.isEmpty())
            info += kit::chunk("IART", sound.artist.toUtf8());
        const QByteArray lost(sound.loss.frames * sound.channels * 2, '\0');
        const QByteArray whole =
            kit::riff(kit::chunk("fmt ", kit::format(1, sound.channels, sound.rateHz, 16)) +
                      kit::chunk("LIST", info) + kit::chunk("data", kit::bytes16(sound.samples) + lost));
        kit::write(path, whole.chopped(lost.size()));
    }
    std::optional<QList<qint16>> target(const QString& path) override
    {
        if (!QFileInfo::exists(path))
            return std::nullopt;
        return kit::wavSamples(path);
    }
    QString refusedTarget() override { return path("no such folder/refused.wav"); }
};

inline std::unique_ptr<AudioWorld> AudioWorld::ofRow()
{
    QFETCH(bool, isFake);
    if (isFake)
        return std::make_unique<FakeAudioWorld>();
    return std::make_unique<RealAudioWorld>();
}

} // namespace zib
