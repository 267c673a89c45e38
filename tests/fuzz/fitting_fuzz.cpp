// Makes splines of arbitrary description from arbitrary bytes: partition, functions, conditions and hints within the
// conventions of a caller, their values as wild as floating point has them. All arrays are exactly as long as documented, so
// that the address sanitizer sees an access beyond.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "nax/fitting.h"

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// One name for the entries of both precisions.
#define NAX_FUZZ_ENTRY(name, entry)                                                               \
    template <class T, class... Args>                                                             \
    int32_t name(Args... args) {                                                                  \
        if constexpr (std::is_same_v<T, double>) return nax_df_kernel_d##entry(args...);          \
        else return nax_df_kernel_s##entry(args...);                                              \
    }
NAX_FUZZ_ENTRY(new_task, NewTask1D)
NAX_FUZZ_ENTRY(edit_spline, EditPPSpline1D)
NAX_FUZZ_ENTRY(search, DFSearch1D)
NAX_FUZZ_ENTRY(evaluate, DFInterpolate1D)
NAX_FUZZ_ENTRY(integrate, DFIntegrate1D)
NAX_FUZZ_ENTRY(make_linear, DFLinearSpline1D)
NAX_FUZZ_ENTRY(make_quadratic, DFQuadraticSpline1D)
NAX_FUZZ_ENTRY(make_default, DFDefaultCubicSpline1D)
NAX_FUZZ_ENTRY(make_natural, DFNaturalCubicSpline1D)
NAX_FUZZ_ENTRY(make_hermite, DFHermiteCubicSpline1D)
NAX_FUZZ_ENTRY(make_bessel, DFBesselCubicSpline1D)
NAX_FUZZ_ENTRY(make_akima, DFAkimaCubicSpline1D)
NAX_FUZZ_ENTRY(make_hyman, DFHymanCubicSpline1D)

template <class T>
int32_t construct(int family, nax_df_task* task) {
    constexpr int32_t (*kEntries[])(nax_df_task*, int64_t, int64_t, const nax_threaders*) = {
        make_linear<T>, make_quadratic<T>, make_default<T>, make_natural<T>, make_hermite<T>, make_bessel<T>, make_akima<T>, make_hyman<T>};
    return kEntries[family](task, 0, 0, nullptr);
}
constexpr int kFamilies = 8;
constexpr int64_t kOrders[kFamilies] = {2, 3, 4, 4, 4, 4, 4, 4};
constexpr int64_t kTypes[kFamilies] = {0, 0, 0, 2, 3, 4, 5, 9};

template <class T>
class Input {
public:
    Input(const uint8_t* data, size_t size) : bytes_(data, size), engine_(bytes_.ConsumeIntegral<uint32_t>()) {}

    int64_t integer(int64_t low, int64_t high) { return bytes_.ConsumeIntegralInRange<int64_t>(low, high); }
    bool chance() { return bytes_.ConsumeBool(); }
    template <class Choice, size_t n>
    Choice one_of(const Choice (&choices)[n]) { return choices[static_cast<size_t>(integer(0, n - 1))]; }

    // Ordinary numbers of one scale, or any bits.
    std::vector<T> values(size_t count) {
        const bool wild = chance();
        const T scale = std::ldexp(T(1), static_cast<int>(integer(-std::numeric_limits<T>::max_exponent, std::numeric_limits<T>::max_exponent - 1)));
        std::vector<T> result(count);
        for (T& value : result) value = wild ? any_bits() : scale * std::uniform_real_distribution<T>(-1, 1)(engine_);
        return result;
    }
    // Ascending, with steps of one scale or of all.
    std::vector<T> partition(int64_t nx) {
        std::vector<T> x = values(static_cast<size_t>(nx));
        for (T& point : x) {
            if (std::isnan(point)) point = 0;
        }
        std::sort(x.begin(), x.end());
        return x;
    }

private:
    T any_bits() {
        constexpr T kSpecial[] = {0, -T(0), 1, std::numeric_limits<T>::infinity(), -std::numeric_limits<T>::infinity(),
                                  std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::max(),
                                  std::numeric_limits<T>::denorm_min(), std::numeric_limits<T>::min()};
        if (engine_() % 4 == 0) return kSpecial[engine_() % std::size(kSpecial)];
        return std::ldexp(std::uniform_real_distribution<T>(-1, 1)(engine_), static_cast<int>(engine_() % 200) - 100);
    }

    FuzzedDataProvider bytes_;
    std::mt19937 engine_;
};

