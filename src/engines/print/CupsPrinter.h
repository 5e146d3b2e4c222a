#pragma once

#include "components/Printer.h"

namespace zib {

/// Prints on the default print queue of CUPS: Qt writes the page as a PDF document, whose texts stay texts
/// and whose pictures keep their pixels, and the queue takes it whole.
class CupsPrinter final : public ::Printer
{
    Q_OBJECT
public:
    using ::Printer::Printer;

    Outcome<Target> target() override;
    Outcome<> print(const QString& jobName, const Page& page) override;
};

} // namespace zib
