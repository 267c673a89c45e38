// The status codes of data fitting, checked against the enumeration of the public header.
#pragma once

#include "nax/fitting.h"

namespace nax::fit {

#define NAX_DF_STATUS(name, code, meaning) static_assert(DfStatus##name == (code), meaning);
#include "fit/status.def"
#undef NAX_DF_STATUS

}  // namespace nax::fit
