// Regenerates rows of rng/generators/mt2203.inc: parameters of twisters of 69 words and period 2^2203 - 1, one for each
// sub-stream.
//
//   mt2203 OFFSET [COUNT]
//
// M. Matsumoto, T. Nishimura, "Dynamic creation of pseudorandom number generators" (1998): MatrixA with the sub-stream's
// number in its low 16 bits is varied until the characteristic polynomial is irreducible, which makes it primitive, since
// 2^2203 - 1 is prime; then tempering masks are searched bit by bit, from the most significant one down, for the best
// equidistribution (M. Matsumoto, Y. Kurita, "Twisted GFSR generators II", ACM TOMACS 4 (1994)). A row is taken when its
// defect, the sum over v of floor(2203/v) - k(v), is at most 772 and no single term exceeds 68; else the next MatrixA is
// tried.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "tools/gen/mt2203_polynomial.h"
#include "tools/gen/mt2203_tempering.h"

using namespace nax::gen;

namespace {

constexpr int kLargestDefect = 772;
constexpr int kLargestTerm = 68;

void print_row(uint32_t offset) {
    const Sieve sieve;
    // Candidates run through the 15 bits between the number and the leading 1 in a scrambled order.
    for (uint32_t i = 0; i < 1u << 15; ++i) {
        const uint32_t middle = (i * 0x4E6Du + offset * 0x2545u) & 0x7FFFu;
        const uint32_t matrix_a = 0x80000000u | middle << 16 | offset;
        if (!sieve.passes(matrix_a) || !is_irreducible(matrix_a)) continue;
        const Tempering best = search_tempering(matrix_a);
        if (best.defect > kLargestDefect || best.largest_term > kLargestTerm) continue;
        std::printf("{0x%08Xu, 0x%08Xu, 0x%08Xu},  // %u: defect %d, largest term %d\n", matrix_a, best.b, best.c, offset,
                    best.defect, best.largest_term);
        std::fflush(stdout);
        return;
    }
    std::fprintf(stderr, "no parameters for %u\n", offset);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OFFSET [COUNT]\n", argv[0]);
        return 2;
    }
    const uint32_t first = static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 0));
    const uint32_t count = argc > 2 ? static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 0)) : 1;
    for (uint32_t offset = first; offset < first + count && offset < 6024; ++offset) print_row(offset);
}
