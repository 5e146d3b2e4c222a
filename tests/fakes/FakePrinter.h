#pragma once

#include "components/Printer.h"

#include <QImage>
#include <QList>

namespace zib {

/// A printer whose paper is a picture of 96 dots to the inch. The lists belong to the test, since windows own
/// their printers.
class FakePrinter final : public ::Printer
{
    Q_OBJECT
public:
    struct Job
    {
        QString name;
        QImage paper; ///< A4, its printable area alone.
    };
    /// What a test sees and scripts.
    struct Tray
    {
        QList<Job> jobs;
        Outcome<> answer;               ///< A failure takes no job.
        QSizeF printable{11186, 16118}; ///< A4 within margins of a quarter of an inch, in twips.
    };

    explicit FakePrinter(Tray& tray) : m_tray(tray) {}
    Outcome<Target> target() override;
    Outcome<> print(const QString& jobName, const Page& page) override;

private:
    Tray& m_tray;
};

} // namespace zib
