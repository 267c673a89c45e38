// Doubles that come nearest to multiples of a quarter turn, where an argument reduction has the most to cancel.
#pragma once

#include <vector>

namespace nax::testing {

// The `count` of them, at most 64, among the doubles of [2^exponent, 2^(exponent + 1)), exponent from 0 to 1023:
// nearest first.
std::vector<double> nearest_to_quarter_turns(int exponent, int count);

}  // namespace nax::testing
