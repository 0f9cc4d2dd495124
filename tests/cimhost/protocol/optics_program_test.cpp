// What `cimhost optics` and `cimhost doctor` print of fleets with planted faults.
#include "program.h"
#include "socket_client.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace cimhost::testing_support {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Json = nlohmann::json;

/// Of the fleet of modules by serial number.
std::map<std::string, Json> modulesOf(const Ended& ended) {
    std::map<std::string, Json> modules;
    for (const Json& module : Json::parse(ended.output))
        modules[module.at("serialNumber")] = module;
    return modules;
}

/// Rule and subject of every finding.
std::multimap<std::string, std::string> findingsOf(const Ended& ended) {
    std::multimap<std::string, std::string> findings;
    const Json document = Json::parse(ended.output);
    for (const Json& finding : document.at("findings"))
        findings.emplace(finding.at("rule"), finding.at("subject"));
    return findings;
}

TEST(OpticsProgram, ShowsReadingsWithTheirLimits) {
    const Ended ended = cimhost({"--fleet", OPTICS_FLEET, "optics"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("port 1 of card MF1602S9OPT01: SFP, 16G Fibre Channel, Merolt MSFP-16G-SW, "
                                        "serial number MOPFINE0001, 850 nm\n"));
    EXPECT_THAT(ended.output, HasSubstr("receive power   0.4200 mW (-3.77 dBm)  normal  0.0100 mW"));
    EXPECT_THAT(ended.output, HasSubstr("! temperature: high warning\n"));
    EXPECT_THAT(ended.output, HasSubstr("! temperature: high alarm\n! bias current: high alarm\n"));
    EXPECT_THAT(ended.output, HasSubstr("note: the checksum of the serial ID's base fields is wrong\n"));
    EXPECT_THAT(ended.output, HasSubstr("note: the module has no diagnostics\n"));
    EXPECT_THAT(ended.output, Not(HasSubstr("nan")));
}

TEST(OpticsProgram, GivesToolsEveryNumberWithItsUnit) {
    const auto modules = modulesOf(cimhost({"--json", "--fleet", OPTICS_FLEET, "optics"}));
    ASSERT_EQ(modules.size(), 10U);
    const Json& fine = modules.at("MOPFINE0001");
    EXPECT_EQ(fine.at("portNumber"), 1);
    EXPECT_EQ(fine.at("cardSerialNumber"), "MF1602S9OPT01");
    EXPECT_EQ(fine.at("fibreChannelPortName"), "2100024D160F0101");
    EXPECT_EQ(fine.at("wavelengthNanometres"), 850);
    EXPECT_EQ(fine.at("temperatureCelsius"), 38.25);
    EXPECT_EQ(fine.at("temperatureHighAlarmCelsius"), 75);
    EXPECT_EQ(fine.at("temperatureState"), "normal");
    EXPECT_NEAR(fine.at("receivePowerMilliwatts"), 0.42, 1e-9);
    EXPECT_NEAR(fine.at("receivePowerDbm"), -3.7675, 1e-4);
    EXPECT_NEAR(fine.at("receivePowerLowAlarmDbm"), -20, 1e-9);
    EXPECT_EQ(fine.at("findings"), Json::array());
    EXPECT_EQ(modules.at("MOPDARK0003").at("receivePowerMilliwatts"), 0);
    EXPECT_TRUE(modules.at("MOPDARK0003").at("receivePowerDbm").is_null());
    EXPECT_TRUE(modules.at("MOPMUTE0010").at("temperatureCelsius").is_null());
    EXPECT_TRUE(modules.at("MOPLIES0005").at("wavelengthNanometres").is_null());
    EXPECT_EQ(modules.at("MOPLIES0005").at("findings"), Json::array({"baseChecksumWrong"}));
}

TEST(OpticsProgram, WorksExternalCalibrationOut) {
    const auto modules = modulesOf(cimhost({"--json", "--fleet", OPTICS_FLEET, "optics"}));
    const Json& external = modules.at("MOPEXT00009");
    EXPECT_EQ(external.at("calibration"), "external");
    EXPECT_NEAR(external.at("temperatureCelsius"), 38.25, 0.01);
    EXPECT_NEAR(external.at("supplyVolts"), 3.31, 0.0002);
    EXPECT_NEAR(external.at("biasMilliamperes"), 6.4, 0.002);
    EXPECT_NEAR(external.at("transmitPowerMilliwatts"), 0.55, 0.0001);
    EXPECT_NEAR(external.at("receivePowerMilliwatts"), 0.42, 0.0002);
    EXPECT_NEAR(external.at("receivePowerHighAlarmMilliwatts"), 1, 0.0002);
    EXPECT_EQ(external.at("findings"), Json::array());
}

TEST(OpticsProgram, ShowsAModuleOfAnEthernetFunctionByItsTexts) {
    const TemporaryFile fleet(R"({"cards":[{"serialNumber":"ETH1","modelName":"ME1","ports":[
        {"transceiver":{"serialNumber":"ETHSFP1"},"ethernet":{"mtuBytes":9000}}]}]})");
    const auto modules = modulesOf(cimhost({"--json", "--fleet", fleet.path.string(), "optics"}));
    ASSERT_EQ(modules.size(), 1U);
    const Json& module = modules.at("ETHSFP1");
    EXPECT_EQ(module.at("vendor"), "Merolt");
    EXPECT_EQ(module.at("memoryPublished"), false);
    EXPECT_TRUE(module.at("temperatureCelsius").is_null());
    EXPECT_EQ(cimhost({"--fleet", fleet.path.string(), "doctor"}).status, 0);
}

