// The rows of the sorts by type: MEMBER(suffix, C type). 64f has no index members.
#pragma once

#define NAX_SORTED_TYPES(MEMBER) \
    MEMBER(8u, uint8_t)          \
    MEMBER(16s, int16_t)         \
    MEMBER(16u, uint16_t)        \
    MEMBER(32f, float)           \
    MEMBER(32s, int32_t)         \
    MEMBER(32u, uint32_t)
