#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "library_fixture.h"

#include "tavik/flash_image.h"
#include "tavik/fleet/writer_lock.h"
#include "tests/becomes_true.h"

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

TEST_F(LibraryThreads, QueriesUpdatesAndAlarmsRunTogether) {
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
        EXPECT_TRUE(tests::becomesTrue([change] { return alarms >= change; }));
    }
    stop = true;
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(alarms, 10);
}

std::string fleetOfCards(std::size_t count) {
    std::string cards;
    for (std::size_t card = 0; card < count; ++card)
        cards += (card == 0 ? R"({"modelName": "M", "ports": [{"storage": {"uuid": "u", "vpd": {}, "transceiver": {}},)"
                              R"("ethernet": {"fcoeLinkage": [{}], "ip": {"ipv6": ["2001:db8::1"]}}}]})"
                            : ", {}");
    return R"({"cards": [)" + cards + "]}";
}

std::size_t cardsIn(TAVIK_AdapterList* list) {
    std::size_t count = 0;
    for (auto* adapter = list ? list->first : nullptr; adapter; adapter = adapter->next)
        ++count;
    return count;
}

/** Calls as the provider makes them: requests and the swap of the trees one after the other, flash calls and the
 *  filling of the second tree too, and the questions whether something changed whenever it likes. */
class LibraryUnderAProvider : public LibraryThreads {
public:
    LibraryUnderAProvider() {
        FlashImage image;
        image.cardModel = "M";
        image.version = {2, 2, 3};
        image_ = std::get<Bytes>(encodeFlashImage(image));
    }

    void request() {
        const std::lock_guard lock(providerLock_);
        askEverything(library);
        cards_ = cardsIn(library.GetAdapterList());
    }

    void flash() {
        const std::lock_guard lock(providerLock_);
        const std::lock_guard updateLock(updateLock_);
        EXPECT_EQ(library.UpdateFlash(1, image_.data(), 0), statusOk);
    }

    void poll() {
        const bool isChanged = library.DidConfigChange() != 0;
        library.ResetConfigChange();
        if (!isChanged) return;
        {
            const std::lock_guard updateLock(updateLock_);
            EXPECT_EQ(library.UpdateBackupAdapterList(), 0U);
        }
        const std::lock_guard lock(providerLock_);
        EXPECT_EQ(library.SwapBackupToMainAdapterList(), 0U);
    }

    /** Between two steps the locks are free for a moment, as between two requests: a thread that took a lock again as
     *  soon as it gave it back would leave the others none of it. */
    std::thread repeat(void (LibraryUnderAProvider::*step)()) {
        return std::thread([this, step] {
            while (!stop_) {
                (this->*step)();
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        });
    }

protected:
    std::mutex providerLock_;
    std::mutex updateLock_;
    std::atomic<bool> stop_ = false;
    std::atomic<std::size_t> cards_ = 0;
    Bytes image_;
};

TEST_F(LibraryUnderAProvider, NoChangeIsLostBesideRequestsAndFlashCalls) {
    start(fleetOfCards(1));
    std::vector<std::thread> threads;
    threads.push_back(repeat(&LibraryUnderAProvider::poll));
    threads.push_back(repeat(&LibraryUnderAProvider::request));
    threads.push_back(repeat(&LibraryUnderAProvider::flash));
    for (std::size_t count = 2; count <= 8; ++count) {
        {
            const fleet::WriterLock onlyWriter(file_, std::chrono::minutes(1));
            EXPECT_TRUE(onlyWriter.isHeld()) << onlyWriter.reason();
            replaceFleet(fleetOfCards(count));
        }
        EXPECT_TRUE(tests::becomesTrue([&] { return cards_ == count; })) << "a change was lost";
    }
    stop_ = true;
    for (auto& thread : threads)
        thread.join();
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
