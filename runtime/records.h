// The rows of records.def as data, for tests, benchmarks and the generators of header and documentation.
#pragma once

namespace nax {

// Which arguments a kernel takes; the strided form adds a stride behind each vector.
enum class Signature {
    UNARY,        // (n, a, r)
    BINARY,       // (n, a, b, r)
    POWX,         // (n, a, b, r) with b one scalar by value
    TWO_RESULTS,  // (n, a, r1, r2)
    TO_REAL,      // (n, a, r) with complex a, real r
    TO_COMPLEX,   // (n, a, r) with real a, complex r
    LINEAR_FRAC,  // (n, a, b, scalea, shifta, scaleb, shiftb, r)
    PACK_I,       // (n, a, inca, y, flag)
    PACK_V,       // (n, a, ia, y, flag)
    PACK_M,       // (n, a, ma, y, flag)
    UNPACK_I,     // (n, a, y, incy, flag)
    UNPACK_V,     // (n, a, y, iy, flag)
    UNPACK_M,     // (n, a, y, my, flag)
};

struct RecordRow {
    char type;
    const char* function;
    Signature signature;
    const char* tags[3];  // without flag letters, such as "Z0HA"
    float costs[3];
    bool has_strided;
};

inline constexpr RecordRow kRecordRows[] = {
#define RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    {#type[0], #function, Signature::signature, {#la, #ha, #ep}, {cost_la##f, cost_ha##f, cost_ep##f}, true},
#define PACK_RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    {#type[0], #function, Signature::signature, {#la, #ha, #ep}, {cost_la##f, cost_ha##f, cost_ep##f}, false},
#include "runtime/records.def"
};

}  // namespace nax
