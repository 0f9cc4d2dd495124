#include <array>
#include <atomic>

#include "library_fixture.h"

namespace tavik {

namespace {

class LibraryThreads : public test::LibraryTest {};

std::atomic<int> alarms = 0;

int countAlarm(std::uint32_t, std::uint32_t, std::uint32_t, const char*) {
    ++alarms;
    return 0;
}

std::string fleetWithState(const std::string& state) {
    return R"({"cards": [{"ports": [{"storage": {"uuid": "u", "vpd": {}, "transceiver": {}, "state": ")" + state +
           R"("}, "ethernet": {"transceiver": {}, "fcoeLinkage": [{}], "ip": {"ipv6": ["2001:db8::1"]}}}]}]})";
}

/** Every query once, on a record of the caller's own: those of the tree may go with a swap. */
void askEverything(const test::LoadedLibrary& library) {
    TAVIK_DeviceRecord record{};
    record.handle = 1;
    std::array<std::uint8_t, 1024> buffer{};
    std::uint32_t size = 1024;
    char* text = nullptr;
    TAVIK_PortPropertyBlock block{};
    TAVIK_LinkProperties link{};
    TAVIK_IPProperties* ip = nullptr;
    TAVIK_FCoELinkage* linkage = nullptr;
    EXPECT_EQ(library.GetHbaDevicePortProperty(1, 0, &block), 0U);
    EXPECT_EQ(library.GetVpd(1, 0, buffer.data(), &size), 0U);
    EXPECT_EQ(library.RefreshDeviceStats(&record), 0U);
    EXPECT_EQ(library.GetSFPData(&record, buffer.data()), 0U);
    EXPECT_EQ(library.GetUUIDFromI2CVPD(&record, &text, &size), 0U);
    EXPECT_EQ(library.FreeMem(text), 0U);
    EXPECT_EQ(library.GetLinkProperties("eth0", &link), 0U);
    EXPECT_EQ(library.GetIPProperties("eth0", &ip), 0U);
    EXPECT_EQ(library.FreeMem(ip), 0U);
    EXPECT_EQ(library.GetFCoELinkage("eth0", &linkage, &size), 0U);
    EXPECT_EQ(library.FreeMem(linkage), 0U);
    EXPECT_NE(library.GetAdapterList(), nullptr);
}

TEST_F(LibraryThreads, QueriesUpdatesAndAlarmsGoTogether) {
    alarms = 0;
    start(fleetWithState("operational"));
    ASSERT_EQ(library.RegisterAlarmNotificationCallback(countAlarm), 0U);
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            while (!stop)
                askEverything(library);
        });
    threads.emplace_back([&] {
        while (!stop) {
            library.DidConfigChange();
            library.ResetConfigChange();
            EXPECT_EQ(library.UpdateBackupAdapterList(), 0U);
            EXPECT_EQ(library.SwapBackupToMainAdapterList(), 0U);
        }
    });
    for (int change = 1; change <= 10; ++change) {
        replaceFleet(fleetWithState(change % 2 ? "loopDown" : "operational"));
        EXPECT_TRUE(test::eventually([change] { return alarms >= change; }));
    }
    stop = true;
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(alarms, 10);
}

TEST_F(LibraryThreads, TheEndComesWhileQueriesAndAlarmsAreUnderWay) {
    for (int round = 0; round < 5; ++round) {
        start(fleetWithState("operational"));
        ASSERT_EQ(library.RegisterAlarmNotificationCallback(countAlarm), 0U);
        std::atomic<bool> stop = false;
        std::thread asker([&] {
            TAVIK_LinkProperties link{};
            while (!stop)
                library.GetLinkProperties("eth0", &link);
        });
        std::thread remover([&] { library.UnRegisterAlarmNotificationCallback(countAlarm); });
        replaceFleet(fleetWithState("loopDown"));
        EXPECT_EQ(library.Uninitialize(), 0U);
        stop = true;
        asker.join();
        remover.join();
    }
}

TEST_F(LibraryThreads, OnlyOneOfSeveralStartsSucceeds) {
    replaceFleet(fleetWithState("operational"));
    std::atomic<int> started = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            if (library.Initialize(0, 0) == 0) ++started;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(started, 1);
}

} // namespace

} // namespace tavik
