#include "engines/print/CupsPrinter.h"

#include "common/Twips.h"
#include "engines/print/CupsQueue.h"
#include "engines/print/makers.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

namespace zib {

namespace {

constexpr int kDotsPerInch = 1200;

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

} // namespace

std::unique_ptr<Printer> makePrinter()
{
    return std::make_unique<CupsPrinter>();
}

Outcome<> CupsPrinter::print(const QString& jobName, const Page& page)
{
    const Outcome<std::shared_ptr<CupsQueue>> queue = CupsQueue::openDefault();
    if (!queue)
        return queue.error();
    if (const Outcome<> ready = queue.value()->ready(); !ready)
        return ready;
    const QByteArray pdf = pdfOf(jobName, queue.value()->paper(), page);
    if (pdf.isEmpty())
        return Failure{Failure::Kind::WriteFailed, QStringLiteral("The page could not be painted.")};
    return queue.value()->send(jobName, pdf);
}

} // namespace zib
