// The program as people start it: what it prints, where, and how it ends.
#include "answer_source.h"
#include "program.h"
#include "temporary_file.h"

#include "cimhost/cli/table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace cimhost {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing_support::AnswerSource;
using testing_support::answerSources;
using testing_support::askedOf;
using testing_support::cimhost;
using testing_support::cimhostAtTerminal;
using testing_support::Ended;
using testing_support::lineCount;
using testing_support::nameOfSource;
using testing_support::Process;
using testing_support::run;
using testing_support::TemporaryFile;
using testing_support::urlOf;

TEST(Program, ServesAClientAndStopsOnASignal) {
    Process server({PROGRAM, "--fleet", FLEET, "serve", "--listen", "127.0.0.1:0", "--anonymous-writes"});
    const std::string url = urlOf(server);
    ASSERT_NE(url, "") << server.errors();
    const std::string ports = url + "/root/merolt_cmpi:Merolt_FCHBA_FCPort";

    const Ended taken = cimhost({"--fleet", FLEET, "serve", "--listen", url.substr(7)});
    EXPECT_EQ(taken.status, 2);
    EXPECT_THAT(taken.errors, HasSubstr("cannot listen on 127.0.0.1 port"));

    if (run({"wbemcli", "--help"}).status == 127) GTEST_SKIP() << "wbemcli is not installed";
    const Ended names = run({"wbemcli", "ein", ports});
    EXPECT_EQ(names.status, 0) << names.errors;
    EXPECT_THAT(names.output,
                HasSubstr("Merolt_FCHBA_FCPort.SystemCreationClassName=\"Merolt_Adapter_ComputerSystem\""));
    const Ended instances = run({"wbemcli", "ei", "-nl", ports});
    EXPECT_THAT(instances.output, HasSubstr("-PermanentAddress=\"2100024D10317001\"")) << instances.errors;
    const std::string first = names.output.substr(0, names.output.find('\n'));
    const Ended one = run({"wbemcli", "gi", "-nl", "http://" + first, "DeviceID"});
    EXPECT_THAT(one.output, HasSubstr("-DeviceID=\"MC1020R4K00317_")) << one.errors;
    const Ended deletion = run({"wbemcli", "di", "http://" + first});
    EXPECT_THAT(deletion.errors, HasSubstr("CIM_ERR_NOT_SUPPORTED"));
    const Ended declaration = run({"wbemcli", "gc", ports});
    EXPECT_THAT(declaration.output, HasSubstr("OptionROMVersions"));

    server.signal(SIGTERM);
    EXPECT_EQ(server.wait(), 0);
}

// Servers put association requests to a provider in two ways; whoever walks the tree sees no difference.
TEST(Program, TheTreeIsTheSameInBothAssociationModes) {
    const Ended forEachClass = cimhost({"--fleet", FLEET, "tree"});
    const Ended once = cimhost({"--fleet", FLEET, "tree", "--ask-once"});
    EXPECT_EQ(forEachClass.status, 0) << forEachClass.errors;
    EXPECT_EQ(once.status, 0) << once.errors;
    EXPECT_GT(lineCount(forEachClass.output), 50U);
    EXPECT_EQ(forEachClass.output, once.output);
}

TEST(Program, ABaseClassFindsAssociationsUnlessTheProviderIsAskedOnce) {
    const Ended host = cimhost({"--fleet", FLEET, "names", "Merolt_Adapter_ComputerSystem"});
    const std::string path = host.output.substr(0, host.output.find('\n'));
    const Ended devices =
        cimhost({"--fleet", FLEET, "associators", path, "--association", "CIM_SystemDevice", "--names"});
    EXPECT_THAT(devices.output, HasSubstr("Merolt_FCHBA_StorageExtent")) << devices.errors;
    EXPECT_THAT(devices.output, HasSubstr("Merolt_NIC_EthernetPort2"));
    const Ended none =
        cimhost({"--ask-once", "--fleet", FLEET, "associators", path, "--association", "CIM_SystemDevice", "--names"});
    EXPECT_EQ(none.status, 0) << none.errors;
    EXPECT_THAT(none.output, Not(HasSubstr("Merolt_")));
}

