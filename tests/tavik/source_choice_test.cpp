#include "tavik/source_choice.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tavik/recording_folder.h"

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
              "source of adapters: expected \"host\", \"fleet:PATH\" or \"recording:PATH\", found \"fleet:\"");
}

TEST_F(SourceChoice, ARecordingNeedsAPathToAFolderOfOne) {
    const auto errorOf = [](const std::string& choice) {
        const auto made = makeSource(choice);
        const auto* error = std::get_if<FleetError>(&made);
        return error ? error->message : "no error";
    };
    EXPECT_NE(errorOf("recording:").find("found \"recording:\""), std::string::npos);
    EXPECT_EQ(errorOf("recording:/nonexistent"), "/nonexistent: no recorded tree: No such file or directory");
    std::ofstream(file_) << "a file";
    EXPECT_EQ(errorOf("recording:" + file_), file_ + ": no recorded tree: Not a directory");
}

class RecordingFolder : public SourceChoice {
protected:
    RecordingFolder() { std::filesystem::create_directory(file_); }
    ~RecordingFolder() override { std::filesystem::remove_all(file_); }
    std::string problem() const {
        const auto error = checkRecording(file_);
        return error ? error->message : "no error";
    }
};

TEST_F(RecordingFolder, HasAFolderSysOfItsOwn) {
    const auto missing = file_ + ": no recorded tree, which would have a folder \"sys\"";
    EXPECT_EQ(problem(), missing);
    const std::filesystem::path sys = std::filesystem::path(file_) / "sys";
    std::ofstream(sys) << "a file";
    EXPECT_EQ(problem(), missing);
    std::filesystem::remove(sys);
    std::filesystem::create_directory_symlink("/sys", sys);
    EXPECT_EQ(problem(), missing);
    std::filesystem::remove(sys);
    std::filesystem::create_directory(sys);
    EXPECT_EQ(problem(), "no error");
}

/** A user who may not look into folders of mode 0; root may. */
class Unprivileged {
public:
    Unprivileged() {
        if (before_ == 0 && seteuid(65534) != 0) ADD_FAILURE() << "cannot become another user";
    }
    ~Unprivileged() {
        if (before_ == 0 && seteuid(before_) != 0) std::abort();
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    const uid_t before_ = geteuid();
};

TEST_F(RecordingFolder, ThatMayNotBeReadIsNamed) {
    const auto sys = std::filesystem::path(file_) / "sys";
    std::filesystem::create_directory(sys);
    std::filesystem::permissions(sys, std::filesystem::perms::none);
    {
        const Unprivileged user;
        EXPECT_EQ(problem(), sys.string() + ": cannot be read: Permission denied");
    }
    std::filesystem::permissions(file_, std::filesystem::perms::none);
    {
        const Unprivileged user;
        EXPECT_EQ(problem(), file_ + ": no recorded tree: Permission denied");
    }
    std::filesystem::permissions(file_, std::filesystem::perms::owner_all);
    std::filesystem::permissions(sys, std::filesystem::perms::owner_all);
}

} // namespace

} // namespace tavik
