// Every vector function that is linked, as data: stubs, tables, kernels, and a call that suits any signature. Tests
// that loop over the records hold for families added later.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "runtime/records.h"

namespace nax::testing {

using Entry = void (*)();

// One dispatch record with all that belongs to it.
struct Record {
    const RecordRow* row;
    bool strided;
    Entry stubs[4];  // plain, _HA, LA suffix, EP suffix
    Entry* ttab;
    float* ctab;
    Entry kernels[3];  // by name, in slot order

    char type() const { return row->type; }
    std::string function() const { return std::string(row->function) + (strided ? "I" : ""); }
    std::string name() const { return row->type + function(); }  // such as dAddI
    bool pack() const { return !row->has_strided; }
    bool complex() const { return row->type == 'c' || row->type == 'z'; }
    bool single() const { return row->type == 's' || row->type == 'c'; }
};

std::span<const Record> all_records();
// The record of a name such as "dAddI"; null if its family is not linked.
const Record* find_record(const std::string& name);

inline constexpr int kStubSlots[4] = {1, 1, 0, 2};

// Numbers of vectors and of real numbers in their elements.
struct Shape {
    int inputs, outputs;
    int reals_in, reals_out;
};
Shape shape_of(const Record& record);

// Arguments of one call of a function that is not of the pack group. Strides matter to strided records only; vectors
// that the signature doesn't have are ignored.
struct Arguments {
    int32_t n = 0;
    const void* in[2] = {nullptr, nullptr};
    void* out[2] = {nullptr, nullptr};
    int32_t in_stride[2] = {1, 1};
    int32_t out_stride[2] = {1, 1};
    double scalar_b[2] = {2.5, 0.25};          // Powx: real and imaginary part, no other function's exponent
    double linear[4] = {1.25, 0.5, 0.75, 3.0};  // LinearFrac: scalea, shifta, scaleb, shiftb
};
void call(const Record& record, Entry entry, const Arguments& arguments);

}  // namespace nax::testing
