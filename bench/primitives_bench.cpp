// Set, Zero and Copy against memset and memcpy in the same run. Prints GB/s of bytes filled or copied and the ratio.
// Pin it to one core: taskset -c 1 primitives_bench [--json file]. Needs no AVX-512.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "nax/primitives.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::duration time) { return std::chrono::duration<double>(time).count(); }

// Shortest time of one call among rounds of some 0.5 ms each; ours and the rival take turns, so that the machine's
// moods meet both.
struct Times {
    double ours, rival;
};
template <class Ours, class Rival>
Times measure(size_t bytes, Ours ours, Rival rival) {
    const size_t calls = std::max<size_t>(1, size_t{1 << 25} / std::max<size_t>(bytes, 512));
    const auto time = [calls](auto&& call) {
        const auto start = Clock::now();
        for (size_t i = 0; i < calls; ++i) call();
        return seconds(Clock::now() - start) / static_cast<double>(calls);
    };
    Times best = {1e9, 1e9};
    const int rounds = bytes >= (size_t{1} << 26) ? 5 : 15;
    for (int round = 0; round < rounds; ++round) {
        best.ours = std::min(best.ours, time(ours));
        best.rival = std::min(best.rival, time(rival));
    }
    return best;
}

struct Row {
    const char* work;
    size_t bytes;
    Times times;
};

std::string size_text(size_t bytes) {
    if (bytes >= (1 << 20) && bytes % (1 << 20) == 0) return std::to_string(bytes >> 20) + " MiB";
    if (bytes >= 1024) return std::to_string(bytes >> 10) + " KiB";
    return std::to_string(bytes) + " B";
}

void print(const Row& row) {
    const double gigabytes = static_cast<double>(row.bytes) * 1e-9;
    std::printf("%-22s %10s  %8.2f ns %8.1f GB/s   rival %8.2f ns %8.1f GB/s   ratio %5.2f\n", row.work,
                size_text(row.bytes).c_str(), row.times.ours * 1e9, gigabytes / row.times.ours, row.times.rival * 1e9,
                gigabytes / row.times.rival, row.times.rival / row.times.ours);
}

void write_json(const std::vector<Row>& rows, const char* path) {
    FILE* const file = std::fopen(path, "w");
    if (file == nullptr) return;
    std::fprintf(file, "[\n");
    for (const Row& row : rows)
        std::fprintf(
            file,
            "  {\"service\": \"primitives\", \"work\": \"%s\", \"bytes\": %zu, \"ns\": %.3f, \"rival_ns\": %.3f}%s\n",
            row.work, row.bytes, row.times.ours * 1e9, row.times.rival * 1e9, &row == &rows.back() ? "" : ",");
    std::fprintf(file, "]\n");
    std::fclose(file);
}

// Keeps the compiler from seeing through repeated calls.
void* volatile opaque;

}  // namespace

int main(int argc, char** argv) {
    constexpr size_t kLargest = size_t{1} << 28;
    auto* const a = static_cast<uint8_t*>(std::aligned_alloc(4096, kLargest));
    auto* const b = static_cast<uint8_t*>(std::aligned_alloc(4096, kLargest));
    if (a == nullptr || b == nullptr) return 1;
    std::memset(a, 1, kLargest);
    std::memset(b, 2, kLargest);
    std::vector<Row> rows;
    const auto add = [&rows](const char* work, size_t bytes, Times times) {
        rows.push_back({work, bytes, times});
        print(rows.back());
    };
    // All through pointers that the compiler can't see through.
    void* (*volatile const set_bytes)(void*, int, size_t) = std::memset;
    void* (*volatile const copy_bytes)(void*, const void*, size_t) = std::memcpy;
    int (*volatile const zero_64f)(double*, int32_t) = nax_dft_avx2_opasZero_64f;
    int (*volatile const set_8u)(uint8_t, uint8_t*, int32_t) = nax_dft_avx2_opasSet_8u;
    int (*volatile const set_64f)(double, double*, int32_t) = nax_dft_avx2_opasSet_64f;
    int (*volatile const copy_8u)(const uint8_t*, uint8_t*, int32_t) = nax_dft_avx2_opasCopy_8u;
    int (*volatile const copy_64f)(const double*, double*, int32_t) = nax_dft_avx2_opasCopy_64f;
    auto* const doubles = reinterpret_cast<double*>(a);
    const auto* const source = reinterpret_cast<const double*>(b);
    const size_t sizes[] = {64,     256,     1024,    4096,     16384,    32768,   65536,
                            262144, 1 << 20, 4 << 20, 16 << 20, 64 << 20, kLargest};
    for (const size_t bytes : sizes) {
        const auto n = static_cast<int32_t>(bytes);
        add("Zero_64f / memset", bytes,
            measure(
                bytes, [&] { zero_64f(doubles, n / 8); }, [&] { set_bytes(a, 0, bytes); }));
        add("Set_8u / memset", bytes,
            measure(
                bytes, [&] { set_8u(0x5A, a, n); }, [&] { set_bytes(a, 0x5A, bytes); }));
        add("Set_64f / memset", bytes,
            measure(
                bytes, [&] { set_64f(1.5, doubles, n / 8); }, [&] { set_bytes(a, 0x5A, bytes); }));
        add("Copy_64f / memcpy", bytes,
            measure(
                bytes, [&] { copy_64f(source, doubles, n / 8); }, [&] { copy_bytes(a, b, bytes); }));
    }
    const size_t odd_sizes[] = {65, 1001, 40001};
    for (const size_t bytes : odd_sizes) {
        const auto n = static_cast<int32_t>(bytes);
        add("Set_8u+1 / memset", bytes,
            measure(
                bytes, [&] { set_8u(0x5A, a + 1, n); }, [&] { set_bytes(a + 1, 0x5A, bytes); }));
        add("Copy_8u+1 / memcpy", bytes,
            measure(
                bytes, [&] { copy_8u(b + 3, a + 1, n); }, [&] { copy_bytes(a + 1, b + 3, bytes); }));
    }
    opaque = a;
    if (argc == 3 && std::string(argv[1]) == "--json") write_json(rows, argv[2]);
    std::free(a);
    std::free(b);
}
