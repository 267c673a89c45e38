#include "tools/every_float/sweep.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>

#include "nax/error.h"
#include "nax/mode.h"
#include "tests/lib/ulp.h"

namespace nax::tools {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A function, and what its statuses depend on beside argument and result.
struct Function {
    explicit Function(const testing::Reference& r)
        : reference(r),
          underflows(is("Exp") || is("Exp2") || is("Exp10")),
          underflows_to_zero(is("Erfc") || is("CdfNorm")),
          has_poles(is("Inv") || is("InvSqrt") || is("InvCbrt") || is("Atanh") || is("ErfInv") || is("ErfcInv") ||
                    is("CdfNormInv") || is("LGamma") || is("TGamma") || is("ExpInt1")),
          exact_infinities(is("Tanpi") || is("Tand")),
          overflows_in_silence(is("Inv") || is("Pow3o2")),
          minus_infinity(is("Logb") ? ARQ_STATUS_DOMAIN : ARQ_STATUS_SINGULARITY) {}

    uint8_t status(float x, double exact) const {
        if (std::isnan(exact)) return std::isnan(x) ? ARQ_STATUS_SUCCESS : ARQ_STATUS_DOMAIN;
        if (std::isinf(x) || (std::isinf(exact) && exact_infinities)) return ARQ_STATUS_SUCCESS;
        if (exact == -HUGE_VAL) return has_poles ? ARQ_STATUS_SINGULARITY : minus_infinity;
        if (exact == HUGE_VAL && has_poles) return ARQ_STATUS_SINGULARITY;
        if (underflows_to_zero && static_cast<float>(exact) == 0) return ARQ_STATUS_UNDERFLOW;
        if (std::isinf(static_cast<float>(exact)))
            return overflows_in_silence ? ARQ_STATUS_SUCCESS : ARQ_STATUS_OVERFLOW;
        return underflows && exact < 0x1p-126 ? ARQ_STATUS_UNDERFLOW : ARQ_STATUS_SUCCESS;
    }

    const testing::Reference& reference;
    bool underflows, underflows_to_zero, has_poles, exact_infinities, overflows_in_silence;
    uint8_t minus_infinity;

private:
    bool is(const char* name) const { return std::strcmp(reference.function, name) == 0; }
};

// Consecutive bit patterns and all that doesn't depend on the kernel.
struct Block {
    static constexpr int size = 2048;
    alignas(32) float x[size];
    double exact[size];
    double per_ulp[size];  // 1/ulp; NaN where the nearest float is NaN or infinite
    float nearest[size];
    uint8_t status[size];
    int finite_results;
    ScalarResults scalar{size};

