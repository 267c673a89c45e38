// Decodes the general-register instructions that occur around vector loops; what is rarer goes back to the host.
#include <cstring>

#include "tools/interpreter/integer_ops.h"

namespace nax::emulator {
namespace {

template <class F>
Handler sized(unsigned size) {
    switch (size) {
        case 0: return F::template run<std::uint8_t>;
        case 1: return F::template run<std::uint16_t>;
        case 2: return F::template run<std::uint32_t>;
        default: return F::template run<std::uint64_t>;
    }
}

template <template <AluOp> class Form>
Handler alu_handler(unsigned operation, unsigned size) {
    switch (operation) {
        case kAdd: return sized<Form<kAdd>>(size);
        case kOr: return sized<Form<kOr>>(size);
        case kAdc: return sized<Form<kAdc>>(size);
        case kSbb: return sized<Form<kSbb>>(size);
        case kAnd: return sized<Form<kAnd>>(size);
        case kSub: return sized<Form<kSub>>(size);
        case kXor: return sized<Form<kXor>>(size);
        case kCmp: return sized<Form<kCmp>>(size);
        default: return sized<Form<kTest>>(size);
    }
}

template <bool ByRegister>
Handler shift_handler(unsigned operation, unsigned size) {
    switch (operation) {
        case kRol: return sized<Shift<kRol, ByRegister>>(size);
        case kRor: return sized<Shift<kRor, ByRegister>>(size);
        case kShl: return sized<Shift<kShl, ByRegister>>(size);
        case kShr: return sized<Shift<kShr, ByRegister>>(size);
        case kSar: return sized<Shift<kSar, ByRegister>>(size);
        default: return nullptr;
    }
}
template <bool ByRegister>
Handler bit_handler(unsigned operation, unsigned size) {
    switch (operation) {
        case kBt: return sized<BitTest<kBt, ByRegister>>(size);
        case kBts: return sized<BitTest<kBts, ByRegister>>(size);
        case kBtr: return sized<BitTest<kBtr, ByRegister>>(size);
        case kBtc: return sized<BitTest<kBtc, ByRegister>>(size);
        default: return nullptr;
    }
}

// What is known while one instruction is decoded.
struct Cursor {
    const std::uint8_t* code;
    const Prefixes& prefixes;
    Op& op;
    unsigned size;  // log2 of the operand size in bytes
    bool relative;  // the memory operand counts from the next instruction

    unsigned rex_bit(unsigned bit) const { return (prefixes.rex >> bit & 1u) << 3; }
    unsigned modrm_extension() const { return (*code >> 3) & 7; }

