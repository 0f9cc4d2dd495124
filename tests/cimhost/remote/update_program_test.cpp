// The command cimhost update: what it refuses, what it writes, and what it says where one of two cards fails.
#include "../protocol/program.h"
#include "../protocol/temporary_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing_support::cimhost;
using testing_support::cimhostAtTerminal;
using testing_support::Ended;
using testing_support::Process;
using testing_support::TemporaryFile;
using testing_support::urlOf;
using Json = nlohmann::ordered_json;

void replaceAll(std::string& text, std::string_view part, std::string_view by) {
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + by.size()))
        text.replace(place, part.size(), by);
}

/// The demonstration fleet with a second card of the first one's model, whose flash cannot be written.
std::string fleetWithAFailingCard() {
    std::ifstream file(FLEET);
    Json fleet = Json::parse(file);
    std::string text = fleet["cards"][0].dump();
    replaceAll(text, "00317", "00318");
    replaceAll(text, "10:31:7", "10:31:8");
    replaceAll(text, ":\"eth", ":\"second");
    Json second = Json::parse(text);
    second["adapterId"] = 900;
    second["storageDefaults"]["failures"]["flashUpdate"] = 17;
    second["ethernetDefaults"]["failures"]["flashUpdate"] = 17;
    fleet["cards"].push_back(second);
    return fleet.dump(2);
}

class Update : public testing::Test {
protected:
    Update() : fleet(fleetWithAFailingCard()) { makeImage("MC1020", "2.2.3"); }

    void makeImage(const std::string& model, const std::string& version) {
        cimhost({"image", "make", image.path.string(), "--force", "--model", model, "--image-version", version,
                 "--date", "2013-04-30", "--firmware", "8.1.0", "--bios", "3.41"});
    }

    Ended update(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--fleet", fleet.path.string(), "update", image.path.string()});
        return cimhost(words);
    }

    [[nodiscard]] std::string content() const {
        std::ifstream file(fleet.path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const TemporaryFile fleet;
    const TemporaryFile image;
};

TEST_F(Update, ShowsTheVersionsBeforeAndAfter) {
    const Ended ended = update({"--card", "MC1020R4K00317", "--yes"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("  version: 2.2.3\n"));
    EXPECT_THAT(ended.output, HasSubstr("card MC1020R4K00317, MC1020, by InstallFromURI\n"));
    EXPECT_THAT(ended.output, HasSubstr("  Merolt CNA Adapter MC1020R4K00317 Flash Image: 2.1.37\n"));
    EXPECT_THAT(ended.output, HasSubstr("MC1020R4K00317: updated\nSoftware "));
    EXPECT_THAT(ended.output, testing::ContainsRegex("Flash Image +2\\.1\\.37 +2\\.2\\.3\n"));
}

TEST_F(Update, OfTwoCardsTheSecondFailsAndTheFirstStaysUpdated) {
    const Ended ended =
        update({"--card", "MC1020R4K00317", "--card", "MC1020R4K00318", "--card", "MC1020R4K00317", "--yes"});
    EXPECT_EQ(ended.status, 5) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("\nMC1020R4K00317: updated\n"));
    EXPECT_THAT(ended.output, HasSubstr("\nMC1020R4K00318: failed: InstallFromURI answered 2"));
    EXPECT_THAT(ended.output, HasSubstr("\nMC1020R4K00317: untouched\n"));
    EXPECT_THAT(ended.errors, HasSubstr("MC1020R4K00318: InstallFromURI answered 2"));
    const Ended versions =
        cimhost({"--fleet", fleet.path.string(), "enumerate", "Merolt_FCHBA_SoftwareIdentity", "--all"});
    EXPECT_THAT(versions.output, HasSubstr("VersionString: 2.2.3")) << "the first";
    EXPECT_THAT(versions.output, HasSubstr("VersionString: 2.1.37")) << "the second";
}

TEST_F(Update, WithJsonPrintsOneDocument) {
    const Ended ended = update({"--card", "MC1020R4K00318", "--yes", "--json"});
    EXPECT_EQ(ended.status, 4) << ended.errors;
    const Json answer = Json::parse(ended.output);
    EXPECT_EQ(answer["image"]["version"], "2.2.3");
    EXPECT_EQ(answer["cards"][0]["state"], "failed");
    EXPECT_EQ(answer["cards"][0]["server"], nullptr);
}

TEST_F(Update, BadArgumentsAreRefusedBeforeAnythingIsWritten) {
    const std::string before = content();
    const auto refusal = [this](const std::vector<std::string>& words) {
        const Ended ended = update(words);
        EXPECT_EQ(ended.status, 2) << ended.output;
        return ended.errors;
    };
    EXPECT_THAT(refusal({"--card", "MC1020R4K00317", "--card", "A12345", "--yes"}),
                HasSubstr("A12345 is a MF0402, and the image is for MC1020"));
    EXPECT_THAT(refusal({"--card", "NOTHING", "--yes"}), HasSubstr("there is no card with the serial number NOTHING"));
    EXPECT_THAT(refusal({"--card", "MC1020R4K00317"}),
                HasSubstr("nobody can be asked here: --yes agrees to the update"));
    std::ofstream(image.path) << "no image";
    EXPECT_THAT(refusal({"--card", "MC1020R4K00317", "--yes"}), HasSubstr("cimhost: "));
    EXPECT_EQ(content(), before);
}

TEST_F(Update, WithoutConsentNothingIsWritten) {
    const std::string before = content();
    const Ended ended = testing_support::run(
        {"/bin/sh", "-c", "script -qec \"'$0' --fleet '$1' update '$2' --card MC1020R4K00317\" /dev/null <<E\nn\nE",
         PROGRAM, fleet.path.string(), image.path.string()});
    EXPECT_THAT(ended.output, HasSubstr("write the flash of 1 card? [y/N] ")) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("nothing was written"));
    EXPECT_EQ(content(), before);
}

/// A server whose provider looks at its adapters all the time.
class RemoteUpdate : public Update {
protected:
    RemoteUpdate() {
        std::filesystem::create_directory(location);
        std::ofstream(location / "meroltcna.properties") << "LinkStatusPollIntervalSeconds=0\n";
    }
    ~RemoteUpdate() override { std::filesystem::remove_all(location); }