    void load(const Function& function, uint32_t first) {
        finite_results = 0;
        std::fill(scalar.known.begin(), scalar.known.end(), uint8_t{0});
        for (int i = 0; i < size; ++i) {
            x[i] = std::bit_cast<float>(first + static_cast<uint32_t>(i));
            exact[i] = function.reference.in_double(static_cast<double>(x[i]));
            nearest[i] = static_cast<float>(exact[i]);
            status[i] = function.status(x[i], exact[i]);
            const double magnitude = std::max(std::fabs(exact[i]), 0x1p-126);
            const uint64_t exponent = std::bit_cast<uint64_t>(magnitude) >> 52;
            const bool finite = std::isfinite(nearest[i]);
            per_ulp[i] = finite ? std::bit_cast<double>((2 * 1023 + 23 - exponent) << 52) : kNan;
            finite_results += finite;
        }
    }
};

// A result that is among the worst so far, or no number where one is due.
[[gnu::noinline]] void inspect(Tally& tally, const Block& block, const float* y, int i) {
    const double error = testing::ulp_error(y[i], block.exact[i]);
    const bool wrong_sign = !std::isnan(block.exact[i]) && std::signbit(y[i]) != std::signbit(block.nearest[i]);
    if (wrong_sign || !std::isfinite(error)) {
        if (tally.wrong_values++ == 0) tally.wrong_value_at = block.x[i];
    } else {
        tally.keep({block.x[i], y[i], error});
    }
}

void add(Tally& tally, const Block& block, const float* y) {
    const __m256d infinity = _mm256_set1_pd(HUGE_VAL), half = _mm256_set1_pd(0.5);
    const __m256d magnitude = (__m256d)_mm256_set1_epi64x(INT64_MAX);
    __m256d sum = _mm256_setzero_pd();
    __m256d threshold = _mm256_set1_pd(tally.kept_from());
    unsigned above_half = 0;
    for (int i = 0; i < Block::size; i += 4) {
        const __m128 result = _mm_loadu_ps(y + i), nearest = _mm_loadu_ps(block.nearest + i);
        const __m128 nan = _mm_cmpunord_ps(nearest, nearest);
        const __m128 same = _mm_or_ps((__m128)_mm_cmpeq_epi32((__m128i)result, (__m128i)nearest),
                                      _mm_and_ps(nan, _mm_cmpunord_ps(result, result)));
        const __m128 wrong_sign = _mm_andnot_ps(nan, _mm_xor_ps(result, nearest));
        const __m256d per_ulp = _mm256_loadu_pd(block.per_ulp + i);
        const __m256d difference = _mm256_sub_pd(_mm256_cvtps_pd(result), _mm256_loadu_pd(block.exact + i));
        __m256d error = _mm256_and_pd(magnitude, _mm256_mul_pd(difference, per_ulp));
        // NaN and Inf as they should be
        const __m256d right =
            _mm256_and_pd((__m256d)_mm256_cvtepi32_epi64((__m128i)same), _mm256_cmp_pd(per_ulp, per_ulp, _CMP_UNORD_Q));
        error = _mm256_andnot_pd(right, error);
        sum = _mm256_add_pd(sum, _mm256_and_pd(error, _mm256_cmp_pd(error, infinity, _CMP_LT_OQ)));
        above_half += static_cast<unsigned>(
            std::popcount(static_cast<unsigned>(_mm256_movemask_pd(_mm256_cmp_pd(error, half, _CMP_GT_OQ)))));
        auto noted = static_cast<unsigned>(_mm256_movemask_pd(_mm256_cmp_pd(error, threshold, _CMP_NLE_UQ)) |
                                           _mm_movemask_ps(wrong_sign));
        if (noted != 0) [[unlikely]] {
            for (; noted != 0; noted &= noted - 1) inspect(tally, block, y, i + std::countr_zero(noted));
            threshold = _mm256_set1_pd(tally.kept_from());
        }
    }
    tally.sum += (sum[0] + sum[1]) + (sum[2] + sum[3]);
    tally.not_nearest += above_half;
}

void note_wrong_statuses(Tally& tally, const Block& block, const uint8_t* statuses) {
    if (std::memcmp(statuses, block.status, Block::size) == 0) return;
    for (int i = 0; i < Block::size; ++i)
        if (statuses[i] != block.status[i] && tally.wrong_statuses++ == 0) tally.wrong_status_at = block.x[i];
}

// Elements that agree bit for bit with neither of the other results.
uint64_t count_outside(const float* y, const float* a, const float* b) {
    uint64_t count = 0;
    for (int i = 0; i < Block::size; ++i) {
        const auto bits = std::bit_cast<uint32_t>(y[i]);
        count += bits != std::bit_cast<uint32_t>(a[i]) && bits != std::bit_cast<uint32_t>(b[i]);
    }
    return count;
}

constexpr uint64_t kBlocks = (uint64_t{1} << 32) / Block::size;
constexpr uint64_t kBlocksPerTask = 512;

// Takes tasks until none is left.
void work(const Function& function, uint32_t stride, std::atomic<uint64_t>& next_task, Sweep& mine) {
    _arqSetMode(ARQ_ERRMODE_IGNORE | ARQ_DENORMALS_KEEP);
    const auto owner = std::make_unique<Block>();
    Block& block = *owner;
    uint8_t statuses[Block::size];
    std::vector<std::array<float, Block::size>> results(mine.runs.size());
    for (;;) {
        const uint64_t first = next_task++ * kBlocksPerTask;
        if (first >= kBlocks) return;
        for (uint64_t b = first; b < first + kBlocksPerTask; ++b) {
            if (b % stride != 0) continue;
            block.load(function, static_cast<uint32_t>(b * Block::size));
            mine.arguments += Block::size;
            mine.finite_results += static_cast<uint64_t>(block.finite_results);
            for (size_t r = 0; r < mine.runs.size(); ++r) {
                Run& run = mine.runs[r];
                float* const y = results[r].data();
                run_kernel(*run.kernel, Block::size, block.x, y, statuses, block.scalar);
                note_wrong_statuses(run.tally, block, statuses);
                add(run.tally, block, y);
                if (run.kernel->reciprocal == Reciprocal::kHigh)
                    mine.runs[r - 2].outside += count_outside(results[r - 2].data(), results[r - 1].data(), y);
            }
        }
    }
}

}  // namespace

void Tally::keep(const Case& c) {
    if (c.error <= kept_from()) return;
    // Equal errors in the order of the sweep, whichever thread found them.
    const auto before = [](const Case& a, const Case& b) {
        return a.error > b.error || (a.error == b.error && std::bit_cast<uint32_t>(a.x) < std::bit_cast<uint32_t>(b.x));
    };
    worst.insert(std::upper_bound(worst.begin(), worst.end(), c, before), c);
    if (worst.size() > kept) worst.pop_back();
}

void Tally::merge(const Tally& other) {
    for (const Case& c : other.worst) keep(c);
    sum += other.sum;
    not_nearest += other.not_nearest;
    if (wrong_values == 0) wrong_value_at = other.wrong_value_at;
    if (wrong_statuses == 0) wrong_status_at = other.wrong_status_at;
    wrong_values += other.wrong_values;
    wrong_statuses += other.wrong_statuses;
}

void Tally::settle(const testing::Reference& reference) {
    std::vector<Case> found;
    found.swap(worst);
    for (const Case& c : found) keep({c.x, c.y, testing::exact_ulp_error(reference, c.x, c.y)});
}

void sweep(const testing::Reference& reference, uint32_t stride, unsigned threads, Sweep& sweep) {
    std::atomic<uint64_t> next_task = 0;
    std::mutex merging;
    std::vector<std::thread> workers;
    const Sweep empty = sweep;
    for (unsigned t = 0; t < threads; ++t)
        workers.emplace_back([&] {
            Sweep mine = empty;
            work(Function(reference), stride, next_task, mine);
            const std::lock_guard lock(merging);
            sweep.arguments += mine.arguments;
            sweep.finite_results += mine.finite_results;
            for (size_t r = 0; r < sweep.runs.size(); ++r) {
                sweep.runs[r].tally.merge(mine.runs[r].tally);
                sweep.runs[r].outside += mine.runs[r].outside;
            }
        });
    for (std::thread& worker : workers) worker.join();
    for (Run& run : sweep.runs) run.tally.settle(reference);
}

}  // namespace nax::tools
