// Text form of mode words.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nax::runtime {

struct ModeKeyword {
    char keyword[20];
    int32_t length;
    uint32_t value;
};

inline constexpr size_t kModeKeywords = 18;
[[gnu::visibility("hidden")]] extern const ModeKeyword mapModeS_N[kModeKeywords];

// Size of the buffer that holds a mode text; a text that fills it up to the terminator may have been cut.
inline constexpr int kModeTextSize = 256;

// The word that `text` asks for, or -1. The text lies in a buffer of kModeTextSize bytes.
[[gnu::visibility("hidden")]] int64_t parse_mode_text(const char* text);

}  // namespace nax::runtime
