#pragma once

#include <QByteArray>
#include <QString>

#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <vector>

namespace zib {

/// Sends commands to /dev/sr0 as any program does. Not opened when isOpen() is false; error() tells why.
class ScsiClient
{
public:
    using Cdb = std::vector<int>;

    explicit ScsiClient(int flags = O_RDWR | O_NONBLOCK) : m_fd(::open("/dev/sr0", flags)), m_error(errno) {}
    ~ScsiClient()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    ScsiClient(const ScsiClient&) = delete;
    ScsiClient& operator=(const ScsiClient&) = delete;

    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }
    [[nodiscard]] int error() const { return m_fd >= 0 ? 0 : m_error; }
    [[nodiscard]] int descriptor() const { return m_fd; }

    /// Sends a command that reads up to @p size bytes.
    /// @returns "good", "5/24/00", "errno19", "host3".
    QString read(const Cdb& cdb, QByteArray& reply, int size = 65536, unsigned timeoutMs = 10000)
    {
        reply = QByteArray(size, '\0');
        const QString answer = send(cdb, SG_DXFER_FROM_DEV, reply, timeoutMs);
        reply.truncate(size - m_residual);
        return answer;
    }

    /// Sends a command with @p data for the drive.
    QString write(const Cdb& cdb, QByteArray data = {}, unsigned timeoutMs = 10000)
    {
        return send(cdb, data.isEmpty() ? SG_DXFER_NONE : SG_DXFER_TO_DEV, data, timeoutMs);
    }

    QString ready() { return write({0x00, 0, 0, 0, 0, 0}); }

    /// A READ CD or WRITE for @p count frames from @p lba.
    static Cdb framesCdb(int operation, std::int32_t lba, int count)
    {
        const auto address = static_cast<std::uint32_t>(lba);
        Cdb cdb{operation,
                0,
                static_cast<int>(address >> 24U),
                static_cast<int>(address >> 16U & 0xFFU),
                static_cast<int>(address >> 8U & 0xFFU),
                static_cast<int>(address & 0xFFU)};
        const Cdb rest =
            operation == 0xBE ? Cdb{0, 0, count, 0xF8, 0, 0} : Cdb{0, count >> 8, count & 0xFF, 0};
        cdb.insert(cdb.end(), rest.begin(), rest.end());
        return cdb;
    }

    QString readFrames(std::int32_t lba, int count, QByteArray& frames)
    {
        return read(framesCdb(0xBE, lba, count), frames, count * 2352);
    }

    QString writeFrames(std::int32_t lba, const QByteArray& frames, int blockBytes = 2352)
    {
        return write(framesCdb(0x2A, lba, static_cast<int>(frames.size() / blockBytes)), frames);
    }

    /// Write parameters: write type 1 (track at once) or 2 (session at once) with further bits of the page's
    /// bytes 2 to 4.
    QString selectWriteParameters(int byte2, int byte3 = 0, int byte4 = 0)
    {
        QByteArray list(60, '\0');
        list[8] = 0x05;
        list[9] = 0x32;
        list[10] = static_cast<char>(byte2);
        list[11] = static_cast<char>(byte3);
        list[12] = static_cast<char>(byte4);
        list[23] = static_cast<char>(150);
        return write({0x55, 0x10, 0, 0, 0, 0, 0, 0, 60, 0}, list);
    }

    QString sendCueSheet(const QByteArray& sheet)
    {
        return write({0x5D, 0, 0, 0, 0, 0, 0, static_cast<int>(sheet.size() >> 8),
                      static_cast<int>(sheet.size() & 0xFF), 0},
                     sheet);
    }

private:
    QString send(const Cdb& cdb, int direction, QByteArray& data, unsigned timeoutMs)
    {
        std::vector<unsigned char> bytes(cdb.begin(), cdb.end());
        std::array<unsigned char, 32> sense{};
        sg_io_hdr_t header{};
        header.interface_id = 'S';
        header.cmdp = bytes.data();
        header.cmd_len = static_cast<unsigned char>(bytes.size());
        header.dxfer_direction = direction;
        header.dxferp = data.data();
        header.dxfer_len = direction == SG_DXFER_NONE ? 0 : static_cast<unsigned>(data.size());
        header.sbp = sense.data();
        header.mx_sb_len = sense.size();
        header.timeout = timeoutMs;
        m_residual = static_cast<int>(header.dxfer_len);
        if (::ioctl(m_fd, SG_IO, &header) != 0) {
            return QStringLiteral("errno%1").arg(errno);
        }
        m_residual = header.resid;
        if (header.host_status != 0) {
            return QStringLiteral("host%1").arg(header.host_status);
        }
        return header.status == 0 ? QStringLiteral("good")
                                  : QString::asprintf("%X/%02X/%02X", sense[2], sense[12], sense[13]);
    }

    int m_fd;
    int m_error;
    int m_residual = 0;
};

} // namespace zib
