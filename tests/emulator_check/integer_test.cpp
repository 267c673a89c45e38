// Integer arithmetic, shifts, logic and comparisons, lane by lane in plain C++.
#include <bit>

#include "tests/emulator_check/definition.h"

namespace nax::emulator_check {
namespace {

constexpr std::initializer_list<unsigned> kDefault = {kDefaultMxcsr};

template <class T, class F>
void lanes_agree(const std::string& name, F f) {
    check<T>(integer_instructions(), Definition{name, sizeof(T), each<T, T>(f)}, kDefault);
}

template <class T>
T clamped(int x) {
    return static_cast<T>(x < std::numeric_limits<T>::min() ? std::numeric_limits<T>::min()
                          : x > std::numeric_limits<T>::max() ? std::numeric_limits<T>::max() : x);
}

// Arithmetic modulo 2^n for signed and unsigned alike.
template <class S>
void check_width(const std::string& bits) {
    using U = std::make_unsigned_t<S>;
    lanes_agree<U>("add_epi" + bits, [](U a, U b, U) { return static_cast<U>(a + b); });
    lanes_agree<U>("sub_epi" + bits, [](U a, U b, U) { return static_cast<U>(a - b); });
    lanes_agree<S>("min_epi" + bits, [](S a, S b, S) { return std::min(a, b); });
    lanes_agree<U>("min_epu" + bits, [](U a, U b, U) { return std::min(a, b); });
    lanes_agree<S>("max_epi" + bits, [](S a, S b, S) { return std::max(a, b); });
    lanes_agree<U>("max_epu" + bits, [](U a, U b, U) { return std::max(a, b); });
    lanes_agree<S>("abs_epi" + bits, [](S a, S, S) { return a < 0 ? static_cast<U>(~static_cast<U>(a) + 1) : static_cast<U>(a); });
    if constexpr (sizeof(S) <= 2) {
        lanes_agree<S>("adds_epi" + bits, [](S a, S b, S) { return clamped<S>(a + b); });
        lanes_agree<U>("adds_epu" + bits, [](U a, U b, U) { return clamped<U>(a + b); });
        lanes_agree<S>("subs_epi" + bits, [](S a, S b, S) { return clamped<S>(a - b); });
        lanes_agree<U>("subs_epu" + bits, [](U a, U b, U) { return clamped<U>(a - b); });
        lanes_agree<U>("avg_epu" + bits, [](U a, U b, U) { return static_cast<U>((a + b + 1) / 2); });
    }
    if constexpr (sizeof(S) >= 2) {
        constexpr unsigned width = 8 * sizeof(S);
        lanes_agree<U>("mullo_epi" + bits, [](U a, U b, U) { return static_cast<U>(std::uint64_t{a} * b); });
        lanes_agree<U>("sllv_epi" + bits, [](U a, U b, U) { return b < width ? static_cast<U>(a << b) : U{0}; });
        lanes_agree<U>("srlv_epi" + bits, [](U a, U b, U) { return b < width ? static_cast<U>(a >> b) : U{0}; });
        lanes_agree<S>("srav_epi" + bits, [](S a, S b, S) { return static_cast<U>(b) < width ? static_cast<S>(a >> b) : static_cast<S>(a < 0 ? -1 : 0); });
    }
    if constexpr (sizeof(S) >= 4) {
        lanes_agree<U>("rolv_epi" + bits, [](U a, U b, U) { return std::rotl(a, static_cast<int>(b % (8 * sizeof(U)))); });
        lanes_agree<U>("rorv_epi" + bits, [](U a, U b, U) { return std::rotr(a, static_cast<int>(b % (8 * sizeof(U)))); });
        lanes_agree<U>("lzcnt_epi" + bits, [](U a, U, U) { return static_cast<U>(std::countl_zero(a)); });
    }
}

TEST(EmulatorInteger, ArithmeticOfEveryWidth) {
    check_width<std::int8_t>("8");
    check_width<std::int16_t>("16");
    check_width<std::int32_t>("32");
    check_width<std::int64_t>("64");
}

TEST(EmulatorInteger, ProductsOfHalves) {
    using U16 = std::uint16_t;
    using I16 = std::int16_t;
    using U64 = std::uint64_t;
    lanes_agree<I16>("mulhi_epi16", [](I16 a, I16 b, I16) { return static_cast<I16>((a * b) >> 16); });
    lanes_agree<U16>("mulhi_epu16", [](U16 a, U16 b, U16) { return static_cast<U16>((std::uint32_t{a} * b) >> 16); });
    lanes_agree<I16>("mulhrs_epi16", [](I16 a, I16 b, I16) { return static_cast<I16>((a * b + 0x4000) >> 15); });
    lanes_agree<U64>("mul_epu32", [](U64 a, U64 b, U64) { return (a & 0xFFFFFFFF) * (b & 0xFFFFFFFF); });
    lanes_agree<U64>("mul_epi32", [](U64 a, U64 b, U64) {
        return static_cast<U64>(std::int64_t{static_cast<std::int32_t>(a)} * static_cast<std::int32_t>(b));
    });
}

TEST(EmulatorInteger, ShiftsAndRotatesByImmediates) {
    using U16 = std::uint16_t;
    using U32 = std::uint32_t;
    using U64 = std::uint64_t;
    lanes_agree<U16>("slli_epi16 5", [](U16 a, U16, U16) { return static_cast<U16>(a << 5); });
    lanes_agree<U32>("slli_epi32 31", [](U32 a, U32, U32) { return a << 31; });
    lanes_agree<U64>("slli_epi64 33", [](U64 a, U64, U64) { return a << 33; });
    lanes_agree<U16>("srli_epi16 16", [](U16, U16, U16) { return 0; });
    lanes_agree<U32>("srli_epi32 7", [](U32 a, U32, U32) { return a >> 7; });
    lanes_agree<U64>("srli_epi64 64", [](U64, U64, U64) { return 0; });
    lanes_agree<std::int16_t>("srai_epi16 3", [](std::int16_t a, std::int16_t, std::int16_t) { return a >> 3; });
    lanes_agree<std::int32_t>("srai_epi32 40", [](std::int32_t a, std::int32_t, std::int32_t) { return a < 0 ? -1 : 0; });
    lanes_agree<std::int64_t>("srai_epi64 63", [](std::int64_t a, std::int64_t, std::int64_t) { return a < 0 ? -1 : 0; });
    lanes_agree<U32>("rol_epi32 9", [](U32 a, U32, U32) { return std::rotl(a, 9); });
    lanes_agree<U64>("rol_epi64 0", [](U64 a, U64, U64) { return a; });
    lanes_agree<U64>("ror_epi64 17", [](U64 a, U64, U64) { return std::rotr(a, 17); });
}

TEST(EmulatorInteger, Logic) {
    using U32 = std::uint32_t;
    using U64 = std::uint64_t;
    lanes_agree<U32>("and_epi32", [](U32 a, U32 b, U32) { return a & b; });
    lanes_agree<U64>("and_epi64", [](U64 a, U64 b, U64) { return a & b; });
    lanes_agree<U32>("or_epi32", [](U32 a, U32 b, U32) { return a | b; });
    lanes_agree<U64>("xor_epi64", [](U64 a, U64 b, U64) { return a ^ b; });
    lanes_agree<U32>("andnot_epi32", [](U32 a, U32 b, U32) { return ~a & b; });
    lanes_agree<U64>("andnot_epi64", [](U64 a, U64 b, U64) { return ~a & b; });
}

// Per 128-bit lane: the second source's dwords are shuffled, then two quadruplets slide over each of the first's.
TEST(EmulatorInteger, SumsOfShuffledDifferences) {
    const Definition d{"dbsad_epu8 0x6c", 2, [](const Io& io, std::uint64_t active, Vector& r) {
        constexpr unsigned first_of[] = {0, 0, 4, 4, 8, 8, 12, 12}, second_of[] = {0, 1, 2, 3, 8, 9, 10, 11}, shuffle[] = {0, 3, 2, 1};
        for (unsigned i = 0; i < 32; ++i) {
            if (!(active >> i & 1)) continue;
            int sum = 0;
            for (unsigned j = 0; j < 4; ++j) {
                const unsigned at = second_of[i % 8] + j;
                sum += std::abs(io.a.bytes[i / 8 * 16 + first_of[i % 8] + j] - io.b.bytes[i / 8 * 16 + shuffle[at / 4] * 4 + at % 4]);
            }
            r.set<std::uint16_t>(i, static_cast<std::uint16_t>(sum));
        }
    }};
    check<std::uint16_t>(integer_instructions(), d, kDefault);
}

// The merging form keeps the first operand, which is the destination.
template <class T, class F>
void check_ternary(const std::string& name, F f) {
    const Instruction& instruction = find(integer_instructions(), name);
    Inputs<T> inputs(3, false);
    for (int round = 0; round < 100; ++round) {
        const Io io = inputs.next();
        for (const Form form : {kPlain, kMerging, kZeroing}) {
            Io run = io;
            (form == kPlain ? instruction.plain : form == kMerging ? instruction.merging : instruction.zeroing)(run);
            for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
                const bool active = form == kPlain || (io.mask >> i & 1);
                const T expected = active ? f(io.a.lane<T>(i), io.b.lane<T>(i), io.c.lane<T>(i)) : form == kMerging ? io.a.lane<T>(i) : T{0};
                ASSERT_EQ(run.result.lane<T>(i), expected) << name << " form " << form << " lane " << i;
            }
        }
    }
}
TEST(EmulatorInteger, TernaryLogic) {
    check_ternary<std::uint64_t>("ternarylogic_epi64 0xca", [](auto a, auto b, auto c) { return (a & b) | (~a & c); });
    check_ternary<std::uint32_t>("ternarylogic_epi32 0x96", [](auto a, auto b, auto c) { return a ^ b ^ c; });
}

template <class T>
void check_conflict(const std::string& name) {
    const Definition d{name, sizeof(T), [](const Io& io, std::uint64_t active, Vector& r) {
        for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
            T bits = 0;
            for (unsigned j = 0; j < i; ++j) bits |= static_cast<T>(T{io.a.lane<T>(i) == io.a.lane<T>(j)} << j);
            if (active >> i & 1) r.set<T>(i, bits);
        }
    }};
    check<T>(integer_instructions(), d, kDefault);
}
TEST(EmulatorInteger, ConflictDetection) {
    check_conflict<std::uint32_t>("conflict_epi32");
    check_conflict<std::uint64_t>("conflict_epi64");
}

