#include "tavik/source_choice.h"

#include <cstdio>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tavik {

namespace {

class SourceChoice : public ::testing::Test {
protected:
    SourceChoice() : file_(::testing::TempDir() + "tavik_source_" + std::to_string(getpid())) {}
    ~SourceChoice() override { std::remove(file_.c_str()); }

    std::string choiceFrom(const std::string& text) {
        std::ofstream(file_) << text;
        return chosenSource(nullptr, file_);
    }

    std::string file_;
};

TEST_F(SourceChoice, TheEnvironmentDecidesBeforeTheFile) {
    std::ofstream(file_) << "fleet:/file.json\n";
    EXPECT_EQ(chosenSource("fleet:/environment.json", file_), "fleet:/environment.json");
}

TEST_F(SourceChoice, AnEmptyVariableCountsAsNone) {
    std::ofstream(file_) << "fleet:/file.json\n";
    EXPECT_EQ(chosenSource("", file_), "fleet:/file.json");
}

TEST_F(SourceChoice, TheFirstLineOfTheFileCountsWithoutItsBlanks) {
    EXPECT_EQ(choiceFrom("  fleet:/with blank.json \t\r\nhost\n"), "fleet:/with blank.json");
    EXPECT_EQ(choiceFrom("fleet:/no/line/end.json"), "fleet:/no/line/end.json");
}

TEST_F(SourceChoice, TheHostIsTheDefault) {
    EXPECT_EQ(chosenSource(nullptr, "/nonexistent/source"), "host");
    EXPECT_EQ(choiceFrom(""), "host");
    EXPECT_EQ(choiceFrom("   \n"), "host");
}

TEST_F(SourceChoice, AFleetNeedsAPath) {
    const auto made = makeSource("fleet:");
    ASSERT_TRUE(std::holds_alternative<FleetError>(made));
    EXPECT_EQ(std::get<FleetError>(made).message,
              "source of adapters: expected \"host\" or \"fleet:PATH\", found \"fleet:\"");
}

} // namespace

} // namespace tavik
