// Powx: Pow with one exponent for all elements. An exponent that a cheaper function serves is handed to that function,
// which reports under its own name; the list grows from HA to EP.
#include "vmath/power/pow_kernels.h"

namespace nax::vmath {

using KernelEntry = void (*)();

}  // namespace nax::vmath

#define NAX_TABLES(type, function)                                                \
    extern "C" nax::vmath::KernelEntry nax_arq_kernel_##type##function##_ttab[3], \
        nax_arq_kernel_##type##function##I_ttab[3];
#define NAX_POWX_TABLES(type) \
    NAX_TABLES(type, Powx)    \
    NAX_TABLES(type, Inv)     \
    NAX_TABLES(type, Sqrt)    \
    NAX_TABLES(type, InvSqrt) \
    NAX_TABLES(type, Pow3o2)  \
    NAX_TABLES(type, Cbrt)    \
    NAX_TABLES(type, InvCbrt) \
    NAX_TABLES(type, Pow2o3)
NAX_POWX_TABLES(s)
NAX_POWX_TABLES(d)

namespace nax::vmath::NAX_ISA {
namespace {

enum class Level { LA, HA, EP };  // in the order of a record's slots

// The kernels of a record, dense and strided.
struct Record {
    const KernelEntry *dense, *strided;
};
#define NAX_RECORD(type, function) \
    Record { nax_arq_kernel_##type##function##_ttab, nax_arq_kernel_##type##function##I_ttab }

template <class E>
struct Records {
    Record inv, sqrt, inv_sqrt, pow3o2, cbrt, inv_cbrt, pow2o3;
};
#define NAX_RECORDS(type)                                                                                   \
    {                                                                                                       \
        NAX_RECORD(type, Inv), NAX_RECORD(type, Sqrt), NAX_RECORD(type, InvSqrt), NAX_RECORD(type, Pow3o2), \
            NAX_RECORD(type, Cbrt), NAX_RECORD(type, InvCbrt), NAX_RECORD(type, Pow2o3)                     \
    }
constexpr Records<Single> single_records = NAX_RECORDS(s);
constexpr Records<Double> double_records = NAX_RECORDS(d);

// Vector and number; in reports the number is a vector of stride 0.
template <class E>
struct DensePowx {
    using T = typename E::Element;
    using Vector = typename E::Vector;
    static constexpr bool dense = true;
    static constexpr int inputs = 2, outputs = 1;

    const T* in[2];
    T* out[1];
    Vector exponent = E::row(*in[1]);

    NAX_VEC Vector read(int k, ptrdiff_t i) const { return k == 1 ? exponent : load(in[0] + i); }
    NAX_VEC Vector read(int k, ptrdiff_t i, int lanes) const { return k == 1 ? exponent : load(in[0] + i, lanes); }
    NAX_VEC void write(int, ptrdiff_t i, Vector x) const { store(out[0] + i, x); }
    NAX_VEC void write(int, ptrdiff_t i, int lanes, Vector x) const { store(out[0] + i, lanes, x); }
    NAX_VEC int in_stride(int k) const { return k == 1 ? 0 : 1; }
    NAX_VEC int out_stride(int) const { return 1; }
};
template <class E>
struct StridedPowx : Strided<E, 2, 1> {
    using Base = Strided<E, 2, 1>;
    using Vector = typename E::Vector;
    Vector exponent = E::row(*Base::in[1]);

    NAX_VEC Vector read(int k, ptrdiff_t i) const { return k == 1 ? exponent : Base::read(0, i); }
    NAX_VEC Vector read(int k, ptrdiff_t i, int lanes) const { return k == 1 ? exponent : Base::read(0, i, lanes); }
};

// x^Factors by products. With no factor 1, whatever the element; with one a copy.
template <class E, int Factors>
struct Product {
    using Precision = E;
    using Vector = typename E::Vector;
    static constexpr int unroll = 4;

    template <int K>
    NAX_VEC static Vector power(Vector x) {
        if constexpr (K == 0) {
            return E::row(1);
        } else if constexpr (K == 1) {
            return x;
        } else if constexpr (K % 2 == 0) {
            const Vector root = power<K / 2>(x);
            return mul(root, root);
        } else {
            return mul(power<K - 1>(x), x);
        }
    }
    NAX_VEC void eval(Vector x, Vector& y) const { y = power<Factors>(x); }
};
template <class E, int Factors>
alignas(64) constexpr Product<E, Factors> product = {};

// One call for another function. Access: Dense or Strided with one input.
template <class E, Level L, class Access>
struct HandOver {
    using T = typename E::Element;
    int32_t n;
    const Access& access;

    void to(const Record& record, const T* in, ptrdiff_t stride) const {
        if constexpr (Access::dense) {
            using Kernel = void (*)(int32_t, const T*, T*);
            reinterpret_cast<Kernel>(record.dense[static_cast<int>(L)])(n, in, access.out[0]);
        } else {
            using Kernel = void (*)(int32_t, const T*, int32_t, T*, int32_t);
            reinterpret_cast<Kernel>(record.strided[static_cast<int>(L)])(n, in, static_cast<int32_t>(stride),
                                                                          access.out[0], access.out_strides[0]);
        }
    }
    void to(const Record& record) const { to(record, access.in[0], access.in_stride(0)); }
    template <int Factors>
    [[gnu::noinline]] void multiply() const {
        run<product<E, Factors>>(n, access, "");
    }
    // One over the product, in place.
    template <int Factors>
    void divide(const Record& inv) const {
        multiply<Factors>();
        to(inv, access.out[0], access.out_stride(0));
    }

    // Whether b was on the list; then the call is done.
    bool operator()(T b) const {
        constexpr auto& records = *by_precision<E>(&single_records, &double_records);
        constexpr T third = T(1) / 3, two_thirds = T(2) / 3;
        if (b == T(-1)) return to(records.inv), true;
        if (b == T(0.5)) return to(records.sqrt), true;
        if (b == T(-0.5)) return to(records.inv_sqrt), true;
        if (b == T(1.5)) return to(records.pow3o2), true;
        if constexpr (L == Level::EP) {
            if (b == third) return to(records.cbrt), true;
            if (b == -third) return to(records.inv_cbrt), true;
            if (b == two_thirds) return to(records.pow2o3), true;
        }
        constexpr int most = L == Level::HA ? 2 : 9, least = L == Level::HA ? 0 : -4;
        if (!(b >= least && b <= most) || b != static_cast<T>(static_cast<int>(b))) return false;
        switch (static_cast<int>(b)) {
            case 0:
                return multiply<0>(), true;
            case 1:
                return multiply<1>(), true;
            case 2:
                return multiply<2>(), true;
        }
        if constexpr (L != Level::HA) {
            switch (static_cast<int>(b)) {
                case 3:
                    return multiply<3>(), true;
                case 4:
                    return multiply<4>(), true;
                case 5:
                    return multiply<5>(), true;
                case 6:
                    return multiply<6>(), true;
                case 7:
                    return multiply<7>(), true;
                case 8:
                    return multiply<8>(), true;
                case 9:
                    return multiply<9>(), true;
                case -2:
                    return divide<2>(records.inv), true;
                case -3:
                    return divide<3>(records.inv), true;
                case -4:
                    return divide<4>(records.inv), true;
            }
        }
        return false;
    }
};

template <const auto& kData, Level L, class E>
NAX_VEC void powx(int32_t n, const typename E::Element* a, typename E::Element b, typename E::Element* r,
                  const char* name) {
    const Dense<E, 1, 1> access{{a}, {r}};
    if (HandOver<E, L, Dense<E, 1, 1>>{n, access}(b)) return;
    run<kData>(n, DensePowx<E>{{a, &b}, {r}}, name);
}
template <const auto& kData, Level L, class E>
NAX_VEC void powx(int32_t n, const typename E::Element* a, int32_t inca, typename E::Element b, typename E::Element* r,
                  int32_t incr, const char* name) {
    const Strided<E, 1, 1> access{{a}, {r}, {inca}, {incr}};
    if (HandOver<E, L, Strided<E, 1, 1>>{n, access}(b)) return;
    run<kData>(n, StridedPowx<E>{{{a, &b}, {r}, {inca, 0}, {incr}}}, name);
}

using Data = PowData<vdpow_cout_rare, vspow_cout_rare>;

}  // namespace
}  // namespace nax::vmath::NAX_ISA

using namespace nax::vmath::NAX_ISA;

// The strided form with unit strides runs the dense kernel in the slot of its level.
#define NAX_POWX_KERNEL(type, tag, level, data)                                                                        \
    extern "C" void NAX_DENSE(type, Powx, tag)(int32_t n, const element::type* a, element::type b, element::type* r) { \
        powx<data, level, precision::type>(n, a, b, r, NAX_REPORTED(type, Powx));                                      \
    }                                                                                                                  \
    extern "C" void NAX_STRIDED(type, Powx, tag)(int32_t n, const element::type* a, int32_t inca, element::type b,     \
                                                 element::type* r, int32_t incr) {                                     \
        if (inca == 1 && incr == 1) return NAX_DENSE(type, Powx, tag)(n, a, b, r);                                     \
        powx<data, level, precision::type>(n, a, inca, b, r, incr, NAX_REPORTED(type, Powx));                          \
    }

NAX_POWX_KERNEL(d, Z0HA, Level::HA, Data::double_ha)
NAX_POWX_KERNEL(d, Z0LA, Level::LA, Data::double_la)
NAX_POWX_KERNEL(d, Z0EP, Level::EP, Data::double_ep)
NAX_POWX_KERNEL(s, Z0HA, Level::HA, Data::single_ha)
NAX_POWX_KERNEL(s, Z0EP, Level::EP, Data::single_ep)
