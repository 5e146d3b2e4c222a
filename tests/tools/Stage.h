#pragma once

#include "common/Errands.h"
#include "fakes/FakeAudioFile.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeAudioPlayer.h"
#include "fakes/FakeSeams.h"

#include <QAbstractButton>
#include <QTest>

namespace zib {

/// Everything outside a tool window, faked: a shelf of sounds, and the player of the window made last.
struct Stage
{
    /// Answers of the fakes are waited for, so that a call's effect is there when it returns.
    Stage()
    {
        Errands::setPatience(std::chrono::minutes(1));
        desk.components.makeFile = [this] { return std::make_unique<FakeAudioFile>(shelf); };
        desk.components.makeInformation = [this] { return std::make_unique<FakeAudioInformation>(shelf); };
        desk.components.makePlayer = [this] {
            auto made = std::make_unique<FakeAudioPlayer>();
            player = made.get();
            return made;
        };
    }

    /// Puts a sound of @p frames frames on the shelf.
    void addSound(const QString& path, qint64 frames, int rateHz = 1000, int channels = 1)
    {
        shelf.sounds.insert(path, FakeAudioShelf::ramp(frames, rateHz, channels));
    }

    static void click(QWidget& window, const char* name)
    {
        auto* button = window.findChild<QAbstractButton*>(name);
        QVERIFY2(button, name);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    FakeDesk desk;
    FakeAudioShelf shelf;
    FakeAudioPlayer* player = nullptr;
};

} // namespace zib
