// What the vocabularies of all instruction sets share: classes of numbers, degrees of care, filler.
#pragma once

namespace nax::simd {

// Classes of floating-point numbers, to be joined by |. Denormals count as zeros where they are taken for zeros.
enum Class : int {
    kQuietNan = 0x01, kPlusZero = 0x02, kMinusZero = 0x04, kPlusInf = 0x08,
    kMinusInf = 0x10, kDenormal = 0x20, kNegativeFinite = 0x40, kSignallingNan = 0x80,
    kNan = kQuietNan | kSignallingNan, kInf = kPlusInf | kMinusInf, kZero = kPlusZero | kMinusZero,
};

// Last argument of operations that have a fast form for ordinary lanes and another one for all.
struct Fast {};
struct Careful {};

// Directions of round_to_integer and round_to_fraction.
enum Direction : int { kToNearest = 0, kDownward = 1, kUpward = 2, kTowardZero = 3 };

// Inactive lanes of a partial load hold this value, which is ordinary for most functions.
inline constexpr double kFiller = 0.75;

}  // namespace nax::simd
