// The service layer as the kernels see it: they import exactly these functions, and libnax_serv.so provides them.
#pragma once

#include "nax/service.h"
