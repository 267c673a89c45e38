/* All that programs call. Each header also stands alone; those under nax/abi declare every other exported name. */
#ifndef NAX_NAX_H
#define NAX_NAX_H

#include "nax/error.h"
#include "nax/fitting.h"
#include "nax/fitting_construction.h"
#include "nax/fitting_integration.h"
#include "nax/mode.h"
#include "nax/primitives.h"
#include "nax/processor.h"
#include "nax/service.h"
#include "nax/statistics.h"
#include "nax/statistics_basic.h"
#include "nax/statistics_order.h"
#include "nax/statistics_robust.h"
#include "nax/status.h"
#include "nax/streams.h"
#include "nax/threaders.h"
#include "nax/vmath.h"

#endif
