#pragma once

#include "common/Outcome.h"

#include <QByteArray>
#include <QMarginsF>
#include <QSizeF>
#include <QString>

#include <cups/cups.h>

#include <memory>

namespace zib {

/// The paper a queue prints on, portrait, in millimetres.
struct Paper
{
    QSizeF size;
    QMarginsF margins; ///< Where the printer cannot print.
};

/// The user's default print queue. Every call may wait for the printing system, at most some seconds;
/// failures carry its own words. One call at a time, from any thread.
class CupsQueue
{
public:
    /// @returns NotFound when there is no printing system or no default printer.
    static Outcome<std::shared_ptr<CupsQueue>> openDefault();
    ~CupsQueue();
    Q_DISABLE_COPY_MOVE(CupsQueue)

    /// @returns Unsupported when the queue is stopped: it would keep a job without printing it.
    Outcome<> ready() const;
    /// The queue's name, as the user knows it.
    QString name() const;
    /// The paper that the user chose for this printer, or the one that the queue takes by itself.
    Paper paper() const;
    /// Hands over one document.
    /// @returns the refusal of the printing system; then it keeps nothing of the job.
    Outcome<> send(const QString& jobName, const QByteArray& pdf);

private:
    CupsQueue(http_t* http, cups_dest_t* dest, cups_dinfo_t* info);

    QString option(const char* name) const;
    QString stateMessage() const;
    Failure refusal() const;
    bool sendDocument(int job, const QString& jobName, const QByteArray& pdf);

    http_t* m_http;
    cups_dest_t* m_dest;
    cups_dinfo_t* m_info;
};

} // namespace zib
