// Abstract streams: a ring of numbers that the caller's callback fills. Three kinds, by the type of the numbers; each
// delivers its own type only.
//
// Of the N slots, Free may be refilled and the other N - Free are unread; reading goes on at Idx, filling at
// (Idx + N - Free) mod N. A new stream's ring is empty, so the first draw calls the callback.
#include <algorithm>
#include <type_traits>

#include "rng/generator.h"

using namespace nax::rng;

namespace {

struct IntegerRing {
    using Value = uint32_t;
    using Callback = nax_integer_callback;
    int32_t n, index, free_slots;
    uint32_t* buffer;
    Callback callback;
};
struct DoubleRing {
    using Value = double;
    using Callback = nax_double_callback;
    int32_t n, index, free_slots;
    double low, high;
    double* buffer;
    Callback callback;
};
struct SingleRing {
    using Value = float;
    using Callback = nax_single_callback;
    int32_t n, index, free_slots;
    float low, high;
    float* buffer;
    Callback callback;
};
static_assert(kStreamStateSize<IntegerRing> == 48 && offsetof(IntegerRing, buffer) == 16);
static_assert(kStreamStateSize<DoubleRing> == 64 && offsetof(DoubleRing, low) == 16 && offsetof(DoubleRing, buffer) == 32);
static_assert(kStreamStateSize<SingleRing> == 56 && offsetof(SingleRing, low) == 12 && offsetof(SingleRing, buffer) == 24);

// What the constructors hand to InitStream: 6 words for integers, 10 for real numbers.
struct IntegerParams {
    int32_t n;
    uint32_t* buffer;
    nax_integer_callback callback;
};
template <class Ring>
struct RealParams {
    int32_t n;
    typename Ring::Value* buffer;
    double low, high;
    typename Ring::Callback callback;
};
constexpr int kIntegerParamWords = 6;
constexpr int kRealParamWords = 10;
static_assert(sizeof(IntegerParams) == 4 * kIntegerParamWords && sizeof(RealParams<DoubleRing>) == 4 * kRealParamWords);

// The integers as they are.
struct Copy {
    uint32_t operator()(uint32_t value) const { return value; }
};

// From the stream's interval [low, high) to the call's [a, b).
template <class T>
struct MapInterval {
    T low, origin, scale;
    MapInterval(T low_, T high, T a, T b) : low(low_), origin(a), scale((b - a) / (high - low_)) {}
    T operator()(T value) const {
        if constexpr (std::is_same_v<T, float>) return __builtin_fmaf(scale, value - low, origin);
        else return __builtin_fma(scale, value - low, origin);
    }
};

// Position in the ring during one call; stored back when the call succeeds.
struct Position {
    int64_t n, index, free_slots;
    int64_t unread() const { return n - free_slots; }
    int64_t fill() const { return (index + unread()) % n; }
};

// Takes up to `count` unread values, in two pieces when the ring's end is crossed; returns how many.
template <class T, class Map>
int64_t take(const T* buffer, Position& position, int64_t count, T* r, const Map& map) {
    const int64_t taken = std::min(count, position.unread());
    const int64_t first = std::min(taken, position.n - position.index);
    for (int64_t i = 0; i < first; ++i) r[i] = map(buffer[position.index + i]);
    for (int64_t i = first; i < taken; ++i) r[i] = map(buffer[i - first]);
    position.index = (position.index + taken) % position.n;
    position.free_slots += taken;
    return taken;
}

template <class Ring>
int refill(Stream* stream, const Ring& ring, Position& position, int64_t needed) {
    int n = ring.n;
    int free_slots = static_cast<int>(position.free_slots);
    int wanted = static_cast<int>(std::min(position.free_slots, needed));
    int fill = static_cast<int>(position.fill());
    const int placed = ring.callback(stream, &n, ring.buffer, &wanted, &free_slots, &fill);
    if (placed < 0 || placed > position.free_slots) return STO_STATUS_CALLBACK_BAD_COUNT;
    if (placed == 0) return STO_STATUS_CALLBACK_EMPTY;
    position.free_slots -= placed;
    return STO_STATUS_OK;
}

template <class Ring, class Map>
int generate(Stream* stream, int n, typename Ring::Value* r, const Map& map) {
    Ring& ring = payload<Ring>(stream);
    Position position{ring.n, ring.index, ring.free_slots};
    int64_t done = take(ring.buffer, position, std::max(n, 0), r, map);
    while (done < n) {
        const int status = refill(stream, ring, position, n - done);
        if (status != STO_STATUS_OK) return status;
        done += take(ring.buffer, position, n - done, r + done, map);
    }
    ring.index = static_cast<int32_t>(position.index);
    ring.free_slots = static_cast<int32_t>(position.free_slots);
    return STO_STATUS_OK;
}

template <class Ring>
int generate_real(Stream* stream, int n, typename Ring::Value* r, typename Ring::Value a, typename Ring::Value b) {
    const Ring& ring = payload<Ring>(stream);
    if (ring.buffer == nullptr) return STO_STATUS_NULL_POINTER;
    return generate<Ring>(stream, n, r, MapInterval<typename Ring::Value>(ring.low, ring.high, a, b));
}

template <class Ring>
void reset(Ring& ring, int n, typename Ring::Value* buffer, typename Ring::Callback callback) {
    ring.n = n;
    ring.index = 0;
    ring.free_slots = n;
    ring.buffer = buffer;
    ring.callback = callback;
}

// The ring that a stream's constructor describes. An image's pointers are those of the process that saved it.
template <class Ring>
bool ring_in_range(const Stream* stream) {
    const Ring& ring = payload<Ring>(stream);
    return ring.n >= 1 && ring.index >= 0 && ring.index < ring.n && ring.free_slots >= 0 && ring.free_slots <= ring.n;
}

template <class Ring>
struct RealAbstract {
    static int seed(Stream* stream, int n, const uint32_t* params) {
        if (n < kRealParamWords) return STO_STATUS_BAD_ARGUMENT;
        const auto& given = *reinterpret_cast<const RealParams<Ring>*>(params);
        Ring& ring = payload<Ring>(stream);
        reset(ring, given.n, given.buffer, given.callback);
        ring.low = static_cast<typename Ring::Value>(given.low);
        ring.high = static_cast<typename Ring::Value>(given.high);
        return STO_STATUS_OK;
    }
    static bool valid(const Stream* stream) { return ring_in_range<Ring>(stream); }
};

struct IntegerAbstract {
    static int seed(Stream* stream, int n, const uint32_t* params) {
        if (n < kIntegerParamWords) return STO_STATUS_BAD_ARGUMENT;
        const auto& given = *reinterpret_cast<const IntegerParams*>(params);
        reset(payload<IntegerRing>(stream), given.n, given.buffer, given.callback);
        return STO_STATUS_OK;
    }
    static bool valid(const Stream* stream) { return ring_in_range<IntegerRing>(stream); }
};

int new_abstract(Stream** stream, int brng, int words, const void* params) {
    const BrngPlace place = place_of(brng);
    const int status = __stoAllocateStream(stream, place.table, brng, place.row, place.offset);
    if (status != STO_STATUS_OK) return status;
    return place.properties().InitStream(NAX_INIT_STANDARD, *stream, words, params);
}

template <class Ring>
int new_real(Stream** stream, int brng, int n, typename Ring::Value* buffer, double a, double b,
             typename Ring::Callback callback) {
    *stream = nullptr;
    if (n < 1 || buffer == nullptr || callback == nullptr || !(a < b)) return STO_STATUS_BAD_ARGUMENT;
    const RealParams<Ring> params{n, buffer, a, b, callback};
    return new_abstract(stream, brng, kRealParamWords, &params);
}

}  // namespace

