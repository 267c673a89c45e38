// Output of WH. Everything runs in doubles: x is below 2^24 and every power of a multiplier too, so products are exact, and
// a reciprocal gives the quotient: p/m is at least 1/m > 2^-24 away from an integer (m is prime and divides neither
// factor), while p (1/m) is off by less than 2^-27.
//
// Sixteen consecutive outputs are made first, by steps of 1, 2, 4 and 8; from then on all of them step by a^16.
#include "rng/generators/wh.h"

#include "rng/registry.h"
#include "rng/simd.h"

using namespace nax::rng;

namespace {

constexpr int kBlock = 16;

double step(double x, double a, double m, double reciprocal) {
    const double product = a * x;
    return __builtin_fma(-m, __builtin_trunc(product * reciprocal), product);
}

F64 step(F64 x, F64 a, F64 m, F64 reciprocal) {
    const F64 product = a * x;
    return fnma(m, truncate(product * reciprocal), product);
}

// One call: the state in doubles, with the row's constants.
struct Components {
    double x[kWhComponents], a[kWhComponents];
    const uint32_t* moduli;
    const double* reciprocals;

    explicit Components(const Stream* stream) {
        const WhState& state = payload<WhState>(stream);
        const int row = substream_of(stream);
        moduli = _sto_WH_M[row];
        reciprocals = _stodWH_IM_Tab[row];
        for (int j = 0; j < kWhComponents; ++j) {
            x[j] = static_cast<double>(state.x[j]);
            a[j] = static_cast<double>(state.a[j]);
        }
    }
    double modulus(int j) const { return static_cast<double>(moduli[j]); }
    void advance() {
        for (int j = 0; j < kWhComponents; ++j) x[j] = step(x[j], a[j], modulus(j), reciprocals[j]);
    }
    // The sum of fractions modulo 1.
    double fraction() const {
        double sum = x[0] * reciprocals[0];
        for (int j = 1; j < kWhComponents; ++j) sum += x[j] * reciprocals[j];
        return sum - __builtin_trunc(sum);
    }
    void keep(Stream* stream) const {
        WhState& state = payload<WhState>(stream);
        for (int j = 0; j < kWhComponents; ++j) state.x[j] = static_cast<uint32_t>(x[j]);
    }
};

// Sixteen consecutive values of component j, and a^16.
double first_block(const Components& components, int j, double* values) {
    const double m = components.modulus(j), reciprocal = components.reciprocals[j];
    double power = components.a[j];
    values[0] = components.x[j];
    for (int have = 1; have < kBlock; have *= 2) {
        for (int i = 0; i < have; ++i) values[have + i] = step(values[i], power, m, reciprocal);
        power = step(power, power, m, reciprocal);
    }
    return power;
}

// Component by component, lanes along the sequence.
struct BlockByComponent {
    static constexpr int kParts = kBlock / kLanes64;
    alignas(64) double x[kWhComponents][kBlock];
    double stride[kWhComponents];
};

template <class T>
void put_fractions(T* r, F64 sum, T a, T b) {
    const F64 u = sum - truncate(sum);
    const double width = static_cast<double>(b) - static_cast<double>(a);
    const F64 value = fma(broadcast(width), u, broadcast(static_cast<double>(a)));
    if constexpr (sizeof(T) == sizeof(float)) store(r, narrow(value));
    else store(r, value);
}

template <class T>
void generate_blocks(BlockByComponent& block, const Components& components, int blocks, T* r, T a, T b) {
    constexpr int kParts = BlockByComponent::kParts;
    for (int part = 0; part < kParts; ++part) {
        F64 x[kWhComponents], m[kWhComponents], reciprocal[kWhComponents], stride[kWhComponents];
        for (int j = 0; j < kWhComponents; ++j) {
            x[j] = load<F64>(block.x[j] + part * kLanes64);
            m[j] = broadcast(components.modulus(j));
            reciprocal[j] = broadcast(components.reciprocals[j]);
            stride[j] = broadcast(block.stride[j]);
        }
        T* to = r + part * kLanes64;
        for (int i = 0; i < blocks; ++i, to += kBlock) {
            F64 sum = x[0] * reciprocal[0];
            for (int j = 1; j < kWhComponents; ++j) sum += x[j] * reciprocal[j];
            put_fractions(to, sum, a, b);
            for (int j = 0; j < kWhComponents; ++j) x[j] = step(x[j], stride[j], m[j], reciprocal[j]);
        }
        for (int j = 0; j < kWhComponents; ++j) store(block.x[j] + part * kLanes64, x[j]);
    }
}

template <class T>
int generate_real(Stream* stream, int n, T* r, T a, T b) {
    if (n <= 0) return STO_STATUS_OK;
    Components components(stream);
    const int blocks = n / kBlock;
    if (blocks > 0) {
        BlockByComponent block;
        for (int j = 0; j < kWhComponents; ++j) block.stride[j] = first_block(components, j, block.x[j]);
        generate_blocks(block, components, blocks, r, a, b);
        for (int j = 0; j < kWhComponents; ++j) components.x[j] = block.x[j][0];
    }
    const double width = static_cast<double>(b) - static_cast<double>(a);
    for (int i = blocks * kBlock; i < n; ++i) {
        r[i] = static_cast<T>(__builtin_fma(width, components.fraction(), static_cast<double>(a)));
        components.advance();
    }
    components.keep(stream);
    return STO_STATUS_OK;
}

// For words the four components of an output stand side by side, as they are written.
struct BlockByOutput {
    alignas(64) double x[kBlock * kWhComponents];
    alignas(64) double stride[kLanes64], m[kLanes64], reciprocal[kLanes64];

