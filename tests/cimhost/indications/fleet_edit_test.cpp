#include "cimhost/cli/fleet_edit.h"

#include "../protocol/temporary_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using cimhost::cli::LinkChange;
using cimhost::cli::LinkSide;
using cimhost::cli::LinkState;
using cimhost::testing_support::TemporaryFile;
using testing::HasSubstr;

namespace {

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

constexpr const char* fleet = R"({"cards": [{"serialNumber": "S1", "modelName": "M", "ports": [
    {"storage": {"speed": 10}, "ethernet": {"linkState": "up"}}, {"number": 7, "storage": {}}]},
    {"count": 2, "ports": [{"ethernet": {}}]}]})";

class FleetEdit : public testing::Test {
protected:
    std::string errorOf(const std::string& card, unsigned port, LinkState state, LinkSide side = LinkSide::both) {
        try {
            cimhost::cli::setLink({card, port, state, side, file.path.string()});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    }
    nlohmann::json port(int card, int place) const {
        return nlohmann::json::parse(contentOf(file.path))["cards"][card]["ports"][place];
    }

    TemporaryFile file{fleet};
};

} // namespace

TEST_F(FleetEdit, BothFunctionsOfAPortChangeAndTheRestStays) {
    EXPECT_EQ(errorOf("S1", 1, LinkState::down), "");
    EXPECT_EQ(port(0, 0), nlohmann::json::parse(
                              R"({"storage": {"speed": 10, "state": "loopDown"}, "ethernet": {"linkState": "down"}})"));
    EXPECT_EQ(nlohmann::json::parse(contentOf(file.path))["cards"][0]["modelName"], "M");
    EXPECT_EQ(errorOf("1", 1, LinkState::up, LinkSide::ethernet), "");
    EXPECT_EQ(port(0, 0)["ethernet"]["linkState"], "up");
    EXPECT_EQ(port(0, 0)["storage"]["state"], "loopDown");
    EXPECT_EQ(errorOf("S1", 7, LinkState::down), "");
    EXPECT_EQ(port(0, 1)["storage"]["state"], "loopDown");
}

TEST_F(FleetEdit, WhatIsNotThereIsAnErrorAndLeavesTheFileAlone) {
    EXPECT_THAT(errorOf("S9", 1, LinkState::down), HasSubstr("there is no card S9"));
    EXPECT_THAT(errorOf("S1", 2, LinkState::down), HasSubstr("card S1 has no port 2"));
    EXPECT_THAT(errorOf("S1", 7, LinkState::testing), HasSubstr("no function that knows this state"));
    EXPECT_THAT(errorOf("2", 1, LinkState::down), HasSubstr("stands for several copies"));
    EXPECT_EQ(contentOf(file.path), fleet);
}

TEST_F(FleetEdit, AnInvalidFleetIsNotTouched) {
    std::ofstream(file.path) << R"({"cards": [{"colour": 1}]})";
    EXPECT_THAT(errorOf("1", 1, LinkState::down), HasSubstr("/cards/0"));
    EXPECT_EQ(contentOf(file.path), R"({"cards": [{"colour": 1}]})");
}
