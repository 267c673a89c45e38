// The two tables of generators and the numbering of ids.
#include "rng/registry.h"

#include "nax/abi/streams.h"

// The functions that the rows name.
#define BRNG(generator, ...)                                                                                     \
    extern "C" int __stoBRng##generator##InitStream(int method, nax_stream* stream, int n, const void* params); \
    extern "C" int __stosBRng##generator(nax_stream* stream, int n, float* r, float a, float b);                \
    extern "C" int __stodBRng##generator(nax_stream* stream, int n, double* r, double a, double b);             \
    extern "C" int __stoiBRng##generator(nax_stream* stream, int n, void* r);
#include "rng/registry_rows.def"
#undef BRNG

namespace nax::rng {

// The arrays, wrapped so that a constant expression can fill them.
struct NewTable {
    BrngProperties rows[kMaxRows];
};
struct OldTable {
    BrngProperties rows[kOldRows];
};
struct OffsetCounts {
    int32_t rows[kMaxRows];
};

namespace {

constexpr bool (*kValid[])(const Stream*) = {
#define BRNG(generator, ...) valid_##generator,
#include "rng/registry_rows.def"
#undef BRNG
};
constexpr int kBuiltInRows = sizeof(kValid) / sizeof(kValid[0]);

constexpr NewTable kBuiltIn = {{
#define BRNG(generator, offsets, size, seeds, zero, word, bits) \
    {size, seeds, zero, word, bits, __stoBRng##generator##InitStream, __stosBRng##generator, __stodBRng##generator, __stoiBRng##generator},
#include "rng/registry_rows.def"
#undef BRNG
}};

constexpr OffsetCounts kOffsets = {{
#define BRNG(generator, offsets, ...) offsets,
#include "rng/registry_rows.def"
#undef BRNG
}};

// Rows of the older numbering: the id is the row. Each WH sub-stream has a row of its own.
constexpr int kOldWh = 4;
constexpr int kNewWh = 4;
constexpr int kOldSobol = kOldWh + kWhRows;
constexpr int kNewSobol = 5;
constexpr int kOldGenerators = kOldSobol + 2;  // the quasi-random ones are the last; empty rows follow

// The row of the main table that a row of the older one stands for.
constexpr int current_row(int old_row) {
    if (old_row < kOldWh) return old_row;
    return old_row < kOldSobol ? kNewWh : old_row - kOldSobol + kNewSobol;
}

constexpr OldTable old_numbering() {
    OldTable table{};
    for (int row = 0; row < kOldGenerators; ++row) table.rows[row] = kBuiltIn.rows[current_row(row)];
    return table;
}

}  // namespace

// The objects behind __RegBrngsNew, __RegBrngs and NumOffsets.
extern constinit NewTable registry_new __asm__("__RegBrngsNew");
extern constinit OldTable registry_old __asm__("__RegBrngs");
extern constinit OffsetCounts registry_offsets __asm__("NumOffsets");
constinit NewTable registry_new = kBuiltIn;
constinit OldTable registry_old = old_numbering();
constinit OffsetCounts registry_offsets = kOffsets;

bool is_usable(const Stream* stream) {
    const BrngPlace place = place_of(stream->brng);
    const int row = place.table == __RegBrngs ? current_row(place.row) : place.row;
    return row >= kBuiltInRows || kValid[row](stream);
}

}  // namespace nax::rng

using namespace nax::rng;

extern "C" {

int32_t NRegBrngsNew = kBuiltInRows;

const nax_brng_properties* __stoGetBrngBaseOffset(int brng, int* row, int* offset) {
    if (brng >= kFirstNewId) {
        *row = (brng >> 20) - 1;
        *offset = brng & 0xFFFFF;
        return __RegBrngsNew;
    }
    const bool is_wh = brng >= kOldWh && brng < kOldSobol;
    *row = is_wh ? kOldWh : brng;
    *offset = is_wh ? brng - kOldWh : 0;
    return __RegBrngs;
}

int __stoIsBrngValid(const nax_brng_properties* table, int row, int offset) {
    if (table == __RegBrngs) return row < kOldRows ? STO_STATUS_OK : STO_STATUS_BAD_BRNG;
    const bool valid = row < NRegBrngsNew && offset < NumOffsets[row];
    return valid ? STO_STATUS_OK : STO_STATUS_BAD_BRNG;
}

int __stoRegisterBrng(const nax_brng_properties* row) {
    if (row->StreamStateSize < 0) return STO_STATUS_BAD_STATE_SIZE;
    if (row->WordSize != 4 && row->WordSize != 8 && row->WordSize != 16) return STO_STATUS_BAD_WORD_SIZE;
    if (row->NSeeds < 1) return STO_STATUS_BAD_NSEEDS;
    if (row->NBits < 1) return STO_STATUS_BAD_NBITS;
    if (row->InitStream == nullptr || row->sBRng == nullptr || row->dBRng == nullptr || row->iBRng == nullptr) {
        return STO_STATUS_NULL_POINTER;
    }
    if (NRegBrngsNew >= kMaxRows) return STO_STATUS_NO_MEMORY;
    const int index = NRegBrngsNew;
    __RegBrngsNew[index] = *row;
    NumOffsets[index] = 1;
    NRegBrngsNew = index + 1;
    return (index << 20) + kFirstNewId;
}

int __stoGetBrngProperties(int brng, nax_brng_properties* properties) {
    const BrngPlace place = place_of(brng);
    if (!is_known(place)) return STO_STATUS_BAD_BRNG;
    *properties = place.properties();
    return STO_STATUS_OK;
}

int __stoGetNumRegBrngs(void) { return NRegBrngsNew; }

int __stoGetStreamStateBrng(const nax_stream* stream) { return stream->brng; }

}  // extern "C"
