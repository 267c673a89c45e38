// The linear generators by their definitions: one term at a time, in wide integers, with plain remainders.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "nax/abi/streams.h"

namespace nax::testing {

using Wide = unsigned __int128;

struct Mcg31Model {
    using Word = uint32_t;
    static constexpr int kWords = 1;
    uint64_t x = 1, a = 1132489760;
    void step() { x = x * a % 0x7FFFFFFF; }
    std::array<uint32_t, 1> words() const { return {static_cast<uint32_t>(x)}; }
    double real(double lo, double hi) const { return std::fma(static_cast<double>(x), (hi - lo) * (1.0 / 2147483647.0), lo); }
    float real(float lo, float hi) const {
        return std::fmaf(static_cast<float>(static_cast<double>(x)), (hi - lo) * 0x1p-31f, lo);
    }
};

struct Mcg59Model {
    static constexpr int kWords = 2;
    uint64_t x = 1, a = 302875106592253;
    void step() { x = static_cast<uint64_t>(static_cast<Wide>(x) * a % (Wide{1} << 59)); }
    std::array<uint32_t, 2> words() const { return {static_cast<uint32_t>(x), static_cast<uint32_t>(x >> 32)}; }
    double real(double lo, double hi) const { return std::fma(static_cast<double>(x), (hi - lo) * 0x1p-59, lo); }
    float real(float lo, float hi) const {
        return std::fmaf(static_cast<float>(static_cast<double>(x)), (hi - lo) * 0x1p-59f, lo);
    }
};

struct Mrg32k3aModel {
    static constexpr int kWords = 1;
    static constexpr int64_t m1 = 4294967087, m2 = 4294944443;
    std::array<int64_t, 3> x{1, 1, 1}, y{1, 1, 1};       // the term to deliver is the one that follows
    static int64_t next(std::array<int64_t, 3>& v, int64_t c2, int64_t c1, int64_t c0, int64_t m) {
        const __int128 sum = static_cast<__int128>(c2) * v[2] + static_cast<__int128>(c1) * v[1] - static_cast<__int128>(c0) * v[0];
        const int64_t term = static_cast<int64_t>((sum % m + m) % m);
        v = {v[1], v[2], term};
        return term;
    }
    int64_t z = 0;
    void make() {
        const int64_t p = next(x, 0, 1403580, 810728, m1), q = next(y, 527612, 0, 1370589, m2);
        z = p > q ? p - q : p - q + m1;
    }
    void step() { make(); }
    std::array<uint32_t, 1> words() const { return {static_cast<uint32_t>(z)}; }
    double real(double lo, double hi) const { return std::fma(static_cast<double>(z), (hi - lo) * 2.328306549837829e-10, lo); }
    float real(float lo, float hi) const {
        const float scale = static_cast<float>((static_cast<double>(hi) - static_cast<double>(lo)) * 2.328306549837829e-10);
        return std::fmaf(static_cast<float>(z), scale, lo);
    }
};

struct R250Model {
    static constexpr int kWords = 1;
    std::vector<uint32_t> history;      // the last 250 words and the one to deliver
    void step() {
        history.push_back(history[history.size() - 147] ^ history[history.size() - 250]);
        history.erase(history.begin());
    }
    std::array<uint32_t, 1> words() const { return {history.back()}; }
    double real(double lo, double hi) const { return lo + static_cast<double>(history.back()) * ((hi - lo) * 0x1p-32); }
    float real(float lo, float hi) const {
        return static_cast<float>(real(static_cast<double>(lo), static_cast<double>(hi)));
    }
};

struct WhModel {
    static constexpr int kWords = 4;
    std::array<uint64_t, 4> x{1, 1, 1, 1}, a{}, m{};
    explicit WhModel(int row) {
        for (size_t j = 0; j < 4; ++j) {
            a[j] = _sto_WH_A[row][j];
            m[j] = _sto_WH_M[row][j];
        }
    }
    void step() {
        for (size_t j = 0; j < 4; ++j) x[j] = a[j] * x[j] % m[j];
    }
    std::array<uint32_t, 4> words() const {
        return {static_cast<uint32_t>(x[0]), static_cast<uint32_t>(x[1]), static_cast<uint32_t>(x[2]), static_cast<uint32_t>(x[3])};
    }
    double fraction() const {
        double sum = 0;
        for (size_t j = 0; j < 4; ++j) sum += static_cast<double>(x[j]) * (1.0 / static_cast<double>(m[j]));
        return sum - std::trunc(sum);
    }
    double real(double lo, double hi) const { return std::fma(hi - lo, fraction(), lo); }
    float real(float lo, float hi) const {
        return static_cast<float>(real(static_cast<double>(lo), static_cast<double>(hi)));
    }
};

}  // namespace nax::testing
