// The generators as their papers' loops, left to the compiler: what one writes without a library. Compiled with full
// optimisation for the instruction set of our own loops.
#pragma once

#include <cstdint>

namespace nax::bench {

class [[gnu::visibility("default")]] PlainTwister {
public:
    explicit PlainTwister(uint32_t seed) { start(seed); }
    // init_by_array whose first fill, which doesn't depend on the seed, is kept.
    void start(uint32_t seed);
    void words(uint32_t* r, int n);
    void doubles(double* r, int n, double a, double b);
    void singles(float* r, int n, float a, float b);

private:
    template <class T, class Map>
    void draw(T* r, int n, const Map& map);
    void refill();
    uint32_t x_[624];
    int next_;
};

class [[gnu::visibility("default")]] PlainSfmt {
public:
    PlainSfmt();
    void words(uint32_t* r, int n);
    void doubles(double* r, int n, double a, double b);

private:
    template <class T, class Map>
    void draw(T* r, int n, const Map& map);
    void refill();
    uint32_t x_[624];
    int next_ = 624;
};

class [[gnu::visibility("default")]] PlainArs5 {
public:
    void words(uint32_t* r, int n);

private:
    uint64_t counter_ = 0;
    uint64_t key_[2] = {7, 0};
};

// Points of a digital sequence with given direction numbers, one coordinate after the other.
class [[gnu::visibility("default")]] PlainDigital {
public:
    // numbers[d][bit] of `dimension` coordinates.
    PlainDigital(const uint32_t (*numbers)[32], int dimension);
    void doubles(double* r, int points);

private:
    uint32_t direction_[32][64];
    uint32_t x_[64] = {};
    uint32_t counter_ = 0;
    int dimension_;
};

}  // namespace nax::bench
