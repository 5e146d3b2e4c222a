#pragma once

#include "engines/burn/mmc/DriveLine.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QStringList>

#include <memory>

namespace zib {

/// What a scripted drive says to one command.
struct DriveReply
{
    QByteArray data{};   ///< As much of it as was asked for is sent.
    int status = 0;      ///< 2 says that there is sense data (CHECK CONDITION).
    QByteArray sense{};  ///< As it comes from the drive.
    int host = 0;        ///< What the way to the drive says.
    int error = 0;       ///< Not 0: the command does not get through, and this is why.
    int unsentBytes = 0; ///< More than what is missing in data.

    /// A refusal, with sense data in fixed format (SPC-3, 4.5.3).
    static DriveReply refusal(const Sense& sense);
};

/// A drive without a drive: every command of a DriveLine of this program is answered from a script, in no
/// time, and noted. One at a time; one thread.
class ScriptedDrive
{
public:
    ScriptedDrive();
    ~ScriptedDrive();
    Q_DISABLE_COPY_MOVE(ScriptedDrive)

    /// What commands that begin with @p command are answered, one reply after the other; the last one goes
    /// on. The longest fitting beginning counts. A command without replies is an illegal request.
    void answer(const QByteArray& command, const QList<DriveReply>& replies);
    /// A way to this drive.
    DriveLine& line() { return *m_line; }
    /// What was asked and how long was waited since the last call.
    QStringList takeJournal();

    // What the system is asked for.
    int carry(void* header);
    void pause(qint64 ms);

private:
    DriveReply replyTo(const QByteArray& command);

    std::shared_ptr<DriveLine> m_line;
    QHash<QByteArray, QList<DriveReply>> m_replies;
    QStringList m_journal;
};

} // namespace zib
