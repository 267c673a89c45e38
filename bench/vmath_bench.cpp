// Every linked vector function of a real type, through its stubs, against plain loops, the C library, libmvec, SLEEF
// (in both of its accuracies), xsimd and Eigen.
//     vmath_bench [--json FILE] [--markdown FILE] [--only NAME]      the functions whose names contain NAME
// The rivals are compiled for the instruction set of the library's flavour that was loaded.
#include <dlfcn.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "bench/measure.h"
#include "bench/vmath_rivals.h"
#include "nax/mode.h"
#include "runtime/records.h"

namespace nax::bench {
namespace {

constexpr int64_t kLengths[] = {1, 10, 100, 1000, 100000, 1000000};
constexpr int64_t kStride = 2;

// The arguments to time a function on: uniform between the bounds, or over the exponents between them.
struct Domain {
    const char* function;
    const char* variant;
    double low_a, high_a, low_b, high_b;
    bool logarithmic;
};
constexpr Domain kDefaultDomain = {"", "", -4, 4, 0.5, 10, false};
constexpr Domain kDomains[] = {
    {"Ln", "", 1e-3, 1e3, 0, 0, false},
    {"Log2", "", 1e-3, 1e3, 0, 0, false},
    {"Log10", "", 1e-3, 1e3, 0, 0, false},
    {"Log1p", "", -0.9, 10, 0, 0, false},
    {"Exp", "", -20, 20, 0, 0, false},
    {"Exp2", "", -20, 20, 0, 0, false},
    {"Exp10", "", -8, 8, 0, 0, false},
    {"Expm1", "", -5, 5, 0, 0, false},
    {"Asin", "", -1, 1, 0, 0, false},
    {"Acos", "", -1, 1, 0, 0, false},
    {"Asinpi", "", -1, 1, 0, 0, false},
    {"Acospi", "", -1, 1, 0, 0, false},
    {"Atan", "", -10, 10, 0, 0, false},
    {"Atan", " wide", 1e-3, 1e7, 0, 0, true},
    {"Atanpi", "", -10, 10, 0, 0, false},
    {"Atan2", "", -10, 10, -10, 10, false},
    {"Atan2pi", "", -10, 10, -10, 10, false},
    {"Sinh", "", -10, 10, 0, 0, false},
    {"Cosh", "", -10, 10, 0, 0, false},
    {"Tanh", "", -4, 4, 0, 0, false},
    {"Asinh", "", -100, 100, 0, 0, false},
    {"Asinh", " wide", 1e-7, 1e30, 0, 0, true},
    {"Acosh", "", 1, 100, 0, 0, false},
    {"Acosh", " wide", 1, 1e30, 0, 0, true},
    {"Atanh", "", -0.99, 0.99, 0, 0, false},
    {"CdfNorm", "", -5, 5, 0, 0, false},
    {"ErfInv", "", -0.9999, 0.9999, 0, 0, false},
    {"ErfcInv", "", 1e-4, 1.9999, 0, 0, false},
    {"CdfNormInv", "", 1e-4, 0.9999, 0, 0, false},
    {"LGamma", "", 0.1, 20, 0, 0, false},
    {"LGamma", " negative", -20, -0.1, 0, 0, false},
    {"LGamma", " large", 40, 1000, 0, 0, false},
    {"TGamma", "", 0.1, 20, 0, 0, false},
    {"TGamma", " negative", -20, -0.1, 0, 0, false},
    {"ExpInt1", "", 0.1, 20, 0, 0, false},
    {"Fmod", "", -100, 100, 0.5, 10, false},
    {"Fmod", " wide", 1, 1e16, 1, 2, true},
    {"Remainder", "", -100, 100, 0.5, 10, false},
    {"Remainder", " wide", 1, 1e16, 1, 2, true},
    {"Sqrt", "", 1e-3, 1e3, 0, 0, false},
    {"InvSqrt", "", 1e-3, 1e3, 0, 0, false},
    {"Inv", "", 1e-3, 1e3, 0, 0, false},
    {"Cbrt", "", -1e3, 1e3, 0, 0, false},
    {"InvCbrt", "", 1e-3, 1e3, 0, 0, false},
    {"Pow2o3", "", 1e-3, 1e3, 0, 0, false},
    {"Pow3o2", "", 1e-3, 1e3, 0, 0, false},
    {"Pow", "", 0.1, 10, -5, 5, false},
    {"Powr", "", 0.1, 10, -5, 5, false},
    {"Powx", "", 0.1, 10, 0, 0, false},
    {"Hypot", "", -100, 100, -100, 100, false},
};

// What the rivals call a function; empty where they have none.
struct RivalNames {
    const char *function, *libmvec, *sleef, *sleef_accuracy;
};
constexpr RivalNames kRivals[] = {
    {"Exp", "exp", "exp", "_u10"},       {"Exp2", "exp2", "exp2", "_u10"},    {"Exp10", "exp10", "exp10", "_u10"},
    {"Expm1", "expm1", "expm1", "_u10"}, {"Ln", "log", "log", "_u10"},        {"Log2", "log2", "log2", "_u10"},
    {"Log10", "log10", "log10", "_u10"}, {"Log1p", "log1p", "log1p", "_u10"}, {"Fmod", "", "fmod", "_"},
    {"Remainder", "", "remainder", "_"}, {"Sin", "sin", "sin", "_u10"},       {"Cos", "cos", "cos", "_u10"},
    {"Tan", "tan", "tan", "_u10"},       {"Pow", "pow", "pow", "_u10"},       {"Sqrt", "", "sqrt", "_u05"},
    {"Cbrt", "cbrt", "cbrt", "_u10"},    {"Hypot", "hypot", "hypot", "_u05"}, {"Atan2", "atan2", "atan2", "_u10"},
    {"Asin", "asin", "asin", "_u10"},    {"Acos", "acos", "acos", "_u10"},    {"Atan", "atan", "atan", "_u10"},
    {"Sinh", "sinh", "sinh", "_u10"},    {"Cosh", "cosh", "cosh", "_u10"},    {"Tanh", "tanh", "tanh", "_u10"},
    {"Asinh", "asinh", "asinh", "_u10"}, {"Acosh", "acosh", "acosh", "_u10"}, {"Atanh", "atanh", "atanh", "_u10"},
    {"Erf", "erf", "erf", "_u10"},       {"Erfc", "erfc", "erfc", "_u15"},    {"TGamma", "", "tgamma", "_u10"},
    {"LGamma", "", "lgamma", "_u10"},
};

// No exponent that a cheaper function serves.
template <class T>
constexpr T kPowxExponent = T(2.5);

// One function, type and stub with its arguments.
template <class T>
struct Case {
    const RecordRow& row;
    const Domain& domain;
    std::string suffix;
    std::vector<T> a, b, r, r2;

