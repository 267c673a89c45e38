// Set, Zero and Copy against memset and memcpy: nanoseconds per byte. Takes the options of bench/measure.h; needs no
// AVX-512.
#include <cstdlib>
#include <cstring>

#include "bench/measure.h"
#include "nax/primitives.h"

namespace nax::bench {
namespace {

constexpr int64_t kLargest = int64_t{1} << 28;

class Buffer {
public:
    explicit Buffer(int value) : bytes_(static_cast<uint8_t*>(std::aligned_alloc(4096, kLargest))) {
        if (bytes_ == nullptr) std::abort();
        std::memset(bytes_, value, kLargest);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() { std::free(bytes_); }
    uint8_t* bytes() const { return bytes_; }

private:
    uint8_t* bytes_;
};

// Passes of many calls, through a pointer that the compiler can't see through: short calls take a few nanoseconds.
constexpr int64_t calls_of(int64_t bytes) { return bytes < 4096 ? 1024 : 1; }
template <class Result, class... Argument>
std::function<void()> calling(int64_t calls, Result (*function)(Argument...),
                              std::type_identity_t<Argument>... arguments) {
    return [=] {
        Result (*volatile const opaque)(Argument...) = function;
        Result (*const called)(Argument...) = opaque;
        for (int64_t i = 0; i < calls; ++i) called(arguments...);
    };
}

void time_size(Report& report, uint8_t* a, const uint8_t* b, int64_t bytes) {
    const auto n = static_cast<int32_t>(bytes);
    const auto size = static_cast<size_t>(bytes);
    const int64_t calls = calls_of(bytes);
    const Options options{bytes >= 1 << 26 ? 5 : 25};
    auto* const doubles = reinterpret_cast<double*>(a);
    const auto row = [&](const char* work, std::function<void()> ours, const char* rival,
                         std::function<void()> theirs) {
        report.time(work, "aligned", bytes, {{"ours", std::move(ours)}, {rival, std::move(theirs)}}, options, calls);
    };
    row("Zero_64f", calling(calls, nax_dft_avx2_opasZero_64f, doubles, n / 8), "memset",
        calling(calls, std::memset, a, 0, size));
    row("Set_8u", calling(calls, nax_dft_avx2_opasSet_8u, 0x5A, a, n), "memset",
        calling(calls, std::memset, a, 0x5A, size));
    row("Set_64f", calling(calls, nax_dft_avx2_opasSet_64f, 1.5, doubles, n / 8), "memset",
        calling(calls, std::memset, a, 0x5A, size));
    row("Copy_64f", calling(calls, nax_dft_avx2_opasCopy_64f, reinterpret_cast<const double*>(b), doubles, n / 8),
        "memcpy", calling(calls, std::memcpy, a, b, size));
}

void time_odd_size(Report& report, uint8_t* a, const uint8_t* b, int64_t bytes) {
    const auto n = static_cast<int32_t>(bytes);
    const auto size = static_cast<size_t>(bytes);
    const int64_t calls = calls_of(bytes);
    report.time("Set_8u", "offset 1", bytes,
                {{"ours", calling(calls, nax_dft_avx2_opasSet_8u, 0x5A, a + 1, n)},
                 {"memset", calling(calls, std::memset, a + 1, 0x5A, size)}},
                {}, calls);
    report.time("Copy_8u", "offset 1", bytes,
                {{"ours", calling(calls, nax_dft_avx2_opasCopy_8u, b + 3, a + 1, n)},
                 {"memcpy", calling(calls, std::memcpy, a + 1, b + 3, size)}},
                {}, calls);
}

}  // namespace
}  // namespace nax::bench

int main(int argc, char** argv) {
    using namespace nax::bench;
    pin_to_one_core();
    const Buffer a(1), b(2);
    Report report("Set, zero and copy", argc, argv);
    for (const int64_t bytes : {8,    16,    32,    64,    96,     128,     192,     256,      384,      1024,
                                4096, 16384, 32768, 65536, 262144, 1 << 20, 4 << 20, 16 << 20, 64 << 20, 1 << 28})
        time_size(report, a.bytes(), b.bytes(), bytes);
    for (const int64_t bytes : {13, 65, 1001, 40001}) time_odd_size(report, a.bytes(), b.bytes(), bytes);
    return report.finish();
}
