// Dispatch records and stubs: what each name reaches, byte for byte.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "tests/lib/vmath_records.h"

namespace nax::testing {
namespace {

// The costs that callers know; any other row may change.
constexpr struct {
    const char* name;
    float la, ha, ep;
} kKnownCosts[] = {
    {"sAbs", 0.134f, 0.134f, 0.134f},       {"sCeil", 0.134f, 0.134f, 0.134f},
    {"sAdd", 0.143f, 0.143f, 0.143f},       {"dAdd", 0.248f, 0.248f, 0.248f},
    {"sExp", 0.611f, 0.64f, 0.525f},        {"dExp", 1.325f, 1.401f, 0.956f},
    {"dSqrt", 0.951f, 1.108f, 0.668f},      {"dSin", 1.47f, 2.849f, 1.319f},
    {"dPow", 4.845f, 6.026f, 3.235f},       {"dErfInv", 5.218f, 6.117f, 2.231f},
    {"dExpInt1", 173.39f, 173.39f, 5.398f}, {"dTGamma", 163.65f, 163.65f, 163.65f},
    {"zSin", 468.438f, 468.438f, 468.438f}, {"zPow", 778.839f, 778.839f, 778.839f},
    {"zUnpackM", 3.0f, 3.0f, 3.0f},         {"sPackI", 3.0f, 3.0f, 3.0f},
};

TEST(Records, TablesHoldTheirKernelsAndCostsSideBySide) {
    for (const Record& record : all_records()) {
        SCOPED_TRACE(record.name());
        EXPECT_EQ(reinterpret_cast<const char*>(record.ctab), reinterpret_cast<const char*>(record.ttab + 3));
        for (int slot = 0; slot < 3; ++slot) {
            EXPECT_EQ(record.ttab[slot], record.kernels[slot]) << "slot " << slot;
            EXPECT_GT(record.ctab[slot], 0.0f);
            for (int other = 0; other < slot; ++other) {
                if (record.kernels[slot] != record.kernels[other]) continue;
                EXPECT_EQ(record.ctab[slot], record.ctab[other]) << "same kernel, other cost";
            }
        }
        int32_t padding;
        std::memcpy(&padding, record.ctab + 3, sizeof padding);
        EXPECT_EQ(padding, 0);
    }
    for (const auto& known : kKnownCosts) {
        for (const char* form : {"", "I"}) {
            const Record* const record = find_record(std::string(known.name) + form);
            if (record == nullptr) continue;
            EXPECT_EQ(record->ctab[0], known.la) << known.name << form;
            EXPECT_EQ(record->ctab[1], known.ha) << known.name << form;
            EXPECT_EQ(record->ctab[2], known.ep) << known.name << form;
        }
    }
}

// A load from the slot and a jump; the pack group's stubs first set the fifth argument.
TEST(Records, StubsAreOneLoadAndOneJump) {
    std::set<Entry> seen;
    for (const Record& record : all_records()) {
        for (int k = 0; k < 4; ++k) {
            SCOPED_TRACE(record.name() + " stub " + std::to_string(k));
            const auto* code = reinterpret_cast<const unsigned char*>(record.stubs[k]);
            EXPECT_TRUE(seen.insert(record.stubs[k]).second) << "shared with another name";
            if (record.pack()) {
                const unsigned char set_flag[6] = {0x41, 0xB8, 1, 0, 0, 0};
                EXPECT_EQ(std::memcmp(code, set_flag, sizeof set_flag), 0);
                code += sizeof set_flag;
            }
            const unsigned char load[3] = {0x48, 0x8B, 0x05}, jump[2] = {0xFF, 0xE0};
            EXPECT_EQ(std::memcmp(code, load, sizeof load), 0);
            EXPECT_EQ(std::memcmp(code + 7, jump, sizeof jump), 0);
            int32_t distance;
            std::memcpy(&distance, code + 3, sizeof distance);
            EXPECT_EQ(reinterpret_cast<const char*>(code + 7) + distance,
                      reinterpret_cast<const char*>(record.ttab + kStubSlots[k]));
        }
    }
}

// Slots filled with a probe show which one a call goes through, with its arguments untouched.
struct Probe {
    static inline int64_t seen[5];
    static void kernel(int64_t a, int64_t b, int64_t c, int64_t d, int64_t e) {
        const int64_t arguments[5] = {a, b, c, d, e};
        std::memcpy(seen, arguments, sizeof seen);
    }
};

TEST(Records, StubsReadTheirSlotAtEveryCall) {
    for (const Record& record : all_records()) {
        for (int k = 0; k < 4; ++k) {
            SCOPED_TRACE(record.name() + " stub " + std::to_string(k));
            const int slot = kStubSlots[k];
            record.ttab[slot] = reinterpret_cast<Entry>(Probe::kernel);
            using Stub = void (*)(int64_t, int64_t, int64_t, int64_t, int64_t);
            reinterpret_cast<Stub>(record.stubs[k])(11, 12, 13, 14, 15);
            record.ttab[slot] = record.kernels[slot];
            const int64_t expected[5] = {11, 12, 13, 14, record.pack() ? 1 : 15};
            EXPECT_EQ(std::memcmp(Probe::seen, expected, sizeof expected), 0);
        }
    }
}

}  // namespace
}  // namespace nax::testing
