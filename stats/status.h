// The status codes of summary statistics, checked against the enumeration of the public header.
#pragma once

#include "nax/statistics.h"

namespace nax::stats {

#define NAX_SS_STATUS(name, code, meaning) static_assert(SsStatus##name == (code), meaning);
#include "stats/status.def"
#undef NAX_SS_STATUS

}  // namespace nax::stats
