// Tables held in registers: one or two rows of a kernel's data block, read by permutes.
#pragma once

#include <utility>

#include "vmath/frame/vec.h"

namespace nax::vmath::avx512 {

template <class E, int Rows>
struct Table {
    using Vector = typename E::Vector;
    using Element = typename E::Element;
    static constexpr int size = Rows * E::lanes;
    static_assert(Rows == 1 || Rows == 2);
    Vector row[Rows];

    constexpr Table(const Element (&entries)[size]) : Table(entries, std::make_integer_sequence<int, Rows>{}) {}

    // The entry that the low bits of each index lane choose.
    NAX_VEC Vector operator[](typename E::Bits index) const {
        if constexpr (Rows == 1)
            return permute(index, row[0]);
        else
            return permute(index, row[0], row[1]);
    }

private:
    template <int... R>
    constexpr Table(const Element (&entries)[size], std::integer_sequence<int, R...>)
        : row{make_row(entries + R * E::lanes, std::make_integer_sequence<int, E::lanes>{})...} {}
    template <int... I>
    static constexpr Vector make_row(const Element* entries, std::integer_sequence<int, I...>) {
        return Vector{entries[I]...};
    }
};

}  // namespace nax::vmath::avx512
