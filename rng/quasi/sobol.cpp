// SOBOL, a base-2 digital sequence of up to 40 dimensions, more with the caller's parameters.
//
// Dimension d has a primitive polynomial of degree s and initial numbers m(1) ... m(s); with a(k) the coefficient of
// x^(s-k), m(j) = m(j-s) ^ 2^s m(j-s) ^ xor(k < s) 2^k a(k) m(j-k), and direction number j is m(j) 2^(32-j). Point c is the
// exclusive or of the direction numbers at the bits of c's Gray code; 2^32 - 1 points from c = 1 on. Output words are the
// coordinates of successive points as 32-bit fractions; reals are a + (b - a) (x >> 1) / 2^31.
// I. M. Sobol, USSR Computational Mathematics and Mathematical Physics 7 (1967), 86-112; P. Bratley, B. L. Fox,
// "Algorithm 659", ACM Transactions on Mathematical Software 14 (1988), 88-100.
#include "rng/quasi/sobol.h"

#include <algorithm>
#include <bit>

#include "rng/quasi/quasi_generator.h"
#include "service/block.h"

#include "rng/quasi/sobol_tables.inc"

namespace nax::rng {

namespace {

constexpr uint32_t kTableDimensions = SobolState::kDimensions;
constexpr uint32_t kTableNumbers = 8;

// Tells whether `n` words hold what a class announces.
struct Accepts {
    uint64_t n;
    const uint32_t* params;

    bool operator()(QuasiClass user, uint64_t dimension) const {
        switch (user) {
            case kUserPolynomials: return dimension <= kTableDimensions && n >= dimension + 2;
            case kUserInitialNumbers: return dimension <= kTableDimensions && n >= (dimension - 1) * params[3] + 4;
            case kUserPolynomialsAndNumbers:
                return n >= dimension + 3 && n >= (dimension - 1) * (uint64_t{params[dimension + 2]} + 1) + 4;
            case kUserPolynomialsAndNumbersFromFirst:
                return n >= dimension + 4 && n >= (uint64_t{params[dimension + 3]} + 1) * dimension + 4;
            case kUserDirections: return n >= 32 * dimension + 3;
            default: return false;
        }
    }
};

// Where the polynomials and initial numbers of the dimensions stand.
struct Source {
    QuasiClass user = kNoUserData;
    const uint32_t* polynomials = uSobolIrredPoly;  // of dimension `first` on
    const uint32_t* numbers = uSobolMInit[0];
    uint32_t per_dimension = kTableNumbers;
    uint32_t first = 1;                             // dimensions before have m = 1, 1, 1 ...

