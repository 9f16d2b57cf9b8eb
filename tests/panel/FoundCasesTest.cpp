#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/FuzzTargets.h"
#include "tests/support/LogExpectation.h"

/// The inputs that the fuzzers found worth keeping, and those that once broke a reader.
TEST(FoundCases, BreakNoReader) {
    ExpectLogged log("cannot be used");
    int cases = 0;
    for (const char* reader : {"panel-settings", "lock-record"})
        for (const auto& entry :
             std::filesystem::directory_iterator(std::string(ZU_SOURCE_DIR "/tests/data/fuzz/") + reader)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string input(std::istreambuf_iterator<char>(file), {});
            EXPECT_NO_THROW(fuzz::Read(reader, input)) << entry.path();
            ++cases;
        }
    EXPECT_GT(cases, 20);
}
