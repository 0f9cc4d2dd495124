// The polling thread: when it looks at the adapters, what it does when they changed, and who waits for whom.
#include "adapters.h"
#include "provider_host.h"
#include "test_support.h"

#include "inventory/cna_list.h"
#include "tavik/transceiver.h"
#include "tavik/vpd.h"

#include <algorithm>
#include <cstdlib>

using namespace adapters;

namespace {

using Calls = std::vector<std::string>;

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* computerSystem = "Merolt_Adapter_ComputerSystem";

tavik::Fleet smallFleet(std::uint32_t ports) {
    std::vector<tavik::Function> functions = {storageFunction(1, 0xA107)};
    for (std::uint32_t port = 1; port <= ports; ++port)
        functions.emplace_back(nicFunction(1, port));
    return fleet({card("S1", std::move(functions))});
}

class PollingTest : public ProviderTest {
protected:
    void TearDown() override { stop(); }

    void startWithInterval(int seconds) {
        writeFile("meroltcna.properties",
                  "DebugLog=1\nErrorLog=1\nLinkStatusPollIntervalSeconds=" + std::to_string(seconds) + "\n");
        tavikLibrary.setFleet(smallFleet(1));
        start();
        tavikLibrary.clearCalls();
    }

    /// Checks that the polling thread made since the last call of this.
    std::size_t takeChecks() {
        const std::size_t checks = tavikLibrary.callCount("TAVIK_DidConfigChange");
        tavikLibrary.clearCalls();
        return checks;
    }

    std::size_t position(const Calls& calls, const std::string& name) {
        return static_cast<std::size_t>(std::find(calls.begin(), calls.end(), name) - calls.begin());
    }
};

TEST_F(PollingTest, TheFirstBuildInitialisesTheLibraryAndThenBuildsTheEthernetSideFirst) {
    tavikLibrary.setFleet(smallFleet(1));
    start();
    const Calls calls = tavikLibrary.calls();
    ASSERT_GT(calls.size(), 3U);
    EXPECT_EQ(calls[0], "TAVIK_Initialize(0)");
    EXPECT_EQ(calls[1], "TAVIK_RegisterAlarmNotificationCallback");
    EXPECT_EQ(calls[2], "TAVIK_GetAdapterList");
    EXPECT_EQ(calls[3], "TAVIK_GetFCoELinkage") << "the CNA list is the first to be built";
    EXPECT_LT(position(calls, "TAVIK_GetFCoELinkage"), position(calls, "TAVIK_GetHbaDevicePortProperty"));
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "TAVIK_DidConfigChange"), 0);
}

TEST_F(PollingTest, TheFirstBuildIsLogged) {
    switchLogsOn();
    tavikLibrary.onInitialize = [&] { services.moveClock(7); };
    start();
    EXPECT_TRUE(inOrder(logLines(), {
                                        "AdapterPollingLoop() starting",
                                        "Merolt CNA CMPI provider, version: 1.5.1",
                                        "Entered Initialize_CNA_List()",
                                        "Exiting Initialize_CNA_List()",
                                        "Merolt_CNA_Provider::time taken to initialize devices: 7 seconds.",
                                        "FCPort & PortController classes initialized...",
                                    }));
}

TEST_F(PollingTest, ByDefaultTheAdaptersAreLookedAtWhenMoreThan180SecondsHavePassed) {
    start();
    services.pass(180);
    EXPECT_EQ(takeChecks(), 0U);
    services.pass(1);
    EXPECT_EQ(takeChecks(), 1U);
    services.pass(180);
    EXPECT_EQ(takeChecks(), 0U) << "the time of the last check is that of its pass";
    services.pass(1);
    EXPECT_EQ(takeChecks(), 1U);
}

TEST_F(PollingTest, ASettingChangesTheInterval) {
    startWithInterval(5);
    services.pass(5);
    EXPECT_EQ(takeChecks(), 0U);
    services.pass(1);
    EXPECT_EQ(takeChecks(), 1U);
}

TEST_F(PollingTest, AnIntervalOfZeroChecksAtEveryPassThatSeesTheClockMove) {
    startWithInterval(0);
    services.pass(0);
    EXPECT_EQ(takeChecks(), 0U);
    services.pass(1);
    services.pass(1);
    EXPECT_EQ(takeChecks(), 2U);
}

TEST_F(PollingTest, ANegativeIntervalChecksAtEveryPass) {
    startWithInterval(-1);
    services.pass(0);
    services.pass(0);
    EXPECT_EQ(takeChecks(), 2U);
}

TEST_F(PollingTest, AClockSetBackDelaysTheNextCheck) {
    startWithInterval(0);
    services.pass(-100);
    services.pass(100);
    EXPECT_EQ(takeChecks(), 0U);
    services.pass(1);
    EXPECT_EQ(takeChecks(), 1U);
}

