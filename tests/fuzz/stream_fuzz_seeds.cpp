// stream_fuzz_seeds DIRECTORY: writes a stream file of every generator into it, and of the quasi-random ones in their user
// form, for the loader's fuzz target to start from.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "nax/abi/streams.h"

namespace {

bool write(int brng, const std::vector<uint32_t>& params, const std::string& name) {
    nax_stream* stream = nullptr;
    const int made = __stoNewStreamEx(&stream, brng, static_cast<int>(params.size()), params.data());
    const bool written = made == STO_STATUS_OK && __stoSaveStreamF(stream, name.c_str(), -1) == STO_STATUS_OK;
    if (stream != nullptr) __stoDeleteStream(&stream);
    return written;
}

// Direction numbers given by the caller: chunks 9 and 13 of SOBOL from 41 dimensions on, chunk 10 of NIEDERREITER from 319.
std::vector<uint32_t> direction_numbers(uint32_t dimension) {
    std::vector<uint32_t> params = {dimension, 1, 4};
    for (uint32_t i = 0; i < dimension * 32; ++i) params.push_back(0x80000000u >> i % 32);
    return params;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::filesystem::create_directories(argv[1]);
    int written = 0;
    for (int row = 0; row < 16; ++row) {
        written += write((row + 1) << 20, {3}, std::string(argv[1]) + "/row" + std::to_string(row));
    }
    written += write(NAX_BRNG_SOBOL, direction_numbers(41), std::string(argv[1]) + "/sobol41");
    written += write(NAX_BRNG_NIEDERREITER, direction_numbers(319), std::string(argv[1]) + "/niederreiter319");
    // All generators but the three abstract ones can be made from a seed.
    return written == 15 ? 0 : 1;
}
