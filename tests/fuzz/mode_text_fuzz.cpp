// Texts of the environment variable that sets the first mode word, held to a reading of their grammar: items "ARQ_" and a
// keyword, separated by commas, in less than 255 bytes. A word is what all its items say.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "nax/mode.h"
#include "runtime/mode_text.h"

extern "C" int64_t nax_arq_kernel_ReadEnvVarMode();

namespace {

int64_t expected_word(std::string_view text) {
    int64_t word = 0;
    for (;;) {
        const std::string_view item = text.substr(0, text.find(','));
        const nax::runtime::ModeKeyword* found = nullptr;
        for (const auto& row : nax::runtime::mapModeS_N) {
            if (item == "ARQ_" + std::string(row.keyword, static_cast<size_t>(row.length))) found = &row;
        }
        if (found == nullptr) return -1;
        word |= found->value;
        if (item.size() == text.size()) return word;
        text.remove_prefix(item.size() + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::strlen(text.c_str()));
    const bool fits = !text.empty() && text.size() < nax::runtime::kModeTextSize - 1;
    const int64_t expected = fits ? expected_word(text) : -1;
    setenv("NAX_ARQ_MODE", text.c_str(), 1);
    if (nax_arq_kernel_ReadEnvVarMode() != expected) std::abort();
    if (!fits) return 0;
    // The buffer of its size exactly, what lies behind the text being anything.
    char* const buffer = static_cast<char*>(std::malloc(nax::runtime::kModeTextSize));
    std::memset(buffer, 'A', nax::runtime::kModeTextSize);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    if (nax::runtime::parse_mode_text(buffer) != expected) std::abort();
    std::free(buffer);
    return 0;
}
