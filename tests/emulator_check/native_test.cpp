// Instructions of older encodings: the interpreter against the host itself. The same instruction is run natively, and
// behind an opmask instruction that puts the interpreter in charge; registers, flags and memory must come out alike.
#include <sys/mman.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/interpreter/op.h"

asm(R"(
    .pushsection .rodata
    .macro case_bytes strict, text:vararg
        .byte \strict, 2f - 1f
        1: \text
        2: .asciz "\text"
    .endm
    .macro CASE text:vararg
        case_bytes 1, \text
    .endm
    .macro LOOSE text:vararg
        case_bytes 0, \text
    .endm
    .macro SEQUENCE strict, first, second, third, fourth
        .byte \strict, 2f - 1f
        1: \first
        \second
        \third
        \fourth
        2: .asciz "\first; \second; \third; \fourth"
    .endm
    .global native_cases
    native_cases:
    .include ")" NAX_SOURCE_DIR R"(/tests/emulator_check/native_cases.inc"
    .byte 0, 0
    .popsection
)");
extern "C" const unsigned char native_cases[];

namespace {

struct alignas(64) Registers {
    std::uint64_t rax, rcx, rdx, rbx, rsi, r8, r9, r10, r11, flags;  // 0 to 72
    unsigned char pad[48];
    unsigned char ymm[6][32];     // at 128
    unsigned char memory[256];    // at 320
};
static_assert(sizeof(Registers) == 576);

struct Case {
    std::string text;
    std::vector<unsigned char> code;
    bool strict;
};

std::vector<Case> all_cases() {
    std::vector<Case> cases;
    for (const unsigned char* p = native_cases; p[1];) {
        Case c;
        c.strict = p[0];
        c.code.assign(p + 2, p + 2 + p[1]);
        p += 2 + p[1];
        c.text = reinterpret_cast<const char*>(p);
        p += c.text.size() + 1;
        cases.push_back(c);
    }
    return cases;
}

// Code that loads the registers from its argument, runs the instruction and stores them again. Never reuses an
// address: the interpreter keeps what it decoded.
class Assembler {
public:
    Assembler() : next_(static_cast<unsigned char*>(mmap(nullptr, kSize, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
    using Function = void (*)(Registers*);

    Function build(const std::vector<unsigned char>& instruction, bool interpreted) {
        unsigned char* start = next_;
        emit({0x53, 0x55, 0x48, 0x89, 0xFD});  // push rbx; push rbp; mov rbp, rdi
        for (unsigned i = 0; i < 6; ++i) emit({0xC5, 0xFE, 0x6F, modrm(2, i, 5), disp(128 + 32 * i), disp(128 + 32 * i, 1), 0, 0});
        emit({0xFF, 0x75, 72, 0x9D});  // push [rbp+72]; popfq
        for (const auto& [rex, reg, at] : kGeneral) emit({rex, 0x8B, modrm(1, reg, 5), at});
        emit({0x48, 0x8D, 0xBD, disp(320), disp(320, 1), 0, 0});  // lea rdi, [rbp+320]
        if (interpreted) emit({0xC5, 0xFC, 0x47, 0xC0});  // kxorw k0, k0, k0
        emit(instruction);
        for (const auto& [rex, reg, at] : kGeneral) emit({rex, 0x89, modrm(1, reg, 5), at});
        emit({0x9C, 0x8F, 0x45, 72});  // pushfq; pop [rbp+72]
        for (unsigned i = 0; i < 6; ++i) emit({0xC5, 0xFE, 0x7F, modrm(2, i, 5), disp(128 + 32 * i), disp(128 + 32 * i, 1), 0, 0});
        emit({0xC5, 0xF8, 0x77, 0x5D, 0x5B, 0xC3});  // vzeroupper; pop rbp; pop rbx; ret
        Function f;
        std::memcpy(&f, &start, sizeof f);
        return f;
    }

private:
    static constexpr std::size_t kSize = 1 << 20;
    struct General { unsigned char rex, reg, at; };
    static constexpr General kGeneral[] = {{0x48, 0, 0}, {0x48, 1, 8}, {0x48, 2, 16}, {0x48, 3, 24}, {0x48, 6, 32},
                                           {0x4C, 0, 40}, {0x4C, 1, 48}, {0x4C, 2, 56}, {0x4C, 3, 64}};
    static unsigned char modrm(unsigned mod, unsigned reg, unsigned rm) { return static_cast<unsigned char>(mod << 6 | reg << 3 | rm); }
    static unsigned char disp(unsigned value, unsigned byte = 0) { return static_cast<unsigned char>(value >> (8 * byte)); }
    void emit(const std::vector<unsigned char>& bytes) {
        std::memcpy(next_, bytes.data(), bytes.size());
        next_ += bytes.size();
    }
    unsigned char* next_;
};

Registers random_registers(std::mt19937_64& engine) {
    Registers r;
    unsigned char* bytes = reinterpret_cast<unsigned char*>(&r);
    for (std::size_t i = 0; i < sizeof r; i += 8) {
        std::uint64_t word = engine();
        if (engine() % 8 == 0) word %= 3;                                   // zero and small numbers
        if (engine() % 4 == 0) word = 0x3FF0000040000000 + word % 0x100000000000000;  // moderate floating-point values
        std::memcpy(bytes + i, &word, 8);
    }
    if (engine() % 8 == 0) r.rcx = 0;
    if (r.rbx % 0x100000000 == 0) r.rbx = 3;
    r.flags = 0x202 | (r.flags & 0x8C5);
    return r;
}

// Else the comparison below would be one of the host with itself.
TEST(EmulatorNative, EveryCaseIsInterpreted) {
    for (Case c : all_cases()) {
        const std::size_t size = c.code.size();
        c.code.resize(size + 16, 0x90);
        const unsigned char* p = c.code.data();
        while (p < c.code.data() + size) {
            nax::emulator::Op op;
            bool ends_block, refused;
            ASSERT_TRUE(nax::emulator::decode(p, op, ends_block, refused)) << c.text;
            p = reinterpret_cast<const unsigned char*>(op.next);
        }
        ASSERT_EQ(p, c.code.data() + size) << c.text;
    }
}

TEST(EmulatorNative, OlderEncodingsRunAsOnTheHost) {
    constexpr std::uint64_t compared_flags = 0x8C5;  // all but AF, which much leaves undefined
    Assembler assembler;
    std::mt19937_64 engine(1);
    for (const Case& c : all_cases()) {
        const auto native = assembler.build(c.code, false), interpreted = assembler.build(c.code, true);
        for (int round = 0; round < 60; ++round) {
            Registers a = random_registers(engine);
            const bool divides = c.text.find("div") != std::string::npos;
            if (divides) a.rcx |= 1, a.rbx |= 1;
            if (divides && c.text.find("cqo") != std::string::npos) a.rbx = 7;
            Registers b = a;
            native(&a);
            interpreted(&b);
            a.flags &= c.strict ? compared_flags : 0;
            b.flags &= c.strict ? compared_flags : 0;
            const unsigned char *p = reinterpret_cast<unsigned char*>(&a), *q = reinterpret_cast<unsigned char*>(&b);
            for (std::size_t i = 0; i < sizeof a; ++i) {
                ASSERT_EQ(p[i], q[i]) << c.text << ": byte " << i << " flags " << std::hex << a.flags << " " << b.flags;
            }
        }
    }
}

}  // namespace
