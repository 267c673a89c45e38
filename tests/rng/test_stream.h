// Streams under test: an owner, and drawing in each output type.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "nax/abi/streams.h"
#include "rng/stream.h"

namespace nax::testing {

class TestStream {
public:
    explicit TestStream(nax_stream* stream) : stream_(stream) {}
    TestStream(int brng, const std::vector<uint32_t>& seeds) {
        status_ = __stoNewStreamEx(&stream_, brng, static_cast<int>(seeds.size()), seeds.data());
    }
    TestStream(TestStream&& other) noexcept : stream_(other.stream_), status_(other.status_) { other.stream_ = nullptr; }
    TestStream& operator=(TestStream&&) = delete;
    ~TestStream() {
        if (stream_ != nullptr) __stoDeleteStream(&stream_);
    }

    TestStream copy() const {
        nax_stream* copied = nullptr;
        EXPECT_EQ(__stoCopyStream(&copied, stream_), STO_STATUS_OK);
        return TestStream(copied);
    }
    operator nax_stream*() const { return stream_; }
    int status() const { return status_; }

private:
    nax_stream* stream_ = nullptr;
    int status_ = STO_STATUS_OK;
};

inline nax_brng_properties properties(const nax_stream* stream) {
    nax_brng_properties row{};
    EXPECT_EQ(__stoGetBrngProperties(__stoGetStreamStateBrng(stream), &row), STO_STATUS_OK);
    return row;
}

// n outputs of the integer form, as 32-bit words (2 or 4 of them for wide generators).
inline std::vector<uint32_t> draw_words(nax_stream* stream, int n) {
    const nax_brng_properties row = properties(stream);
    std::vector<uint32_t> words(static_cast<size_t>(n > 0 ? n : 0) * static_cast<size_t>(row.WordSize / 4));
    EXPECT_EQ(row.iBRng(stream, n, words.data()), STO_STATUS_OK);
    return words;
}
inline std::vector<double> draw_doubles(nax_stream* stream, int n, double a = 0.0, double b = 1.0) {
    std::vector<double> values(static_cast<size_t>(n > 0 ? n : 0));
    EXPECT_EQ(properties(stream).dBRng(stream, n, values.data(), a, b), STO_STATUS_OK);
    return values;
}
inline std::vector<float> draw_singles(nax_stream* stream, int n, float a = 0.0f, float b = 1.0f) {
    std::vector<float> values(static_cast<size_t>(n > 0 ? n : 0));
    EXPECT_EQ(properties(stream).sBRng(stream, n, values.data(), a, b), STO_STATUS_OK);
    return values;
}

template <class T>
std::vector<T> draw(nax_stream* stream, int n) {
    if constexpr (std::is_same_v<T, uint32_t>) return draw_words(stream, n);
    else if constexpr (std::is_same_v<T, double>) return draw_doubles(stream, n);
    else return draw_singles(stream, n);
}

template <class T>
void append(std::vector<T>& to, const std::vector<T>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

// Bytes behind the header.
inline std::vector<unsigned char> payload_bytes(const nax_stream* stream) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(stream);
    return {bytes + 16, bytes + properties(stream).StreamStateSize};
}

// The generators of this library that run without the processor's luck, by name.
struct Generator {
    const char* name;
    int brng;
    bool leapfrogs, skips, skips_far;
};
inline const Generator kLinear[] = {
    {"MCG31", NAX_BRNG_MCG31, true, true, false},         {"R250", NAX_BRNG_R250, false, false, false},
    {"MRG32K3A", NAX_BRNG_MRG32K3A, false, true, true},   {"MCG59", NAX_BRNG_MCG59, true, true, false},
    {"WH", NAX_BRNG_WH + 7, true, true, false},
};
inline void PrintTo(const Generator& generator, std::ostream* out) { *out << generator.name; }

}  // namespace nax::testing
