#include "stats/basic/request.h"

#include <bit>

namespace nax::stats::basic {
namespace {

struct Row {
    uint64_t estimate;
    int32_t missing;
    void* Task::*field;
    Results needs[3];  // one pass or the caller's mean, fast, conversion
};
constexpr Row kRows[kResultCount] = {
#define NAX_SS_RESULT(Name, field, estimate, one_pass, fast, conversion) \
    {uint64_t{1} << (estimate), SsStatusNo##Name, &Task::field, {one_pass, fast, conversion}},
#include "stats/basic/results.def"
#undef NAX_SS_RESULT
};

constexpr int column(Method method) {
    switch (method) {
        case Method::kFast:
            return 1;
        case Method::kConversion:
            return 2;
        default:
            return 0;
    }
}

}  // namespace

Results closure(uint64_t estimates, Method method) {
    // A caller's mean is read whatever is asked for.
    Results all = method == Method::kUserMean ? Results{kMean} : Results{0};
    for (const Row& row : kRows)
        if ((estimates & row.estimate) != 0) all |= row.needs[column(method)];
    return all;
}

int32_t check_arrays(const Task& task, Results results) {
    for (Results left = results & (kRefused - 1); left != 0; left &= left - 1) {
        const Row& row = kRows[std::countr_zero(left)];
        if (task.*row.field == nullptr) return row.missing;
    }
    return (results & kRefused) != 0 ? SsStatusBadMethod : SsStatusOk;
}

int kernel_order(Results results, Method method) {
    const bool raw2 = (results & (kRawMoment2 | kRawSum2)) != 0;
    const bool raw3 = (results & (kRawMoment3 | kRawSum3)) != 0;
    const bool raw4 = (results & (kRawMoment4 | kRawSum4)) != 0;
    const bool central2 = (results & (kCentralMoment2 | kCentralSum2)) != 0;
    const bool central3 = (results & (kCentralMoment3 | kCentralSum3)) != 0;
    const bool central4 = (results & (kCentralMoment4 | kCentralSum4)) != 0;
    switch (method) {
        case Method::kFast:
            return raw4 ? 3 : raw3 ? 2 : raw2 ? 1 : 0;
        case Method::kUserMean:
            return raw2 || raw3 || raw4 ? 3 : central4 ? 2 : central3 ? 1 : 0;
        default:
            return raw3 || raw4 || central3 || central4 ? 3 : raw2 ? 2 : central2 ? 1 : 0;
    }
}

}  // namespace nax::stats::basic
