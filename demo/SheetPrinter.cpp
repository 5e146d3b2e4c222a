#include "SheetPrinter.h"

#include <QImage>
#include <QPainter>

namespace demo {

namespace {

constexpr int kDotsPerInch = 150;
constexpr double kDotsPerTwip = kDotsPerInch / 1440.0;
constexpr double kDotsPerMetre = kDotsPerInch / 0.0254;
const QSize kA4(1240, 1754); ///< At that many dots.
constexpr int kMargin = kDotsPerInch / 4;

} // namespace

zib::Outcome<Printer::Target> SheetPrinter::target()
{
    const QPointF corner(kMargin / kDotsPerTwip, kMargin / kDotsPerTwip);
    const QSizeF paper = QSizeF(kA4) / kDotsPerTwip;
    return Target{QStringLiteral("sheet"), QStringLiteral("210x297"), paper,
                  paper - QSizeF(2 * corner.x(), 2 * corner.y()), corner};
}

zib::Outcome<> SheetPrinter::print(const QString&, const Page& page)
{
    QImage sheet(kA4, QImage::Format_RGB32);
    sheet.setDotsPerMeterX(qRound(kDotsPerMetre));
    sheet.setDotsPerMeterY(qRound(kDotsPerMetre));
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.translate(kMargin, kMargin);
    painter.scale(kDotsPerTwip, kDotsPerTwip);
    page(painter);
    painter.end();
    if (sheet.save(m_sheet))
        return {};
    return zib::Failure{zib::Failure::Kind::WriteFailed,
                        QStringLiteral("The sheet could not be saved as %1.").arg(m_sheet)};
}

} // namespace demo
