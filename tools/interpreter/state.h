// The processor state the interpreter works on: what the signal frame delivers plus what the host's registers lack.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace nax::emulator {

// One vector register, seen as lanes of any type.
union alignas(64) Zmm {
    __m256i y[2];
    __m128i x[4];
    double f64[8];
    float f32[16];
    std::uint64_t u64[8];
    std::uint32_t u32[16];
    std::uint16_t u16[32];
    std::uint8_t u8[64];
    std::int64_t i64[8];
    std::int32_t i32[16];
    std::int16_t i16[32];
    std::int8_t i8[64];
};

// Positions in State::gpr beyond the sixteen registers.
enum : std::uint8_t { kRax = 0, kRcx = 1, kRdx = 2, kRsp = 4, kRbp = 5, kNoRegister = 16, kFsBase = 17 };

struct alignas(64) State {
    Zmm z[32];
    std::uint64_t k[8];
    std::uint64_t gpr[18];  // in encoding order; [16] stays zero and stands for "none", [17] is the base of fs
    std::uint64_t rip;
    std::uint64_t flags;
    std::uint16_t x87_control, x87_status;
};

}  // namespace nax::emulator
