#include <gtest/gtest.h>

#include "tests/emulator/emulator.h"

int main(int argc, char** argv) {
    nax::emulator::install_if_needed();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
