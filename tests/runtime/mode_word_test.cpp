#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "nax/mode.h"
#include "runtime/mode_text.h"
#include "tests/runtime/fresh_thread.h"

namespace nax::testing {
namespace {

constexpr char kVariable[] = "NAX_ARQ_MODE";

// Runs tests without the variable, and leaves the environment without it.
class ModeWord : public ::testing::Test {
protected:
    ModeWord() { unsetenv(kVariable); }
    ~ModeWord() override { unsetenv(kVariable); }

    static uint32_t first_word(const std::string& text) {
        setenv(kVariable, text.c_str(), 1);
        uint32_t word = 0;
        on_fresh_thread([&] { word = _arqGetMode(); });
        return word;
    }
};

TEST_F(ModeWord, SetReplacesOnlyFieldsThatAreNotZero) {
    const struct {
        uint32_t argument, word;
    } steps[] = {{0, 0x1A02},          {1, 0x1A01},          {0x100, 0x101},          {0x30, 0x101},
                 {0x280000, 0x280101}, {0x140000, 0x140101}, {0x3000000, 0x3140101},  {0x8000000, 0x8140101},
                 {0x20000, 0x8160101}, {0x10000, 0x8150101}, {0xF0C000F0, 0x8150101}, {0x7, 0x8150107},
                 {0x3A03, 0x8153A03}};
    on_fresh_thread([&] {
        uint32_t word = 0x1A02;
        for (const auto& step : steps) {
            EXPECT_EQ(_arqSetMode(step.argument), word) << std::hex << step.argument;
            word = step.word;
            EXPECT_EQ(_arqGetMode(), word) << std::hex << step.argument;
            EXPECT_EQ(nax_arq_kernel_GetMode(), word);
        }
    });
}

TEST_F(ModeWord, FirstUseMayBeThroughAnyEntry) {
    on_fresh_thread([] { EXPECT_EQ(nax_arq_kernel_SetMode(0x280000), ARQ_MODE_DEFAULT); });
    on_fresh_thread([] { EXPECT_EQ(_arqSetMode(3), ARQ_MODE_DEFAULT); });
    on_fresh_thread([] { EXPECT_EQ(nax_arq_kernel_GetMode(), ARQ_MODE_DEFAULT); });
    on_fresh_thread([] { EXPECT_EQ(nax_arq_kernel_GetTTableIndex(), 1); });
}

TEST_F(ModeWord, EachThreadHasItsOwn) {
    on_fresh_thread([] {
        _arqSetMode(ARQ_EP | ARQ_ERRMODE_NOERR);
        on_fresh_thread([] { EXPECT_EQ(_arqGetMode(), ARQ_MODE_DEFAULT); });
        EXPECT_EQ(_arqGetMode(), ARQ_EP | ARQ_ERRMODE_NOERR);
    });
}

TEST_F(ModeWord, SlotIsAccuracyLessOne) {
    on_fresh_thread([] {
        for (const uint32_t accuracy : {1u, 2u, 3u, 7u}) {
            _arqSetMode(accuracy);
            EXPECT_EQ(nax_arq_kernel_GetTTableIndex(), static_cast<int32_t>(accuracy) - 1);
        }
    });
    EXPECT_EQ(nax_arq_kernel_GetTTableIndexM(99, 0x1A03), 2);
    EXPECT_EQ(nax_arq_kernel_GetTTableIndexM(0, 0x1A01), 0);
    EXPECT_EQ(nax_arq_kernel_GetTTableIndexM(0, 0x1A00), -1);
}

TEST_F(ModeWord, EnvironmentGivesTheFirstWord) {
    const struct {
        const char* text;
        uint32_t word;
    } rows[] = {
        {"", 0x1A02},
        {"ARQ_ERRMODE_NOERR", 0x2002},
        {"ARQ_LA,ARQ_ERRMODE_STDERR", 0x401},
        {"ARQ_ERRMODE_STDERR,ARQ_LA", 0x401},
        {"ARQ_EP", 0x1A03},
        {"ARQ_LA,ARQ_HA", 0x1A03},
        {"ARQ_DEFAULT_PRECISION", 0x1A02},
        {"ARQ_ERRMODE_DEFAULT", 0x1A02},
        {"ARQ_ERRMODE_ERRNO,ARQ_ERRMODE_IGNORE", 0x302},
        {"ARQ_FLOAT_CONSISTENT,ARQ_RESTORE", 0x1A32},
        {"ARQ_DOUBLE_CONSISTEN", 0x1A22},
        {"ARQ_DOUBLE_CONSISTENT", 0x1A02},
        {"ARQ_LA,ARQ_DOUBLE_CONSISTENT", 0x1A02},
        {"ARQ_TRAP_INVALID,ARQ_TRAP_DIVBYZERO,ARQ_TRAP_OVERFLOW,ARQ_TRAP_UNDERFLOW", 0xF001A02},
        {"ARQ_LA,", 0x1A02},
        {",ARQ_LA", 0x1A02},
        {"ARQ_LA,,ARQ_EP", 0x1A02},
        {"ARQ_LA ", 0x1A02},
        {" ARQ_LA", 0x1A02},
        {"ARQ_LA, ARQ_ERRMODE_STDERR", 0x1A02},
        {"ARQ_LAX", 0x1A02},
        {"ARQ_", 0x1A02},
        {"ARQ_LA,ARQ_", 0x1A02},
        {"arq_la", 0x1A02},
        {"LA", 0x1A02},
        {"ARQ_LA,ARQ_NO_SUCH_ITEM", 0x1A02},
        {"ARQ_LA;ARQ_EP", 0x1A02},
    };
    for (const auto& row : rows) EXPECT_EQ(first_word(row.text), row.word) << row.text;
}

TEST_F(ModeWord, EveryKeywordIsReadAlone) {
    for (const runtime::ModeKeyword& row : runtime::mapModeS_N) {
        EXPECT_EQ(static_cast<size_t>(row.length), std::string(row.keyword).size());
        setenv(kVariable, (std::string("ARQ_") + row.keyword).c_str(), 1);
        EXPECT_EQ(nax_arq_kernel_ReadEnvVarMode(), row.value) << row.keyword;
    }
    unsetenv(kVariable);
    EXPECT_EQ(nax_arq_kernel_ReadEnvVarMode(), -1);
}

TEST_F(ModeWord, TextsOf255CharactersAndMoreCountAsAbsent) {
    // 7-character items and an end of suitable length give any length.
    const auto text_of_length = [](size_t length) {
        for (const std::string last :
             {"ARQ_LA", "ARQ_TRAP_INVALID", "ARQ_ERRMODE_ERRNO", "ARQ_ERRMODE_STDERR", "ARQ_ERRMODE_DEFAULT",
              "ARQ_DEFAULT_PRECISION", "ARQ_RESTORE,ARQ_ERRMODE_ERRNO"}) {
            if ((length - last.size()) % 7 != 0) continue;
            std::string text;
            while (text.size() + last.size() < length) text += "ARQ_LA,";
            return text + last;
        }
        return std::string();
    };
    for (size_t length = 250; length < 262; ++length) {
        const std::string text = text_of_length(length);
        ASSERT_EQ(text.size(), length);
        setenv(kVariable, text.c_str(), 1);
        EXPECT_EQ(nax_arq_kernel_ReadEnvVarMode() == -1, length >= 255) << length;
    }
    EXPECT_EQ(first_word(std::string(5000, 'A')), ARQ_MODE_DEFAULT);
}

}  // namespace
}  // namespace nax::testing