TEST(DoctorProgram, TellsEachPlantedFaultAndNoOther) {
    const Ended ended = cimhost({"--json", "--fleet", OPTICS_FLEET, "doctor"});
    EXPECT_EQ(ended.status, 2) << ended.errors;
    const std::multimap<std::string, std::string> expected{
        {"link-down-light", "port 2 of card MF1602S9OPT02"},   {"link-down-dark", "port 1 of card MF1602S9OPT02"},
        {"optics-alarm", "port 2 of card MF1602S9OPT03"},      {"optics-alarm", "port 2 of card MF1602S9OPT03"},
        {"optics-warning", "port 2 of card MF1602S9OPT01"},    {"module-unbelievable", "port 1 of card MF1602S9OPT03"},
        {"low-receive-power", "port 1 of card MF1602S9OPT04"}, {"low-speed", "port 2 of card MF1602S9OPT04"}};
    EXPECT_EQ(findingsOf(ended), expected);
}

TEST(DoctorProgram, TellsPeopleWhatToDoAndCounts) {
    const Ended ended = cimhost({"--fleet", OPTICS_FLEET, "doctor"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output.find("fault link-down-light: A link is down although light arrives\n"), 0U) << ended.output;
    EXPECT_THAT(ended.output, HasSubstr("  Why: "));
    EXPECT_THAT(ended.output, HasSubstr("\n4 faults, 4 warnings\n"));
}

TEST(DoctorProgram, KeepsToTheWidthOfATerminal) {
    constexpr unsigned short width = 72;
    const Ended ended = cimhostAtTerminal({"--fleet", OPTICS_FLEET, "doctor"}, width, {"NO_COLOR=1"});
    EXPECT_THAT(ended.output, HasSubstr("\n       whether the other end's port is enabled")) << ended.output;
    std::size_t longest = 0;
    for (std::size_t begin = 0; begin < ended.output.size();) {
        const std::size_t end = std::min(ended.output.find('\n', begin), ended.output.size());
        longest = std::max(longest, end - begin);
        begin = end + 1;
    }
    EXPECT_LE(longest, width);
}

TEST(DoctorProgram, EndsWithOneForWarningsAndWithNoneForNothing) {
    std::vector<std::string> command{"--fleet", OPTICS_FLEET, "doctor"};
    for (const auto* rule : {"link-down-light", "link-down-dark", "optics-alarm"})
        command.insert(command.end(), {"--ignore", rule});
    EXPECT_EQ(cimhost(command).status, 1);
    for (const auto* rule : {"optics-warning", "module-unbelievable", "low-receive-power", "low-speed"})
        command.insert(command.end(), {"--ignore", rule});
    const Ended ended = cimhost(command);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "Nothing is wrong.\n");
}

