// For each non-zero my[i] in ascending order, y[i] takes the next element of a; the other elements of y are not
// touched.
#include "vmath/util/mask_blocks.h"
#include "vmath/util/selection.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class T>
const T* unpack_block(const MaskBlock& block, int64_t count, const T* a, T* y) {
    using Move = ElementVector<T>;
    const T* const end = a + block.selected;
    for (int i = 0; i < count; i += Move::lanes) {
        const uint32_t bits = Move::bits_at(block, i);
        const int selected = __builtin_popcount(bits);
        const auto x = end - a >= Move::lanes ? Move::load(a) : Move::load(Move::mask((1u << selected) - 1), a);
        const auto mask = Move::mask(bits);
        Move::store(y + i, mask, Move::expand(mask, x));
        a += selected;
    }
    return a;
}

template <class T>
void unpack_by_mask(int64_t n, const T* a, T* y, const void* my, int32_t flag) {
    by_integer_width(n, flag, [a, y, my](auto width, int64_t length) {
        const auto* const mask = static_cast<const decltype(width)*>(my);
        const T* next = a;
        for (int64_t i = 0; i < length; i += MaskBlock::capacity) {
            const int64_t count = length - i < MaskBlock::capacity ? length - i : MaskBlock::capacity;
            next = unpack_block(MaskBlock(mask + i, count), count, next, y + i);
        }
    });
}

}  // namespace

NAX_UNPACK_KERNEL(s, UnpackM, const void*, unpack_by_mask)
NAX_UNPACK_KERNEL(d, UnpackM, const void*, unpack_by_mask)
NAX_UNPACK_KERNEL(c, UnpackM, const void*, unpack_by_mask)
NAX_UNPACK_KERNEL(z, UnpackM, const void*, unpack_by_mask)

}  // namespace nax::vmath::NAX_ISA
