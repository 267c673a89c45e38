// call_trace LIBRARY KERNEL N: the instructions of one call of a kernel on N ordinary elements, for tools/cycles.
//
// Prints a line "module offset" for each stop of the processor's single-step trap: the address about to be executed.
// Instructions run by the interpreter of the tests don't stop; they follow the last stop one by one.
#include <dlfcn.h>
#include <signal.h>
#include <ucontext.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kMaxStops = 1 << 16;
std::uintptr_t stops[kMaxStops];
volatile std::size_t stop_count = 0;

void on_step(int, siginfo_t*, void* context) {
    const auto address = static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP];
    if (stop_count < kMaxStops) stops[stop_count] = static_cast<std::uintptr_t>(address);
    stop_count = stop_count + 1;
}

template <class T>
void trace_call(void* kernel, int n) {
    constexpr std::uint64_t trap_flag = 0x100;
    std::vector<T> x(static_cast<std::size_t>(n), T(0.75)), y = x, z = x;
    const auto kernel_of_any = reinterpret_cast<void (*)(int, T*, T*, T*)>(kernel);
    const auto call = [&] { kernel_of_any(n, x.data(), y.data(), z.data()); };  // one input: y is the result
    call();  // the first call of a thread makes its mode word
    asm volatile("pushfq; orq %0, (%%rsp); popfq" : : "i"(trap_flag) : "memory", "cc");
    call();
    asm volatile("pushfq; andq %0, (%%rsp); popfq" : : "i"(~trap_flag) : "memory", "cc");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: call_trace LIBRARY KERNEL N\n");
        return 2;
    }
    void* const library = dlopen(argv[1], RTLD_NOW);
    void* const kernel = library != nullptr ? dlsym(library, argv[2]) : nullptr;
    if (kernel == nullptr) {
        std::fprintf(stderr, "call_trace: %s\n", dlerror());
        return 1;
    }
    struct sigaction action = {};
    action.sa_sigaction = on_step;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGTRAP, &action, nullptr);
    const bool single = std::strncmp(argv[2], "nax_arq_kernel_s", 16) == 0;
    (single ? trace_call<float> : trace_call<double>)(kernel, std::atoi(argv[3]));
    if (stop_count > kMaxStops) {
        std::fprintf(stderr, "call_trace: the call is too long\n");
        return 1;
    }
    for (std::size_t i = 0; i < stop_count; ++i) {
        Dl_info info;
        if (dladdr(reinterpret_cast<void*>(stops[i]), &info) == 0) continue;
        std::printf("%s %zx\n", info.dli_fname, stops[i] - reinterpret_cast<std::uintptr_t>(info.dli_fbase));
    }
    return 0;
}