    Source() = default;
    Source(const QuasiRequest& request, const uint32_t* params) : user(request.user) {
        const uint32_t dimension = request.dimension;
        if (user == kUserPolynomials || user == kUserPolynomialsAndNumbers) polynomials = params + 3;
        if (user == kUserInitialNumbers) {
            per_dimension = params[3];
            numbers = params + 4;
        }
        if (user == kUserPolynomialsAndNumbers) {
            per_dimension = params[dimension + 2];
            numbers = params + dimension + 3;
        }
        if (user == kUserPolynomialsAndNumbersFromFirst) {
            first = 0;
            polynomials = params + 3;
            per_dimension = params[dimension + 3];
            numbers = params + dimension + 4;
        }
        if (user == kUserDirections) numbers = params + 3;
    }
};

// The m of one dimension become its direction numbers.
bool recur(uint32_t polynomial, const uint32_t* initial, uint32_t available, uint32_t* row) {
    uint32_t m[kDirectionBits + 1];
    const int degree = static_cast<int>(std::bit_width(polynomial)) - 1;
    if (degree < 0 || degree > static_cast<int>(available)) return false;
    for (int j = 1; j <= kDirectionBits; ++j) {
        if (degree == 0) {
            m[j] = 1;
        } else if (j <= degree) {
            m[j] = initial[j - 1];
        } else {
            m[j] = m[j - degree] ^ m[j - degree] << degree;
            for (int k = 1; k < degree; ++k) {
                if ((polynomial >> (degree - k) & 1) != 0) m[j] ^= m[j - k] << k;
            }
        }
        row[j - 1] = m[j] << (kDirectionBits - j);
    }
    return true;
}

bool fill_row(const Source& source, uint32_t dimension, uint32_t* row) {
    row[kDirectionBits] = 0;
    if (source.user == kUserDirections) {
        std::copy_n(source.numbers + std::size_t{dimension} * kDirectionBits, kDirectionBits, row);
        return true;
    }
    if (dimension < source.first) return recur(1, nullptr, 0, row);
    const std::size_t index = dimension - source.first;
    return recur(source.polynomials[index], source.numbers + index * source.per_dimension, source.per_dimension, row);
}

}  // namespace

QuasiRequest Sobol::request(int n, const uint32_t* params) {
    return read_request(n, params, 4, kTableDimensions, Accepts{static_cast<uint64_t>(std::max(n, 0)), params});
}

int Sobol::fill(const QuasiRequest& wanted, const uint32_t* params, uint32_t* rows) {
    const Source source = wanted.user == kNoUserData ? Source() : Source(wanted, params);
    for (uint32_t d = 0; d < wanted.dimension; ++d) {
        if (!fill_row(source, d, rows + std::size_t{d} * kDirectionRow)) return STO_STATUS_BAD_ARGUMENT;
    }
    return STO_STATUS_OK;
}

// Streams of more dimensions than the payload holds: the direction numbers are shared between copies, the point and the rows
// by bit are the stream's own.
int Sobol::add_chunks(Stream* stream, int n, const uint32_t* params, uint32_t dimension) {
    const uint64_t row_words = uint64_t{dimension} * kDirectionRow;
    const uint64_t own_words = work_words(dimension);
    if (std::max(row_words, own_words) * sizeof(uint32_t) > INT32_MAX) return STO_STATUS_NO_MEMORY;
    service::Block<uint32_t> rows(row_words), work(own_words);
    if (!rows || !work) return STO_STATUS_NO_MEMORY;
    int status = __stoSobolUserPolymsDirNumsChunk(stream, n, params, rows.get(), work.get());
    if (status < 0) return status;

    status = __stoAddChunk(stream, static_cast<uint32_t>(ChunkId::kSobolWork), nullptr, work.get(),
                           static_cast<int>(own_words * sizeof(uint32_t)));
    if (status < 0) return status;
    work.detach();
    uint64_t identity[2];
    __stoGenerateNewGlobalRODataTableEntryId(identity, reinterpret_cast<uint64_t>(rows.get()));
    status = __stoAddChunk(stream, static_cast<uint32_t>(ChunkId::kSobolDirections), identity, rows.get(),
                           static_cast<int>(row_words * sizeof(uint32_t)));
    if (status < 0) {
        drop_chunks(stream, ChunkId::kSobolWork);
        return status;
    }
    rows.detach();
    return STO_STATUS_OK;
}

}  // namespace nax::rng

using namespace nax::rng;

NAX_GENERATOR(Sobol, QuasiGenerator<nax::rng::Sobol>)

extern "C" {

int __stoSobolUserPolyms(nax_stream* stream, int n, const uint32_t* params) {
    return QuasiGenerator<Sobol>::fill_payload(stream, Sobol::request(n, params), params);
}

int __stoSobolUserPolymsDirNumsChunk(nax_stream*, int n, const uint32_t* params, uint32_t* block, uint32_t* work) {
    const QuasiRequest wanted = Sobol::request(n, params);
    const int status = Sobol::fill(wanted, params, block);
    if (status < 0) return status;
    const int dimension = static_cast<int>(wanted.dimension);
    const PointSet points = points_in_work(work, dimension);
    std::fill_n(work, std::size_t{kDirectionBits + 1} * static_cast<std::size_t>(work_stride(dimension)), 0u);
    start_points(block, dimension, work + work_stride(dimension), points);
    return STO_STATUS_OK;
}

}  // extern "C"
