// A started library on a fleet file of its own, which a test can change under it.
//
// Fields of packed records stand at odd addresses, to which the checks must not bind references: the tests write
// EXPECT_EQ(+record.field, value), which hands over a copy.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "loaded_library.h"
#include "tests/becomes_true.h"

namespace tavik::test {

/** Keeps what is written to standard error while it lives. */
class StandardError {
public:
    explicit StandardError(const std::filesystem::path& file) : file_(file), before_(dup(STDERR_FILENO)) {
        const int captured = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
        dup2(captured, STDERR_FILENO);
        close(captured);
    }
    ~StandardError() {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    std::string text() const {
        std::ostringstream text;
        text << std::ifstream(file_).rdbuf();
        return text.str();
    }

    /** How often the words stand in what was written. */
    int count(const std::string& words) const {
        const auto all = text();
        int count = 0;
        for (auto at = all.find(words); at != std::string::npos; at = all.find(words, at + 1))
            ++count;
        return count;
    }

private:
    std::filesystem::path file_;
    int before_;
};

class LibraryTest : public ::testing::Test {
protected:
    LibraryTest() : folder_(std::filesystem::path(::testing::TempDir()) / ("tavik_" + std::to_string(getpid()))) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
        file_ = folder_ / "fleet.json";
        setenv("TAVIK_SOURCE", ("fleet:" + file_.string()).c_str(), 1);
    }
    ~LibraryTest() override {
        library.Uninitialize();
        std::filesystem::remove_all(folder_);
    }

    /** Replaces the file at once, as careful writers do. */
    void replaceFleet(const std::string& text) {
        const auto fresh = folder_ / "fleet.json.new";
        std::ofstream(fresh) << text;
        std::filesystem::rename(fresh, file_);
    }

    void start(const std::string& text) {
        replaceFleet(text);
        ASSERT_EQ(library.Initialize(0, 0), 0U);
    }

    bool changes() {
        return tests::becomesTrue([this] { return library.DidConfigChange() != 0; });
    }

    TAVIK_PhyPortEntry* port(int card = 0) {
        auto* adapter = library.GetAdapterList()->first;
        while (card-- > 0)
            adapter = adapter->next;
        return adapter->phyPorts->first;
    }
    TAVIK_DeviceRecord* device(int card = 0) { return &port(card)->protocols->first->storage.device; }

    std::uint8_t portState(std::uint32_t handle) {
        TAVIK_PortPropertyBlock block{};
        return library.GetHbaDevicePortProperty(handle, 0, &block) == 0 ? block.portState : 0;
    }
    std::uint32_t linkState(const char* deviceName) {
        TAVIK_LinkProperties link{};
        return library.GetLinkProperties(deviceName, &link) == 0 ? link.state : 0;
    }

    const LoadedLibrary library;
    std::filesystem::path folder_;
    std::filesystem::path file_;
};

} // namespace tavik::test
