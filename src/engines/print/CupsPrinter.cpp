#include "engines/print/CupsPrinter.h"

#include "common/Twips.h"
#include "engines/print/CupsQueue.h"
#include "engines/print/makers.h"

#include <QBuffer>
#include <QEventLoop>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <future>
#include <memory>

namespace zib {

namespace {

constexpr int kDotsPerInch = 1200;

/// Runs a task that may wait for the printing system on a thread of its own. Windows paint on meanwhile; what
/// the user types or clicks waits.
template <typename Task>
auto aside(Task task)
{
    QEventLoop loop;
    auto result = std::async(std::launch::async, [&task, &loop] {
        auto outcome = task();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        return outcome;
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    return result.get();
}

/// The default queue and its paper, once it is found ready.
struct Found
{
    std::shared_ptr<CupsQueue> queue;
    Paper paper;
};

Outcome<Found> findQueue()
{
    const Outcome<std::shared_ptr<CupsQueue>> queue = CupsQueue::openDefault();
    if (!queue)
        return queue.error();
    if (const Outcome<> ready = queue.value()->ready(); !ready)
        return ready.error();
    return Found{*queue, queue.value()->paper()};
}

/// The page as a PDF document; empty when it cannot be painted.
QByteArray pdfOf(const QString& jobName, const Paper& paper, const Printer::Page& page)
{
    QBuffer document;
    document.open(QIODevice::WriteOnly);
    QPdfWriter writer(&document);
    writer.setTitle(jobName);
    writer.setCreator(jobName);
    writer.setResolution(kDotsPerInch);
    const QPageSize size(paper.size, QPageSize::Millimeter, QString(), QPageSize::ExactMatch);
    writer.setPageLayout(QPageLayout(size, QPageLayout::Portrait, paper.margins, QPageLayout::Millimeter));
    QPainter painter;
    if (!painter.begin(&writer))
        return {};
    painter.scale(double(kDotsPerInch) / kTwipsPerInch, double(kDotsPerInch) / kTwipsPerInch);
    page(painter);
    return painter.end() ? document.data() : QByteArray();
}

constexpr double kTwipsPerMm = kTwipsPerInch / 25.4;

QSizeF printable(const Paper& paper)
{
    const QMarginsF& margins = paper.margins;
    return {paper.size.width() - margins.left() - margins.right(),
            paper.size.height() - margins.top() - margins.bottom()};
}

/// Finds the queue, paints and sends, all on the thread that it is called on.
Outcome<> printNow(const QString& jobName, const Printer::Page& page)
{
    const Outcome<Found> found = findQueue();
    if (!found)
        return found.error();
    const QByteArray pdf = pdfOf(jobName, found->paper, page);
    if (pdf.isEmpty())
        return Failure{Failure::Kind::WriteFailed, QStringLiteral("The page could not be painted.")};
    return found->queue->send(jobName, pdf);
}

} // namespace

std::unique_ptr<Printer> makePrinter()
{
    return std::make_unique<CupsPrinter>();
}

Outcome<Printer::Target> CupsPrinter::target()
{
    const Outcome<Found> found = aside(findQueue);
    if (!found)
        return found.error();
    const Paper& paper = found->paper;
    return Target{found->queue->name(),
                  QStringLiteral("%1x%2").arg(qRound(paper.size.width())).arg(qRound(paper.size.height())),
                  paper.size * kTwipsPerMm, printable(paper) * kTwipsPerMm,
                  QPointF(paper.margins.left(), paper.margins.top()) * kTwipsPerMm};
}

Outcome<> CupsPrinter::print(const QString& jobName, const Page& page)
{
    return aside([&] { return printNow(jobName, page); });
}

} // namespace zib
