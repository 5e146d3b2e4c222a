#pragma once

#include "common/Outcome.h"

#include <QObject>
#include <QString>

#include <functional>

class QPainter;

/// Prints on the user's default printer, without a dialog.
class Printer : public QObject
{
    Q_OBJECT
public:
    /// Paints one page. The painter's unit is the twip, 1440 to the inch of paper, with the origin at the
    /// corner of the printable area.
    using Page = std::function<void(QPainter&)>;

    using QObject::QObject;
    ~Printer() override;

    /// Prints one page and returns when the printing system has taken the job. The page is painted on the
    /// calling thread. Waiting is bounded; windows paint meanwhile, but nothing the user does arrives.
    /// @returns a failure whose detail is a sentence for the user: no default printer, stopped, refused,
    /// spool failed.
    virtual zib::Outcome<> print(const QString& jobName, const Page& page) = 0;
};
