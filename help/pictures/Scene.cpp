#include "Scene.h"

#include <QDir>
#include <QFile>

namespace scene {

namespace {

struct Song
{
    const char* file;
    const char* title;
    const char* artist;
    int seconds;
    int kilobytes;
};

constexpr Song kAlbum[] = {
    {"01 Morning Light.mp3", "Morning Light", "Zoë Ångström", 227, 5321},
    {"02 Night Train.wav", "Night Train", "The Sleepers", 254, 43756},
    {"03 Short Wave.mp3", "Short Wave", "Radio Nord", 188, 4413},
    {"04 Harbour in the Rain.mp3", "Harbour in the Rain", "Zoë Ångström", 305, 7150},
    {"05 Clockwork.wav", "Clockwork", "Tick & Tock", 201, 34625},
    {"06 Paper Boats.mp3", "Paper Boats", "Lena Sørensen", 243, 5698},
    {"07 Seven Bridges.mp3", "Seven Bridges", "The Sleepers", 278, 6520},
    {"08 Attic Dust.mp3", "", "", 164, 3846},
    {"09 Northern Line.wav", "Northern Line", "Radio Nord", 332, 57192},
    {"10 Lanterns.mp3", "Lanterns", "Lena Sørensen", 219, 5134},
    {"11 Late Bus Home.mp3", "Late Bus Home", "Tick & Tock", 296, 6938},
    {"12 Good Night, Town.mp3", "Good Night, Town", "Zoë Ångström", 311, 7291},
    {"13 Hidden Garden.mp3", "Hidden Garden", "Mireille Dubois", 402, 9423},
    {"14 Tramlines.mp3", "Tramlines", "Tick & Tock", 273, 6402},
    {"15 Encore.wav", "Encore", "The Sleepers", 356, 61329},
};

} // namespace

QStringList makeAlbum(const QString& folder, zib::FakeAudioShelf& shelf)
{
    QDir().mkpath(folder);
    QStringList paths;
    for (const Song& song : kAlbum) {
        const QString path = folder + '/' + QString::fromUtf8(song.file);
        QFile file(path);
        if (file.open(QIODevice::WriteOnly)) {
            file.resize(song.kilobytes * 1024LL + 300);
        }
        zib::FakeSound sound = zib::FakeAudioShelf::ramp(44100 * 12);
        sound.isPcm = path.endsWith(".wav");
        sound.title = QString::fromUtf8(song.title);
        sound.artist = QString::fromUtf8(song.artist);
        sound.durationMs = song.seconds * 1000 + (song.seconds * 37) % 1000;
        shelf.sounds.insert(path, sound);
        paths << path;
    }
    return paths;
}

QString Recorder::driveText1(int drive) const
{
    return drive == 0 ? QStringLiteral("/dev/sr0") : QStringLiteral("Images");
}

QString Recorder::driveText2(int drive) const
{
    return drive == 0 ? QStringLiteral("HL-DT-ST") : QStringLiteral("Disc image");
}

QString Recorder::driveText3(int drive) const
{
    return drive == 0 ? QStringLiteral("DVDRAM GH24NSD5") : QStringLiteral("(CUE and BIN file)");
}

QList<zib::WriteSpeed> Recorder::writeSpeeds()
{
    return {{8, 1411}, {16, 2822}, {24, 4234}, {48, 8467}};
}

bool Recorder::start()
{
    emit PreparingToWrite();
    emit WritingProgress(5, 620, 1000);
    return true;
}

QString Ripper::timeText(qint32 length) const
{
    return QStringLiteral("%1:%2:%3")
        .arg(length / 75 / 60, 2, 10, QLatin1Char('0'))
        .arg(length / 75 % 60, 2, 10, QLatin1Char('0'))
        .arg(length % 75, 2, 10, QLatin1Char('0'));
}

} // namespace scene
