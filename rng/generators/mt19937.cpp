// MT19937, the Mersenne twister.
//
//   x(k+624) = x(k+397) ^ (y >> 1) ^ (0x9908B0DF if y is odd),  y = upper bit of x(k), lower 31 bits of x(k+1)
//
// Period 2^19937 - 1. Output words are the tempered 32-bit x, equidistributed in 623 dimensions; reals are a + (b - a) y / 2^32.
// M. Matsumoto, T. Nishimura, "Mersenne twister: a 623-dimensionally equidistributed uniform pseudo-random number
// generator", ACM Transactions on Modeling and Computer Simulation 8 (1998), 3-30.
#include "rng/generators/mt19937.h"

#include <cstring>
#include <iterator>

#include "rng/generator.h"
#include "rng/generators/state_words.h"
#include "rng/generators/twister_seeding.h"

namespace nax::rng {

namespace {

constexpr int kWords = kMt19937Words;
constexpr uint64_t kPolynomialFrom = 0x800000;  // words from which the polynomial is cheaper than plain generation

Mt19937State& state_of(Stream* stream) { return payload<Mt19937State>(stream); }
const Mt19937State& state_of(const Stream* stream) { return payload<Mt19937State>(stream); }

// The state as a ring: its oldest word is the one that the next step replaces.
int oldest(const Mt19937State& state) { return state.next == kWords ? 0 : state.next; }

void _ZeroState(Stream* state) {
    Mt19937State& s = state_of(state);
    std::memset(s.x, 0, sizeof(s.x));
    s.next = 0;
}

void _AddState(Stream* destination, const Stream* source) {
    xor_ring_624(state_of(destination).x, oldest(state_of(destination)), state_of(source).x, oldest(state_of(source)));
}

void _CopyState1(Stream* destination, const Stream* source) {
    std::memcpy(state_of(destination).x, state_of(source).x, sizeof(Mt19937State::x));
    state_of(destination).next = state_of(source).next;
}

void _UpdateS(Stream* state) {
    Mt19937State& s = state_of(state);
    const int k = oldest(s);
    const int following = k + 1 < kWords ? k + 1 : 0;
    const int middle = k < kWords - kMt19937Middle ? k + kMt19937Middle : k + kMt19937Middle - kWords;
    const uint32_t y = (s.x[k] & kMt19937UpperBit) | (s.x[following] & ~kMt19937UpperBit);
    s.x[k] = s.x[middle] ^ (y >> 1) ^ ((0u - (y & 1)) & kMt19937MatrixA);
    s.next = k + 1;
}

// The low 31 bits of the oldest word have no part in the recurrence, so the polynomial doesn't bring them. The step that
// made the newest word tells them: its y was odd if the upper bit of (y >> 1) ^ A is set.
void restore_oldest(Mt19937State& s) {
    const int k = oldest(s);
    const uint32_t t = s.x[(k + kWords - 1) % kWords] ^ s.x[(k + kMt19937Middle - 1) % kWords];
    const uint32_t odd = t >> 31;
    const uint32_t y = (t ^ ((0u - odd) & kMt19937MatrixA)) << 1 | odd;
    s.x[k] = (s.x[k] & kMt19937UpperBit) | (y & ~kMt19937UpperBit);
}

// Plain generation works in whole blocks, of which `read` words are delivered: the ring is turned until its oldest word
// stands there and stepped to its end, so the stream is in the very state that generation leaves.
void _CopyState2(Stream* stream, Stream* work, int read) {
    restore_oldest(state_of(work));
    Mt19937State& s = state_of(stream);
    turn_ring_624(s.x, read, state_of(work).x, oldest(state_of(work)));
    s.next = read;
    if (read == 0) s.next = kWords;
    while (s.next < kWords) _UpdateS(stream);
    if (read > 0) s.next = read;
}

int _ProcessIdx(Stream* stream, uint64_t* nskip, int* read) {
    Mt19937State& s = state_of(stream);
    const uint64_t unread = static_cast<uint64_t>(kWords - s.next);
    if (*nskip <= unread) {
        s.next += static_cast<int32_t>(*nskip);
        return 0;
    }
    *nskip -= unread;
    *read = static_cast<int>(*nskip % kWords);
    s.next = kWords;
    return 1;
}

struct Mt19937 {
    static int seed(Stream* stream, int n, const uint32_t* seeds) {
        Mt19937State& state = state_of(stream);
        seed_twister(state.x, seeds, n);
        state.next = kWords;
        state.unused = 0;
        return STO_STATUS_OK;
    }
    static int skip_ahead(Stream* stream, int, uint64_t nskip) {
        if (nskip < kPolynomialFrom) {
            mt19937_discard(state_of(stream), nskip);
            return STO_STATUS_OK;
        }
        const nax_skip_parameters params = {_ProcessIdx, nskip, kWords, 19937, kStreamStateSize<Mt19937State>,
                                            std::size(_sto_mt19937_poly), _sto_mt19937_poly};
        return __sto_SkipAheadSWin(stream, _ZeroState, _AddState, _CopyState1, _UpdateS, _CopyState2, &params);
    }
    static bool valid(const Stream* stream) { return state_of(stream).next >= 0 && state_of(stream).next <= kWords; }
};

}  // namespace

}  // namespace nax::rng

NAX_GENERATOR(MT19937, nax::rng::Mt19937)
