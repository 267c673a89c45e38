// For each non-zero ma[i] in ascending order, the next element of y takes a[i].
//
// Elements are compressed in a register and stored from there: compressing to memory takes fifteen times as long on
// some processors.
#include "vmath/util/mask_blocks.h"
#include "vmath/util/selection.h"

namespace nax::vmath::NAX_ISA {
namespace {

template <class T>
T* pack_block(const MaskBlock& block, int64_t count, const T* a, T* y) {
    using Move = ElementVector<T>;
    const T* const end = y + block.selected;
    for (int i = 0; i < count; i += Move::lanes) {
        const uint32_t bits = Move::bits_at(block, i);
        const auto mask = Move::mask(bits);
        const auto x = Move::compress(mask, Move::load(mask, a + i));
        const int selected = __builtin_popcount(bits);
        if (end - y >= Move::lanes) [[likely]]
            Move::store(y, x);
        else
            Move::store(y, Move::mask((1u << selected) - 1), x);
        y += selected;
    }
    return y;
}

template <class T>
void pack_by_mask(int64_t n, const T* a, const void* ma, T* y, int32_t flag) {
    by_integer_width(n, flag, [a, ma, y](auto width, int64_t length) {
        using Integer = decltype(width);
        const auto* const mask = static_cast<const Integer*>(ma);
        T* next = y;
        for (int64_t i = 0; i < length; i += MaskBlock::capacity) {
            const int64_t count = length - i < MaskBlock::capacity ? length - i : MaskBlock::capacity;
            next = pack_block(MaskBlock(mask + i, count), count, a + i, next);
        }
    });
}

}  // namespace

NAX_PACK_KERNEL(s, PackM, const void*, pack_by_mask)
NAX_PACK_KERNEL(d, PackM, const void*, pack_by_mask)
NAX_PACK_KERNEL(c, PackM, const void*, pack_by_mask)
NAX_PACK_KERNEL(z, PackM, const void*, pack_by_mask)

}  // namespace nax::vmath::NAX_ISA
