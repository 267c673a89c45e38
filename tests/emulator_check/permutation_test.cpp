// Permutations as maps from result lanes to source lanes.
#include "tests/emulator_check/definition.h"

namespace nax::emulator_check {
namespace {

constexpr std::initializer_list<unsigned> kDefault = {kDefaultMxcsr};

// r[i] = concat(a, b)[from(i, io)]; lanes named by kZero are zero.
constexpr unsigned kZero = ~0u;

template <class T, class F>
Definition moved(const std::string& name, F from) {
    return {name, sizeof(T), [from](const Io& io, std::uint64_t active, Vector& r) {
        constexpr unsigned n = 64 / sizeof(T);
        for (unsigned i = 0; i < n; ++i) {
            if (!(active >> i & 1)) continue;
            const unsigned at = from(i, io);
            r.set<T>(i, at == kZero ? T{0} : at < n ? io.a.lane<T>(at) : io.b.lane<T>(at - n));
        }
    }};
}
template <class T, class F>
void moves(const std::string& name, F from) { check<T>(permutation_instructions(), moved<T>(name, from), kDefault); }

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

TEST(EmulatorPermute, AcrossTheRegister) {
    moves<U64>("permutexvar_pd", [](unsigned i, const Io& io) { return unsigned(io.b.lane<U64>(i) % 8); });
    moves<U32>("permutexvar_ps", [](unsigned i, const Io& io) { return io.b.lane<U32>(i) % 16; });
    moves<U16>("permutexvar_epi16", [](unsigned i, const Io& io) { return io.b.lane<U16>(i) % 32u; });
    moves<U32>("permutexvar_epi32", [](unsigned i, const Io& io) { return io.b.lane<U32>(i) % 16; });
    moves<U64>("permutexvar_epi64", [](unsigned i, const Io& io) { return unsigned(io.b.lane<U64>(i) % 8); });
    moves<U64>("permutex2var_pd", [](unsigned i, const Io& io) { return unsigned(io.c.lane<U64>(i) % 16); });
    moves<U32>("permutex2var_ps", [](unsigned i, const Io& io) { return io.c.lane<U32>(i) % 32; });
    moves<U16>("permutex2var_epi16", [](unsigned i, const Io& io) { return io.c.lane<U16>(i) % 64u; });
    moves<U32>("permutex2var_epi32", [](unsigned i, const Io& io) { return io.c.lane<U32>(i) % 32; });
    moves<U64>("permutex2var_epi64", [](unsigned i, const Io& io) { return unsigned(io.c.lane<U64>(i) % 16); });
    moves<U64>("permutex_pd", [](unsigned i, const Io&) { return i / 4 * 4 + (i + 2) % 4; });
    moves<U32>("shuffle_f32x4", [](unsigned i, const Io&) { constexpr unsigned block[] = {1, 3, 4, 6}; return block[i / 4] * 4 + i % 4; });
    moves<U64>("shuffle_i64x2", [](unsigned i, const Io&) { constexpr unsigned block[] = {2, 3, 4, 5}; return block[i / 2] * 2 + i % 2; });
    // valign takes the second operand as the low half.
    moves<U32>("alignr_epi32", [](unsigned i, const Io&) { return i + 5 < 16 ? 16 + i + 5 : i + 5 - 16; });
    moves<U64>("alignr_epi64", [](unsigned i, const Io&) { return i + 3 < 8 ? 8 + i + 3 : i + 3 - 8; });
    moves<U64>("insertf64x4", [](unsigned i, const Io&) { return i < 4 ? i : 8 + i - 4; });
    moves<U32>("inserti32x4", [](unsigned i, const Io&) { return i / 4 == 2 ? 16 + i % 4 : i; });
    moves<U32>("broadcast_f32x8", [](unsigned i, const Io&) { return i % 8; });
    moves<U64>("broadcast_i64x2", [](unsigned i, const Io&) { return i % 2; });
    moves<U16>("broadcastw", [](unsigned, const Io&) { return 0u; });
}

TEST(EmulatorPermute, WithinLanes) {
    moves<U32>("permute_ps", [](unsigned i, const Io&) { return i / 4 * 4 + 3 - i % 4; });
    moves<U64>("permute_pd", [](unsigned i, const Io&) { return i / 2 * 2 + (0x6Au >> i & 1); });
    moves<U64>("permutevar_pd", [](unsigned i, const Io& io) { return i / 2 * 2 + unsigned(io.b.lane<U64>(i) >> 1 & 1); });
    moves<U32>("permutevar_ps", [](unsigned i, const Io& io) { return i / 4 * 4 + io.b.lane<U32>(i) % 4; });
    moves<U16>("shufflehi_epi16", [](unsigned i, const Io&) { return i % 8 < 4 ? i : i / 4 * 4 + (0x39u >> (2 * (i % 4)) & 3); });
    moves<U16>("shufflelo_epi16", [](unsigned i, const Io&) { return i % 8 >= 4 ? i : i / 4 * 4 + (0x93u >> (2 * (i % 4)) & 3); });
    moves<U64>("shuffle_pd", [](unsigned i, const Io&) { return i / 2 * 2 + (0xA5u >> i & 1) + (i % 2 ? 8 : 0); });
    moves<U32>("shuffle_ps", [](unsigned i, const Io&) { return i / 4 * 4 + (0xE1u >> (2 * (i % 4)) & 3) + (i % 4 >= 2 ? 16 : 0); });
    moves<U8>("alignr_epi8", [](unsigned i, const Io&) { return i % 16 + 20 < 32 ? i / 16 * 16 + (i % 16 + 4) : kZero; });
    moves<U8>("shuffle_epi8", [](unsigned i, const Io& io) { const U8 x = io.b.lane<U8>(i); return x & 128 ? kZero : i / 16 * 16 + x % 16; });
    moves<U64>("unpacklo_pd", [](unsigned i, const Io&) { return i / 2 * 2 + (i % 2 ? 8 : 0); });
    moves<U32>("unpackhi_ps", [](unsigned i, const Io&) { return i / 4 * 4 + 2 + i % 4 / 2 + (i % 2 ? 16 : 0); });
    moves<U8>("unpacklo_epi8", [](unsigned i, const Io&) { return i / 16 * 16 + i % 16 / 2 + (i % 2 ? 64 : 0); });
    moves<U16>("unpackhi_epi16", [](unsigned i, const Io&) { return i / 8 * 8 + 4 + i % 8 / 2 + (i % 2 ? 32 : 0); });
    moves<U64>("movedup_pd", [](unsigned i, const Io&) { return i / 2 * 2; });
    moves<U32>("moveldup_ps", [](unsigned i, const Io&) { return i / 2 * 2; });
    moves<U32>("movehdup_ps", [](unsigned i, const Io&) { return i / 2 * 2 + 1; });
}

template <class To, class From>
Definition packed(const std::string& name) {
    return {name, sizeof(To), [](const Io& io, std::uint64_t active, Vector& r) {
        constexpr unsigned n = 16 / sizeof(From);  // of a lane of one source
        for (unsigned i = 0; i < 64 / sizeof(To); ++i) {
            if (!(active >> i & 1)) continue;
            const unsigned in_lane = i % (2 * n), at = i / (2 * n) * n + in_lane % n;
            const long x = in_lane < n ? io.a.lane<From>(at) : io.b.lane<From>(at);
            const long low = std::numeric_limits<To>::min(), high = std::numeric_limits<To>::max();
            r.set<To>(i, static_cast<To>(std::min(std::max(x, low), high)));
        }
    }};
}
TEST(EmulatorPermute, PacksSaturate) {
    check<std::int32_t>(permutation_instructions(), packed<std::int16_t, std::int32_t>("packs_epi32"), kDefault);
    check<std::int16_t>(permutation_instructions(), packed<std::uint8_t, std::int16_t>("packus_epi16"), kDefault);
}

// Compression puts the chosen lanes side by side, expansion spreads them; what is left over is kept or cleared.
template <class T>
void check_compression(const std::string& name, bool expands) {
    const Instruction& instruction = find(permutation_instructions(), name);
    Inputs<T> inputs(21, false);
    for (int round = 0; round < 200; ++round) {
        Io io = inputs.next();
        for (const bool zeroing : {false, true}) {
            constexpr unsigned n = 64 / sizeof(T);
            Vector expected = zeroing ? Vector{} : io.c;
            unsigned next = 0;
            for (unsigned i = 0; i < n; ++i) {
                if (!(io.mask >> i & 1)) continue;
                if (expands) expected.set<T>(i, io.a.lane<T>(next++));
                else expected.set<T>(next++, io.a.lane<T>(i));
            }
            (zeroing ? instruction.zeroing : instruction.merging)(io);
            ASSERT_EQ(show(io.result, sizeof(T)), show(expected, sizeof(T))) << name << " zeroing " << zeroing;
        }
    }
}
TEST(EmulatorPermute, CompressionAndExpansion) {
    check_compression<U64>("compress_pd", false);
    check_compression<U32>("compress_epi32", false);
    check_compression<U32>("expand_ps", true);
    check_compression<U64>("expand_epi64", true);
}

}  // namespace
}  // namespace nax::emulator_check
