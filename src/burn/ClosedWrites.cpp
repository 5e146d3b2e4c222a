#include "burn/ClosedWrites.h"

#include "burn/WriteTexts.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "components/DVDWriterPro.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace zib {

namespace {
constexpr std::chrono::seconds kAskingStep{4};
} // namespace

ClosedWrites::ClosedWrites(Messages& messages, std::function<QWidget*()> owner)
    : m_messages(messages), m_owner(std::move(owner))
{
}

ClosedWrites::~ClosedWrites() = default;

void ClosedWrites::keep(std::unique_ptr<DVDWriterPro> writer)
{
    const DVDWriterPro* kept = writer.get();
    connect(kept, &DVDWriterPro::Remark, this, [this, kept](const QString& text) {
        for (Write& write : m_writes)
            if (write.writer.get() == kept)
                write.remark = text;
    });
    connect(kept, &DVDWriterPro::WriteCompleted, this, [this, kept] { completed(kept); });
    connect(kept, &DVDWriterPro::WriteCancelled, this, [this, kept] { cancelled(kept); });
    connect(kept, &DVDWriterPro::WriteError, this,
            [this, kept](qint32 error, qint32 sense, const QString& description, const QString& senseData) {
                failed(kept, WriteTexts::error(error, sense, description, senseData));
            });
    m_writes.push_back({.writer = std::move(writer), .awake = stayAwake(WriteTexts::kAwake)});
}

bool ClosedWrites::await(std::chrono::milliseconds patience)
{
    constexpr int kStepMs = 50;
    const QDeadlineTimer deadline(patience);
    while ((!isEmpty() || (m_open > 0 && !m_silent)) && !deadline.hasExpired() && !isTooLate())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, kStepMs);
    return isEmpty();
}

void ClosedWrites::hurry(std::chrono::milliseconds longest, std::function<bool()> worthIt)
{
    m_silent = true;
    m_latest = std::min(m_latest, QDeadlineTimer(longest));
    m_worthIt = std::move(worthIt);
    if (m_worthIt)
        m_asking = QDeadlineTimer(kAskingStep);
}

bool ClosedWrites::isTooLate()
{
    if (m_latest.hasExpired() || !m_asking.hasExpired())
        return m_latest.hasExpired();
    m_asking = QDeadlineTimer(kAskingStep);
    return !m_worthIt();
}

/// The writer is still within its event, so it goes a little later.
ClosedWrites::Write ClosedWrites::take(const DVDWriterPro* writer)
{
    const auto ours = [writer](const Write& write) { return write.writer.get() == writer; };
    const auto place = std::find_if(m_writes.begin(), m_writes.end(), ours);
    Write taken = std::move(*place);
    m_writes.erase(place);
    QTimer::singleShot(0, this, [later = taken.writer] {});
    return taken;
}

/// There is no window any more that shows the remark: where an image lies, or that a disc was not compared.
void ClosedWrites::completed(const DVDWriterPro* writer)
{
    const Write write = take(writer);
    if (!write.writer->testWrite())
        write.writer->finish(false);
    tell([this, remark = write.remark](QWidget* owner) {
        m_messages.information(owner, WriteTexts::kCompleted, remark);
    });
}

/// A cancelled write that left nothing behind is what the user asked for.
void ClosedWrites::cancelled(const DVDWriterPro* writer)
{
    const QString remark = take(writer).remark;
    if (!remark.isEmpty())
        tell([this, remark](QWidget* owner) {
            m_messages.information(owner, WriteTexts::kCancelled + u'\n' + remark);
        });
}

void ClosedWrites::failed(const DVDWriterPro* writer, const QString& text)
{
    take(writer);
    tell([this, text](QWidget* owner) { m_messages.critical(owner, text); });
}

void ClosedWrites::tell(const std::function<void(QWidget*)>& box)
{
    if (m_silent)
        return;
    ++m_open;
    QTimer::singleShot(0, this, [this, box] {
        box(m_owner());
        --m_open;
    });
}

} // namespace zib
