#pragma once

#include "common/Outcome.h"
#include "common/Services.h"
#include "components/Printer.h"
#include "label/LabelSettings.h"

#include <QSizeF>

#include <functional>
#include <optional>

class QWidget;

namespace zib {

/// A page for one printer and paper, in twips from the printable area's corner.
/// @param inUse the numbers that the page will be set right by.
using PageFor = std::function<Printer::Page(const Printer::Target& target, const Calibration& inUse)>;

/// Sends a page of @p size twips to the default printer, set right by @p tried, or without it by the numbers
/// stored for the printer and its paper. A
/// page that is larger than what the paper can take is asked about first. @p window owns the question and
/// shows the wait pointer.
/// @returns the printer's name; a failure whose detail is a sentence for the user; or Cancelled when the user
/// did not want a cut page.
Outcome<QString> printLabelPage(const Services& services, QWidget* window, QSizeF size, const PageFor& page,
                                const std::optional<Calibration>& tried = {});

} // namespace zib
