// The whole list of vector functions, with every family switched on, whatever is linked.
#define NAX_RUNTIME_FAMILIES_H
#define NAX_FAMILY_ARITH 1
#define NAX_FAMILY_UTIL 1
#define NAX_FAMILY_EXP 1
#define NAX_FAMILY_LOG 1
#define NAX_FAMILY_TRIG 1
#define NAX_FAMILY_INVTRIG 1
#define NAX_FAMILY_POWER 1
#define NAX_FAMILY_SPECIAL 1
#define NAX_FAMILY_COMPLEX 1

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace {

struct Row {
    char type;
    std::string function, la, ha, ep;
    int forms;
};
const Row kRows[] = {
#define RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    {#type[0], #function, #la, #ha, #ep, 2},
#define PACK_RECORD(type, function, signature, la, ha, ep, cost_la, cost_ha, cost_ep) \
    {#type[0], #function, #la, #ha, #ep, 1},
#include "runtime/records.def"
};

TEST(Catalogue, HasEveryFunctionTypeAndKernel) {
    std::set<std::string> functions, records;
    std::map<std::string, int> kernels;   // by instruction set
    std::map<std::size_t, int> distinct;  // records by number of different kernels
    int count = 0;
    for (const Row& row : kRows) {
        functions.insert(row.function);
        EXPECT_TRUE(records.insert(row.type + row.function).second) << row.type << row.function << " stands twice";
        const std::set<std::string> tags = {row.la, row.ha, row.ep};
        for (const std::string& tag : tags) kernels[tag.substr(0, 2)] += row.forms;
        distinct[tags.size()] += row.forms;
        count += row.forms;
    }
    EXPECT_EQ(functions.size(), 87u);
    EXPECT_EQ(count, 440);
    EXPECT_EQ(kernels, (std::map<std::string, int>{{"Z0", 778}, {"L9", 28}, {"E9", 6}, {"EX", 68}}));
    EXPECT_EQ(distinct, (std::map<std::size_t, int>{{1, 198}, {2, 44}, {3, 198}}));
}

// Rows of a family that is not linked are skipped, and so would be a misspelt one.
TEST(Catalogue, SpecialValuesNameOnlyFunctionsOfTheList) {
    std::set<std::string> functions;
    for (const Row& row : kRows) functions.insert(row.function);
    for (const char* const name : {
#define UNARY(f, ...) #f,
#define BINARY(f, ...) #f,
#define TWO_RESULTS(f, ...) #f,
#define FLUSHED_UNARY(f, ...) #f,
#define FLUSHED_BINARY(f, ...) #f,
#include "tests/vmath/specials.def"
         })
        EXPECT_TRUE(functions.contains(name)) << name;
}

}  // namespace
