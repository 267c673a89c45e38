#include "stats/missing/patterns.h"

#include <algorithm>
#include <bit>

namespace nax::stats::missing {

template <>
bool Observations<double>::is_missing(double value) {
    constexpr uint64_t kMissing = 0xFFF8000000000000;
    return (std::bit_cast<uint64_t>(value) & kMissing) == kMissing;
}
template <>
bool Observations<float>::is_missing(float value) {
    constexpr uint32_t kMissing = 0xFFC00000;
    return (std::bit_cast<uint32_t>(value) & kMissing) == kMissing;
}

template <class T>
int32_t Patterns::find(const Observations<T>& data) {
    width_ = (data.p + 63) / 64;
    const auto n = static_cast<std::size_t>(data.n);
    // One set of words more for the observation in hand.
    if (!words_.allocate((n + 1) * static_cast<std::size_t>(width_)) || !pattern_of_.allocate(n) ||
        !members_.allocate(n) || !begins_.allocate(n + 2))
        return SsStatusMemory;
    uint64_t* const words = words_.get();
    int64_t last = 0;
    for (int64_t i = 0; i < data.n; ++i) {
        uint64_t* const own = words + count_ * width_;
        std::fill(own, own + width_, uint64_t{0});
        for (int64_t j = 0; j < data.p; ++j) {
            const bool observed = !Observations<T>::is_missing(data.at(i, j));
            own[j / 64] |= uint64_t{observed} << (j % 64);
            missing_entries_ += !observed;
        }
        const auto is_own = [&](int64_t pattern) { return std::equal(own, own + width_, words + pattern * width_); };
        // Neighbours often share a pattern.
        if (last >= count_ || !is_own(last))
            for (last = 0; last < count_ && !is_own(last);) ++last;
        if (last == count_) ++count_;
        pattern_of_[static_cast<std::size_t>(i)] = last;
    }
    int64_t* const begins = begins_.get();
    std::fill(begins, begins + count_ + 2, int64_t{0});
    for (int64_t i = 0; i < data.n; ++i) ++begins[pattern_of_.get()[i] + 2];
    for (int64_t k = 2; k < count_ + 2; ++k) begins[k] += begins[k - 1];
    for (int64_t i = 0; i < data.n; ++i) members_.get()[begins[pattern_of_.get()[i] + 1]++] = i;
    return SsStatusOk;
}
template int32_t Patterns::find(const Observations<double>&);
template int32_t Patterns::find(const Observations<float>&);

}  // namespace nax::stats::missing
