// Instructions under test, as functions on memory images of registers. Those functions are the only code of the
// program compiled for AVX-512; their definitions in scalar terms stand in the test files.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

namespace nax::emulator_check {

struct alignas(64) Vector {
    unsigned char bytes[64];

    template <class T>
    T lane(unsigned i) const {
        T x;
        std::memcpy(&x, bytes + i * sizeof(T), sizeof(T));
        return x;
    }
    template <class T>
    void set(unsigned i, T x) { std::memcpy(bytes + i * sizeof(T), &x, sizeof(T)); }
};

struct Io {
    Vector a, b, c;  // c is the destination's former value where an instruction reads it
    std::uint64_t mask;
    Vector result;
    std::uint64_t bits;  // the result of comparisons
};
using Run = void (*)(Io&);

// One instruction without a mask, with a merging and with a zeroing one.
struct Instruction {
    const char* name;
    Run plain, merging, zeroing;
};

std::span<const Instruction> float_instructions();
std::span<const Instruction> rounded_instructions();  // embedded rounding, named by suffixes rn, rd, ru, rz
std::span<const Instruction> part_instructions();
std::span<const Instruction> conversion_instructions();
std::span<const Instruction> integer_instructions();
std::span<const Instruction> permutation_instructions();
std::span<const Instruction> comparison_instructions();  // zeroing is absent

}  // namespace nax::emulator_check
