// A decoded instruction, and the rows of the tables that tie encodings to their semantics.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/interpreter/state.h"

namespace nax::emulator {

struct Op;
using Handler = void (*)(State&, const Op&);

enum Encoding : std::uint8_t { kLegacy = 1, kVex = 2, kEvex = 4, kVexOrEvex = 6, kAnyEncoding = 7 };

struct Op {
    Handler run;
    Handler inner;       // what `run` calls when it is the embedded-rounding wrapper
    std::uint64_t next;  // address of the following instruction
    std::uint64_t target;  // of a direct branch
    std::int64_t disp;
    std::int64_t imm;
    std::uint8_t encoding;
    std::uint8_t vl;  // vector length in bytes: 16, 32, 64
    std::uint8_t reg, v, rm;  // ModRM.reg, vvvv and ModRM.rm with their extension bits
    bool mem;                 // rm is a memory operand: segment + base + (index << scale) + disp
    std::uint8_t base, index, scale, segment;
    std::uint8_t mask;  // opmask register, 0 = none
    bool zeroing, broadcast;
    bool rounds;             // embedded rounding or suppressed exceptions
    std::uint8_t rounding;   // the MXCSR.RC value to use, or kKeepRounding
    bool w;
    std::uint8_t condition;  // code of a jcc, setcc or cmovcc
};

inline constexpr std::uint8_t kKeepRounding = 4;

// What a memory operand spans: tells the scale of an 8-bit displacement. FullN: a vector, or one broadcast element
// of N bytes; HalfN likewise for half a vector; MemN: N bytes whatever the vector length.
enum Tuple : std::uint8_t {
    Full4, Full8, Half4, FullMem, HalfMem, QuarterMem, EighthMem, Mem1, Mem2, Mem4, Mem8, Mem16, Mem32, Dup
};

enum : std::uint8_t { M0F = 1, M0F38 = 2, M0F3A = 3 };
enum : std::uint8_t { PNO = 0, P66 = 1, PF3 = 2, PF2 = 3 };
enum : std::int8_t { W0 = 0, W1 = 1, WX = -1 };
enum RowFlags : std::uint8_t { kNone = 0, kSaeOnly = 1 };

struct Row {
    std::uint8_t encodings;
    std::uint8_t map, prefix, opcode;
    std::int8_t w;
    Tuple tuple;
    Handler run;
    std::int8_t extension = -1;  // ModRM.reg of an opcode group
    std::uint8_t flags = kNone;
};

struct RowTable {
    const Row* first;
    std::size_t count;
};
template <std::size_t N>
constexpr RowTable table_of(const Row (&rows)[N]) { return {rows, N}; }

RowTable move_rows();
RowTable mask_rows();
RowTable logic_rows();
RowTable integer_rows();
RowTable integer_compare_rows();
RowTable shift_rows();
RowTable pack_rows();
RowTable permute_rows();
RowTable shuffle_rows();
RowTable compress_rows();
RowTable gather_rows();
RowTable arithmetic_rows();
RowTable fma_rows();
RowTable float_compare_rows();
RowTable float_parts_rows();
RowTable float_round_rows();
RowTable convert_rows();
RowTable convert_scalar_rows();
RowTable crypto_rows();
RowTable bit_rows();  // general-register instructions in VEX encodings

// Decodes the instruction at `code`. False when it is not one of ours.
bool decode(const std::uint8_t* code, Op& op, bool& ends_block, bool& is_evex);

// A handler for a general-register instruction; see integer_decoder.cpp.
struct Prefixes {
    bool operand_size, address_size, rep, repne, lock;
    std::uint8_t segment;  // index into State::gpr
    std::uint8_t rex;
};
bool decode_integer(const std::uint8_t* code, const Prefixes& prefixes, Op& op, bool& ends_block);

// Reads ModRM, SIB and displacement at `code`; returns what follows. `disp8_scale` is 1 outside EVEX.
const std::uint8_t* decode_modrm(const std::uint8_t* code, unsigned rex_x, unsigned rex_b, Op& op);

// Runs from state.rip until an instruction that the host shall run. False if not even the first could be run.
bool interpret(State& state);

}  // namespace nax::emulator
