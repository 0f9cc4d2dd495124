// What is published of adapters as metrics, where adapters lie.
#include "cimhost/metrics/adapter_reading.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <sstream>
#include <string>

namespace cimhost::metrics {
namespace {

std::string written(const Found& found) {
    ByteBuffer text;
    Exposition out(text, Format::prometheus);
    writeAdapters(out, found);
    return std::string(text.view());
}

bool holds(const std::string& text, const std::string& line) {
    return text.find("\n" + line + "\n") != std::string::npos;
}

/// A card with a jack, a storage port, its counters and a module at it.
Found oneCard() {
    Found found{};
    found.snapshot.cards.push_back({"A1", "M1", "1"});
    found.snapshot.jacks.push_back({"A1_1", "A1", 1});
    monitoring::FibreChannelPort port;
    port.jack = "A1_1";
    port.portName = "2100";
    port.cardSerialNumber = "A1";
    port.state = monitoring::LinkState::up;
    port.answers = true;
    port.speedBitsPerSecond = 8'000'000'000;
    found.snapshot.fibreChannelPorts.push_back(port);
    monitoring::Module module;
    module.jack = "A1_1";
    module.hasPages = true;
    module.told.laneCount = 1;
    module.told.temperatureCelsius = {80, optics::Thresholds{90, -5, 75, 0}, std::nullopt};
    module.told.lanes[0].receivePowerMilliwatts = {0.5, std::nullopt, std::nullopt};
    found.snapshot.modules.push_back(module);
    found.statistics.push_back({"2100", {1, 2, 3, 4, 5, 6, 7, 8, 9}});
    return found;
}

TEST(AdapterMetrics, TellThePlaceByCardAndJackInBaseUnits) {
    const std::string text = written(oneCard());
    EXPECT_TRUE(holds(text, "merolt_cna_port_up{serial=\"A1\",port=\"1\",kind=\"fibre_channel\"} 1")) << text;
    EXPECT_TRUE(holds(
        text, "merolt_cna_port_speed_bytes_per_second{serial=\"A1\",port=\"1\",kind=\"fibre_channel\"} 1000000000"))
        << text;
    EXPECT_TRUE(
        holds(text, "merolt_cna_fc_transferred_bytes_total{serial=\"A1\",port=\"1\",kind=\"fibre_channel\"} 2000000"))
        << text;
    EXPECT_TRUE(holds(text, "merolt_cna_module_receive_power_watts{serial=\"A1\",port=\"1\"} 0.0005")) << text;
    EXPECT_TRUE(holds(text, "merolt_cna_module_severity{serial=\"A1\",port=\"1\",quantity=\"temperature\"} 1")) << text;
    EXPECT_FALSE(holds(text, "merolt_cna_module_severity{serial=\"A1\",port=\"1\",quantity=\"receive_power\"} 0"));
}

TEST(AdapterMetrics, CallAPortWithoutAJackByItsName) {
    Found found = oneCard();
    found.snapshot.jacks.clear();
    EXPECT_TRUE(holds(written(found), "merolt_cna_port_up{serial=\"A1\",port=\"2100\",kind=\"fibre_channel\"} 1"));
}

TEST(AdapterMetrics, NameTheInterfaceOfAPortWhereItIsTold) {
    Found found = oneCard();
    const std::string port = "merolt_cna_port_info{serial=\"A1\",port=\"1\",kind=\"fibre_channel\",name=\"2100\"";
    EXPECT_TRUE(holds(written(found), port + "} 1"));
    found.snapshot.fibreChannelPorts[0].interfaceName = "host7";
    found.snapshot.ethernetPorts.emplace_back().interfaceName = "eth0";
    const std::string text = written(found);
    EXPECT_TRUE(holds(text, port + ",interface=\"host7\"} 1")) << text;
    EXPECT_NE(text.find("interface=\"eth0\"} 1\n"), std::string::npos) << text;
}

TEST(AdapterMetrics, LeaveUnknownStatesOut) {
    Found found = oneCard();
    found.snapshot.fibreChannelPorts[0].state = monitoring::LinkState::unknown;
    found.snapshot.fibreChannelPorts[0].answers = false;
    const std::string text = written(found);
    EXPECT_EQ(text.find("\nmerolt_cna_port_up{"), std::string::npos) << text;
    EXPECT_TRUE(holds(text, "merolt_cna_port_answers{serial=\"A1\",port=\"1\",kind=\"fibre_channel\"} 0")) << text;
}

// Prometheus refuses a scrape in which a series stands twice.
TEST(AdapterMetrics, HaveNoSeriesTwice) {
    Found found = oneCard();
    const Found again = oneCard();
    found.snapshot.cards.push_back(again.snapshot.cards[0]);
    found.snapshot.jacks.push_back(again.snapshot.jacks[0]);
    found.snapshot.fibreChannelPorts.push_back(again.snapshot.fibreChannelPorts[0]);
    found.snapshot.modules.push_back(again.snapshot.modules[0]);
    found.snapshot.ethernetPorts.resize(2);
    found.snapshot.software.resize(2);
    found.statistics.push_back(again.statistics[0]);
    std::istringstream lines(written(found));
    std::set<std::string> seen;
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(seen.insert(line.substr(0, line.rfind(' '))).second || line[0] == '#') << line;
    }
    EXPECT_GT(seen.size(), 30U);
}

TEST(AdapterMetrics, LeaveOutReadingsThatAreNoNumbers) {
    Found found = oneCard();
    found.snapshot.modules[0].told.temperatureCelsius.reading = std::numeric_limits<double>::quiet_NaN();
    found.snapshot.modules[0].told.supplyVolts.reading = std::numeric_limits<double>::infinity();
    const std::string text = written(found);
    EXPECT_EQ(text.find("merolt_cna_module_temperature_celsius"), std::string::npos);
    EXPECT_EQ(text.find("nan"), std::string::npos);
    EXPECT_EQ(text.find("inf\n"), std::string::npos);
}

TEST(AdapterMetrics, EscapeTextsOfTheCard) {
    Found found = oneCard();
    found.snapshot.cards[0] = {"A\"1\n", "M\\", "1"};
    EXPECT_TRUE(holds(written(found), "merolt_cna_card_info{serial=\"A\\\"1\\n\",model=\"M\\\\\"} 1"));
}

} // namespace
} // namespace cimhost::metrics
