// The command line itself: help, wrong words, where options may stand, what a shell completes.
#include "program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace cimhost {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::Not;
using testing::UnorderedElementsAre;
using testing_support::cimhost;
using testing_support::cimhostAtTerminal;
using testing_support::Ended;
using testing_support::lineCount;
using testing_support::run;
using testing_support::TemporaryFile;

const std::string port = "Merolt_FCHBA_FCPort";

struct WrongWords {
    std::string name;
    std::vector<std::string> words;
    std::string message;
};

void PrintTo(const WrongWords& row, std::ostream* out) { *out << row.name; }

class WrongCommandLine : public testing::TestWithParam<WrongWords> {};

TEST_P(WrongCommandLine, IsReportedInOneLineWithStatusTwo) {
    const Ended ended = cimhost(GetParam().words);
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "cimhost: " + GetParam().message + "\n");
}

TEST_P(WrongCommandLine, IsReportedInJsonIfAskedFor) {
    std::vector<std::string> words = GetParam().words;
    words.push_back("--json");
    const Ended ended = cimhost(words);
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(nlohmann::json::parse(ended.errors)["error"]["message"], GetParam().message);
}

std::vector<WrongWords> wrongWords() {
    return {
        {"NoSuchCommand", {"bogus"}, "there is no command \"bogus\"; see: cimhost help"},
        {"NoSuchCommandBelow", {"image", "bogus"}, "image: there is no command \"bogus\"; see: cimhost help image"},
        {"NoCommand", {}, "a command is missing; see: cimhost help"},
        {"NoCommandBelow", {"image"}, "image: a command is missing; see: cimhost help image"},
        {"NoClass", {"names"}, "CLASS is required; see: cimhost help names"},
        {"NoSuchHelp", {"help", "bogus"}, "there is no command \"bogus\"; see: cimhost help"},
        {"ClassInPlaceOfPath",
         {"get", port},
         port + " is a class; get takes the path of one of its instances, as `cimhost names " + port + "` prints them"},
    };
}

INSTANTIATE_TEST_SUITE_P(Words, WrongCommandLine, testing::ValuesIn(wrongWords()),
                         [](const auto& row) { return row.param.name; });

TEST(CommandLine, TheOptionJsonStandsBeforeOrBehindTheCommand) {
    const Ended before = cimhost({"--json", "--fleet", FLEET, "names", port});
    const Ended behind = cimhost({"names", port, "--fleet", FLEET, "--json"});
    EXPECT_EQ(before.status, 0) << before.errors;
    EXPECT_TRUE(nlohmann::json::parse(before.output).is_array());
    EXPECT_EQ(before.output, behind.output);
}

TEST(CommandLine, ACimErrorIsReportedInJsonIfAskedFor) {
    const Ended ended = cimhost({"names", "Merolt_Nothing", "--json", "--fleet", FLEET});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output, "");
    const std::string line = ended.errors.substr(ended.errors.find('{'));
    EXPECT_EQ(lineCount(line), 1U) << line;
    const nlohmann::json error = nlohmann::json::parse(line)["error"];
    EXPECT_EQ(error["code"], 5);
    EXPECT_EQ(error["name"], "CIM_ERR_INVALID_CLASS");
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr("Merolt_Nothing"));
}

