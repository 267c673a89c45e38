// Feeds files of arbitrary bytes to the stream loader. A stream that comes back must work, be copied, saved and deleted; the
// sanitizers watch the rest. Short runs belong to the tests, long ones are started by hand:
//     cmake --preset asan && ninja -C build/asan stream_loader_fuzz
//     build/asan/bin/stream_loader_fuzz -max_len=100000 -max_total_time=3600 corpus
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "nax/abi/streams.h"

namespace {

// Abstract streams point at the buffer and callback of the process that saved them: drawing from one is not for strangers.
bool is_abstract(int brng) { return brng >= NAX_BRNG_IABSTRACT && brng < NAX_BRNG_SFMT19937; }

void use(nax_stream* stream) {
    const int brng = __stoGetStreamStateBrng(stream);
    if (is_abstract(brng)) return;
    nax_brng_properties row;
    if (__stoGetBrngProperties(brng, &row) != STO_STATUS_OK) std::abort();
    std::vector<double> reals(1300);
    std::vector<uint32_t> words(4 * 1300);
    for (const int n : {1, 7, 1300}) {
        row.dBRng(stream, n, reals.data(), 0.0, 1.0);
        row.iBRng(stream, n, words.data());
    }
    __stoSkipAheadStream(stream, 100);
    nax_stream* copied = nullptr;
    if (__stoCopyStream(&copied, stream) != STO_STATUS_OK) std::abort();
    __stoDeleteStream(&copied);
    std::vector<unsigned char> image(static_cast<size_t>(__stoGetStreamSize(stream)));
    __stoSaveStreamM(stream, image.data());
    if (__stoLoadStreamM(&copied, image.data()) != STO_STATUS_OK) std::abort();
    __stoDeleteStream(&copied);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("stream", 0);
    char name[32];
    std::snprintf(name, sizeof(name), "/proc/self/fd/%d", file);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) return 0;
    nax_stream* stream = nullptr;
    const int status = __stoLoadStreamF(&stream, name, -1);
    if ((status == STO_STATUS_OK) != (stream != nullptr)) std::abort();
    if (stream == nullptr) return 0;
    use(stream);
    __stoDeleteStream(&stream);
    return 0;
}