// As a newcomer starts it: whoever is on the machine may look, and nobody may change anything.
TEST(Program, WithoutUsersNothingCanBeChanged) {
    Process server({PROGRAM, "--fleet", FLEET, "serve", "--listen", "127.0.0.1:0", "--state", ""});
    const std::string url = urlOf(server);
    ASSERT_NE(url, "") << server.errors();
    if (run({"wbemcli", "--help"}).status == 127) GTEST_SKIP() << "wbemcli is not installed";
    const std::string filter = url +
                               "/root/PG_InterOp:CIM_IndicationFilter.SystemCreationClassName=\"CIM_ComputerSystem\","
                               "SystemName=\"h\",CreationClassName=\"CIM_IndicationFilter\",Name=\"f\"";
    const std::string service = url + "/root/merolt_cmpi:Merolt_NIC_SoftwareInstallationService";
    const Ended names = run({"wbemcli", "ein", url + "/root/merolt_cmpi:Merolt_FCHBA_FCPort"});
    EXPECT_EQ(names.status, 0) << names.errors;
    const std::string port = "http://" + names.output.substr(0, names.output.find('\n'));
    for (const std::vector<std::string>& change : std::vector<std::vector<std::string>>{
             {"wbemcli", "cm", service, "InstallFromURI"},
             {"wbemcli", "ci", filter,
              "SystemCreationClassName=CIM_ComputerSystem,SystemName=h,CreationClassName=CIM_IndicationFilter,Name=f"},
             {"wbemcli", "mi", port, "Description=x"},
             {"wbemcli", "di", port}}) {
        const Ended refused = run(change);
        EXPECT_THAT(refused.errors + refused.output, HasSubstr("CIM_ERR_ACCESS_DENIED")) << change[1];
        EXPECT_THAT(refused.errors + refused.output, HasSubstr("--credentials FILE")) << change[1];
    }
}

// The same question to the provider here and to a server with the same fleet.
class Answer : public testing::TestWithParam<AnswerSource> {
protected:
    static Ended ask(const std::vector<std::string>& question) { return askedOf(GetParam(), question); }

    static std::string firstName(const std::string& className) {
        const Ended ended = ask({"names", className});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return ended.output.substr(0, ended.output.find('\n'));
    }
};

INSTANTIATE_TEST_SUITE_P(Of, Answer, testing::ValuesIn(answerSources), nameOfSource);

TEST_P(Answer, WithJsonIsJsonAndNothingElse) {
    const Ended ended = ask({"enumerate", "CIM_FCPort", "--json"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("[\n  {\n    \"class\": \"Merolt_FCHBA_FCPort\""));
    EXPECT_THAT(ended.output, EndsWith("\n]\n"));
    EXPECT_THAT(ended.output, HasSubstr("\"PermanentAddress\": \"2100024D10317001\""));
}

TEST(Program, PeopleGetATableThatFitsTheirTerminal) {
    for (const std::uint16_t width : {std::uint16_t{60}, std::uint16_t{120}}) {
        const Ended ended =
            cimhostAtTerminal({"enumerate", "Merolt_FCHBA_StorageExtent", "--fleet", FLEET}, width, {"NO_COLOR=1"});
        EXPECT_EQ(ended.status, 0) << ended.output;
        EXPECT_THAT(ended.output, HasSubstr("LUN  "));
        std::istringstream lines(ended.output.substr(ended.output.find("LUN  ")));
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("Merolt_NIC_Properties", 0) == 0) continue; // the provider's own, at any moment
            EXPECT_LE(cli::length(line), width) << line;
        }
        EXPECT_EQ(ended.output.find('\033'), std::string::npos);
    }
}