// The cells are those of the definition, with any hint that tells the truth.
template <class T>
void check_search(Input<T>& input, nax_df_task* task, const std::vector<T>& x, bool uniform) {
    std::vector<T> sites = input.values(static_cast<size_t>(input.integer(0, 300)));
    if (input.chance()) {
        for (size_t i = 0; i < sites.size(); ++i) sites[i] = x[i % x.size()];
    }
    const int64_t nsite = static_cast<int64_t>(sites.size());
    const bool ordered = std::none_of(sites.begin(), sites.end(), [](T site) { return std::isnan(site); });
    if (ordered) std::sort(sites.begin(), sites.end());
    std::vector<int64_t> cells(sites.size()), by_walk(sites.size());
    require(search<T>(task, 0, nsite, sites.data(), 0, nullptr, cells.data(), nullptr, nullptr, nullptr, nullptr) == 0);
    require(search<T>(task, 0, nsite, sites.data(), 64, nullptr, by_walk.data(), nullptr, nullptr, nullptr, nullptr) == 0);
    const int64_t nx = static_cast<int64_t>(uniform ? 0 : x.size());
    for (size_t i = 0; i < sites.size(); ++i) {
        require(cells[i] >= 0);
        if (uniform || std::isnan(sites[i])) continue;
        int64_t cell = std::upper_bound(x.begin(), x.end(), sites[i]) - x.begin();
        if (sites[i] == x.back()) cell = nx - 1;
        require(cells[i] == cell);
        require(!ordered || by_walk[i] == cell);
    }
}

template <class T>
void check_task(const uint8_t* data, size_t size) {
    Input<T> input(data, size);
    const int family = static_cast<int>(input.integer(0, kFamilies - 1));
    const bool uniform = input.chance();
    const int64_t nx = input.chance() ? input.integer(2, 12) : input.integer(2, 700), ny = input.integer(1, 4);
    std::vector<T> x = input.partition(uniform ? 2 : nx);
    x.erase(std::unique(x.begin(), x.end()), x.end());
    if (x.size() < 2 || (uniform && !std::isfinite(x[1] - x[0]))) return;
    const int64_t points = uniform ? nx : static_cast<int64_t>(x.size());
    const std::vector<T> y = input.values(static_cast<size_t>(points * ny));
    constexpr int64_t kHints[] = {0, 1, 2};
    constexpr int64_t kStorage[] = {0, 16, 32};
    constexpr int64_t kBoundaries[] = {0, 1, 2, 12, 24, 36, 48, 64, 128};
    nax_df_task* task = nullptr;
    require(new_task<T>(&task, points, x.data(), uniform ? int64_t{4} : input.one_of(kHints), ny, y.data(), input.one_of(kStorage), int64_t{1}) == 0);

    const bool subbotin = family == 1 && input.chance();
    const int64_t order = kOrders[family], cells = subbotin ? points : points - 1;
    const std::vector<T> bc = input.values(2);
    std::vector<T> ic = input.values(static_cast<size_t>(std::max<int64_t>(points - 2, 1)));
    const int64_t ic_type = subbotin ? 0 : input.integer(0, 2);
    std::vector<T> coefficients(static_cast<size_t>(ny * cells * order));
    edit_spline<T>(task, order, subbotin ? int64_t{1} : kTypes[family], input.one_of(kBoundaries), bc.data(), ic_type,
                   ic_type != 0 ? ic.data() : nullptr, coefficients.data(), int64_t{0});
    if (subbotin) nax_df_kernel_iEditVal(task, NAX_DF_ATTRIBUTE_IC_TYPE, NAX_DF_IC_SUBBOTIN_KNOTS);
    const int32_t built = construct<T>(family, task);
    require(built <= 0 && built > -2000);

    check_search(input, task, x, uniform);
    std::vector<T> sites = input.values(static_cast<size_t>(input.integer(1, 200)));
    const int64_t nsite = static_cast<int64_t>(sites.size());
    std::vector<int64_t> orders(static_cast<size_t>(input.integer(1, 6)));
    int64_t nder = 0;
    for (int64_t& flag : orders) nder += flag = input.integer(0, 1);
    constexpr int64_t kLayouts[] = {0, 16, 32, 256, 512};
    std::vector<T> r(static_cast<size_t>(ny * nsite * std::max<int64_t>(nder, 1)));
    require(evaluate<T>(task, 1, 0, nsite, sites.data(), input.chance() ? 64 : 0, static_cast<int64_t>(orders.size()),
                        orders.data(), nullptr, r.data(), input.one_of(kLayouts), nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) == 0);

    const std::vector<T> right = input.values(sites.size());
    std::vector<T> integrals(static_cast<size_t>(ny * nsite));
    require(integrate<T>(task, 0, nsite, sites.data(), 0, right.data(), 0, nullptr, nullptr, integrals.data(), 32, nullptr,
                         nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) == 0);
    require(nax_df_kernel_DeleteTask(&task) == 0 && task == nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    if (data[0] % 2 == 0) check_task<double>(data + 1, size - 1);
    else check_task<float>(data + 1, size - 1);
    return 0;
}
