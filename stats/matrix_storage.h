// Symmetric matrices in the three storages of the interface: full, and the two packed triangles, row by row.
#pragma once

#include <cstdint>

namespace nax::stats {

enum class MatrixStorage { kFull, kLower, kUpper };

// Bit 1 means the upper triangle, else bit 0 the lower one, else full: every code means something.
constexpr MatrixStorage decode_matrix_storage(int64_t code) {
    if ((code & 2) != 0) return MatrixStorage::kUpper;
    return (code & 1) != 0 ? MatrixStorage::kLower : MatrixStorage::kFull;
}
// Where only the three codes themselves are allowed.
constexpr bool is_matrix_storage(int64_t code) { return code >= 0 && code <= 2; }

constexpr int64_t packed_size(int64_t p) { return p * (p + 1) / 2; }
constexpr int64_t matrix_size(MatrixStorage storage, int64_t p) {
    return storage == MatrixStorage::kFull ? p * p : packed_size(p);
}

// Place of element (i, j) of a p by p matrix; a packed triangle keeps (i, j) and (j, i) in one place. As columns the
// lower triangle by rows is the upper one, and the upper triangle by rows the lower.
constexpr int64_t matrix_index(MatrixStorage storage, int64_t p, int64_t i, int64_t j) {
    const int64_t low = i < j ? i : j;
    const int64_t high = i < j ? j : i;
    switch (storage) {
        case MatrixStorage::kLower:
            return high * (high + 1) / 2 + low;
        case MatrixStorage::kUpper:
            return low * p - low * (low - 1) / 2 + (high - low);
        default:
            return i * p + j;
    }
}

// The elements (i, j) with j >= i of a full matrix are the lower triangle of what a column-major routine sees.
template <class T>
void mirror_upper_rows(int64_t p, T* full) {
    for (int64_t i = 0; i < p; ++i)
        for (int64_t j = i + 1; j < p; ++j) full[j * p + i] = full[i * p + j];
}
template <class T>
void mirror_lower_rows(int64_t p, T* full) {
    for (int64_t i = 0; i < p; ++i)
        for (int64_t j = 0; j < i; ++j) full[j * p + i] = full[i * p + j];
}

// Any storage to a full matrix with both triangles, and back.
template <class T>
void expand(MatrixStorage storage, int64_t p, const T* matrix, T* full) {
    for (int64_t i = 0; i < p; ++i)
        for (int64_t j = 0; j < p; ++j) full[i * p + j] = matrix[matrix_index(storage, p, i, j)];
}
template <class T>
void store_matrix(MatrixStorage storage, int64_t p, const T* full, T* matrix) {
    for (int64_t i = 0; i < p; ++i) {
        const int64_t first = storage == MatrixStorage::kUpper ? i : 0;
        const int64_t last = storage == MatrixStorage::kLower ? i + 1 : p;
        for (int64_t j = first; j < last; ++j) matrix[matrix_index(storage, p, i, j)] = full[i * p + j];
    }
}

}  // namespace nax::stats