TEST(CommandLine, TheVersionIsShown) {
    const Ended ended = cimhost({"--version"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.output, MatchesRegex("cimhost [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(CommandLine, HelpHasExamplesAndNamesEachCommand) {
    const Ended all = cimhost({"help"});
    EXPECT_EQ(all.status, 0);
    EXPECT_THAT(all.output, HasSubstr("Usage: cimhost [OPTIONS] SUBCOMMAND\n"));
    EXPECT_THAT(all.output, HasSubstr("\n  enumerate "));
    EXPECT_THAT(all.output, HasSubstr("Examples:\n  cimhost tree "));
    const Ended one = cimhost({"help", "image", "make"});
    EXPECT_EQ(one.status, 0);
    EXPECT_THAT(one.output, HasSubstr("Usage: cimhost image make"));
    EXPECT_THAT(one.output, HasSubstr("--image-version"));
    EXPECT_EQ(one.errors, "");
}

// Nobody listens there; what is wrong with the words would be told first.
TEST(CommandLine, TheServerMayBeNamedBeforeTheArguments) {
    const Ended ended = cimhost({"invoke", "--server", "http://127.0.0.1:1", "Merolt_FCHBA_SoftwareInstallationService",
                                 "InstallFromURI", "URI=x", "InstallOptions="});
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("http://127.0.0.1:1: no connection"));
}

TEST(CommandLine, QuietAndVerboseExcludeEachOther) {
    EXPECT_EQ(cimhost({"--quiet", "classes"}).status, 0);
    EXPECT_EQ(cimhost({"classes", "--verbose"}).status, 0);
    EXPECT_EQ(cimhost({"-q", "-v", "classes"}).status, 2);
}

TEST(CommandLine, OutputOfTheProviderIsShownWithVerbose) {
    const std::string printed = "cimhost: Merolt_NIC_Properties::reload, properties file name: ";
    const Ended verbose = cimhost({"--verbose", "names", port, "--fleet", FLEET});
    const Ended usual = cimhost({"names", port, "--fleet", FLEET});
    EXPECT_THAT(verbose.errors, HasSubstr(printed));
    EXPECT_THAT(usual.errors, Not(HasSubstr("Merolt_NIC_Properties")));
    EXPECT_EQ(verbose.output, usual.output);
}

TEST(CommandLine, OutputOfTheProviderIsANoteInJson) {
    const Ended ended = cimhost({"--verbose", "--json", "names", port, "--fleet", FLEET});
    std::vector<std::string> notes;
    std::istringstream lines(ended.errors);
    for (std::string line; std::getline(lines, line);)
        notes.push_back(nlohmann::json::parse(line).value("note", nlohmann::json::object()).value("message", ""));
    EXPECT_THAT(notes, Contains(HasSubstr("Merolt_NIC_Properties::reload")));
}

TEST(CommandLine, AQuietListenerPrintsNoNotes) {
    testing_support::Process listener({PROGRAM, "listen", "--port", "0", "--quiet"});
    testing_support::Process noisy({PROGRAM, "listen", "--port", "0"});
    EXPECT_TRUE(noisy.hasError("listening for indications")); // by now the other one has had its time, too
    listener.signal(SIGTERM);
    listener.wait();
    EXPECT_EQ(listener.errors(), "");
}

TEST(CommandLine, ClassesCanBeAskedForAssociationsAsAtAnyServer) {
    const Ended table = cimhost({"associators", port, "--fleet", FLEET});
    EXPECT_EQ(table.status, 0) << table.errors;
    EXPECT_THAT(table.output, HasSubstr("Merolt_FCHBA_PortController"));
    const Ended names = cimhost({"references", port, "--names", "--fleet", FLEET});
    EXPECT_EQ(names.status, 0) << names.errors;
    EXPECT_THAT(names.output, HasSubstr("Merolt_FCHBA_PortControllerFCPort\n"));
    EXPECT_THAT(names.output, Not(HasSubstr(" ")));
    EXPECT_EQ(cimhost({"associators", "Merolt_Nothing"}).status, 1);
}

TEST(CommandLine, SoftwareOfACardStandsInTheTreeOnce) {
    const Ended ended = cimhost({"tree", "--fleet", FLEET});
    const std::string line = "software Merolt CNA Adapter MC1020R4K00317 BIOS, version 3.31";
    EXPECT_THAT(ended.output, HasSubstr(line + " (2 objects)\n"));
    EXPECT_EQ(ended.output.find(line), ended.output.rfind(line));
}

/// A method of the storage side waits five seconds behind an update.
TEST(CommandLine, ATerminalShowsAWaitOfMoreThanASecond) {
    const TemporaryFile fleet;
    std::filesystem::copy_file(FLEET, fleet.path, std::filesystem::copy_options::overwrite_existing);
    const TemporaryFile image;
    ASSERT_EQ(cimhost({"image", "make", image.path.string(), "--force", "--model", "MC1020", "--image-version", "2.2.3",
                       "--date", "2013-04-30"})
                  .status,
              0);
    const std::string controllers = cimhost({"--fleet", FLEET, "names", "Merolt_FCHBA_PortController"}).output;
    const std::vector<std::string> update = {"--fleet",
                                             fleet.path.string(),
                                             "invoke",
                                             "Merolt_FCHBA_SoftwareInstallationService",
                                             "InstallFromURI",
                                             "URI=file://" + image.path.string(),
                                             "Target=" + controllers.substr(0, controllers.find('\n')),
                                             "InstallOptions="};
    const Ended seen = cimhostAtTerminal(update, 100);
    EXPECT_EQ(seen.status, 0) << seen.output;
    EXPECT_THAT(seen.output, HasSubstr("cimhost: waiting for InstallFromURI, 1 s"));
    std::vector<std::string> quietly = update;
    quietly.push_back("--quiet");
    EXPECT_THAT(cimhostAtTerminal(quietly, 100).output, Not(HasSubstr("waiting for")));
}

std::vector<std::string> completions(std::vector<std::string> words) {
    words.insert(words.begin(), "complete");
    std::istringstream lines(cimhost(words).output);
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);)
        found.push_back(line);
    return found;
}

