#include "fakes/DiskPlayer.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace zib {

DiskPlayer::DiskPlayer(std::unique_ptr<AudioPlayer> player, int delayMs) : m_player(std::move(player))
{
    qputenv("SDL_AUDIODRIVER", "disk");
    qputenv("SDL_DISKAUDIODELAY", QByteArray::number(delayMs));
    connect(m_player.get(), &AudioPlayer::BufferDone, this, &AudioPlayer::BufferDone);
    connect(m_player.get(), &AudioPlayer::PositionChanged, this, &AudioPlayer::PositionChanged);
    connect(m_player.get(), &AudioPlayer::PlaybackFinished, this, &AudioPlayer::PlaybackFinished);
}

DiskPlayer::~DiskPlayer() = default;

int DiskPlayer::open()
{
    qputenv("SDL_DISKAUDIOFILE", QFile::encodeName(fileOf(m_openings++)));
    return m_player->open();
}

QList<qint16> DiskPlayer::heard(int opening) const
{
    QFile file(fileOf(opening));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<qint16> samples(file.size() / qsizetype{sizeof(qint16)});
    file.read(reinterpret_cast<char*>(samples.data()), samples.size() * qsizetype{sizeof(qint16)});
    return trimmed(samples);
}

QList<qint16> DiskPlayer::trimmed(const QList<qint16>& samples)
{
    const auto sounds = [](qint16 sample) { return sample != 0; };
    const auto first = std::find_if(samples.begin(), samples.end(), sounds);
    const auto last = std::find_if(samples.rbegin(), samples.rend(), sounds).base();
    return first < last ? QList<qint16>(first, last) : QList<qint16>();
}

QString DiskPlayer::fileOf(int opening) const
{
    return m_folder.filePath(QString("%1.raw").arg(opening));
}

} // namespace zib
