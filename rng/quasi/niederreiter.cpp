// NIEDERREITER, a base-2 digital sequence of up to 318 dimensions, more with the caller's parameters.
//
// Dimension d has an irreducible polynomial p of degree e. Row j of its generator matrix is a linear recurring sequence with
// characteristic polynomial p^(q+1), q = j / e, shifted by j mod e: a Laurent expansion of a fraction over a power of p.
// Column r of the matrix is direction number r. Point c is the exclusive or of the direction numbers at the bits of c's Gray
// code; 2^32 - 1 points from c = 1 on. Output words are the coordinates of successive points as 32-bit fractions; reals are
// a + (b - a) (x >> 1) / 2^31.
// H. Niederreiter, "Low-discrepancy and low-dispersion sequences", Journal of Number Theory 30 (1988), 51-70; P. Bratley,
// B. L. Fox, H. Niederreiter, "Implementation and tests of low-discrepancy sequences", ACM Transactions on Modeling and
// Computer Simulation 2 (1992), 195-213.
#include "rng/quasi/niederreiter.h"

#include <algorithm>
#include <bit>

#include "rng/quasi/quasi_generator.h"
#include "service/block.h"

#include "rng/quasi/niederreiter_tables.inc"

namespace nax::rng {

namespace {

constexpr uint32_t kTableDimensions = NiederreiterState::kDimensions;

struct Accepts {
    uint64_t n;

    bool operator()(QuasiClass user, uint64_t dimension) const {
        if (user == kUserPolynomials) return n >= dimension + 3;
        return user == kUserDirections && n >= 32 * dimension + 3;
    }
};

uint64_t product(uint64_t a, uint64_t b) {
    uint64_t r = 0;
    for (; b != 0; b &= b - 1) r ^= a << std::countr_zero(b);
    return r;
}

int degree_of(uint64_t p) { return static_cast<int>(std::bit_width(p)) - 1; }

// Terms of the sequence with characteristic polynomial b = h p, of degree m: those below h's degree are 0, the others of the
// first m are 1, as the authors' program has it.
struct Sequence {
    static constexpr int kTerms = 2 * kDirectionBits;
    bool term[kTerms];

    Sequence(uint64_t b, int zeros) {
        const int m = degree_of(b);
        for (int i = 0; i < m && i < kTerms; ++i) term[i] = i >= zeros;
        for (int i = m; i < kTerms; ++i) {
            term[i] = false;
            for (int k = 0; k < m; ++k) term[i] = term[i] != ((b >> k & 1) != 0 && term[i - m + k]);
        }
    }
};

bool fill_from_polynomial(uint64_t p, uint32_t* row) {
    const int degree = degree_of(p);
    if (degree < 1) return false;
    std::fill_n(row, kDirectionRow, 0u);
    uint64_t power = 1;
    for (int j = 0; j < kDirectionBits; j += degree) {
        const int zeros = degree_of(power);
        power = product(power, p);
        const Sequence sequence(power, zeros);
        for (int shift = 0; shift < degree && j + shift < kDirectionBits; ++shift) {
            const uint32_t digit = 1u << (kDirectionBits - 1 - j - shift);
            for (int r = 0; r < kDirectionBits; ++r) {
                if (sequence.term[r + shift]) row[r] |= digit;
            }
        }
    }
    return true;
}

}  // namespace

QuasiRequest Niederreiter::request(int n, const uint32_t* params) {
    return read_request(n, params, 3, kTableDimensions, Accepts{static_cast<uint64_t>(std::max(n, 0))});
}

int Niederreiter::fill(const QuasiRequest& wanted, const uint32_t* params, uint32_t* rows) {
    for (uint32_t d = 0; d < wanted.dimension; ++d) {
        uint32_t* const row = rows + std::size_t{d} * kDirectionRow;
        if (wanted.user == kUserDirections) {
            std::copy_n(params + 3 + std::size_t{d} * kDirectionBits, kDirectionBits, row);
            row[kDirectionBits] = 0;
            continue;
        }
        const uint32_t polynomial = wanted.user == kUserPolynomials ? params[3 + d] : uNiederrIrredPoly[d];
        if (!fill_from_polynomial(polynomial, row)) return STO_STATUS_BAD_ARGUMENT;
    }
    return STO_STATUS_OK;
}

// Streams of more dimensions than the payload holds keep direction numbers and point in a chunk of their own.
int Niederreiter::add_chunks(Stream* stream, int n, const uint32_t* params, uint32_t dimension) {
    const uint64_t words = uint64_t{dimension} * kDirectionRow;
    if (words * sizeof(uint32_t) > INT32_MAX) return STO_STATUS_NO_MEMORY;
    service::Block<uint32_t> block(words);
    if (!block) return STO_STATUS_NO_MEMORY;
    int status = __stoNiederrInitUserPolymsChunk(stream, n, params, block.get());
    if (status < 0) return status;
    status = __stoAddChunk(stream, static_cast<uint32_t>(ChunkId::kNiederreiterDirections), nullptr, block.get(),
                           static_cast<int>(words * sizeof(uint32_t)));
    if (status == STO_STATUS_OK) block.detach();
    return status;
}

}  // namespace nax::rng

using namespace nax::rng;

NAX_GENERATOR(Niederr, QuasiGenerator<Niederreiter>)

extern "C" {

int __stoNiederrInitUserPolymsStreamStruct(nax_stream* stream, int n, const uint32_t* params) {
    return QuasiGenerator<Niederreiter>::fill_payload(stream, Niederreiter::request(n, params), params);
}

int __stoNiederrInitUserPolymsChunk(nax_stream*, int n, const uint32_t* params, uint32_t* block) {
    const QuasiRequest wanted = Niederreiter::request(n, params);
    const int status = Niederreiter::fill(wanted, params, block);
    if (status < 0) return status;
    set_point(points_by_dimension(block), static_cast<int>(wanted.dimension), 1);
    return STO_STATUS_OK;
}

}  // extern "C"
