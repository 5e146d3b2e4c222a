#include "components/CDRipperX.h"

CDRipperX::~CDRipperX() = default;
