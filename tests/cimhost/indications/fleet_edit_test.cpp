#include "cimhost/cli/fleet_edit.h"

#include "../protocol/temporary_file.h"
#include "tavik/fleet/flash_writer.h"
#include "tavik/fleet/fleet_file.h"
#include "tavik/fleet/writer_lock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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
    ~FleetEdit() override { std::filesystem::remove(lockFile()); }

    std::filesystem::path lockFile() const { return file.path.string() + ".lock"; }
    std::string errorOf(const std::string& card, unsigned port, LinkState state, LinkSide side = LinkSide::both) {
        try {
            cimhost::cli::setLink({card, port, state, side, file.path.string()});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return {};
    }
    nlohmann::json port(std::size_t card, std::size_t place) const {
        return nlohmann::json::parse(contentOf(file.path))["cards"][card]["ports"][place];
    }

    TemporaryFile file{fleet};
};

// Writers of one fleet, each a process of its own with a part of the file that nobody else changes: what it wrote last
// is there as long as no other writer puts an older text in its place.
class FleetWriters : public FleetEdit {
protected:
    static constexpr std::size_t cards = 3;
    static constexpr int rounds = 40;

    FleetWriters() {
        nlohmann::json document;
        for (std::size_t card = 0; card < cards; ++card) {
            nlohmann::json ports;
            for (std::size_t place = 0; place < 2; ++place)
                ports.push_back({{"ethernet", {{"linkState", "up"}, {"flashVersion", "00.00.00"}}}});
            document["cards"].push_back(
                {{"serialNumber", "S" + std::to_string(card)}, {"modelName", "M"}, {"ports", ports}});
        }
        std::ofstream(file.path) << document;
    }

    /// One round of a writer; the state or version that it is to find afterwards.
    using Round = std::function<std::string(int round)>;

    void start(std::size_t card, std::size_t place, const char* property, const Round& round) {
        const pid_t writer = ::fork();
        if (writer != 0) {
            writers.push_back(writer);
            return;
        }
        for (int number = 1; number <= rounds; ++number) {
            const std::string expected = round(number);
            const std::string found = port(card, place)["ethernet"][property];
            if (found == expected) continue;
            std::cerr << property << " of card " << card << " is " << found << " after round " << number << '\n';
            ::_exit(1);
        }
        ::_exit(0);
    }

    void setLinks(std::size_t card, std::size_t place) {
        start(card, place, "linkState", [this, card, place](int round) -> std::string {
            const LinkState state = round % 2 == 0 ? LinkState::up : LinkState::down;
            const auto number = static_cast<unsigned>(place + 1);
            std::string error = errorOf("S" + std::to_string(card), number, state);
            if (!error.empty()) return error;
            return round % 2 == 0 ? "up" : "down";
        });
    }

    void flash(std::size_t card) {
        start(card, 1, "flashVersion", [this, card](int round) -> std::string {
            tavik::FlashImage image;
            image.cardModel = "M";
            image.version = {1, 2, static_cast<std::uint8_t>(round)};
            image.releaseDate = {2013, 4, 30};
            const auto isWanted = [card](const tavik::Card& wanted) {
                return wanted.serialNumber == "S" + std::to_string(card);
            };
            const auto written = tavik::fleet::flashFleetFile(file.path.string(), isWanted, image);
            if (const auto* fault = std::get_if<tavik::FlashFault>(&written)) return fault->reason;
            return "01.02." + std::string(round < 10 ? "0" : "") + std::to_string(round);
        });
    }

    bool haveEnded() {
        for (auto writer = writers.begin(); writer != writers.end();) {
            int status = 0;
            if (::waitpid(*writer, &status, WNOHANG) == 0) {
                ++writer;
                continue;
            }
            EXPECT_EQ(status, 0) << "a writer missed what it wrote";
            writer = writers.erase(writer);
        }
        return writers.empty();
    }

    std::vector<pid_t> writers;
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

TEST_F(FleetEdit, AMissingCardOrPortIsAnErrorAndLeavesTheFileAlone) {
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

TEST_F(FleetEdit, AFileThatIsNotThereOrCannotBeWrittenIsNamed) {
    const TemporaryFile gone;
    std::filesystem::remove(gone.path);
    const auto change = [](const std::filesystem::path& path) {
        cimhost::cli::setLink({"S1", 1, LinkState::down, LinkSide::both, path.string()});
    };
    EXPECT_THAT([&] { change(gone.path); },
                testing::ThrowsMessage<std::runtime_error>(gone.path.string() + ": No such file or directory"));
    EXPECT_THAT([&] { change(file.path.parent_path()); },
                testing::ThrowsMessage<std::runtime_error>(HasSubstr("not a regular file")));
    const std::filesystem::path beside = file.path.string() + ".unfinished";
    std::filesystem::create_directory(beside);
    EXPECT_THAT([&] { change(file.path); }, testing::ThrowsMessage<std::runtime_error>(HasSubstr(beside.string())));
    std::filesystem::remove(beside);
    EXPECT_EQ(contentOf(file.path), fleet);
}

TEST_F(FleetEdit, AReaderOfTheFolderDoesNotDelayIt) {
    const int folder = ::open(file.path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(folder, LOCK_SH), 0);
    EXPECT_EQ(errorOf("S1", 1, LinkState::down), "");
    ::close(folder);
}

TEST_F(FleetEdit, AnotherWriterThatNeverEndsIsReported) {
    const tavik::fleet::WriterLock other(file.path);
    EXPECT_THAT(errorOf("S1", 1, LinkState::down), HasSubstr(": somebody else is changing it"));
    EXPECT_EQ(contentOf(file.path), fleet);
}

TEST_F(FleetEdit, ALinkStaysALink) {
    const TemporaryFile link;
    std::filesystem::remove(link.path);
    std::filesystem::create_symlink(file.path, link.path);
    cimhost::cli::setLink({"S1", 1, LinkState::down, LinkSide::both, link.path.string()});
    EXPECT_TRUE(std::filesystem::is_symlink(link.path));
    EXPECT_EQ(port(0, 0)["ethernet"]["linkState"], "down");
}

TEST_F(FleetWriters, LoseNothingToEachOther) {
    for (std::size_t card = 0; card < cards; ++card) {
        setLinks(card, 0);
        setLinks(card, 1);
        flash(card);
    }
    while (!haveEnded()) {
        const tavik::FleetOrError read = tavik::readFleetFile(file.path.string());
        const auto* error = std::get_if<tavik::FleetError>(&read);
        EXPECT_EQ(error, nullptr) << error->message;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    for (std::size_t card = 0; card < cards; ++card) {
        for (std::size_t place = 0; place < 2; ++place) {
            EXPECT_EQ(port(card, place)["ethernet"]["flashVersion"], "01.02." + std::to_string(rounds));
            EXPECT_EQ(port(card, place)["ethernet"]["linkState"], "up");
        }
    }
}
