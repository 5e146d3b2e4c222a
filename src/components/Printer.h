#pragma once

#include "common/Outcome.h"

#include <QObject>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <functional>

class QPainter;

/// Prints on the user's default printer, without a dialog. Waiting is bounded; meanwhile windows paint, but
/// nothing the user does arrives.
class Printer : public QObject
{
    Q_OBJECT
public:
    /// Paints one page. The painter's unit is the twip, 1440 to the inch of paper, with the origin at the
    /// corner of the printable area. It is called on a thread of the printer's own, so it owns what it
    /// paints.
    using Page = std::function<void(QPainter&)>;

    /// Where a page would go to.
    struct Target
    {
        QString printer;  ///< The printer's name.
        QString paper;    ///< Width and height in whole millimetres: "210x297".
        QSizeF paperSize; ///< Twips.
        QSizeF printable; ///< Twips.
        QPointF corner;   ///< The printable area's upper left corner on the paper, in twips.
    };

    using QObject::QObject;
    ~Printer() override;

    /// @returns the default printer and its paper, or a failure whose detail is a sentence for the user: no
    /// printing system, no default printer, stopped.
    virtual zib::Outcome<Target> target() = 0;

    /// Prints one page at its true size and returns when the printing system has taken the job.
    /// @returns a failure whose detail is a sentence for the user: as target(), refused, spool failed.
    virtual zib::Outcome<> print(const QString& jobName, const Page& page) = 0;
};
