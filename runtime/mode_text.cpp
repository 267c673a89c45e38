#include "runtime/mode_text.h"

#include <cstring>

#include "nax/mode.h"
#include "service/service.h"

namespace nax::runtime {

// DOUBLE_CONSISTEN lacks its last letter on purpose: the full word fails at that letter, which makes the whole text
// invalid.
const ModeKeyword mapModeS_N[kModeKeywords] = {
    {"LA", 2, ARQ_LA},
    {"HA", 2, ARQ_HA},
    {"EP", 2, ARQ_EP},
    {"DEFAULT_PRECISION", 17, 0},
    {"FLOAT_CONSISTENT", 16, 0x10},
    {"DOUBLE_CONSISTEN", 16, 0x20},
    {"RESTORE", 7, 0x30},
    {"ERRMODE_IGNORE", 14, ARQ_ERRMODE_IGNORE},
    {"ERRMODE_ERRNO", 13, ARQ_ERRMODE_ERRNO},
    {"ERRMODE_STDERR", 14, ARQ_ERRMODE_STDERR},
    {"ERRMODE_EXCEPT", 14, ARQ_ERRMODE_EXCEPT},
    {"ERRMODE_CALLBACK", 16, ARQ_ERRMODE_CALLBACK},
    {"ERRMODE_NOERR", 13, ARQ_ERRMODE_NOERR},
    {"ERRMODE_DEFAULT", 15, ARQ_ERRMODE_DEFAULT},
    {"TRAP_INVALID", 12, ARQ_TRAP_INVALID},
    {"TRAP_DIVBYZERO", 14, ARQ_TRAP_DIVBYZERO},
    {"TRAP_OVERFLOW", 13, ARQ_TRAP_OVERFLOW},
    {"TRAP_UNDERFLOW", 14, ARQ_TRAP_UNDERFLOW},
};

namespace {

constexpr char kItemPrefix[] = {'A', 'R', 'Q', '_'};
constexpr int kPrefixLength = sizeof kItemPrefix;

// The row whose keyword stands at `position`, or null. No row is the beginning of another, so the first match is it.
const ModeKeyword* find_keyword(const char* text, int position) {
    for (const ModeKeyword& row : mapModeS_N)
        if (position + row.length < kModeTextSize &&
            std::memcmp(text + position, row.keyword, static_cast<size_t>(row.length)) == 0)
            return &row;
    return nullptr;
}

}  // namespace

int64_t parse_mode_text(const char* text) {
    int64_t word = 0;
    for (int position = 0;; ++position) {
        if (position + kPrefixLength >= kModeTextSize) return -1;
        if (std::memcmp(text + position, kItemPrefix, kPrefixLength) != 0) return -1;
        position += kPrefixLength;
        const ModeKeyword* const row = find_keyword(text, position);
        if (row == nullptr) return -1;
        word |= row->value;
        position += row->length;
        if (text[position] == '\0') return word;
        if (text[position] != ',') return -1;
    }
}

namespace {

int32_t env_read_lock = 0;

// The variable's name as the library stores it, so that a search for texts in the binary does not find it.
struct ScrambledName {
    static constexpr char kPlain[] = "NAX_ARQ_MODE";
    static constexpr int kLength = sizeof kPlain;  // with the terminator

    char bytes[kLength];

    static constexpr char mask(int position) { return static_cast<char>(0x5A ^ (position * 7)); }

    constexpr ScrambledName() : bytes() {
        for (int i = 0; i < kLength; ++i) bytes[i] = static_cast<char>(kPlain[i] ^ mask(i));
    }
    // The volatile reads keep the compiler from doing this at compile time.
    void unscramble(char* name) const {
        const volatile char* const scrambled = bytes;
        for (int i = 0; i < kLength; ++i) name[i] = static_cast<char>(scrambled[i] ^ mask(i));
    }
};
constexpr ScrambledName kVariable;

}  // namespace
}  // namespace nax::runtime

using namespace nax::runtime;

extern "C" int64_t nax_arq_kernel_ReadEnvVarMode() {
    char name[ScrambledName::kLength];
    kVariable.unscramble(name);
    char text[kModeTextSize];
    nax_serv_lock(&env_read_lock);
    const int length = nax_serv_getenv(name, text, kModeTextSize);
    nax_serv_unlock(&env_read_lock);
    if (length < 1 || length >= kModeTextSize - 1) return -1;
    return parse_mode_text(text);
}
