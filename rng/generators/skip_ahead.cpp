// Skip-ahead of generators with linear state over GF(2).
//
// With F the step of the recurrence and p its characteristic polynomial, p(F) = 0, so F^n s = g(F) s for
// g = x^n mod p. H. Haramoto, M. Matsumoto, T. Nishimura, F. Panneton, P. L'Ecuyer, "Efficient jump ahead for F2-linear
// random number generators", INFORMS Journal on Computing 20 (2008): Horner's rule, and the sliding window over g.
#include <array>
#include <bit>

#include "nax/abi/streams.h"
#include "rng/stream.h"
#include "service/block.h"

namespace nax::rng {

namespace {

constexpr int kWindowBits = 8;  // a leading 1 and seven further bits
constexpr int kWindowTail = kWindowBits - 1;
constexpr int kTableStates = 1 << kWindowTail;

// The generator's operations and the blocks that a skip works with.
struct Skip {
    nax_zero_state_function zero;
    nax_add_state_function add;
    nax_copy_state_function copy;
    nax_update_state_function update;

    void update_times(Stream* state, int times) const {
        for (; times > 0; --times) update(state);
    }
};

bool bit_of(const uint64_t* g, int i) { return (g[i / 64] >> (i % 64) & 1) != 0; }

// Bits low ... low + 6 of g.
unsigned window_tail(const uint64_t* g, int low) {
    const int shift = low % 64;
    uint64_t bits = g[low / 64] >> shift;
    if (shift > 64 - kWindowTail) bits |= g[low / 64 + 1] << (64 - shift);
    return static_cast<unsigned>(bits & (kTableStates - 1));
}

int highest_bit(const uint64_t* g, int degree) {
    int i = degree - 1;
    while (i > 0 && !bit_of(g, i)) --i;
    return i;
}

// State blocks side by side, each on a boundary of its own size class.
class States {
public:
    States(int count, int state_size) : stride_((static_cast<std::size_t>(state_size) + 127) / 128 * 128) {
        memory_.allocate(stride_ * static_cast<std::size_t>(count));
    }
    explicit operator bool() const { return static_cast<bool>(memory_); }
    Stream* operator[](unsigned i) const { return reinterpret_cast<Stream*>(memory_.get() + stride_ * i); }

private:
    std::size_t stride_;
    service::Block<unsigned char> memory_;
};

void horner(const Skip& skip, const uint64_t* g, int degree, Stream* work, const Stream* s) {
    const int top = highest_bit(g, degree);
    skip.copy(work, s);
    if (top == 0) return;
    skip.update(work);
    for (int i = top - 1; i > 0; --i) {
        if (bit_of(g, i)) skip.add(work, s);
        skip.update(work);
    }
    if (bit_of(g, 0)) skip.add(work, s);
}

// Entry c becomes (F^7 + c(F)) s; in the order of the reflected Gray code each entry differs from an earlier one by one
// power of F.
void fill_table(const Skip& skip, const States& table, Stream* element, const Stream* s) {
    skip.copy(table[0], s);
    skip.update_times(table[0], kWindowTail);
    unsigned previous = 0;
    for (unsigned i = 1; i < kTableStates; ++i) {
        const unsigned code = i ^ i >> 1;
        const unsigned changed = code ^ previous;
        skip.copy(element, s);
        skip.update_times(element, std::countr_zero(changed));
        skip.copy(table[code], table[previous]);
        skip.add(table[code], element);
        previous = code;
    }
}

void sliding_window(const Skip& skip, const uint64_t* g, int degree, const States& table, Stream* work, const Stream* s) {
    skip.zero(work);
    int i = highest_bit(g, degree);
    while (i >= kWindowTail) {
        if (!bit_of(g, i)) {
            skip.update(work);
            --i;
            continue;
        }
        skip.update_times(work, kWindowBits);
        skip.add(work, table[window_tail(g, i - kWindowTail)]);
        i -= kWindowBits;
    }
    for (; i >= 0; --i) {
        skip.update(work);
        if (bit_of(g, i)) skip.add(work, s);
    }
}

// The frame of both forms: what is left after Process goes through g(F).
template <class Apply>
int skip_by_polynomial(Stream* stream, nax_finish_state_function finish, const nax_skip_parameters& params,
                       int states, const Apply& apply) {
    uint64_t nskip = params.NSkip;
    int extra = 0;
    if (nskip == 0 || params.Process(stream, &nskip, &extra) == 0) return STO_STATUS_OK;
    service::Block<uint64_t> g(static_cast<std::size_t>(params.N));
    const States blocks(states, params.StateSize);
    if (!g || !blocks) return STO_STATUS_NO_MEMORY;
    const int status = __stoPolyRem(nskip, params.Degree, params.Terms, params.Table, params.N, g.get());
    if (status < 0) return status;
    finish(stream, apply(g.get(), blocks), extra);
    return STO_STATUS_OK;
}

}  // namespace

}  // namespace nax::rng

using namespace nax::rng;

extern "C" int __sto_SkipAheadHorner(nax_stream* stream, nax_zero_state_function zero, nax_add_state_function add,
                                     nax_copy_state_function copy1, nax_update_state_function update,
                                     nax_finish_state_function copy2, const nax_skip_parameters* params) {
    const Skip skip{zero, add, copy1, update};
    return skip_by_polynomial(stream, copy2, *params, 1, [&](const uint64_t* g, const States& blocks) {
        horner(skip, g, params->Degree, blocks[0], stream);
        return blocks[0];
    });
}

extern "C" int __sto_SkipAheadSWin(nax_stream* stream, nax_zero_state_function zero, nax_add_state_function add,
                                   nax_copy_state_function copy1, nax_update_state_function update,
                                   nax_finish_state_function copy2, const nax_skip_parameters* params) {
    const Skip skip{zero, add, copy1, update};
    constexpr unsigned kElement = kTableStates;
    constexpr unsigned kWork = kTableStates + 1;
    return skip_by_polynomial(stream, copy2, *params, kTableStates + 2, [&](const uint64_t* g, const States& blocks) {
        fill_table(skip, blocks, blocks[kElement], stream);
        sliding_window(skip, g, params->Degree, blocks, blocks[kWork], stream);
        return blocks[kWork];
    });
}