TEST(Completion, KnowsCommandsAndTheirOptions) {
    EXPECT_THAT(completions({""}), IsSupersetOf({"serve", "names", "help", "tree"}));
    EXPECT_THAT(completions({"na"}), UnorderedElementsAre("names"));
    EXPECT_THAT(completions({"image", ""}), UnorderedElementsAre("make", "show"));
    EXPECT_THAT(completions({"enumerate", "--al"}), UnorderedElementsAre("--all"));
    EXPECT_THAT(completions({"enumerate", "--fl"}), UnorderedElementsAre("--fleet"));
}

TEST(Completion, KnowsClasses) {
    EXPECT_THAT(completions({"names", "Merolt_FCHBA_FCPort"}),
                UnorderedElementsAre("Merolt_FCHBA_FCPort", "Merolt_FCHBA_FCPortFCPortStatistics",
                                     "Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA", "Merolt_FCHBA_FCPortStatistics"));
    EXPECT_THAT(completions({"associators", "x", "--association", "Merolt_FCHBA_P"}),
                Contains("Merolt_FCHBA_PortControllerFCPort"));
}

TEST(Completion, KnowsTheSerialNumbersOfAFleet) {
    EXPECT_THAT(completions({"--fleet", FLEET, "fleet", "set-link", "MC"}), Contains("MC1020R4K00317"));
    EXPECT_THAT(completions({"--fleet", "=", FLEET, "fleet", "set-link", "MC"}), Contains("MC1020R4K00317"));
    EXPECT_THAT(completions({"fleet", "set-link", "MC1020R4K00317", "1", ""}),
                UnorderedElementsAre("down", "testing", "up"));
}

TEST(Completion, LeavesFilesToTheShell) {
    EXPECT_THAT(completions({"--fleet", "/tm"}), UnorderedElementsAre(":files"));
    EXPECT_THAT(completions({"image", "show", ""}), UnorderedElementsAre(":files"));
}

TEST(Completion, OffersNothingWhereNothingFits) {
    EXPECT_THAT(completions({"tree", ""}), UnorderedElementsAre());
    EXPECT_THAT(completions({"--mof", "/nonexistent", "bogus", ""}), UnorderedElementsAre());
    EXPECT_THAT(completions({}), Contains("names"));
}

TEST(Completion, WorksInBash) {
    const auto inBash = [](const std::string& words, int last) {
        return run({"/bin/bash", "-c",
                    "source \"$1\"; COMP_WORDS=($3); COMP_CWORD=$4; COMP_WORDS[0]=$2; _cimhost; "
                    "printf '%s\\n' \"${COMPREPLY[@]}\"",
                    "bash", COMPLETION, PROGRAM, words, std::to_string(last)});
    };
    EXPECT_EQ(inBash("cimhost enum", 1).output, "enumerate\n");
    EXPECT_EQ(inBash("cimhost names Merolt_NIC_Net", 2).output,
              "Merolt_NIC_NetworkPort\nMerolt_NIC_NetworkPortLANEndpoint\n");
    EXPECT_EQ(inBash("cimhost --fleet " FLEET, 2).output, FLEET "\n");
}

} // namespace
} // namespace cimhost
