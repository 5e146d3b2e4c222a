#include "label/LabelPrint.h"

#include "common/Messages.h"
#include "common/Texts.h"
#include "common/WaitPointer.h"
#include "components/Components.h"

#include <QLocale>
#include <QPainter>

#include <memory>

namespace zib {

namespace {

constexpr double kTraceTwips = 15; ///< Rounded papers are no smaller for it.

QString inMm(QSizeF twips)
{
    const QLocale locale;
    return QStringLiteral("%1 x %2 mm")
        .arg(locale.toString(mmFromTwips(twips.width()), 'f', 1),
             locale.toString(mmFromTwips(twips.height()), 'f', 1));
}

/// Tells what the paper cannot take. @returns whether to print all the same.
bool mayPrint(const Services& services, QWidget* window, QSizeF size, const Printer::Target& target)
{
    if (size.width() <= target.printable.width() + kTraceTwips &&
        size.height() <= target.printable.height() + kTraceTwips)
        return true;
    const QString text =
        QStringLiteral("The label is %1, and the paper in \"%2\" can take %3. The rest would be cut "
                       "off.\n\nWould you like to print it all the same?")
            .arg(inMm(size), target.printer, inMm(target.printable));
    return services.messages.askYesNoCancel(window, text) == Messages::Answer::Yes;
}

} // namespace

Outcome<QString> printLabelPage(const Services& services, QWidget* window, QSizeF size, const PageFor& page,
                                const std::optional<Calibration>& tried)
{
    const std::unique_ptr<Printer> printer = services.components.makePrinter();
    std::optional<WaitPointer> wait(window);
    const Outcome<Printer::Target> target = printer->target();
    wait.reset();
    if (!target)
        return target.error();
    if (!mayPrint(services, window, size, *target))
        return Failure{Failure::Kind::Cancelled};
    wait.emplace(window);
    const Calibration inUse = tried.value_or(calibrationFor(target->printer, target->paper));
    const QTransform right = inUse.transform(target->corner);
    const Outcome<> sent =
        printer->print(kApplicationTitle, [content = page(*target, inUse), right](QPainter& painter) {
            painter.setTransform(right, true);
            content(painter);
        });
    return sent ? Outcome<QString>(target->printer) : Outcome<QString>(sent.error());
}

} // namespace zib
