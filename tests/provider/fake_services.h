// The operating system as a test sees it: a clock that moves when the test says so, and a host with a settable name.
#pragma once

#include "platform/platform.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <thread>

/// Sleeping costs the test's own threads nothing; the polling thread sleeps until the test lets a second pass.
class FakeServices : public merolt::platform::Services {
public:
    FakeServices() { adoptThisThread(); }

    std::time_t now() override;
    void sleepMilliseconds(unsigned milliseconds) override;
    void sleepUntilNotified(merolt::platform::Wakeup& wakeup, unsigned milliseconds) override;
    bool waitsForEvents() override { return waitsByEvents; }
    std::optional<std::string> hostName() override { return name; }
    std::optional<std::vector<std::uint8_t>> firstAddress(const std::string& hostName) override {
        lookedUpNames.push_back(hostName);
        return address;
    }
    std::string installLocation() override { return location; }
    std::string setting(const std::string& settingsName) override { return settings[settingsName]; }
    std::string wantedSystemName() override { return settings["SystemName"]; }
    bool fileExists(const char* path) override {
        const bool exists = Services::fileExists(path);
        if (afterFileCheck) afterFileCheck();
        return exists;
    }
    int mutexAvailable() override { return mutexesLeft-- > 0 ? 0 : mutexError; }

    /// Waits until the polling thread sleeps with nothing left to wake it.
    void waitUntilIdle();
    /// Moves the clock and lets the polling thread make one pass.
    void pass(std::time_t seconds);
    /// The same without waiting for the pass to end.
    void wake(std::time_t seconds);
    /// Whether the polling thread went to sleep within the time.
    bool becomesIdle(std::chrono::milliseconds limit);
    /// Moves the clock and wakes nobody.
    void moveClock(std::time_t seconds);
    /// Lets the calling thread sleep as the test's own thread does.
    void adoptThisThread();
    /// Ends that, before the thread does: a later one may get its number.
    void dismissThisThread();
    /// Milliseconds that the test's own threads have slept so far.
    unsigned long sleptHere();
    /// Called after each sleep of the test's own threads, if set.
    std::function<void()> afterSleep;

    /// Called after each look for a file, if set: between this look and the file's use.
    std::function<void()> afterFileCheck;

    std::optional<std::string> name = "testhost";
    std::optional<std::vector<std::uint8_t>> address = std::vector<std::uint8_t>{192, 0, 2, 10};
    /// What was asked of firstAddress, by whoever builds the lists.
    std::vector<std::string> lookedUpNames;
    std::string location;
    /// Then a notification is all that ends a sleep which could have one, for as long as a test may take.
    bool waitsByEvents = false;
    /// By name, as the host's administrator set them for the provider. Nothing of this machine's own is read.
    inline static std::map<std::string, std::string> settings;
    int mutexesLeft = 1000;
    int mutexError = 12;

private:
    bool idle() const { return sleeping && wakeUps == 0; }

    std::set<std::thread::id> testThreads;
    unsigned long slept = 0;
    std::mutex mutex;
    std::condition_variable changed;
    std::time_t time = 1700000000;
    bool sleeping = false;
    int wakeUps = 0;
};
