#pragma once

#include "components/Printer.h"

namespace demo {

/// A printer whose sheet of A4 paper is a picture, so that the show uses up nobody's ink.
class SheetPrinter final : public Printer
{
    Q_OBJECT
public:
    /// @param sheet the picture's file.
    explicit SheetPrinter(const QString& sheet) : m_sheet(sheet) {}

    zib::Outcome<Target> target() override;
    zib::Outcome<> print(const QString& jobName, const Page& page) override;

private:
    QString m_sheet;
};

} // namespace demo