// Comparisons give one bit a lane; masked ones clear the others and raise no flag for them.
template <class T, class F>
void mask_agrees(const std::string& name, F f, bool signals_nan = false, bool signals_quiet = false) {
    const Instruction& instruction = find(comparison_instructions(), name);
    Inputs<T> inputs(11, false);
    for (int round = 0; round < 300; ++round) {
        Io io = inputs.next();
        for (const bool masked : {false, true}) {
            std::uint64_t expected = 0;
            bool invalid = false;
            for (unsigned i = 0; i < 64 / sizeof(T); ++i) {
                if (masked && !(io.mask >> i & 1)) continue;
                const T a = io.a.lane<T>(i), b = io.b.lane<T>(i);
                expected |= std::uint64_t{f(a, b)} << i;
                if constexpr (std::is_floating_point_v<T>) {
                    for (const T x : {a, b}) {
                        BitsOf<T> bits;
                        std::memcpy(&bits, &x, sizeof bits);
                        const bool quiet = bits >> (std::numeric_limits<T>::digits - 2) & 1;
                        invalid |= std::isnan(x) && (quiet ? signals_quiet : signals_nan);
                    }
                }
            }
            set_mxcsr(kDefaultMxcsr);
            (masked ? instruction.merging : instruction.plain)(io);
            const bool raised = mxcsr() & 1;
            set_mxcsr(kDefaultMxcsr);
            ASSERT_EQ(io.bits, expected) << name << " masked " << masked;
            ASSERT_EQ(raised, invalid) << name << " masked " << masked;
        }
    }
}

