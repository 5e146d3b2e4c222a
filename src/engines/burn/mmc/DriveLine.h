#pragma once

#include "common/Outcome.h"
#include "engines/burn/mmc/SenseTable.h"

#include <QByteArray>
#include <QString>

#include <initializer_list>
#include <memory>

namespace zib {

/// What a drive, or the way to it, answers to one command.
struct DriveAnswer
{
    enum class Kind
    {
        Good,
        Refused, ///< The drive says why in its sense data.
        Broken,  ///< The command was lost on its way, or timed out; nothing is known of it.
        Gone     ///< There is no drive any more.
    };

    Kind kind = Kind::Gone;
    Sense sense{};     ///< With Refused.
    QByteArray data{}; ///< With Good: what was read, cut where the drive sent less.

    bool good() const { return kind == Kind::Good; }
    /// Whether the drive may well take the same command a moment later: it becomes ready, or has something to
    /// announce first.
    bool passing() const;
    /// Whether the drive says that there is no disc in it.
    bool hasNoDisc() const;
    /// The byte at @p at, 0 beyond the end.
    int byte(qsizetype at) const { return at < data.size() ? static_cast<uchar>(data.at(at)) : 0; }
    /// Big-endian numbers, 0 beyond the end.
    int word(qsizetype at) const { return byte(at) << 8 | byte(at + 1); }
    qint64 quad(qsizetype at) const { return qint64{word(at)} << 16 | word(at + 2); }
};

/// A way of our own to a drive, beside the library's: commands go to it one by one, and each is bounded in
/// time by the system. One thread at a time.
class DriveLine
{
public:
    enum class Hold
    {
        Exclusive, ///< Nobody else has the drive.
        Shared     ///< Beside the library, which has it for us.
    };
    static constexpr int kShortMs = 5'000;
    static constexpr int kLongMs = 30'000;

    /// @returns DeviceGone, NoPermission, or Busy when another program holds the drive. Takes no time.
    static Outcome<std::shared_ptr<DriveLine>> open(const QString& path, Hold hold);
    ~DriveLine();
    Q_DISABLE_COPY_MOVE(DriveLine)

    /// A command that brings at most @p bytes.
    DriveAnswer read(std::initializer_list<int> command, int bytes, int timeoutMs = kShortMs);
    /// A command that takes @p data, which may be empty.
    DriveAnswer send(std::initializer_list<int> command, const QByteArray& data = {},
                     int timeoutMs = kShortMs);

    /// Whether an open descriptor of this process belongs to such a way. Any thread.
    static bool isOurs(int descriptor);

    const QString& path() const { return m_path; }
    /// The open device, of this object.
    int descriptor() const { return m_device; }

private:
    DriveLine(QString path, int device);

    QString m_path;
    int m_device;
};

/// Lets the disc be taken out, past all that may be in the way: a few times, until the drive has agreed or is
/// gone.  @returns whether it agreed.
bool unlockDoor(DriveLine& line);

} // namespace zib
