#pragma once

#include "common/Outcome.h"
#include "common/Services.h"
#include "components/Printer.h"

#include <QSizeF>

#include <functional>

class QWidget;

namespace zib {

/// A page for one printer and paper, in twips from the printable area's corner.
using PageFor = std::function<Printer::Page(const Printer::Target& target)>;

/// Sends a page of @p size twips to the default printer, set right by the numbers for it and its paper. A
/// page that is larger than what the paper can take is asked about first. @p window owns the question and
/// shows the wait pointer.
/// @returns the printer's name; a failure whose detail is a sentence for the user; or Cancelled when the user
/// did not want a cut page.
Outcome<QString> printLabelPage(const Services& services, QWidget* window, QSizeF size, const PageFor& page);

} // namespace zib
