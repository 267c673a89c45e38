#include <algorithm>
#include <cmath>

#include "stats/missing/normal_model.h"

namespace nax::stats::missing {

// G. E. P. Box, M. E. Muller, A note on the generation of random normal deviates, Ann. Math. Statist. 29 (1958).
int32_t draw_normals(nax_stream* stream, int64_t n, double* r) {
    constexpr int64_t kBatch = 1024;
    constexpr double kTwoPi = 0x1.921fb54442d18p2;
    double uniform[kBatch];
    for (int64_t first = 0; first < n; first += kBatch) {
        const int64_t count = std::min(kBatch, n - first);
        const int64_t pairs = (count + 1) / 2;
        const int32_t status = __stodBRngMCG59(stream, static_cast<int>(2 * pairs), uniform, 0, 1);
        if (status < 0) return status == STO_STATUS_NO_MEMORY ? SsStatusMemory : SsStatusDrawFailed;
        for (int64_t k = 0; k < pairs; ++k) {
            const double radius = std::sqrt(-2 * std::log(1 - uniform[2 * k]));
            const double angle = kTwoPi * uniform[2 * k + 1];
            r[first + 2 * k] = radius * std::cos(angle);
            if (2 * k + 1 < count) r[first + 2 * k + 1] = radius * std::sin(angle);
        }
    }
    return SsStatusOk;
}

}  // namespace nax::stats::missing
