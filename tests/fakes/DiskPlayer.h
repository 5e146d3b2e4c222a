#pragma once

#include "components/AudioPlayer.h"

#include <QList>
#include <QTemporaryDir>

#include <memory>

namespace zib {

/// The real player with SDL's disk output as its device: what would be heard lands in a file, one for each
/// opening, as fast as it is consumed.
class DiskPlayer final : public AudioPlayer
{
    Q_OBJECT
public:
    /// @param delayMs how long the device takes for a portion of about 50 ms.
    explicit DiskPlayer(std::unique_ptr<AudioPlayer> player, int delayMs = 0);
    ~DiskPlayer() override;

    void setFormat(int rateHz, int channels) override { m_player->setFormat(rateHz, channels); }
    qint32 bufferSize(qint32 milliseconds) const override { return m_player->bufferSize(milliseconds); }
    int open() override;
    int status() const override { return m_player->status(); }
    void writeBlock(const AudioBlock& block) override { m_player->writeBlock(block); }
    void setExpecting(bool on) override { m_player->setExpecting(on); }
    qint64 position() const override { return m_player->position(); }
    void reset() override { m_player->reset(); }
    void close() override { m_player->close(); }

    int openings() const { return m_openings; }
    /// What was heard in one opening, counted from 0, once it is closed; without the silence before and
    /// after.
    QList<qint16> heard(int opening) const;

    /// @p samples without the zeros at both ends.
    static QList<qint16> trimmed(const QList<qint16>& samples);

private:
    QString fileOf(int opening) const;

    std::unique_ptr<AudioPlayer> m_player;
    QTemporaryDir m_folder;
    int m_openings = 0;
};

} // namespace zib
