#include "engines/burn/ScriptedDrive.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>

#include <scsi/sg.h>

namespace zib {

namespace {

ScriptedDrive* g_drive = nullptr;

} // namespace

DriveReply DriveReply::refusal(const Sense& sense)
{
    QByteArray bytes(18, '\0');
    bytes[0] = '\x70';
    bytes[2] = static_cast<char>(sense.key);
    bytes[12] = static_cast<char>(sense.asc);
    bytes[13] = static_cast<char>(sense.ascq);
    return {.status = 2, .sense = bytes};
}

ScriptedDrive::ScriptedDrive()
    : m_line(DriveLine::open(QStringLiteral("/dev/null"), DriveLine::Hold::Shared).value())
{
    g_drive = this;
}

ScriptedDrive::~ScriptedDrive()
{
    g_drive = nullptr;
}

void ScriptedDrive::answer(const QByteArray& command, const QList<DriveReply>& replies)
{
    m_replies[command] = replies;
}

QStringList ScriptedDrive::takeJournal()
{
    return std::exchange(m_journal, {});
}

DriveReply ScriptedDrive::replyTo(const QByteArray& command)
{
    for (qsizetype length = command.size(); length > 0; --length)
        if (const auto found = m_replies.find(command.first(length)); found != m_replies.end())
            return found->size() > 1 ? found->takeFirst() : found->value(0);
    return DriveReply::refusal({5, 0x20, 0});
}

int ScriptedDrive::carry(void* asked)
{
    auto& header = *static_cast<sg_io_hdr_t*>(asked);
    const QByteArray command(reinterpret_cast<const char*>(header.cmdp), header.cmd_len);
    const bool sends = header.dxfer_direction == SG_DXFER_TO_DEV;
    const bool reads = header.dxfer_direction == SG_DXFER_FROM_DEV;
    const auto bytes = static_cast<qsizetype>(header.dxfer_len);
    m_journal << QStringLiteral("%1%2 within %3 ms")
                     .arg(QString::fromLatin1(command.toHex()),
                          reads   ? QStringLiteral(" for %1").arg(bytes)
                          : sends ? QStringLiteral(" with ") +
                                        QString::fromLatin1(
                                            QByteArray(static_cast<char*>(header.dxferp), bytes).toHex())
                                  : QString())
                     .arg(header.timeout);
    const DriveReply reply = replyTo(command);
    if (reply.error != 0) {
        errno = reply.error;
        return -1;
    }
    header.status = static_cast<unsigned char>(reply.status);
    header.host_status = static_cast<unsigned short>(reply.host);
    std::memcpy(header.sbp, reply.sense.constData(),
                static_cast<std::size_t>(std::min<qsizetype>(reply.sense.size(), header.mx_sb_len)));
    const qsizetype sent = reads ? std::min(bytes, reply.data.size()) : 0;
    if (reads)
        std::memcpy(header.dxferp, reply.data.constData(), static_cast<std::size_t>(sent));
    header.resid = reads ? static_cast<int>(bytes - sent) + reply.unsentBytes : 0;
    return 0;
}

void ScriptedDrive::pause(qint64 ms)
{
    m_journal << QStringLiteral("pause of %1 ms").arg(ms);
}

} // namespace zib

// These stand before the C library's own: no drive is asked, and none waited for.
extern "C" int ioctl(int, unsigned long request, ...) noexcept
{
    if (request != SG_IO || zib::g_drive == nullptr) {
        errno = ENOTTY;
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, request);
    void* header = va_arg(arguments, void*);
    va_end(arguments);
    return zib::g_drive->carry(header);
}

namespace {

int noted(const timespec* time)
{
    if (zib::g_drive != nullptr)
        zib::g_drive->pause(time->tv_sec * 1000 + time->tv_nsec / 1'000'000);
    return 0;
}

} // namespace

extern "C" int nanosleep(const timespec* time, timespec*)
{
    return noted(time);
}

extern "C" int clock_nanosleep(clockid_t, int, const timespec* time, timespec*)
{
    return noted(time);
}