class FirstReadingTest : public PollingTest {
public:
    void TestBody() override {
        writeFile("meroltcna.properties", "LinkStatusPollIntervalSeconds=5\n");
        tavikLibrary.onInitialize = [&] { writeFile("meroltcna.properties", "LinkStatusPollIntervalSeconds=10\n"); };
        start();
        services.pass(10);
        EXPECT_EQ(takeChecks(), 0U);
        services.pass(1);
        EXPECT_EQ(takeChecks(), 1U);
    }
};

// The settings are read once in the life of a process, so this takes one of its own.
TEST(PollingDeathTest, TheIntervalIsReadAfterTheFirstBuild) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto read = [] {
        FirstReadingTest().TestBody();
        std::_Exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(0), "");
}

TEST_F(PollingTest, WithoutAChangeNothingIsRebuiltAndLinksAreStillPolled) {
    startWithInterval(0);
    services.pass(1);
    const Calls wanted = {"TAVIK_DidConfigChange", "TAVIK_ResetConfigChange", "TAVIK_GetLinkProperties",
                          "TAVIK_GetTransceiverDMIData"};
    EXPECT_EQ(tavikLibrary.calls(), wanted);
    EXPECT_FALSE(logHas("gNeedRefresh flag is ON"));
}

TEST_F(PollingTest, AChangeIsActedOnAtTheNextCheckAndNotBefore) {
    startWithInterval(5);
    tavikLibrary.setNextFleet(smallFleet(2));
    services.pass(5);
    EXPECT_EQ(enumerateInstances(ethernetPort).objects.size(), 1U);
    services.pass(1);
    EXPECT_EQ(enumerateInstances(ethernetPort).objects.size(), 2U);
}

TEST_F(PollingTest, ARefreshUpdatesSwapsAndBuildsTheEthernetSideLast) {
    startWithInterval(0);
    tavikLibrary.setNextFleet(smallFleet(1));
    services.pass(1);
    const Calls calls = tavikLibrary.calls();
    EXPECT_EQ(calls[0], "TAVIK_DidConfigChange");
    EXPECT_EQ(calls[1], "TAVIK_ResetConfigChange");
    EXPECT_EQ(calls[2], "TAVIK_UpdateBackupAdapterList");
    EXPECT_EQ(calls[3], "TAVIK_SwapBackupToMainAdapterList");
    EXPECT_LT(position(calls, "TAVIK_SwapBackupToMainAdapterList"), position(calls, "TAVIK_GetHbaDevicePortProperty"));
    EXPECT_LT(position(calls, "TAVIK_GetHbaDevicePortProperty"), position(calls, "TAVIK_GetFCoELinkage"));
    EXPECT_LT(position(calls, "TAVIK_GetFCoELinkage"), position(calls, "TAVIK_GetLinkProperties"));
    EXPECT_EQ(calls.back(), "TAVIK_GetTransceiverDMIData") << "the link poll follows the refresh";
}

TEST_F(PollingTest, ARefreshIsLogged) {
    startWithInterval(0);
    tavikLibrary.setNextFleet(smallFleet(1));
    services.pass(1);
    EXPECT_TRUE(inOrder(logLines(), {
                                        "FCPort & PortController classes initialized...",
                                        "gNeedRefresh flag is ON",
                                        "About to call TAVIK_UpdateBackupAdapterList()",
                                        "After the call to TAVIK_UpdateBackupAdapterList()",
                                        "About to call TAVIK_SwapBackupToMainAdapterList()",
                                        "After the call to TAVIK_SwapBackupToMainAdapterList()",
                                        "Entering Clear_CNA_List()",
                                        "Exiting Clear_CNA_List()",
                                        "Entered Initialize_CNA_List()",
                                        "Exiting Initialize_CNA_List()",
                                        "After the call to buildFCPortList()",
                                    }));
}

TEST_F(PollingTest, ARefreshHappensOncePerChange) {
    startWithInterval(0);
    tavikLibrary.setNextFleet(smallFleet(1));
    services.pass(1);
    services.pass(1);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateBackupAdapterList"), 1U);
}

