// The illegal-instruction handler: registers in from the signal frame, interpretation, registers out.
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <ucontext.h>
#include <unistd.h>

#include "tools/interpreter/emulator.h"
#include "tools/interpreter/op.h"

namespace nax::emulator {
namespace {

// What the frame lacks, per thread: upper register halves and opmasks. Also the low halves as they were handed back,
// to tell which registers the host wrote since.
struct Shadow {
    State state;
    __m256i last_seen[16];
};
[[gnu::tls_model("initial-exec")]] thread_local Shadow shadow;
// The handler runs on its own stack: interpreted code pushes below the interrupted stack pointer, where the frame
// would otherwise lie.
[[gnu::tls_model("initial-exec")]] alignas(64) thread_local char handler_stack[64 * 1024];

constexpr int kOrder[16] = {REG_RAX, REG_RCX, REG_RDX, REG_RBX, REG_RSP, REG_RBP, REG_RSI, REG_RDI,
                            REG_R8, REG_R9, REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15};

// The XSAVE area behind the frame's floating-point state, in the standard format.
struct XsaveArea {
    char* bytes;
    char* xmm(unsigned i) const { return bytes + 160 + 16 * i; }
    char* ymm_high(unsigned i) const { return bytes + 576 + 16 * i; }
    std::uint64_t& components() const { return *reinterpret_cast<std::uint64_t*>(bytes + 512); }
    std::uint32_t& mxcsr() const { return *reinterpret_cast<std::uint32_t*>(bytes + 24); }
    std::uint16_t& x87_control() const { return *reinterpret_cast<std::uint16_t*>(bytes); }
    std::uint16_t& x87_status() const { return *reinterpret_cast<std::uint16_t*>(bytes + 2); }
};
constexpr std::uint64_t kX87 = 1, kSse = 2, kAvx = 4;

void import_state(Shadow& sh, const ucontext_t& context, const XsaveArea& area) {
    State& s = sh.state;
    for (unsigned i = 0; i < 16; ++i) s.gpr[i] = static_cast<std::uint64_t>(context.uc_mcontext.gregs[kOrder[i]]);
    s.gpr[kNoRegister] = 0;
    s.gpr[kFsBase] = reinterpret_cast<std::uint64_t>(__builtin_thread_pointer());
    s.rip = static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_RIP]);
    s.flags = static_cast<std::uint64_t>(context.uc_mcontext.gregs[REG_EFL]);
    if (!(area.components() & kX87)) {  // the area holds nothing: the initial state
        memset(area.bytes, 0, 24);
        area.x87_control() = 0x37F;
    }
    s.x87_control = area.x87_control();
    s.x87_status = area.x87_status();
    for (unsigned i = 0; i < 16; ++i) {
        __m128i half[2] = {};
        if (area.components() & kSse) memcpy(&half[0], area.xmm(i), 16);
        if (area.components() & kAvx) memcpy(&half[1], area.ymm_high(i), 16);
        const __m256i now = _mm256_set_m128i(half[1], half[0]);
        const __m256i change = _mm256_xor_si256(now, sh.last_seen[i]);
        if (!_mm256_testz_si256(change, change)) s.z[i].y[1] = _mm256_setzero_si256();
        s.z[i].y[0] = now;
    }
}

void export_state(Shadow& sh, ucontext_t& context, const XsaveArea& area) {
    const State& s = sh.state;
    for (unsigned i = 0; i < 16; ++i) context.uc_mcontext.gregs[kOrder[i]] = static_cast<greg_t>(s.gpr[i]);
    context.uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(s.rip);
    context.uc_mcontext.gregs[REG_EFL] = static_cast<greg_t>(s.flags);
    area.x87_control() = s.x87_control;
    area.x87_status() = s.x87_status;
    for (unsigned i = 0; i < 16; ++i) {
        memcpy(area.xmm(i), &s.z[i].x[0], 16);
        memcpy(area.ymm_high(i), &s.z[i].x[1], 16);
        sh.last_seen[i] = s.z[i].y[0];
    }
    area.components() |= kX87 | kSse | kAvx;
}

[[gnu::cold]] void report_unknown(std::uint64_t rip) {
    const auto* code = reinterpret_cast<const std::uint8_t*>(rip);
    char line[160];
    int n = snprintf(line, sizeof line, "emulator: unknown instruction at %#llx:", static_cast<unsigned long long>(rip));
    for (int i = 0; i < 12; ++i) n += snprintf(line + n, sizeof line - static_cast<size_t>(n), " %02x", code[i]);
    line[n++] = '\n';
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line, static_cast<size_t>(n));
}

// The first trap of a thread only installs the thread's handler stack: the return from the handler makes it current.
bool needs_stack(ucontext_t& context) {
    if (context.uc_stack.ss_size != 0) return false;  // the frame's flags don't tell SS_DISABLE
    context.uc_stack.ss_sp = handler_stack;
    context.uc_stack.ss_size = sizeof handler_stack;
    context.uc_stack.ss_flags = 0;
    return true;
}

void on_illegal_instruction(int, siginfo_t*, void* frame) {
    auto& context = *static_cast<ucontext_t*>(frame);
    if (needs_stack(context)) return;
    const XsaveArea area{reinterpret_cast<char*>(context.uc_mcontext.fpregs)};
    Shadow& sh = shadow;
    import_state(sh, context, area);
    const std::uint32_t own = _mm_getcsr();
    _mm_setcsr(area.mxcsr());
    const bool known = interpret(sh.state);
    area.mxcsr() = _mm_getcsr();
    _mm_setcsr(own);
    if (!known) {
        report_unknown(sh.state.rip);
        signal(SIGILL, SIG_DFL);  // the instruction traps again, for good
    }
    export_state(sh, context, area);
}

}  // namespace

bool install_if_needed() {
    if (host_has_avx512()) return false;
    struct sigaction action = {};
    action.sa_sigaction = on_illegal_instruction;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigaction(SIGILL, &action, nullptr);
    return true;
}

}  // namespace nax::emulator
