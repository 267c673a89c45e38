// stream_fuzz_seeds DIRECTORY: writes a stream file of every generator into it, for the loader's fuzz target to start from.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "nax/streams.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::filesystem::create_directories(argv[1]);
    int written = 0;
    for (int row = 0; row < 16; ++row) {
        nax_stream* stream = nullptr;
        const uint32_t seed = 3;
        const int made = __stoNewStreamEx(&stream, (row + 1) << 20, 1, &seed);
        const std::string name = std::string(argv[1]) + "/row" + std::to_string(row);
        if (made == STO_STATUS_OK && __stoSaveStreamF(stream, name.c_str(), -1) == STO_STATUS_OK) ++written;
        if (stream != nullptr) __stoDeleteStream(&stream);
    }
    return written >= 5 ? 0 : 1;
}
