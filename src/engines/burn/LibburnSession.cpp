#include "engines/burn/LibburnSession.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <libburn/libburn.h>
#include <unistd.h>

using namespace burn;

namespace zib {

namespace {

std::mutex g_libburn;
bool g_started = false;

QStringList& abandoned()
{
    static QStringList paths;
    return paths;
}

/// libburn takes its texts as writable arrays and never writes into them.
char* writable(const char* literal)
{
    return const_cast<char*>(literal);
}

bool start()
{
    if (g_started)
        return true;
    if (burn_initialize() != 1)
        return false;
    burn_preset_device_open(1, 0, 0);
    burn_msgs_set_severities(writable("SORRY"), writable("NEVER"), writable(""));
    g_started = true;
    return true;
}

/// Lets the library close all it holds. Not with an abandoned drive, which is still in its hands.
void restart()
{
    if (!abandoned().isEmpty())
        return;
    burn_finish();
    g_started = false;
    start();
}

} // namespace

LibburnSession::LibburnSession() : m_lock(g_libburn)
{
    start();
}

LibburnSession::~LibburnSession() = default;

bool LibburnSession::isReady() const
{
    return g_started;
}

void LibburnMessages::collect()
{
    int code = 0;
    int error = 0;
    char severity[81];
    char message[BURN_MSGS_MESSAGE_LEN];
    while (burn_msgs_obtain(writable("SORRY"), &code, message, &error, severity) == 1)
        take(QString::fromLocal8Bit(message));
}

void LibburnMessages::take(const QString& message)
{
    if (message.contains(QLatin1String("Lost connection")))
        m_connectionLost = true;
    // All zero: the command failed on its way, and the drive said nothing.
    const std::optional<Sense> sense = Sense::inText(message);
    if (sense && *sense != Sense() && !m_sense)
        m_sense = sense;
    if (m_text.isEmpty())
        m_text = message;
}

void LibburnMessages::clear()
{
    collect();
    *this = LibburnMessages();
}

Outcome<> GrabbedDrive::check(const QString& path)
{
    if (isAbandoned(path))
        return Failure{Failure::Kind::Busy, path};
    const int device = ::open(QFile::encodeName(path).constData(), O_RDWR | O_EXCL | O_NONBLOCK | O_CLOEXEC);
    if (device >= 0) {
        ::close(device);
        return {};
    }
    switch (errno) {
    case EBUSY:
        return Failure{Failure::Kind::Busy, path};
    case EACCES:
    case EPERM:
    case EROFS:
        return Failure{Failure::Kind::NoPermission, path};
    default:
        return Failure{Failure::Kind::NotFound, path};
    }
}

GrabbedDrive::GrabbedDrive(const QString& path) : m_path(path)
{
    // A look of our own first: the library spends six seconds on a drive that another program holds.
    if (const Outcome<> free = check(path); !free) {
        m_failure = free.error();
        return;
    }
    // A look that failed may leave the drive open within the library, and a drive that came back after it had
    // gone is first only forgotten: then a new start of the library and a second look.
    QByteArray address = QFile::encodeName(path);
    for (const bool lastLook : {false, true}) {
        if (burn_drive_scan_and_grab(&m_info, address.data(), 0) == 1)
            return;
        m_info = nullptr;
        restart();
        if (lastLook)
            m_failure = Failure{Failure::Kind::DeviceGone, path};
    }
}

GrabbedDrive::~GrabbedDrive()
{
    release(0);
}

void GrabbedDrive::releaseEjecting()
{
    release(1);
}

void GrabbedDrive::release(int eject)
{
    if (!m_info)
        return;
    burn_drive_release(m_info->drive, eject);
    burn_drive_info_free(m_info);
    m_info = nullptr;
}

burn_drive* GrabbedDrive::drive() const
{
    return m_info->drive;
}

void GrabbedDrive::abandon()
{
    abandoned() << m_path;
    m_info = nullptr;
}

bool GrabbedDrive::isAbandoned(const QString& path)
{
    return abandoned().contains(path);
}

} // namespace zib
