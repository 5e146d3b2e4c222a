#include "components/Printer.h"

Printer::~Printer() = default;
