// The words that seed a quasi-random stream: {dimension}, or {dimension, 1, class, ...}.
#pragma once

#include <cstdint>

namespace nax::rng {

enum QuasiClass : uint32_t {
    kNoUserData = 0,
    kUserPolynomials = 1,
    kUserInitialNumbers = 2,
    kUserPolynomialsAndNumbers = 3,
    kUserDirections = 4,
    kUserPolynomialsAndNumbersFromFirst = 11,
};

struct QuasiRequest {
    uint32_t dimension = 1;
    QuasiClass user = kNoUserData;
};

// `accepts(class, dimension)` tells whether the words are long enough for a class and within its limit. Parameters that
// fail are as good as absent: then the dimension alone counts, and is 1 beyond the default limit.
template <class Accepts>
QuasiRequest read_request(int n, const uint32_t* params, int least, uint32_t default_limit, const Accepts& accepts) {
    if (n < 1) return {};
    const uint32_t dimension = params[0];
    if (n >= least && params[1] == 1 && dimension >= 1) {
        const QuasiClass user = static_cast<QuasiClass>(params[2]);
        if (accepts(user, dimension)) return {dimension, user};
    }
    return {dimension >= 1 && dimension <= default_limit ? dimension : 1, kNoUserData};
}

}  // namespace nax::rng
