#include "engines/burn/drive/LibburnSession.h"

#include <QRegularExpression>

#include <chrono>
#include <utility>

#include <libburn/libburn.h>

using namespace burn;

namespace zib {

namespace {

std::timed_mutex g_libburn;
bool g_started = false;

/// libburn takes its texts as writable arrays and never writes into them.
char* writable(const char* literal)
{
    return const_cast<char*>(literal);
}

bool isFailure(char* severity)
{
    int least = 0;
    int number = 0;
    return burn_text_to_sev(writable("SORRY"), &least, 0) == 1 &&
           burn_text_to_sev(severity, &number, 0) == 1 && number >= least;
}

/// Calls on a library that could not start find no drive.
void start()
{
    if (g_started || burn_initialize() != 1)
        return;
    burn_preset_device_open(1, 0, 0);
    burn_msgs_set_severities(writable("DEBUG"), writable("NEVER"), writable(""));
    g_started = true;
}

} // namespace

LibburnSession::LibburnSession() : m_lock(g_libburn)
{
    start();
}

LibburnSession::LibburnSession(const std::function<bool()>& goOn) : m_lock(g_libburn, std::defer_lock)
{
    constexpr std::chrono::milliseconds kStep{100};
    while (!m_lock.try_lock_for(kStep))
        if (!goOn())
            return;
    start();
}

LibburnSession::~LibburnSession() = default;

void LibburnSession::restart()
{
    burn_finish();
    g_started = false;
    start();
}

void LibburnMessages::collect()
{
    int code = 0;
    int error = 0;
    char severity[81];
    char message[BURN_MSGS_MESSAGE_LEN];
    while (burn_msgs_obtain(writable("DEBUG"), &code, message, &error, severity) == 1) {
        const QString text = QString::fromLocal8Bit(message);
        if (isFailure(severity))
            take(text);
        else
            takeNote(text);
    }
}

/// A drive that does not tell where a track is to begin is no failure for the library, which goes on with an
/// address of its own.
void LibburnMessages::takeNote(const QString& message)
{
    static const QRegularExpression begin(
        QStringLiteral("TAO pre-track (\\d+) : get_nwa\\(-?\\d+\\)=(-?\\d+)"));
    if (m_sense || m_step != Step::Other)
        return;
    if (message.contains(QLatin1String("on command 52h")))
        m_placeRefusal = Sense::inText(message);
    const QRegularExpressionMatch match = begin.match(message);
    if (!match.hasMatch())
        return;
    m_track = match.captured(1).toInt();
    const std::optional<Sense> refusal = std::exchange(m_placeRefusal, {});
    if (match.captured(2).toInt() > 0)
        return;
    m_step = Step::Place;
    m_sense = refusal;
}

void LibburnMessages::take(const QString& message)
{
    if (message.contains(QLatin1String("Lost connection")))
        m_connectionLost = true;
    if (m_step == Step::Other)
        takeStep(message);
    if (message.contains(QLatin1String("host_status=")))
        m_transportFailed = true;
    if (m_reason.isEmpty() && !message.contains(QLatin1String("Burn run failed")))
        m_reason = message;
    // All zero: the command failed on its way, and the drive said nothing.
    const std::optional<Sense> sense = Sense::inText(message);
    if (sense && *sense != Sense() && !m_sense)
        m_sense = sense;
}

/// The library names in its messages what failed.
void LibburnMessages::takeStep(const QString& message)
{
    static const QRegularExpression write(QStringLiteral("SCSI error on write\\((-?\\d+),"));
    const QRegularExpressionMatch match = write.match(message);
    if (match.hasMatch()) {
        m_step = Step::Write;
        m_address = match.captured(1).toInt();
    } else if (message.contains(QLatin1String("SEND CUE SHEET"))) {
        m_step = Step::Layout;
    } else if (message.contains(QLatin1String("synchronize drive cache"))) {
        m_step = Step::Flush;
    } else if (message.contains(QLatin1String("CLOSE TRACK")) ||
               message.contains(QLatin1String("close session"))) {
        m_step = Step::Close;
    } else if (message.contains(QLatin1String("WRITE(10)"))) {
        m_step = Step::Write;
    }
}

void LibburnMessages::clear()
{
    collect();
    *this = LibburnMessages();
}

} // namespace zib