TEST(Program, OnlyTerminalsGetColours) {
    const std::vector<std::string> question = {"enumerate", "Merolt_FCHBA_FCPort", "--fleet", FLEET};
    EXPECT_THAT(cimhostAtTerminal(question, 100).output, HasSubstr("\033[1mAddress"));
    for (const std::string off : {"NO_COLOR=1", "TERM=dumb"})
        EXPECT_EQ(cimhostAtTerminal(question, 100, {off}).output.find("\033[1m"), std::string::npos) << off;
    EXPECT_THAT(cimhost(question).output, StartsWith("Address "));
}

TEST_P(Answer, WithoutATerminalTheTableIsNotCut) {
    const Ended ended = ask({"enumerate", "Merolt_FCHBA_SoftwareIdentity"});
    EXPECT_EQ(ended.output.find("…"), std::string::npos);
    EXPECT_THAT(ended.output, HasSubstr("_MC1020R4K00317_2100024D10317001__DriverFirmware\n"));
}

TEST(Program, AQuestionDoesNotTakeTheSecondsThatTheProviderSleepsForServers) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds lessThanItSleeps{2500};
    Clock::duration shortest = Clock::duration::max();
    for (int tries = 0; tries < 5 && shortest > lessThanItSleeps; ++tries) { // others may keep the host busy
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(cimhost({"--fleet", FLEET, "names", "Merolt_FCHBA_FCPort"}).status, 0);
        shortest = std::min(shortest, Clock::now() - start);
    }
    EXPECT_LT(shortest, lessThanItSleeps);
}

TEST_P(Answer, AnInstanceThatDoesNotExistIsACimError) {
    const Ended ended =
        ask({"get", "Merolt_FCHBA_FCPort.SystemCreationClassName=a,SystemName=b,CreationClassName=c,DeviceID=nothing"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("cimhost: CIM_ERR_NOT_FOUND (6): "));
}

TEST_P(Answer, AssociatedObjectsComeInATableForEachClass) {
    const std::string port = firstName("Merolt_FCHBA_FCPort");
    const Ended ended = ask({"associators", port});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("\nMerolt_FCHBA_PortController\n\nDevice ID "));
    EXPECT_THAT(ended.output, HasSubstr("Merolt_FCHBA_FCPortStatistics\n\nInstance ID "));
}