    void start(const std::vector<std::string>& options) {
        // It reads its settings where it is started.
        std::vector<std::string> words = {"/bin/sh",           "-c",      "cd \"$0\" && exec \"$@\"",
                                          location.string(),   PROGRAM,   "--fleet",
                                          fleet.path.string(), "serve",   "--listen",
                                          "127.0.0.1:0",       "--state", "",
                                          "--anonymous-writes"};
        words.insert(words.end(), options.begin(), options.end());
        server = std::make_unique<Process>(words);
        url = urlOf(*server);
    }

    Ended updateThere(std::vector<std::string> words) const {
        words.insert(words.begin(), {"update", image.path.string(), "--server", url, "--yes"});
        return cimhost(words);
    }

    const std::filesystem::path location = fleet.path.string() + ".location";
    std::unique_ptr<Process> server;
    std::string url;
};

TEST_F(RemoteUpdate, SendsBytesWhereTheServiceTakesThem) {
    start({"--bare-arrays"});
    const Ended ended = updateThere({"--card", "MC1020R4K00317"});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("card MC1020R4K00317 at " + url + ", MC1020, by InstallFromByteStream\n"));
    EXPECT_THAT(ended.output, testing::ContainsRegex("Flash Firmware +02\\.01\\.37 +02\\.02\\.03\n"));
}

TEST_F(RemoteUpdate, NamesAFileOfThatHostWhereItIsTold) {
    start({});
    const Ended ended = updateThere({"--card", "MC1020R4K00317", "--path", image.path.string()});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr(", by InstallFromURI\n"));
    EXPECT_THAT(ended.output, testing::ContainsRegex("Flash Image +2\\.1\\.37 +2\\.2\\.3\n"));
}

TEST_F(RemoteUpdate, ACardWithoutAServiceForBytesNeedsAPath) {
    start({});
    makeImage("MF0402", "2.2.3");
    EXPECT_THAT(updateThere({"--card", "A12345"}).errors,
                HasSubstr("its service takes no bytes; copy the image to that host"));
}

TEST_F(RemoteUpdate, WhereTheServerTypesItsArraysThePathIsSuggested) {
    start({});
    const Ended ended = updateThere({"--card", "MC1020R4K00317"});
    EXPECT_EQ(ended.status, 4);
    EXPECT_THAT(ended.errors, HasSubstr("cannot do it by bytes: try --path"));
}

TEST_F(RemoteUpdate, ACardAtTwoServersIsRefused) {
    start({});
    const std::string other = "http://localhost" + url.substr(url.rfind(':'));
    EXPECT_THAT(updateThere({"--card", "MC1020R4K00317", "--server", other}).errors,
                HasSubstr("the card MC1020R4K00317 is at " + url + " and at " + other));
}

} // namespace
} // namespace cimhost
