// Prefixes, ModRM and operands of legacy, VEX and EVEX encodings, and the look-up of vector instructions.
#include <cstring>

#include "tools/interpreter/op.h"

namespace nax::emulator {
namespace {

struct Encoded {
    std::uint8_t encoding, map, prefix, opcode;
    bool w;
};

const Row* find_row(const Encoded& e, std::uint8_t extension) {
    static const RowTable tables[] = {
        move_rows(), mask_rows(), logic_rows(), integer_rows(), integer_compare_rows(), shift_rows(), pack_rows(),
        permute_rows(), shuffle_rows(), compress_rows(), gather_rows(), arithmetic_rows(), fma_rows(),
        float_compare_rows(), float_parts_rows(), float_round_rows(), convert_rows(), convert_scalar_rows(),
        crypto_rows(), bit_rows()};
    const Row* any_w = nullptr;
    for (const RowTable& table : tables) {
        for (const Row* row = table.first; row != table.first + table.count; ++row) {
            if (row->opcode != e.opcode || row->map != e.map || row->prefix != e.prefix) continue;
            if (!(row->encodings & e.encoding)) continue;
            if (row->extension >= 0 && row->extension != extension) continue;
            if (row->w == WX || (row->w == W1) == e.w) return row;
            any_w = row;
        }
    }
    // Outside EVEX most instructions ignore W.
    return e.encoding == kEvex ? nullptr : any_w;
}

std::int64_t displacement_scale(Tuple tuple, const Op& op) {
    switch (tuple) {
        case Full4: return op.broadcast ? 4 : op.vl;
        case Full8: return op.broadcast ? 8 : op.vl;
        case Half4: return op.broadcast ? 4 : op.vl / 2;
        case FullMem: return op.vl;
        case HalfMem: return op.vl / 2;
        case QuarterMem: return op.vl / 4;
        case EighthMem: return op.vl / 8;
        case Mem1: return 1;
        case Mem2: return 2;
        case Mem4: return 4;
        case Mem8: return 8;
        case Mem16: return 16;
        case Mem32: return 32;
        case Dup: return op.vl == 16 ? 8 : op.vl;
    }
    return 1;
}

// The embedded rounding mode for the duration of one instruction, all exceptions masked and no flag kept.
void run_with_rounding(State& s, const Op& o) {
    const std::uint32_t saved = _mm_getcsr();
    std::uint32_t mxcsr = saved | 0x1F80;
    if (o.rounding != kKeepRounding) mxcsr = (mxcsr & ~0x6000u) | (std::uint32_t{o.rounding} << 13);
    _mm_setcsr(mxcsr);
    o.inner(s, o);
    _mm_setcsr(saved);
}

bool has_immediate(const Encoded& e) {
    if (e.map == M0F3A) return true;
    return e.map == M0F && ((e.opcode >= 0x70 && e.opcode <= 0x73) || e.opcode == 0xC2 ||
                            (e.opcode >= 0xC4 && e.opcode <= 0xC6));
}

// Everything from ModRM on. `x`, `b`, `r` are the extension bits, already shifted to 8 (and 16 for the high ones).
bool decode_operands(const std::uint8_t* code, const Encoded& e, unsigned r, unsigned x, unsigned b, Op& op) {
    const std::uint8_t modrm = *code;
    const bool is_register = modrm >= 0xC0;
    const bool evex_b = op.broadcast;
    if (evex_b && is_register) {
        op.broadcast = false;
        op.rounds = true;
        op.rounding = static_cast<std::uint8_t>(op.vl == 16 ? 0 : op.vl == 32 ? 1 : op.vl == 64 ? 2 : 3);
        op.vl = 64;
    } else if (op.vl == 128) {
        return false;
    }
    op.reg = static_cast<std::uint8_t>(((modrm >> 3) & 7) | r);
    op.encoding = e.encoding;
    op.w = e.w;
    const Row* row = find_row(e, (modrm >> 3) & 7);
    if (!row) return false;
    if (row->flags & kSaeOnly) op.rounding = kKeepRounding;
    code = decode_modrm(code, x & 8, b, op);
    if (is_register) {
        op.rm = static_cast<std::uint8_t>((modrm & 7) | b | ((x & 8) << 1));
    } else if (e.encoding == kEvex && (modrm >> 6) == 1) {
        op.disp *= displacement_scale(row->tuple, op);
    }
    if (has_immediate(e)) op.imm = static_cast<std::int8_t>(*code++);
    op.next = reinterpret_cast<std::uint64_t>(code);
    if (op.mem && op.base == kNoRegister && (modrm & 0xC7) == 5) op.disp += static_cast<std::int64_t>(op.next);
    if (e.encoding == kLegacy) op.v = op.reg;
    op.inner = row->run;
    op.run = op.rounds ? run_with_rounding : row->run;
    return true;
}

bool decode_evex(const std::uint8_t* code, Op& op) {
    const unsigned p0 = code[1], p1 = code[2], p2 = code[3];
    if ((p0 & 0x0C) || !(p1 & 4)) return false;
    const Encoded e{kEvex, static_cast<std::uint8_t>(p0 & 3), static_cast<std::uint8_t>(p1 & 3), code[4],
                    (p1 & 0x80) != 0};
    op.v = static_cast<std::uint8_t>(((~p1 >> 3) & 15) | ((~p2 & 8) << 1));
    op.mask = p2 & 7;
    op.zeroing = (p2 & 0x80) != 0;
    op.broadcast = (p2 & 0x10) != 0;
    op.vl = static_cast<std::uint8_t>(16u << ((p2 >> 5) & 3));
    const unsigned r = ((~p0 >> 4) & 8) | (~p0 & 0x10);
    const unsigned x = (~p0 >> 3) & 8, b = (~p0 >> 2) & 8;
    return decode_operands(code + 5, e, r, x, b, op);
}

void zero_upper(State& s, const Op&) {
    for (unsigned i = 0; i < 16; ++i) {
        s.z[i].x[1] = _mm_setzero_si128();
        s.z[i].y[1] = _mm256_setzero_si256();
    }
}
void zero_all(State& s, const Op&) {
    for (unsigned i = 0; i < 16; ++i) s.z[i].y[0] = s.z[i].y[1] = _mm256_setzero_si256();
}

bool decode_vex(const std::uint8_t* code, Op& op) {
    Encoded e{kVex, M0F, 0, 0, false};
    unsigned p0 = 0xE0, p1;
    if (*code == 0xC5) {
        p0 = (code[1] & 0x80) | 0x61;
        p1 = code[1] & 0x7F;
        code += 2;
    } else {
        p0 = code[1];
        p1 = code[2];
        code += 3;
        e.w = (p1 & 0x80) != 0;
        e.map = p0 & 31;
    }
    e.prefix = p1 & 3;
    e.opcode = *code++;
    op.v = (~p1 >> 3) & 15;
    op.vl = (p1 & 4) ? 32 : 16;
    if (e.map == M0F && e.opcode == 0x77) {
        op.run = op.vl == 32 ? zero_all : zero_upper;
        op.next = reinterpret_cast<std::uint64_t>(code);
        return true;
    }
    const unsigned r = (~p0 >> 4) & 8, x = (~p0 >> 3) & 8, b = (~p0 >> 2) & 8;
    return decode_operands(code, e, r, x, b, op);
}

// VEX instructions on opmask registers, which the host refuses too.
bool is_mask_instruction(const std::uint8_t* code) {
    const bool long_form = *code == 0xC4;
    const unsigned map = long_form ? code[1] & 31 : M0F;
    const unsigned opcode = code[long_form ? 3 : 2];
    if (map == M0F3A) return opcode >= 0x30 && opcode <= 0x33;
    return map == M0F && ((opcode >= 0x41 && opcode <= 0x4B) || (opcode >= 0x90 && opcode <= 0x99));
}

bool decode_legacy_vector(const std::uint8_t* code, const Prefixes& p, Op& op) {
    if (*code++ != 0x0F) return false;
    Encoded e{kLegacy, M0F, PNO, *code, (p.rex & 8) != 0};
    if (*code == 0x38 || *code == 0x3A) {
        e.map = *code == 0x38 ? M0F38 : M0F3A;
        e.opcode = *++code;
    }
    e.prefix = p.rep ? PF3 : p.repne ? PF2 : p.operand_size ? P66 : PNO;
    op.vl = 16;
    const unsigned rex = p.rex;
    return decode_operands(code + 1, e, (rex & 4) << 1, (rex & 2) << 2, (rex & 1) << 3, op);
}

}  // namespace

const std::uint8_t* decode_modrm(const std::uint8_t* code, unsigned rex_x, unsigned rex_b, Op& op) {
    const unsigned modrm = *code++, mod = modrm >> 6;
    unsigned rm = modrm & 7;
    op.base = op.index = kNoRegister;
    op.mem = mod != 3;
    if (!op.mem) {
        op.rm = static_cast<std::uint8_t>(rm | rex_b);
        return code;
    }
    bool wide = mod == 2;
    if (rm == 4) {
        const unsigned sib = *code++;
        op.scale = static_cast<std::uint8_t>(sib >> 6);
        const unsigned index = ((sib >> 3) & 7) | rex_x;
        op.rm = static_cast<std::uint8_t>(index);  // the vector index of gathers, where 4 is a register as well
        if (index != 4) op.index = static_cast<std::uint8_t>(index);
        rm = sib & 7;
        if (rm == 5 && mod == 0) wide = true;
        else op.base = static_cast<std::uint8_t>(rm | rex_b);
    } else if (rm == 5 && mod == 0) {
        wide = true;  // relative to the next instruction; the caller adds its address
    } else {
        op.base = static_cast<std::uint8_t>(rm | rex_b);
    }
    if (wide) {
        std::int32_t disp;
        std::memcpy(&disp, code, 4);
        op.disp = disp;
        code += 4;
    } else if (mod == 1) {
        op.disp = static_cast<std::int8_t>(*code++);
    }
    return code;
}

bool decode(const std::uint8_t* code, Op& op, bool& ends_block, bool& is_evex) {
    op = Op{};
    op.segment = kNoRegister;
    ends_block = is_evex = false;
    Prefixes p{};
    p.segment = kNoRegister;
    for (;; ++code) {
        if (*code == 0x66) p.operand_size = true;
        else if (*code == 0xF3) p.rep = true;
        else if (*code == 0xF2) p.repne = true;
        else if (*code == 0xF0) p.lock = true;
        else if (*code == 0x64) p.segment = kFsBase;
        else if (*code != 0x2E && *code != 0x3E) break;  // cs and ds have no effect
    }
    if (p.lock || *code == 0x67) return false;
    op.segment = p.segment;
    if (*code == 0x62) {
        is_evex = true;
        return decode_evex(code, op);
    }
    if ((*code & 0xF0) == 0x40) p.rex = *code++;
    if (!p.rex && (*code == 0xC4 || *code == 0xC5) && decode_vex(code, op)) {
        is_evex = is_mask_instruction(code);
        return true;
    }
    op = Op{};
    op.segment = p.segment;
    if (decode_integer(code, p, op, ends_block)) return true;
    op = Op{};
    op.segment = p.segment;
    return decode_legacy_vector(code, p, op);
}

}  // namespace nax::emulator