/// Classes whose instances all come from adapters.
constexpr const char* adapterClasses[] = {
    "Merolt_FCHBA_FCPort",
    "Merolt_FCHBA_PortController",
    "Merolt_FCHBA_FCPortStatistics",
    "Merolt_FCHBA_LogicalPortGroup",
    "Merolt_FCHBA_SCSIProtocolController",
    "Merolt_FCHBA_SCSIProtocolEndpointHBA",
    "Merolt_FCHBA_SCSIProtocolEndpointTarget",
    "Merolt_FCHBA_StorageExtent",
    "Merolt_FCHBA_SoftwareIdentity",
    "Merolt_Adapter_PhysicalPackage",
    "Merolt_Adapter_PhysicalConnector",
    "Merolt_Adapter_PhysicalPort",
    "Merolt_Adapter_Product",
    "Merolt_NIC_EthernetPort2",
    "Merolt_NIC_PortController",
    "Merolt_NIC_LANEndpoint",
    "Merolt_NIC_NetworkPort",
    "Merolt_NIC_IPProtocolEndpoint",
    "Merolt_NIC_SoftwareIdentity",
};

/// A card with something for every class.
tavik::Fleet fullFleet() {
    tavik::StorageFunction storage = storageFunction(1, 0xA110);
    storage.vpd = tavik::encodeVpd("Adapter", {{"SN", "V1"}, {"PN", "P1"}});
    storage.transceiver = tavik::makeTransceiver({"Vendor", "Part", "A", "M1", "240229"});
    storage.multiBootVersion = "V:2.01.37,D:09142012,A:Y,T:M";
    storage.targets.resize(1);
    storage.targets[0].luns.resize(1);
    tavik::NicFunction nic = nicFunction(1, 1);
    nic.ip = tavik::IPConfiguration{};
    return fleet({card("S1", {storage, nic})});
}

class EmptyTreeTest : public PollingTest, public testing::WithParamInterface<bool> {};

