#pragma once

#include "common/LateLibrary.h"

#include <cups/cups.h>
#include <cups/pwg.h>

namespace zib {

// CUPS brings encryption and the search for printers along, so it is loaded at the first print.
inline constinit LateLibrary cupsLibrary("libcups.so.2");

ZIB_LATE_FUNCTION(cupsLibrary, cupsAddOption);
ZIB_LATE_FUNCTION(cupsLibrary, cupsCancelDestJob);
ZIB_LATE_FUNCTION(cupsLibrary, cupsCopyDestInfo);
ZIB_LATE_FUNCTION(cupsLibrary, cupsCreateDestJob);
ZIB_LATE_FUNCTION(cupsLibrary, cupsDoRequest);
ZIB_LATE_FUNCTION(cupsLibrary, cupsEncryption);
ZIB_LATE_FUNCTION(cupsLibrary, cupsFindDestDefault);
ZIB_LATE_FUNCTION(cupsLibrary, cupsFinishDestDocument);
ZIB_LATE_FUNCTION(cupsLibrary, cupsFreeDestInfo);
ZIB_LATE_FUNCTION(cupsLibrary, cupsFreeDests);
ZIB_LATE_FUNCTION(cupsLibrary, cupsFreeOptions);
ZIB_LATE_FUNCTION(cupsLibrary, cupsGetNamedDest);
ZIB_LATE_FUNCTION(cupsLibrary, cupsGetOption);
ZIB_LATE_FUNCTION(cupsLibrary, cupsLastError);
ZIB_LATE_FUNCTION(cupsLibrary, cupsLastErrorString);
ZIB_LATE_FUNCTION(cupsLibrary, cupsServer);
ZIB_LATE_FUNCTION(cupsLibrary, cupsSetPasswordCB2);
ZIB_LATE_FUNCTION(cupsLibrary, cupsStartDestDocument);
ZIB_LATE_FUNCTION(cupsLibrary, cupsWriteRequestData);
ZIB_LATE_FUNCTION(cupsLibrary, httpClose);
ZIB_LATE_FUNCTION(cupsLibrary, httpConnect2);
ZIB_LATE_FUNCTION(cupsLibrary, httpError);
ZIB_LATE_FUNCTION(cupsLibrary, httpSetTimeout);
ZIB_LATE_FUNCTION(cupsLibrary, ippAddString);
ZIB_LATE_FUNCTION(cupsLibrary, ippDelete);
ZIB_LATE_FUNCTION(cupsLibrary, ippFindAttribute);
ZIB_LATE_FUNCTION(cupsLibrary, ippGetCollection);
ZIB_LATE_FUNCTION(cupsLibrary, ippGetInteger);
ZIB_LATE_FUNCTION(cupsLibrary, ippGetString);
ZIB_LATE_FUNCTION(cupsLibrary, ippNewRequest);
ZIB_LATE_FUNCTION(cupsLibrary, ippPort);
ZIB_LATE_FUNCTION(cupsLibrary, pwgMediaForLegacy);
ZIB_LATE_FUNCTION(cupsLibrary, pwgMediaForPPD);
ZIB_LATE_FUNCTION(cupsLibrary, pwgMediaForPWG);

} // namespace zib
