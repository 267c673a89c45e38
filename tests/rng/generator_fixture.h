// Streams made straight from the registry, and the properties that every generator of 32-bit words has: a call's words are
// the definition's whatever its length and starting offset, reals are maps of the words, skips add up and commute with draws.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <numeric>
#include <vector>

#include "nax/abi/streams.h"
#include "rng/registry.h"
#include "service/service.h"

namespace nax::test {

using Words = std::vector<uint32_t>;

class TestStream {
public:
    explicit TestStream(int brng, const Words& params = {})
        : row_(rng::place_of(brng).properties()), stream_(allocate(row_)) {
        std::memset(static_cast<void*>(stream_), 0, static_cast<size_t>(row_.StreamStateSize));
        stream_->brng = brng;
        status = row_.InitStream(NAX_INIT_STANDARD, stream_, static_cast<int>(params.size()), params.data());
    }
    // A generator without chunks is its payload.
    TestStream(const TestStream& other) : status(other.status), row_(other.row_), stream_(allocate(other.row_)) {
        std::memcpy(static_cast<void*>(stream_), other.stream_, static_cast<size_t>(row_.StreamStateSize));
    }
    TestStream& operator=(const TestStream&) = delete;
    ~TestStream() { nax_serv_deallocate(stream_); }

    Words words(int n) {
        Words r(static_cast<size_t>(n));
        status = row_.iBRng(stream_, n, r.data());
        return r;
    }
    template <class T>
    std::vector<T> reals(int n, T a, T b) {
        std::vector<T> r(static_cast<size_t>(n));
        if constexpr (sizeof(T) == sizeof(double)) status = row_.dBRng(stream_, n, r.data(), a, b);
        else status = row_.sBRng(stream_, n, r.data(), a, b);
        return r;
    }
    int skip(uint64_t nskip) { return status = row_.InitStream(NAX_INIT_SKIPAHEAD, stream_, 2, &nskip); }
    int skip(const std::vector<uint64_t>& nskip) {
        return status = row_.InitStream(NAX_INIT_SKIPAHEADEX, stream_, static_cast<int>(nskip.size()), nskip.data());
    }
    int select(int k, int nstreams) { return status = row_.InitStream(NAX_INIT_LEAPFROG, stream_, nstreams, &k); }
    int init(int method) {
        const uint64_t params[3] = {1, 0, 0};
        return row_.InitStream(method, stream_, 2, params);
    }
    nax_stream* get() { return stream_; }
    template <class State>
    State& state() { return rng::payload<State>(stream_); }
    bool same_bytes(const TestStream& other) const {
        return std::memcmp(stream_, other.stream_, static_cast<size_t>(row_.StreamStateSize)) == 0;
    }

    int status = 0;

private:
    static nax_stream* allocate(const nax_brng_properties& row) {
        return static_cast<nax_stream*>(nax_serv_allocate(static_cast<size_t>(row.StreamStateSize), 128));
    }
    nax_brng_properties row_;
    nax_stream* stream_;
};

// Every length from 0 to max_n from every starting offset gives the definition's words, and leaves the stream right.
inline void expect_all_cuts(const TestStream& start, const Words& expected, int offsets, int max_n) {
    TestStream at(start);
    for (int offset = 0; offset < offsets; ++offset) {
        for (int n = 0; n <= max_n; ++n) {
            TestStream copy(at);
            Words drawn = copy.words(n);
            const Words rest = copy.words(3);
            drawn.insert(drawn.end(), rest.begin(), rest.end());
            ASSERT_TRUE(std::equal(drawn.begin(), drawn.end(), expected.begin() + offset)) << offset << " " << n;
        }
        at.words(1);
    }
}

// Reals are map(word) to the last bit, for lengths around the vectors and across blocks.
template <class T>
void expect_reals(const TestStream& start, const Words& expected, T a, T b, const std::function<T(uint32_t)>& map) {
    for (const int first : {0, 1, 5}) {
        for (int n = 0; n < 2000; n = n < 100 ? n + 1 : n + 173) {
            TestStream copy(start);
            copy.words(first);
            const std::vector<T> drawn = copy.reals<T>(n, a, b);
            for (int i = 0; i < n; ++i) {
                ASSERT_EQ(drawn[static_cast<size_t>(i)], map(expected[static_cast<size_t>(first + i)])) << n << " " << i;
            }
        }
    }
}

inline void expect_same_future(const TestStream& a, const TestStream& b, int n = 700) {
    TestStream left(a), right(b);
    ASSERT_EQ(left.words(n), right.words(n));
}

inline void expect_skips_add_up(const TestStream& start, const std::vector<uint64_t>& counts) {
    for (const uint64_t a : counts) {
        for (const uint64_t b : counts) {
            TestStream twice(start), once(start);
            ASSERT_EQ(twice.skip(a), 0);
            ASSERT_EQ(twice.skip(b), 0);
            ASSERT_EQ(once.skip(a + b), 0);
            expect_same_future(twice, once);
            if (::testing::Test::HasFatalFailure()) FAIL() << a << " + " << b;
        }
    }
}

// A skip equals a draw of the same length, also after and before other draws.
inline void expect_skip_is_draw(const TestStream& start, const std::vector<int>& counts) {
    for (const int before : {0, 1, 2, 3, 7, 620, 623, 624, 625}) {
        TestStream at(start);
        at.words(before);
        for (const int n : counts) {
            TestStream drawn(at), skipped(at);
            drawn.words(n);
            ASSERT_EQ(skipped.skip(static_cast<uint64_t>(n)), 0);
            expect_same_future(drawn, skipped);
            if (::testing::Test::HasFatalFailure()) FAIL() << before << " then " << n;
        }
    }
}

// A method that the generator lacks is refused and leaves the stream as it was.
inline void expect_refusal(TestStream& stream, int method, int status) {
    const TestStream before(stream);
    EXPECT_EQ(stream.init(method), status);
    EXPECT_TRUE(stream.same_bytes(before));
}

}  // namespace nax::test