NAX_GENERATOR(iAbstract, IntegerAbstract)
NAX_GENERATOR(dAbstract, RealAbstract<DoubleRing>)
NAX_GENERATOR(sAbstract, RealAbstract<SingleRing>)

extern "C" {

int __stoiNewAbstractStream(nax_stream** stream, int n, uint32_t* buffer, nax_integer_callback callback) {
    *stream = nullptr;
    if (n < 1 || buffer == nullptr || callback == nullptr) return STO_STATUS_BAD_ARGUMENT;
    const IntegerParams params{n, buffer, callback};
    return new_abstract(stream, NAX_BRNG_IABSTRACT, kIntegerParamWords, &params);
}

int __stodNewAbstractStream(nax_stream** stream, int n, double* buffer, double a, double b,
                            nax_double_callback callback) {
    return new_real<DoubleRing>(stream, NAX_BRNG_DABSTRACT, n, buffer, a, b, callback);
}

int __stosNewAbstractStream(nax_stream** stream, int n, float* buffer, float a, float b,
                            nax_single_callback callback) {
    return new_real<SingleRing>(stream, NAX_BRNG_SABSTRACT, n, buffer, static_cast<double>(a), static_cast<double>(b),
                                callback);
}

int __stoiBRngiAbstract(nax_stream* stream, int n, void* r) {
    if (payload<IntegerRing>(stream).buffer == nullptr) return STO_STATUS_NULL_POINTER;
    return generate<IntegerRing>(stream, n, static_cast<uint32_t*>(r), Copy{});
}
int __stodBRngiAbstract(nax_stream*, int, double*, double, double) { return STO_STATUS_WRONG_ABSTRACT_KIND; }
int __stosBRngiAbstract(nax_stream*, int, float*, float, float) { return STO_STATUS_WRONG_ABSTRACT_KIND; }

int __stoiBRngdAbstract(nax_stream*, int, void*) { return STO_STATUS_WRONG_ABSTRACT_KIND; }
int __stodBRngdAbstract(nax_stream* stream, int n, double* r, double a, double b) {
    return generate_real<DoubleRing>(stream, n, r, a, b);
}
int __stosBRngdAbstract(nax_stream*, int, float*, float, float) { return STO_STATUS_WRONG_ABSTRACT_KIND; }

int __stoiBRngsAbstract(nax_stream*, int, void*) { return STO_STATUS_WRONG_ABSTRACT_KIND; }
int __stodBRngsAbstract(nax_stream*, int, double*, double, double) { return STO_STATUS_WRONG_ABSTRACT_KIND; }
int __stosBRngsAbstract(nax_stream* stream, int n, float* r, float a, float b) {
    return generate_real<SingleRing>(stream, n, r, a, b);
}

}  // extern "C"