TEST(EmulatorCompare, Integers) {
    mask_agrees<std::uint8_t>("cmpeq_epi8", std::equal_to<>());
    mask_agrees<std::uint64_t>("cmpeq_epi64", std::equal_to<>());
    mask_agrees<std::int16_t>("cmpgt_epi16", std::greater<>());
    mask_agrees<std::int32_t>("cmpgt_epi32", std::greater<>());
    mask_agrees<std::int64_t>("cmplt_epi64", std::less<>());
    mask_agrees<std::int8_t>("cmple_epi8", std::less_equal<>());
    mask_agrees<std::uint32_t>("cmplt_epu32", std::less<>());
    mask_agrees<std::uint64_t>("cmpge_epu64", std::greater_equal<>());
    mask_agrees<std::uint16_t>("cmpneq_epu16", std::not_equal_to<>());
    mask_agrees<std::uint8_t>("cmpgt_epu8", std::greater<>());
    mask_agrees<std::uint32_t>("test_epi32", [](auto a, auto b) { return (a & b) != 0; });
    mask_agrees<std::uint64_t>("testn_epi64", [](auto a, auto b) { return (a & b) == 0; });
    mask_agrees<std::uint8_t>("test_epi8", [](auto a, auto b) { return (a & b) != 0; });
    mask_agrees<std::uint16_t>("testn_epi16", [](auto a, auto b) { return (a & b) == 0; });
}

TEST(EmulatorCompare, Floats) {
    mask_agrees<double>("cmp_pd lt_os", [](double a, double b) { return std::isless(a, b); }, true, true);
    mask_agrees<double>("cmp_pd eq_oq", [](double a, double b) { return !std::isunordered(a, b) && a == b; }, true);
    mask_agrees<double>("cmp_pd nge_uq", [](double a, double b) { return !std::isgreaterequal(a, b); }, true);
    mask_agrees<double>("cmp_pd unord_q", [](double a, double b) { return std::isunordered(a, b); }, true);
    mask_agrees<float>("cmp_ps ge_oq", [](float a, float b) { return std::isgreaterequal(a, b); }, true);
    mask_agrees<float>("cmp_ps neq_us", [](float a, float b) { return std::isunordered(a, b) || a != b; }, true, true);
    mask_agrees<float>("cmp_ps true", [](float, float) { return true; }, true);
    mask_agrees<double>("fpclass_pd", [](double a, double) { return std::isnan(a) || std::fpclassify(a) == FP_SUBNORMAL; });
    mask_agrees<float>("fpclass_ps", [](float a, float) { return !std::isnan(a) && std::signbit(a); });
}

}  // namespace
}  // namespace nax::emulator_check
