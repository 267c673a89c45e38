#include "tests/lib/vmath_runner.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "nax/error.h"

namespace nax::testing {
namespace {

constexpr unsigned char kPattern = 0xA5;

template <class T>
T pool_value(std::mt19937_64& random) {
    using Limits = std::numeric_limits<T>;
    static const T edges[] = {0,
                              -T{0},
                              1,
                              -1,
                              T{0.5},
                              T{2.5},
                              -T{3.5},
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::quiet_NaN(),
                              Limits::signaling_NaN(),
                              Limits::max(),
                              Limits::lowest(),
                              Limits::min(),
                              -Limits::min(),
                              Limits::denorm_min(),
                              -Limits::denorm_min(),
                              3 * Limits::denorm_min()};
    const T uniform = std::uniform_real_distribution<T>(-1, 1)(random);
    switch (random() % 8) {
        case 0:
            return edges[random() % std::size(edges)];
        case 1:
            return uniform * 1000;
        case 2:
            return std::ldexp(uniform, static_cast<int>(random() % 200) - 100);
        default:
            return uniform * 4;
    }
}

}  // namespace

CallerVector::CallerVector(int64_t count, std::size_t element_size, int32_t stride, Guard guard, std::size_t offset)
    : count_(count),
      stride_(stride),
      size_(element_size),
      bytes_((count <= 0 ? 0 : static_cast<std::size_t>(1 + (count - 1) * std::abs(int64_t{stride}))) * element_size,
             guard, offset * element_size) {
    std::memset(bytes_.data(), kPattern, bytes_.size());
}

void* CallerVector::start() { return at(0); }

unsigned char* CallerVector::at(int64_t index) {
    const int64_t first = stride_ < 0 && count_ > 0 ? (count_ - 1) * -stride_ : 0;
    return bytes_.data() + (first + index * stride_) * static_cast<int64_t>(size_);
}

bool CallerVector::gaps_unchanged() const {
    const int64_t step = std::max<int64_t>(1, std::abs(stride_)) * static_cast<int64_t>(size_);
    for (std::size_t byte = 0; byte < bytes_.size(); ++byte) {
        const bool in_element = static_cast<int64_t>(byte) % step < static_cast<int64_t>(size_);
        if (!in_element && bytes_[byte] != kPattern) return false;
    }
    return true;
}

std::size_t real_size(const Record& record) { return record.single() ? sizeof(float) : sizeof(double); }
std::size_t result_size(const Record& record) {
    return real_size(record) * static_cast<std::size_t>(shape_of(record).reals_out);
}

ArgumentPool::ArgumentPool(const Record& record, int size, uint64_t seed)
    : size_(size), element_size_(real_size(record) * static_cast<std::size_t>(shape_of(record).reals_in)) {
    std::mt19937_64 random(seed);
    for (Bytes& values : values_) {
        values.resize(static_cast<std::size_t>(size) * element_size_);
        for (std::size_t at = 0; at < values.size(); at += real_size(record)) {
            if (record.single()) {
                const float x = pool_value<float>(random);
                std::memcpy(&values[at], &x, sizeof x);
            } else {
                const double x = pool_value<double>(random);
                std::memcpy(&values[at], &x, sizeof x);
            }
        }
    }
}

Results run(const Record& record, Entry entry, const ArgumentPool& pool, int64_t first, int32_t n,
            const Layout& layout) {
    const Shape shape = shape_of(record);
    const std::size_t size = result_size(record);
    const auto stride = [&](int32_t s) { return record.strided ? s : 1; };
    CallerVector in[2] = {{n, pool.element_size(), stride(layout.in_stride[0]), layout.guard, layout.offset},
                          {n, pool.element_size(), stride(layout.in_stride[1]), layout.guard, layout.offset}};
    CallerVector out[2] = {{n, size, stride(layout.out_stride[0]), layout.guard, layout.offset},
                           {n, size, stride(layout.out_stride[1]), layout.guard, layout.offset}};
    Arguments arguments;
    arguments.n = n;
    for (int k = 0; k < 2; ++k) {
        for (int64_t i = 0; i < n; ++i) in[k].set(i, pool.argument(k, first + i));
        arguments.in[k] = in[k].start();
        arguments.out[k] = out[k].start();
        arguments.in_stride[k] = stride(layout.in_stride[k]);
        arguments.out_stride[k] = stride(layout.out_stride[k]);
    }
    call(record, entry, arguments);

    Results results;
    for (int k = 0; k < shape.outputs; ++k) {
        for (int64_t i = 0; i < n; ++i)
            results.out[k].insert(results.out[k].end(), out[k].get(i), out[k].get(i) + size);
        results.outside_untouched &= out[k].gaps_unchanged();
    }
    for (int k = 0; k < shape.inputs; ++k)
        for (int64_t i = 0; i < n; ++i)
            results.outside_untouched &=
                std::memcmp(in[k].get(i), pool.argument(k, first + i), pool.element_size()) == 0;
    return results;
}

Results run_one_by_one(const Record& record, Entry entry, const ArgumentPool& pool, std::vector<int32_t>* statuses) {
    const std::size_t size = result_size(record);
    Results all;
    for (int i = 0; i < pool.size(); ++i) {
        alignas(64) unsigned char in[2][16], out[2][64];
        std::memset(out, kPattern, sizeof out);
        Arguments arguments;
        arguments.n = 1;
        for (int k = 0; k < 2; ++k) {
            std::memcpy(in[k], pool.argument(k, i), pool.element_size());
            arguments.in[k] = in[k];
            arguments.out[k] = out[k];
        }
        _arqClearErrStatus();
        call(record, entry, arguments);
        for (int k = 0; k < shape_of(record).outputs; ++k) {
            all.out[k].insert(all.out[k].end(), out[k], out[k] + size);
            all.outside_untouched &=
                std::all_of(out[k] + size, std::end(out[k]), [](unsigned char byte) { return byte == kPattern; });
        }
        if (statuses != nullptr) statuses->push_back(_arqGetErrStatus());
    }
    return all;
}

}  // namespace nax::testing
