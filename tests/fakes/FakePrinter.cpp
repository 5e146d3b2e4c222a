#include "fakes/FakePrinter.h"

#include <QPainter>

namespace zib {

Outcome<Printer::Target> FakePrinter::target()
{
    constexpr double kMargin = 360; // A quarter of an inch.
    if (!m_tray.answer)
        return m_tray.answer.error();
    return Target{"paper", "210x297", m_tray.printable + QSizeF(2 * kMargin, 2 * kMargin), m_tray.printable,
                  QPointF(kMargin, kMargin)};
}

Outcome<> FakePrinter::print(const QString& jobName, const Page& page)
{
    if (!m_tray.answer)
        return m_tray.answer;
    QImage paper(794, 1123, QImage::Format_RGB32);
    paper.fill(Qt::white);
    paper.setDotsPerMeterX(3780);
    paper.setDotsPerMeterY(3780);
    QPainter painter(&paper);
    painter.scale(96 / 1440.0, 96 / 1440.0);
    page(painter);
    painter.end();
    m_tray.jobs << Job{jobName, paper};
    return {};
}

} // namespace zib