    void modrm() {
        op.reg = static_cast<std::uint8_t>(((*code >> 3) & 7) | rex_bit(2));
        relative = (*code & 0xC7) == 5;
        code = decode_modrm(code, rex_bit(1), rex_bit(0), op);
    }
    void immediate(unsigned bytes) {
        std::int64_t value = 0;
        std::memcpy(&value, code, bytes);
        const unsigned unused = 64 - 8 * bytes;
        op.imm = static_cast<std::int64_t>(static_cast<std::uint64_t>(value) << unused) >> unused;
        code += bytes;
    }
    unsigned immediate_bytes() const { return size == 0 ? 1 : size == 1 ? 2 : 4; }
    // The high-byte registers ah..bh can't be told from spl..dil later on: leave them to the host.
    bool names_high_byte(bool reg_is_byte, bool rm_is_byte) const {
        if (prefixes.rex) return false;
        return (reg_is_byte && op.reg >= 4 && op.reg < 8) || (rm_is_byte && !op.mem && op.rm >= 4 && op.rm < 8);
    }
    bool branch(Handler handler, unsigned bytes) {
        immediate(bytes);
        op.target = reinterpret_cast<std::uint64_t>(code) + static_cast<std::uint64_t>(op.imm);
        op.run = handler;
        return true;
    }
};

bool two_operands(Cursor& c, Handler handler, bool byte_reg, bool byte_rm) {
    c.op.run = handler;
    return handler && !c.names_high_byte(byte_reg, byte_rm);
}

bool decode_group3(Cursor& c) {  // F6, F7
    const unsigned extension = c.modrm_extension();
    c.modrm();
    Handler h = nullptr;
    switch (extension) {
        case 0:
        case 1:
            c.immediate(c.immediate_bytes());
            h = alu_handler<RmImmediate>(kTest, c.size);
            break;
        case 2: h = sized<Invert>(c.size); break;
        case 3: h = sized<Negate>(c.size); break;
        case 4: h = c.size >= 2 ? sized<MultiplyWide<false>>(c.size) : nullptr; break;
        case 5: h = c.size >= 2 ? sized<MultiplyWide<true>>(c.size) : nullptr; break;
        case 6: h = c.size >= 2 ? sized<Divide<false>>(c.size) : nullptr; break;
        default: h = c.size >= 2 ? sized<Divide<true>>(c.size) : nullptr;
    }
    return two_operands(c, h, false, c.size == 0);
}

bool decode_group5(Cursor& c, bool& ends_block) {  // FE, FF
    const unsigned extension = c.modrm_extension();
    const bool byte = c.size == 0;
    c.modrm();
    if (extension < 2) {
        return two_operands(c, extension ? sized<Increment<false>>(c.size) : sized<Increment<true>>(c.size), false, byte);
    }
    if (byte || c.size == 1) return false;
    if (extension == 6) c.op.run = push;
    else if (extension == 2) c.op.run = call_rm;
    else if (extension == 4) c.op.run = jump_to_rm;
    else return false;
    ends_block = extension != 6;
    return true;
}

bool decode_group15(Cursor& c) {  // 0F AE
    const unsigned extension = c.modrm_extension();
    c.modrm();
    if (c.op.mem && extension == 2) c.op.run = load_mxcsr;
    else if (c.op.mem && extension == 3) c.op.run = store_mxcsr;
    else if (!c.op.mem && extension >= 5) c.op.run = no_operation;  // fences
    return c.op.run != nullptr;
}

template <class F>
bool reg_from_rm(Cursor& c) {
    c.modrm();
    c.op.run = sized<F>(c.size);
    return true;
}

bool decode_two_byte(Cursor& c, bool& ends_block) {
    const unsigned opcode = *c.code++;
    const Prefixes& p = c.prefixes;
    const bool plain = !p.rep && !p.repne;
    c.op.condition = opcode & 15;
    switch (opcode >> 4) {
        case 0x4: return !p.repne && !p.rep && reg_from_rm<ConditionalMove>(c);
        case 0x8: ends_block = true; return c.branch(jump_if, 4);
        case 0x9: c.modrm(); return two_operands(c, set_on_condition, false, true);
        default: break;
    }
    switch (opcode) {
        case 0x0D: case 0x18: case 0x19: case 0x1C: case 0x1D: case 0x1E: case 0x1F:
            c.modrm();
            c.op.run = no_operation;  // prefetches, endbr64, nop
            return true;
        case 0xA3: case 0xAB: case 0xB3: case 0xBB:
            c.modrm();
            return !c.op.mem && two_operands(c, bit_handler<true>((opcode >> 3) & 7, c.size), false, false);
        case 0xBA: {
            const unsigned extension = c.modrm_extension();
            c.modrm();
            c.immediate(1);
            return two_operands(c, bit_handler<false>(extension, c.size), false, false);
        }
        case 0xA4: case 0xAC:
            c.modrm();
            c.immediate(1);
            return c.size >= 2 && two_operands(c, opcode == 0xA4 ? sized<DoubleShift<true>>(c.size)
                                                                 : sized<DoubleShift<false>>(c.size), false, false);
        case 0xAE: return plain && !p.operand_size && decode_group15(c);
        case 0xAF: return reg_from_rm<MultiplySigned>(c);
        case 0xB6: c.modrm(); return two_operands(c, sized<Extend<std::uint8_t>>(c.size), false, true);
        case 0xBE: c.modrm(); return two_operands(c, sized<Extend<std::int8_t>>(c.size), false, true);
        case 0xB7: return reg_from_rm<Extend<std::uint16_t>>(c);
        case 0xBF: return reg_from_rm<Extend<std::int16_t>>(c);
        case 0xB8: return p.rep && reg_from_rm<BitCount<kPopcnt>>(c);
        case 0xBC: return p.rep ? reg_from_rm<BitCount<kTzcnt>>(c) : reg_from_rm<BitCount<kBsf>>(c);
        case 0xBD: return p.rep ? reg_from_rm<BitCount<kLzcnt>>(c) : reg_from_rm<BitCount<kBsr>>(c);
        default: break;
    }
    if (opcode >= 0xC8 && opcode <= 0xCF) {
        c.op.rm = static_cast<std::uint8_t>((opcode & 7) | c.rex_bit(0));
        c.op.run = sized<ByteSwap>(c.size);
        return c.size >= 2;
    }
    return false;
}

// 00-3F: op r/m,r; op r,r/m; op rax,imm.
bool decode_alu(Cursor& c, unsigned opcode) {
    const unsigned operation = opcode >> 3, form = opcode & 7;
    if (form >= 6) return false;
    if (!(form & 1)) c.size = 0;
    const bool byte = c.size == 0;
    if (form >= 4) {
        c.op.rm = kRax;
        c.immediate(c.immediate_bytes());
        c.op.run = alu_handler<RmImmediate>(operation, c.size);
        return true;
    }
    c.modrm();
    return two_operands(c, form < 2 ? alu_handler<RmReg>(operation, c.size) : alu_handler<RegRm>(operation, c.size), byte, byte);
}

bool decode_group1(Cursor& c, unsigned opcode) {  // 80, 81, 83
    const unsigned operation = c.modrm_extension();
    if (opcode == 0x80) c.size = 0;
    c.modrm();
    c.immediate(opcode == 0x81 ? c.immediate_bytes() : 1);
    return two_operands(c, alu_handler<RmImmediate>(operation, c.size), false, c.size == 0);
}

bool decode_shift(Cursor& c, unsigned opcode) {  // C0, C1, D0-D3
    const unsigned operation = c.modrm_extension();
    if (!(opcode & 1)) c.size = 0;
    c.modrm();
    c.op.imm = 1;
    if (opcode < 0xD0) c.immediate(1);
    const bool by_register = opcode >= 0xD2;
    return two_operands(c, by_register ? shift_handler<true>(operation, c.size) : shift_handler<false>(operation, c.size),
                        false, c.size == 0);
}

bool decode_short_forms(Cursor& c, unsigned opcode, bool& ends_block) {
    const auto low = static_cast<std::uint8_t>((opcode & 7) | c.rex_bit(0));
    switch (opcode & 0xF8) {
        case 0x90: c.op.rm = low; c.op.reg = kRax; c.op.run = sized<Exchange>(c.size); return true;
        case 0x50: c.op.rm = low; c.op.run = push; return c.size != 1;
        case 0x58: c.op.rm = low; c.op.run = pop; return c.size != 1;
        case 0xB8:
            c.op.rm = low;
            c.immediate(c.size == 3 ? 8 : c.immediate_bytes());
            c.op.run = sized<MoveImmediate>(c.size);
            return true;
        case 0xB0:
            if (!c.prefixes.rex && low >= 4) return false;
            c.op.rm = low;
            c.immediate(1);
            c.op.run = sized<MoveImmediate>(0);
            return true;
        case 0x70: case 0x78:
            ends_block = true;
            c.op.condition = opcode & 15;
            return c.branch(jump_if, 1);
        default: return false;
    }
}

bool decode_one_byte(Cursor& c, unsigned opcode, bool& ends_block) {
    switch (opcode) {
        case 0x63: c.modrm(); c.op.run = sized<Extend<std::int32_t>>(c.size); return true;
        case 0x68: c.immediate(4); c.op.run = push_immediate; return true;
        case 0x6A: c.immediate(1); c.op.run = push_immediate; return true;
        case 0x69: case 0x6B:
            c.modrm();
            c.immediate(opcode == 0x6B ? 1 : c.immediate_bytes());
            return two_operands(c, sized<MultiplyImmediate>(c.size), false, false);
        case 0x80: case 0x81: case 0x83: return decode_group1(c, opcode);
        case 0x84: c.size = 0; [[fallthrough]];
        case 0x85: c.modrm(); return two_operands(c, alu_handler<RmReg>(kTest, c.size), c.size == 0, c.size == 0);
        case 0x87: c.modrm(); return !c.op.mem && two_operands(c, sized<Exchange>(c.size), false, false);
        case 0x88: c.size = 0; [[fallthrough]];
        case 0x89: c.modrm(); return two_operands(c, sized<MoveToRm>(c.size), c.size == 0, c.size == 0);
        case 0x8A: c.size = 0; [[fallthrough]];
        case 0x8B: c.modrm(); return two_operands(c, sized<MoveToReg>(c.size), c.size == 0, c.size == 0);
        case 0x8D: return reg_from_rm<LoadAddress>(c);
        case 0x90:
            if (c.rex_bit(0)) return decode_short_forms(c, opcode, ends_block);
            c.op.run = no_operation;
            return true;
        case 0x98: c.op.run = sized<WidenRax>(c.size); return true;
        case 0x99: c.op.run = sized<SignToRdx>(c.size); return true;
        case 0xA8: c.size = 0; [[fallthrough]];
        case 0xA9:
            c.op.rm = kRax;
            c.immediate(c.immediate_bytes());
            c.op.run = alu_handler<RmImmediate>(kTest, c.size);
            return true;
        case 0xC0: case 0xC1: case 0xD0: case 0xD1: case 0xD2: case 0xD3: return decode_shift(c, opcode);
        case 0xC3: ends_block = true; c.op.run = return_near; return true;
        case 0xC6: c.size = 0; [[fallthrough]];
        case 0xC7:
            c.modrm();
            c.immediate(c.immediate_bytes());
            return two_operands(c, sized<MoveImmediate>(c.size), false, c.size == 0);
        case 0xC9: c.op.run = leave; return true;
        case 0xD9: {
            const unsigned extension = c.modrm_extension();
            c.modrm();
            c.op.run = extension == 7 ? store_x87_control : extension == 5 ? load_x87_control : nullptr;
            return c.op.mem && c.op.run;
        }
        case 0xDB: c.op.run = clear_x87_flags; return *c.code++ == 0xE2;  // fnclex
        case 0xE8: ends_block = true; return c.branch(call, 4);
        case 0xE9: ends_block = true; return c.branch(jump, 4);
        case 0xEB: ends_block = true; return c.branch(jump, 1);
        case 0xF6: c.size = 0; [[fallthrough]];
        case 0xF7: return decode_group3(c);
        case 0xFE: c.size = 0; [[fallthrough]];
        case 0xFF: return decode_group5(c, ends_block);
        default: return decode_short_forms(c, opcode, ends_block);
    }
}

}  // namespace

bool decode_integer(const std::uint8_t* code, const Prefixes& prefixes, Op& op, bool& ends_block) {
    Cursor c{code, prefixes, op, 2u, false};
    if (prefixes.operand_size) c.size = 1;
    if (prefixes.rex & 8) c.size = 3;
    const unsigned opcode = *c.code++;
    bool known;
    if (opcode == 0x0F) known = decode_two_byte(c, ends_block);
    else if (opcode < 0x40) known = decode_alu(c, opcode);
    else known = decode_one_byte(c, opcode, ends_block);
    if (!known) return false;
    op.next = reinterpret_cast<std::uint64_t>(c.code);
    if (op.mem && c.relative) op.disp += static_cast<std::int64_t>(op.next);
    return true;
}

}  // namespace nax::emulator
