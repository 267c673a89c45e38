// What a call of the basic entry asks for: the estimate word repacked, and closed under what each result needs.
#pragma once

#include <cstdint>

#include "stats/task.h"

namespace nax::stats::basic {

enum ResultBit : int {
#define NAX_SS_RESULT(Name, field, estimate, one_pass, fast, conversion) k##Name##Bit,
#include "stats/basic/results.def"
#undef NAX_SS_RESULT
    kResultCount
};
// A set of results.
using Results = uint32_t;
enum : Results {
#define NAX_SS_RESULT(Name, field, estimate, one_pass, fast, conversion) k##Name = Results{1} << k##Name##Bit,
#include "stats/basic/results.def"
#undef NAX_SS_RESULT
    kRefused = Results{1} << kResultCount,
    kMatrices = kCovariance | kCorrelation | kCrossProduct
};

enum class Method { kOnePass, kFast, kUserMean, kConversion };

// The closure is taken once: the tables hold what a request needs in full.
Results closure(uint64_t estimates, Method method);
// The lowest result of the set whose array the task lacks, or a request that the method refuses, as a status.
int32_t check_arrays(const Task& task, Results results);

// Which powers a kernel accumulates. The index is that of the kernel tables.
int kernel_order(Results results, Method method);

}  // namespace nax::stats::basic