TEST(DoctorProgram, SeesCountersGrowBetweenTwoLooks) {
    const TemporaryFile fleet(R"({"cards":[{"serialNumber":"GROW1","modelName":"MF1602","ports":[{"storage":{
        "vpd":{"readOnly":{"SN":"GROW1"}},"statisticsPerRefresh":{"crcErrors":3,"ioCount":100}}}]}]})");
    const Ended ended = cimhost({"--json", "--fleet", fleet.path.string(), "doctor", "--interval", "1"});
    EXPECT_EQ(ended.status, 2) << ended.errors;
    EXPECT_EQ(findingsOf(ended).count("growing-errors"), 1U) << ended.output;
    EXPECT_THAT(ended.output, HasSubstr("CRCErrors grew by 3 within 1 s"));
}

TEST(DoctorProgram, TellsThatThereIsNoAdapter) {
    const TemporaryFile fleet(R"({"cards":[]})");
    const Ended ended = cimhost({"--fleet", fleet.path.string(), "doctor"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output.find("fault no-adapters: "), 0U) << ended.output;
}

TEST(DoctorProgram, RefusesARuleThatItDoesNotHave) {
    const Ended ended = cimhost({"--fleet", OPTICS_FLEET, "doctor", "--ignore", "link-up"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.output, IsEmpty());
    EXPECT_THAT(ended.errors, HasSubstr("there is no rule \"link-up\"; see: cimhost doctor --rules"));
}

TEST(DoctorProgram, ListsItsRules) {
    const Ended ended = cimhost({"doctor", "--rules"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("fcoe-mtu"));
    EXPECT_EQ(Json::parse(cimhost({"--json", "doctor", "--rules"}).output).size(), lineCount(ended.output) - 1);
}

/// Findings on this machine, if it were called that.
std::multimap<std::string, std::string> findingsOnHost(const std::string& name) {
    return findingsOf(run({"env", "TAVIK_SOURCE=host", "MEROLT_CNA_SYSTEM_NAME=" + name, PROGRAM, "--json", "doctor"}));
}

TEST(DoctorProgram, TellsANameThatEveryMachineCouldHave) {
    for (const auto* name : {"127.0.1.1", "LOCALHOST.localdomain", "::1"})
        EXPECT_EQ(findingsOnHost(name).count("loopback-name"), 1U) << name;
    for (const auto* name : {"192.0.2.7", "localhosts", "2001:db8::1"})
        EXPECT_EQ(findingsOnHost(name).count("loopback-name"), 0U) << name;
}

TEST(DoctorProgram, LeavesTheNameAloneWhereAdaptersAreDescribed) {
    const Ended ended =
        run({"env", "MEROLT_CNA_SYSTEM_NAME=127.0.1.1", PROGRAM, "--json", "--fleet", OPTICS_FLEET, "doctor"});
    EXPECT_EQ(findingsOf(ended).count("loopback-name"), 0U);
}

TEST(DoctorProgram, AsksServers) {
    Process server({"env", "MEROLT_CNA_SYSTEM_NAME=san1.example.org", PROGRAM, "--fleet", OPTICS_FLEET, "serve",
                    "--listen", "127.0.0.1:0"});
    const std::string url = urlOf(server);
    ASSERT_FALSE(url.empty()) << server.errors();
    const Ended here = cimhost({"--json", "--fleet", OPTICS_FLEET, "doctor"});
    const Ended there = cimhost({"--json", "doctor", "--server", url});
    EXPECT_EQ(there.status, 2) << there.errors;
    EXPECT_EQ(Json::parse(there.output).at("answer"), Json::parse(here.output));
    EXPECT_EQ(Json::parse(cimhost({"--json", "optics", "--server", url}).output).at("answer"),
              Json::parse(cimhost({"--json", "--fleet", OPTICS_FLEET, "optics"}).output));
}

/// Samples by name and labels, as they stand: `port_up{serial="A",port="1"}`, each once.
std::map<std::string, double> samplesOf(const std::string& text) {
    std::map<std::string, double> samples;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') continue;
        const std::size_t end = line.rfind(' ');
        EXPECT_TRUE(samples.emplace(line.substr(0, end), std::stod(line.substr(end + 1))).second) << line;
    }
    return samples;
}

using Places = std::set<std::string>;

/// Where a metric of the adapters has that value: "OPT02 port 1", with the quantity where it has one. The cards'
/// serial numbers end so.
Places placesWhere(const std::map<std::string, double>& samples, const std::string& metric,
                   const std::function<bool(double)>& holds) {
    Places places;
    for (const auto& [series, value] : samples) {
        std::smatch found;
        static const std::regex form(
            R"re((\w+)\{serial="MF1602S9(OPT\d+)",port="(\d)"(?:,kind="\w+")?(?:,quantity="(\w+)")?\})re");
        if (!std::regex_match(series, found, form) || found[1] != metric || !holds(value)) continue;
        places.insert(found[2].str() + " port " + found[3].str() + (found[4].matched ? " " + found[4].str() : ""));
    }
    return places;
}

Places placesOf(const std::map<std::string, double>& samples, const std::string& metric, double value) {
    return placesWhere(samples, metric, [value](double told) { return told == value; });
}

Places allPorts() {
    Places places;
    for (const std::string card : {"OPT01", "OPT02", "OPT03", "OPT04", "OPT05"})
        places.insert({card + " port 1", card + " port 2"});
    return places;
}

Places without(Places places, const Places& others) {
    for (const std::string& place : others)
        places.erase(place);
    return places;
}

/// Whatever the fleet's file plants, and nothing else: the module that lies about its base fields is OPT03 port 1, and
/// the one that says nothing OPT05 port 2.
void expectPlantedFaults(const std::map<std::string, double>& samples) {
    EXPECT_EQ(placesOf(samples, "merolt_cna_port_up", 0), (Places{"OPT02 port 1", "OPT02 port 2"}));
    EXPECT_EQ(placesOf(samples, "merolt_cna_port_up", 1), without(allPorts(), {"OPT02 port 1", "OPT02 port 2"}));
    EXPECT_EQ(placesOf(samples, "merolt_cna_port_answers", 1), allPorts());
    EXPECT_EQ(placesOf(samples, "merolt_cna_module_known", 1), allPorts());
    EXPECT_EQ(placesOf(samples, "merolt_cna_module_severity", 1), Places{"OPT01 port 2 temperature"});
    EXPECT_EQ(placesOf(samples, "merolt_cna_module_severity", 2),
              (Places{"OPT02 port 1 receive_power", "OPT03 port 2 bias", "OPT03 port 2 temperature"}));
    EXPECT_EQ(placesOf(samples, "merolt_cna_module_doubtful", 1), Places{"OPT03 port 1"});
    EXPECT_EQ(placesOf(samples, "merolt_cna_module_doubtful", 0), without(allPorts(), {"OPT03 port 1"}));
    constexpr double nearTheLeast = 2e-5; // the modules' low warning is 15.8 microwatts
    EXPECT_EQ(placesWhere(samples, "merolt_cna_module_receive_power_watts", [](double watts) { return watts == 0; }),
              Places{"OPT02 port 1"});
    EXPECT_EQ(placesWhere(samples, "merolt_cna_module_receive_power_watts",
                          [](double watts) { return watts > 0 && watts < nearTheLeast; }),
              Places{"OPT04 port 1"});
    EXPECT_EQ(placesWhere(samples, "merolt_cna_module_temperature_celsius", [](double) { return true; }),
              without(allPorts(), {"OPT05 port 2"}));
    EXPECT_EQ(placesOf(samples, "merolt_cna_port_speed_bytes_per_second", 1062500000), Places{"OPT04 port 2"});
    EXPECT_EQ(placesOf(samples, "merolt_cna_port_max_speed_bytes_per_second", 2125000000), allPorts());
    for (const char* counter : {"link_failures", "losses_of_signal", "losses_of_synchronization", "crc_errors",
                                "invalid_transmission_words", "primitive_sequence_errors"}) {
        EXPECT_EQ(placesOf(samples, "merolt_cna_fc_" + std::string(counter) + "_total", 0), allPorts()) << counter;
    }
    EXPECT_EQ(samples.at("merolt_cna_reading_failed_classes"), 0);
    EXPECT_EQ(samples.at("merolt_cna_cards"), 5);
    EXPECT_EQ(samples.at("merolt_cna_modules"), 10);
}

TEST(MetricsProgram, TellsEachPlantedFaultAndNoOther) {
    const Ended ended = cimhost({"--fleet", OPTICS_FLEET, "metrics"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    expectPlantedFaults(samplesOf(ended.output));
}

TEST(MetricsProgram, ServeAnswersWithEachPlantedFaultAndNoOther) {
    Process server({PROGRAM, "--fleet", OPTICS_FLEET, "serve", "--listen", "127.0.0.1:0", "--metrics", "127.0.0.1:0",
                    "--state", ""});
    const std::string line = server.readLine();
    const std::string prefix = "cimhost: metrics at http://127.0.0.1:";
    ASSERT_EQ(line.find(prefix), 0U) << line << server.errors();
    SocketClient client(static_cast<std::uint16_t>(std::stoi(line.substr(prefix.size()))));
    ASSERT_TRUE(client.send("GET /metrics HTTP/1.1\r\nHost: localhost\r\n\r\n"));
    const std::string answer = client.readAnswer();
    ASSERT_EQ(statusOf(answer), 200) << answer;
    const auto samples = samplesOf(bodyOf(answer));
    EXPECT_EQ(samples.at("merolt_cna_adapters_readable"), 1);
    expectPlantedFaults(samples);
}

/// Without the one line that differs from look to look.
std::string withoutDuration(const std::string& metrics) {
    const std::size_t line = metrics.find("\nmerolt_cna_reading_duration_seconds ") + 1;
    return std::string(metrics).erase(line, metrics.find('\n', line) - line);
}

TEST(MetricsProgram, AsksAServer) {
    Process server({PROGRAM, "--fleet", OPTICS_FLEET, "serve", "--listen", "127.0.0.1:0", "--state", ""});
    const std::string url = urlOf(server);
    ASSERT_FALSE(url.empty()) << server.errors();
    for (const std::vector<std::string>& form : {std::vector<std::string>{}, {"--openmetrics"}}) {
        std::vector<std::string> here{"--fleet", OPTICS_FLEET, "metrics"}, there{"metrics", "--server", url};
        here.insert(here.end(), form.begin(), form.end());
        there.insert(there.end(), form.begin(), form.end());
        const Ended ended = cimhost(there);
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_EQ(withoutDuration(ended.output), withoutDuration(cimhost(here).output));
    }
    const Json json = Json::parse(cimhost({"--json", "metrics", "--server", url}).output);
    expectPlantedFaults(samplesOf(json.at("answer")));
}

TEST(MetricsProgram, SaysWhyAServerTellsNothingAndTakesOneAlone) {
    const Ended several = cimhost({"metrics", "--server", "http://127.0.0.1:1", "--server", "http://127.0.0.1:2"});
    EXPECT_EQ(several.status, 2);
    EXPECT_THAT(several.errors, HasSubstr("metrics are of one server at a time"));
    const Ended nobody = cimhost({"metrics", "--server", "http://127.0.0.1:1"});
    EXPECT_EQ(nobody.status, 2);
    EXPECT_THAT(nobody.output, IsEmpty());
    EXPECT_THAT(nobody.errors, HasSubstr("127.0.0.1:1: "));
}

} // namespace
} // namespace cimhost::testing_support