TEST_P(Answer, AssociationsAreFilteredAsAClientFiltersThem) {
    const std::string port = firstName("Merolt_FCHBA_FCPort");
    const Ended names = ask({"associators", port, "--association", "Merolt_FCHBA_PortControllerFCPort", "--names"});
    EXPECT_EQ(names.status, 0) << names.errors;
    EXPECT_THAT(names.output, StartsWith("root/merolt_cmpi:Merolt_FCHBA_PortController."));
    EXPECT_EQ(lineCount(names.output), 1U);
    const Ended json = ask({"references", port, "--association", "Merolt_FCHBA_PortControllerFCPort", "--json"});
    EXPECT_THAT(json.output, StartsWith("[\n  {\n    \"class\": \"Merolt_FCHBA_PortControllerFCPort\""));
    const Ended unknown = ask({"references", port, "--association", "Merolt_Nothing"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_THAT(unknown.errors, HasSubstr("CIM_ERR_INVALID_PARAMETER (4)"));
}

TEST_P(Answer, TheTreeReachesFromTheHostToItsLogicalUnits) {
    const Ended ended = ask({"tree"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, StartsWith("host "));
    std::size_t place = 0;
    for (const char* line :
         {"\n├─ card MC1020, serial number MC1020R4K00317", "\n│  ├─ storage controller MC1020R4K00317",
          "\n│  │  ├─ storage port 2100024D10317001", "\n│  │  │  └─ SCSI initiator 2100024D10317001",
          "SCSI target 2100024D10317001_50024D4C00001201", "logical unit 0, MEROLT, SAN VOLUME"}) {
        place = ended.output.find(line, place);
        ASSERT_NE(place, std::string::npos) << line << "\n" << ended.output;
    }
}

// As the ports of a bond have it whose drivers keep no address.
TEST(Program, TwoPortsOfOneAddressStandBelowTheirOwnCards) {
    const TemporaryFile fleet(R"({"cards":[
        {"serialNumber":"ETH1","modelName":"ME1","ports":[{"ethernet":{"macAddress":"02:00:00:00:00:01"}}]},
        {"serialNumber":"ETH2","modelName":"ME1","ports":[{"ethernet":{"macAddress":"02:00:00:00:00:01"}}]}]})");
    const Ended ended = cimhost({"--fleet", fleet.path.string(), "tree"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("Ethernet controller ETH1_NIC, OK\n│     ├─ Ethernet port 020000000001"));
    EXPECT_THAT(ended.output, HasSubstr("Ethernet controller ETH2_NIC, OK\n│  │  ├─ Ethernet port 020000000001"));
    const std::string apart = ended.output.substr(ended.output.find("\nNot connected with the host:\n\n"));
    EXPECT_THAT(apart, HasSubstr("\nprofile Ethernet Port, version 1.0.0: "
                                 "root/merolt_cmpi:Merolt_NIC_RegisteredProfile.InstanceID=\"1\"\n"));
    EXPECT_THAT(apart, Not(HasSubstr("Ethernet port")));
}

TEST_P(Answer, TheTreeInJsonHasNestedObjects) {
    const Ended ended = ask({"tree", "--json"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output,
                StartsWith("{\n  \"tree\": [\n    {\n      \"class\": \"Merolt_Adapter_ComputerSystem\""));
    EXPECT_THAT(ended.output, HasSubstr("\"apart\": ["));
    EXPECT_THAT(ended.output, EndsWith("\n}\n"));
}

TEST_P(Answer, EveryPropertyAndEachClassAreListed) {
    const Ended list = ask({"enumerate", "Merolt_FCHBA_FCPort", "--all"});
    EXPECT_THAT(list.output, HasSubstr("\n  PermanentAddress: 2100024D10317001\n")) << list.errors;
    const Ended one = ask({"get", firstName("Merolt_FCHBA_FCPort")});
    EXPECT_THAT(list.output, StartsWith(one.output)) << one.errors;
    const Ended classes = ask({"classes"});
    EXPECT_THAT(classes.output, HasSubstr("\nMerolt_FCHBA_FCPort ")) << classes.errors;
    const Ended json = ask({"classes", "--json"});
    EXPECT_THAT(json.output, HasSubstr("\"superclass\": \"CIM_FCPort\"")) << json.errors;
    const Ended associations = ask({"references", "CIM_FCPort", "--names"});
    EXPECT_THAT(associations.output, HasSubstr("\nCIM_ControlledBy\n")) << associations.errors;
}

TEST_P(Answer, SpeedsOfPortsAreTheSameWhicheverUnitTheirClassCountsIn) {
    const Ended ports = ask({"enumerate", "CIM_NetworkPort"});
    EXPECT_EQ(ports.status, 0) << ports.errors;
    EXPECT_THAT(ports.output, testing::ContainsRegex("Merolt_NIC_NetworkPort +[0-9A-F]{12} +OK +10 Gbit/s +10.625"));
    EXPECT_THAT(ports.output, testing::ContainsRegex("Merolt_NIC_EthernetPort2 +[0-9A-F]{12} +OK +10.625 Gbit/s"));
    EXPECT_THAT(ports.output, Not(HasSubstr("kbit/s")));
    const Ended all = ask({"enumerate", "Merolt_NIC_NetworkPort", "--all"});
    EXPECT_THAT(all.output, HasSubstr("\n  Speed: 10000 (10 Gbit/s)\n"));
    const Ended json = ask({"--json", "enumerate", "Merolt_NIC_NetworkPort"});
    EXPECT_THAT(json.output, HasSubstr("\"Speed\": 10000"));
}

TEST_P(Answer, RegisteredProfilesAreFoundInTheInteropNamespace) {
    const Ended ended = ask({"enumerate", "CIM_RegisteredProfile", "--namespace", "root/PG_InterOp"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("\nMerolt_SoftwareUpdate "));
}

TEST_P(Answer, AnUnknownClassIsACimError) {
    const Ended ended = ask({"names", "T_None"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("CIM_ERR_INVALID_CLASS (5)"));
}

// A person's own folder, in a place of its own.
class Question : public testing::Test {
protected:
    Question() {
        std::string name = (std::filesystem::temp_directory_path() / "cimhost_home_XXXXXX").string();
        home = ::mkdtemp(name.data());
        std::filesystem::create_directory(home / "work");
    }
    ~Question() override { std::filesystem::remove_all(home); }

    Ended ask(const std::string& environment) const {
        return run({"/bin/sh", "-c",
                    "cd \"$1/work\" && env -u MEROLT_CNA_INSTALL_LOCATION -u XDG_STATE_HOME " + environment +
                        " \"$0\" --fleet \"$2\" names Merolt_Adapter_ComputerSystem",
                    PROGRAM, home.string(), FLEET});
    }

    static unsigned modeOf(const std::filesystem::path& file) {
        return static_cast<unsigned>(std::filesystem::status(file).permissions());
    }

    std::filesystem::path home;
};

TEST_F(Question, LeavesNoFilesInTheWorkingDirectory) {
    const Ended ended = ask("HOME=\"$1\"");
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(lineCount(ended.output), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(home / "work"));
    const std::filesystem::path location = home / ".local" / "state" / "cimhost";
    EXPECT_TRUE(std::filesystem::exists(location / "log" / "Merolt_CNA_Provider.log"));
    EXPECT_EQ(modeOf(location), 0700U);
    EXPECT_EQ(modeOf(location / "log"), 0700U);
}

TEST_F(Question, KeepsItsLogWhereTheEnvironmentSays) {
    EXPECT_EQ(ask("HOME=\"$1\" XDG_STATE_HOME=\"$1/state\"").status, 0);
    EXPECT_TRUE(std::filesystem::exists(home / "state" / "cimhost" / "log" / "Merolt_CNA_Provider.log"));
    std::filesystem::create_directories(home / "own" / "log");
    EXPECT_EQ(ask("HOME=\"$1\" MEROLT_CNA_INSTALL_LOCATION=\"$1/own\"").status, 0);
    EXPECT_TRUE(std::filesystem::exists(home / "own" / "log" / "Merolt_CNA_Provider.log"));
    EXPECT_FALSE(std::filesystem::exists(home / ".local"));
}

TEST_F(Question, IsAnsweredWithoutAPlaceForTheLog) {
    const Ended ended = ask("HOME=\"$1\" XDG_STATE_HOME=/dev/null/state");
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    EXPECT_TRUE(std::filesystem::is_empty(home / "work"));
}

struct BadStart {
    std::string name;
    std::vector<std::string> arguments;
    std::string message;
};

void PrintTo(const BadStart& bad, std::ostream* out) { *out << bad.name; }

class RefusedStart : public testing::TestWithParam<BadStart> {};

TEST_P(RefusedStart, SaysWhyInOneMessage) {
    const Ended ended = cimhost(GetParam().arguments);
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr(GetParam().message));
    EXPECT_LE(lineCount(ended.errors), 2U) << ended.errors;
}

std::vector<BadStart> badStarts() {
    return {
        {"NoCommand", {}, "a command is missing"},
        {"UnknownOption", {"serve", "--colour"}, "--colour"},
        {"NoClass", {"enumerate"}, "CLASS is required"},
        {"NoPath", {"--fleet", FLEET, "get", "Merolt_FCHBA_FCPort"}, "Merolt_FCHBA_FCPort is a class"},
        {"NoSource", {"associators"}, "PATH is required"},
        {"NoKey", {"--fleet", FLEET, "references", "Merolt_FCHBA_FCPort.=1"}, "an instance path reads"},
        {"RoleOfReferences", {"references", "T.a=1", "--result-role", "Dependent"}, "--result-role"},
        {"NoFleet",
         {"--fleet", "/nonexistent/fleet.json", "serve", "--listen", "127.0.0.1:0"},
         "/nonexistent/fleet.json"},
        {"NoProvider", {"--provider", "/nonexistent/p.so", "serve", "--listen", "127.0.0.1:0"}, "/nonexistent/p.so"},
        {"NoLibrary", {"--provider", FLEET, "serve", "--listen", "127.0.0.1:0"}, FLEET},
        {"NoClasses", {"--mof", "/nonexistent", "serve", "--listen", "127.0.0.1:0"}, "/nonexistent/merolt.mof"},
        {"Everywhere", {"serve", "--listen", "0.0.0.0:0"}, "--credentials"},
        {"NoAddress", {"serve", "--listen", "example.com:1"}, "example.com"},
        {"NoPort", {"serve", "--listen", "127.0.0.1:99999"}, "99999"},
        {"WritesWithUsers", {"serve", "--listen", "127.0.0.1:0", "--anonymous-writes", "--credentials", FLEET}, FLEET},
        {"CertificateAlone", {"serve", "--certificate", FLEET}, "--key"},
        {"NoCertificate",
         {"serve", "--certificate", "/nonexistent/c.pem", "--key", FLEET},
         "cimhost: /nonexistent/c.pem: No such file or directory"},
        {"NoCredentials", {"serve", "--credentials", "/nonexistent/users"}, "/nonexistent/users"},
    };
}

INSTANTIATE_TEST_SUITE_P(Starts, RefusedStart, testing::ValuesIn(badStarts()),
                         [](const auto& row) { return row.param.name; });

/// A folder of class definitions of a test's own.
class Classes : public testing::Test {
protected:
    Classes() : folder(std::filesystem::temp_directory_path() / ("cimhost_mof_" + std::to_string(::getpid()))) {
        std::filesystem::create_directory(folder);
    }
    ~Classes() override { std::filesystem::remove_all(folder); }

    void takeOurs() const {
        const std::filesystem::path build = std::filesystem::path(PROGRAM).parent_path().parent_path();
        std::filesystem::copy(build / "share/merolt-cna-provider/mof", folder,
                              std::filesystem::copy_options::recursive);
    }

    const std::filesystem::path folder;
};

TEST_F(Classes, AnErrorInThemIsNamedWithItsLine) {
    std::ofstream(folder / "merolt.mof") << "class T_A { string a; };\nclass T_B : T_None { };\n";
    const Ended ended = cimhost({"--mof", folder.string(), "classes"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, StartsWith("cimhost: " + (folder / "merolt.mof").string() + ":2:"));
}

TEST_F(Classes, AnErrorInTheirPresentationIsNamedWithItsLine) {
    takeOurs();
    std::ofstream(folder / "cimhost.presentation") << "# first\n[Merolt_FCHBA_FCPort]\nlabel = port | {Colour}\n";
    const Ended ended = cimhost({"--fleet", FLEET, "--mof", folder.string(), "tree"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.errors, "cimhost: " + (folder / "cimhost.presentation").string() +
                                ":3: class Merolt_FCHBA_FCPort has no property \"Colour\"\n");
}

TEST_F(Classes, WithoutAPresentationObjectsAreShownByClassAndKey) {
    takeOurs();
    std::filesystem::remove(folder / "cimhost.presentation");
    const Ended tree = cimhost({"--fleet", FLEET, "--mof", folder.string(), "tree"});
    EXPECT_EQ(tree.status, 0) << tree.errors;
    EXPECT_THAT(tree.output, HasSubstr("\nMerolt_FCHBA_PortController MC1020R4K00317\n"));
    EXPECT_THAT(tree.output, Not(HasSubstr("Not connected")));
    const Ended table = cimhost({"--fleet", FLEET, "--mof", folder.string(), "enumerate", "Merolt_FCHBA_FCPort"});
    EXPECT_EQ(table.status, 0) << table.errors;
    EXPECT_THAT(table.output, StartsWith("ElementName "));
}

TEST(Program, ABadFleetIsNamedWithItsPlace) {
    const TemporaryFile fleet("{\"cards\": [{\"colour\": \"red\"}]}");
    const Ended ended = cimhost({"--fleet", fleet.path.string(), "classes"});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, StartsWith("cimhost: " + fleet.path.string()));
    EXPECT_EQ(lineCount(ended.errors), 1U);
}

} // namespace
} // namespace cimhost