    Case(const RecordRow& record, const Domain& bounds, std::string stub) : row(record), domain(bounds), suffix(stub) {
        const auto size = static_cast<std::size_t>(kLengths[std::size(kLengths) - 1] * kStride);
        a.resize(size);
        b.resize(size);
        r.resize(size);
        r2.resize(size);
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> uniform(0, 1);
        for (std::size_t i = 0; i < size; ++i) {
            a[i] = value(domain.low_a, domain.high_a, uniform(random));
            b[i] = value(domain.low_b, domain.high_b, uniform(random));
        }
    }
    T value(double low, double high, double u) const {
        return static_cast<T>(domain.logarithmic ? low * std::pow(high / low, u) : low + (high - low) * u);
    }
    void* stub(bool strided) const {
        const std::string name = std::string("_arq") + row.type + row.function + (strided ? "I" : "") + suffix;
        return dlsym(RTLD_DEFAULT, name.c_str());
    }
};

// One call of ours; null if the signature is not timed here.
template <class T>
std::function<void()> own_call(Case<T>& c, int64_t elements, bool strided) {
    const auto n = static_cast<int32_t>(elements);
    constexpr auto s = static_cast<int32_t>(kStride);
    void* const entry = c.stub(strided);
    const T *const a = c.a.data(), *const b = c.b.data();
    T *const r = c.r.data(), *const r2 = c.r2.data();
    const auto bind = [entry](auto... arguments) {
        const auto function = reinterpret_cast<void (*)(decltype(arguments)...)>(entry);
        return [=] { function(arguments...); };
    };
    switch (c.row.signature) {
        case Signature::UNARY:
            return strided ? std::function<void()>(bind(n, a, s, r, s)) : bind(n, a, r);
        case Signature::BINARY:
            return strided ? std::function<void()>(bind(n, a, s, b, s, r, s)) : bind(n, a, b, r);
        case Signature::TWO_RESULTS:
            return strided ? std::function<void()>(bind(n, a, s, r, s, r2, s)) : bind(n, a, r, r2);
        case Signature::POWX:
            return strided ? std::function<void()>(bind(n, a, s, kPowxExponent<T>, r, s))
                           : bind(n, a, kPowxExponent<T>, r);
        case Signature::LINEAR_FRAC: {
            const T p = T(1.25), q = T(0.5), u = T(0.75), v = T(3);
            return strided ? std::function<void()>(bind(n, a, s, b, s, p, q, u, v, r, s))
                           : bind(n, a, b, p, q, u, v, r);
        }
        default:
            return nullptr;
    }
}

template <class T>
const Rivals<T>& rivals() {
    static const Rivals<T> rivals = make_rivals<T>();
    return rivals;
}

// Addresses in libraries that may be missing; null then.
template <class T>
void* libmvec_function(const std::string& name, int inputs) {
    static void* const library = dlopen("libmvec.so.1", RTLD_NOW);
    if (library == nullptr || name.empty()) return nullptr;
    const std::string symbol =
        rivals<T>().libmvec_prefix + (inputs == 2 ? "vv_" : "v_") + name + (sizeof(T) == 4 ? "f" : "");
    return dlsym(library, symbol.c_str());
}
// `name` with its accuracy, such as "exp" and "_u10".
template <class T>
void* sleef_function(const std::string& name, const std::string& accuracy) {
    static void* const library = dlopen("libsleef.so.3", RTLD_NOW);
    if (library == nullptr || name.empty()) return nullptr;
    const std::string symbol = "Sleef_" + name + rivals<T>().sleef_lanes + accuracy;
    if (void* const found = dlsym(library, (symbol + rivals<T>().sleef_suffix).c_str())) return found;
    return dlsym(library, symbol.c_str());
}

template <class T>
void add_vector_rival(std::vector<Contender>& contenders, const char* name, void* function, Case<T>& c, int64_t n) {
    if (function == nullptr) return;
    const T *const a = c.a.data(), *const b = c.b.data();
    T* const r = c.r2.data();
    if (c.row.signature == Signature::BINARY)
        contenders.push_back({name, [=] { rivals<T>().apply_binary(function, n, a, b, r); }});
    else
        contenders.push_back({name, [=] { rivals<T>().apply_unary(function, n, a, r); }});
}

template <class T>
std::vector<Contender> contenders_of(Case<T>& c, int64_t n, bool strided) {
    std::vector<Contender> contenders;
    contenders.push_back({"ours", own_call(c, n, strided)});
    const int64_t s = strided ? kStride : 1;
    for (const PlainLoop<T>& plain : rivals<T>().loops)
        if (std::strcmp(plain.function, c.row.function) == 0)
            contenders.push_back(
                {"loop", [&c, n, s, loop = plain.loop] { loop(n, c.a.data(), s, c.b.data(), s, c.r2.data(), s); }});
    if (strided) return contenders;
    for (const RivalNames& rival : kRivals) {
        if (std::strcmp(rival.function, c.row.function) != 0) continue;
        const int inputs = c.row.signature == Signature::BINARY ? 2 : 1;
        add_vector_rival(contenders, "libmvec", libmvec_function<T>(rival.libmvec, inputs), c, n);
        const char* const accuracy = rival.sleef_accuracy[1] == '\0' ? "" : rival.sleef_accuracy;
        add_vector_rival(contenders, "SLEEF", sleef_function<T>(rival.sleef, accuracy), c, n);
        if (std::strcmp(accuracy, "_u10") == 0)
            add_vector_rival(contenders, "SLEEF u35", sleef_function<T>(rival.sleef, "_u35"), c, n);
    }
    for (const ArrayRival<T>& rival : rivals<T>().arrays)
        if (std::strcmp(rival.function, c.row.function) == 0)
            contenders.push_back({rival.library, [&c, n, apply = rival.apply] { apply(n, c.a.data(), c.r2.data()); }});
    return contenders;
}

template <class T>
void time_function(Report& report, const RecordRow& row, const Domain& domain) {
    const char* const suffixes[3] = {sizeof(T) == 4 ? "_21" : "_50", "_HA", sizeof(T) == 4 ? "_11" : "_26"};
    for (int slot = 0; slot < 3; ++slot) {
        bool repeated = false;
        for (int other = slot + 1; other < 3; ++other) repeated |= std::strcmp(row.tags[slot], row.tags[other]) == 0;
        if (repeated) continue;
        Case<T> c(row, domain, suffixes[slot]);
        for (const bool strided : {false, true})
            for (const int64_t n : kLengths) {
                std::vector<Contender> contenders = contenders_of(c, n, strided);
                if (!contenders.front().run) return;
                measure(contenders, n);
                report.add({row.type + std::string(row.function) + domain.variant + " " + (row.tags[slot] + 2),
                            strided ? "stride 2" : "dense", n, std::move(contenders)});
            }
    }
}

void time_row(Report& report, const RecordRow& row) {
    const auto time_domain = [&](const Domain& domain) {
        row.type == 's' ? time_function<float>(report, row, domain) : time_function<double>(report, row, domain);
    };
    bool listed = false;
    for (const Domain& domain : kDomains) {
        if (std::strcmp(domain.function, row.function) != 0) continue;
        listed = true;
        time_domain(domain);
    }
    if (!listed) time_domain(kDefaultDomain);
}

// PackM at half density against a loop with a branch.
template <class T>
void time_pack_m(Report& report, const char* stub) {
    const auto pack = reinterpret_cast<void (*)(int32_t, const T*, const int32_t*, T*)>(dlsym(RTLD_DEFAULT, stub));
    std::mt19937 random(2);
    for (const int64_t n : kLengths) {
        const auto size = static_cast<std::size_t>(n);
        std::vector<T> a(size, T(1)), y(size);
        std::vector<int32_t> mask(size);
        for (int32_t& m : mask) m = static_cast<int32_t>(random() & 1);
        std::vector<Contender> contenders;
        contenders.push_back({"ours", [&] { pack(static_cast<int32_t>(n), a.data(), mask.data(), y.data()); }});
        contenders.push_back({"loop", [&] {
                                  T* next = y.data();
                                  for (std::size_t i = 0; i < size; ++i)
                                      if (mask[i] != 0) *next++ = a[i];
                              }});
        report.time(stub + 4, "dense", n, std::move(contenders));
    }
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    pin_to_one_core();
    _arqSetMode(ARQ_MODE_DEFAULT);
    Report report("Vector mathematics", argc, argv);
    for (const nax::RecordRow& row : nax::kRecordRows) {
        const bool real = row.type == 's' || row.type == 'd';
        if (!real || !row.has_strided) continue;
        if (report.wanted(row.type + std::string(row.function))) time_row(report, row);
    }
    time_pack_m<float>(report, "_arqsPackM");
    time_pack_m<double>(report, "_arqdPackM");
    return report.finish();
}