TEST_P(EmptyTreeTest, AfterASwapToAnEmptyTreeEveryListIsEmptyAndNothingFails) {
    writeFile("meroltcna.properties", "LinkStatusPollIntervalSeconds=0\n");
    tavikLibrary.setFleet(fullFleet());
    start();
    for (const char* className : adapterClasses)
        EXPECT_FALSE(enumerateInstances(className).objects.empty()) << className;
    tavik::Fleet empty;
    if (GetParam()) empty.cards = std::nullopt;
    tavikLibrary.setNextFleet(empty);
    services.pass(1);
    for (const char* className : adapterClasses) {
        const Answer answer = enumerateInstances(className);
        EXPECT_TRUE(answer.isOk());
        EXPECT_TRUE(answer.objects.empty()) << className;
    }
    EXPECT_EQ(merolt::g_CNAList, nullptr);
    EXPECT_EQ(enumerateInstances(computerSystem).objects.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Trees, EmptyTreeTest, testing::Bool(),
                         [](const auto& test) { return test.param ? "NoListAtAll" : "ListWithoutCards"; });

TEST_F(PollingTest, WhatThePhysicalClassesTakeFromTheEthernetSideIsGoneAfterARefresh) {
    writeFile("meroltcna.properties", "LinkStatusPollIntervalSeconds=0\n");
    tavik::NicFunction function = nicFunction(1, 1);
    function.transceiver = tavik::makeTransceiver({"Vendor", "Part", "A", "M1", "240229"});
    const tavik::Fleet adapters = fleet({card("S1", {function})});
    tavikLibrary.setFleet(adapters);
    start();
    EXPECT_EQ(enumerateInstances("Merolt_Adapter_PhysicalPackage").objects.size(), 1U);
    EXPECT_EQ(enumerateInstances("Merolt_Adapter_PhysicalConnector").objects.size(), 1U);
    tavikLibrary.setNextFleet(adapters);
    services.pass(1);
    EXPECT_EQ(enumerateInstances("Merolt_Adapter_PhysicalPackage").objects.size(), 0U);
    EXPECT_EQ(enumerateInstances("Merolt_Adapter_PhysicalConnector").objects.size(), 0U);
    EXPECT_EQ(enumerateInstances(ethernetPort).objects.size(), 1U) << "the Ethernet side itself is rebuilt";
}

TEST_F(PollingTest, ReadsGoOnWhileTheLibraryReadsTheHardwareAndMethodsAndChangesWait) {
    startWithInterval(0);
    Gate update;
    tavikLibrary.onUpdateBackup = [&] { update.pass(); };
    tavikLibrary.setNextFleet(smallFleet(2));
    services.wake(1);
    update.waitForArrival();
    EXPECT_EQ(enumerateInstances(fcPort).objects.size(), 1U);
    EXPECT_EQ(enumerateInstances(ethernetPort).objects.size(), 1U) << "the main tree still stands";
    methodMI = createMethodMI();
    auto change = std::async(std::launch::async, [&] { return modifyInstance(computerSystem); });
    EXPECT_EQ(change.wait_for(aMoment), std::future_status::timeout);
    auto method = std::async(std::launch::async, [&] { return invokeMethod(computerSystem, "Restart"); });
    EXPECT_EQ(method.wait_for(aMoment), std::future_status::timeout);
    update.open();
    ASSERT_EQ(change.wait_for(longEnough), std::future_status::ready);
    ASSERT_EQ(method.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(change.get().rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_TRUE(method.get().isOk());
    services.waitUntilIdle();
    EXPECT_EQ(enumerateInstances(ethernetPort).objects.size(), 2U);
}

TEST_F(PollingTest, ARequestWaitsForALinkPoll) {
    startWithInterval(0);
    Gate poll;
    tavikLibrary.onGetLinkProperties = [&](const char*, TAVIK_LinkProperties*) {
        poll.pass();
        return 1U;
    };
    services.wake(1);
    poll.waitForArrival();
    auto request = std::async(std::launch::async, [&] { return enumerateInstances(computerSystem); });
    EXPECT_EQ(request.wait_for(aMoment), std::future_status::timeout);
    poll.open();
    ASSERT_EQ(request.wait_for(longEnough), std::future_status::ready);
    EXPECT_TRUE(request.get().isOk());
    services.waitUntilIdle();
}

TEST_F(PollingTest, ARequestWaitsForTheRebuildOfARefresh) {
    startWithInterval(0);
    Gate rebuild;
    bool isHeld = false;
    tavikLibrary.onGetTransceiver = [&](const char*, std::uint32_t*, void*) {
        if (!std::exchange(isHeld, true)) rebuild.pass();
        return 1U;
    };
    tavikLibrary.setNextFleet(smallFleet(2));
    services.wake(1);
    rebuild.waitForArrival();
    auto request = std::async(std::launch::async, [&] { return enumerateInstances(ethernetPort); });
    EXPECT_EQ(request.wait_for(aMoment), std::future_status::timeout);
    rebuild.open();
    ASSERT_EQ(request.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(request.get().objects.size(), 2U);
    services.waitUntilIdle();
}

TEST_F(PollingTest, AStopDuringARefreshWaitsForItsEnd) {
    startWithInterval(0);
    Gate update;
    tavikLibrary.onUpdateBackup = [&] { update.pass(); };
    tavikLibrary.setNextFleet(smallFleet(1));
    services.wake(1);
    update.waitForArrival();
    auto end = std::async(std::launch::async, [&] {
        services.adoptThisThread();
        stop();
    });
    EXPECT_EQ(end.wait_for(aMoment), std::future_status::timeout);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_SwapBackupToMainAdapterList"), 0U);
    update.open();
    ASSERT_EQ(end.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_SwapBackupToMainAdapterList"), 1U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetLinkProperties"), 1U) << "the pass is finished before the thread ends";
    EXPECT_EQ(tavikLibrary.calls().back(), "TAVIK_Uninitialize");
}

TEST_F(PollingTest, AStopDuringTheSleepTakesNoFurtherCheck) {
    startWithInterval(0);
    stop();
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_DidConfigChange"), 0U);
    const std::vector<std::string> lines = logLines();
    EXPECT_TRUE(inOrder(lines, {"AdapterPollingLoop() thread has been killed", "AdapterPollingLoop() ending...", ""}));
    const auto contextLine = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.rfind("AdapterPollingLoop() calling detachThread(0x", 0) == 0;
    });
    ASSERT_NE(contextLine, lines.end());
    EXPECT_EQ((contextLine + 1)->rfind("AdapterPollingLoop() returned from detachThread(0x", 0), 0U);
}

TEST_F(PollingTest, TheThreadIsAttachedToTheServerAsLongAsItRuns) {
    startWithInterval(0);
    tavikLibrary.setNextFleet(smallFleet(2));
    services.pass(1);
    EXPECT_EQ(runningThreads(), 1U);
    EXPECT_EQ(broker->fatalUnattachedCalls(), 0U);
    EXPECT_EQ(broker->leakingUnattachedCalls(), 0U);
}

TEST_F(PollingTest, NoListKeepsABlockOfTheLibraryThroughRefreshAndStop) {
    tavik::NicFunction function = nicFunction(1, 1);
    function.ip = tavik::IPConfiguration{};
    function.ip->firstList.resize(2);
    function.fcoeLinkage.resize(1);
    tavik::StorageFunction storage = storageFunction(1, 0xA107);
    storage.uuid = "1-2-3";
    storage.multiBootVersion = "V:2.01.37,D:09142012,A:Y,T:M";
    const tavik::Fleet adapters = fleet({card("S1", {storage, function})});
    switchLogsOn();
    tavikLibrary.setFleet(adapters);
    start();
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    tavikLibrary.setNextFleet(adapters);
    services.pass(181);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_SwapBackupToMainAdapterList"), 1U);
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    stop();
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
}

} // namespace