    explicit BlockByOutput(const Components& components) {
        for (int j = 0; j < kWhComponents; ++j) {
            double values[kBlock];
            const double power = first_block(components, j, values);
            for (int i = 0; i < kBlock; ++i) x[i * kWhComponents + j] = values[i];
            for (int lane = j; lane < kLanes64; lane += kWhComponents) {
                stride[lane] = power;
                m[lane] = components.modulus(j);
                reciprocal[lane] = components.reciprocals[j];
            }
        }
    }
};

void generate_word_blocks(BlockByOutput& block, int blocks, uint32_t* r) {
    constexpr int kVectors = kBlock * kWhComponents / kLanes64;
    const F64 stride = load<F64>(block.stride), m = load<F64>(block.m), reciprocal = load<F64>(block.reciprocal);
    for (int i = 0; i < blocks; ++i) {
        for (int v = 0; v < kVectors; ++v, r += kLanes64) {
            double* const at = block.x + v * kLanes64;
            const F64 x = load<F64>(at);
            store(r, to_words(x));
            store(at, step(x, stride, m, reciprocal));
        }
    }
}

int generate_words(Stream* stream, int n, uint32_t* r) {
    if (n <= 0) return STO_STATUS_OK;
    Components components(stream);
    const int blocks = n / kBlock;
    if (blocks > 0) {
        BlockByOutput block(components);
        generate_word_blocks(block, blocks, r);
        for (int j = 0; j < kWhComponents; ++j) components.x[j] = block.x[j];
    }
    r += static_cast<long>(blocks) * kBlock * kWhComponents;
    for (int i = blocks * kBlock; i < n; ++i, r += kWhComponents) {
        for (int j = 0; j < kWhComponents; ++j) r[j] = static_cast<uint32_t>(components.x[j]);
        components.advance();
    }
    components.keep(stream);
    return STO_STATUS_OK;
}

}  // namespace

extern "C" {

int __stoiBRngWH(nax_stream* stream, int n, void* r) { return generate_words(stream, n, static_cast<uint32_t*>(r)); }

int __stodBRngWH(nax_stream* stream, int n, double* r, double a, double b) { return generate_real(stream, n, r, a, b); }

int __stosBRngWH(nax_stream* stream, int n, float* r, float a, float b) { return generate_real(stream, n, r, a, b); }

}  // extern "C"
