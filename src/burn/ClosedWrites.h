#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

class DVDWriterPro;
class QWidget;

namespace zib {

class Messages;

/// Writes that outlive their window: the disc is finished, or its cancelled write is brought to an end, and
/// how it ended is told in a box. GUI thread only.
class ClosedWrites final : public QObject
{
    Q_OBJECT
public:
    /// @param owner gives the window that the boxes stand over; null when it is gone.
    ClosedWrites(Messages& messages, std::function<QWidget*()> owner);
    ~ClosedWrites() override;

    void keep(std::unique_ptr<DVDWriterPro> writer);
    bool isEmpty() const { return m_writes.empty(); }
    /// Lets the events go on until every write has told its end, at most @p patience.  @returns whether they
    /// have.
    bool await(std::chrono::milliseconds patience);
    /// The session ends: nothing is told any more, and await() returns after @p longest at the latest.
    /// @param worthIt is asked every few seconds; await() returns once it says no. May be missing.
    void hurry(std::chrono::milliseconds longest, std::function<bool()> worthIt = {});

private:
    struct Write
    {
        std::shared_ptr<DVDWriterPro> writer;
        QString remark{};
        std::shared_ptr<void> awake{};
    };

    Write take(const DVDWriterPro* writer);
    void completed(const DVDWriterPro* writer);
    void cancelled(const DVDWriterPro* writer);
    void failed(const DVDWriterPro* writer, const QString& text);
    void tell(const std::function<void(QWidget* owner)>& box);
    bool isTooLate();

    Messages& m_messages;
    std::function<QWidget*()> m_owner;
    std::vector<Write> m_writes;
    int m_open = 0; ///< Boxes that stand, or are going to.
    bool m_silent = false;
    QDeadlineTimer m_latest{QDeadlineTimer::Forever};
    QDeadlineTimer m_asking{QDeadlineTimer::Forever}; ///< Until m_worthIt is asked again.
    std::function<bool()> m_worthIt;
};

} // namespace zib
