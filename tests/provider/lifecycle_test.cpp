// The provider's life as its server and its log see it: factories, start, clean-up, and the ends of a bad start.
#include "adapters.h"
#include "broker_hooks.h"
#include "provider_host.h"
#include "test_support.h"

#include "indications/subscriptions.h"
#include "inventory/poll_thread_context.h"
#include "log/log.h"
#include "provider/locks.h"
#include "provider/polling_loop.h"

#include <cstdlib>
#include <future>
#include <mutex>
#include <stdexcept>

using namespace adapters;

namespace {

constexpr const char* computerSystem = "Merolt_Adapter_ComputerSystem";
constexpr CMPIBoolean serverGoesOn = 0;
constexpr CMPIBoolean serverGoesDown = 1;

class LifecycleTest : public ProviderTest {
protected:
    void TearDown() override { stop(); }

    void startAllInterfaces() {
        start();
        associationMI = createAssociationMI();
        methodMI = createMethodMI();
        indicationMI = createIndicationMI();
    }

    template <class Interface>
    CMPIStatus cleanUp(Interface*& interface, CMPIBoolean terminating) {
        cimhost::RequestScope scope(*broker);
        Interface* mi = std::exchange(interface, nullptr);
        return mi->ft->cleanup(mi, cimhost::ContextObject::make(scope.arena()), terminating);
    }

    /// The thread's first act in the management library; holds it there.
    void holdFirstBuild(Gate& gate) {
        tavikLibrary.onInitialize = [&gate] { gate.pass(); };
    }
};

/// The run with another server must not be one more with this.
TEST_F(LifecycleTest, ProviderWorksWithTheServerThatTheEnvironmentNames) {
    BrokerHooks hooks(*broker);
    start();
    onlyInstance(computerSystem);
    EXPECT_FALSE(hooks.takeTestedClasses().empty()) << "the provider asks another broker";
    const std::string server = brokerOfProvider(*broker)->bft->brokerName;
    EXPECT_EQ(server, std::getenv("MEROLT_TEST_SERVER") ? "Foreign server" : "cimhost");
    stop();
}

TEST_F(LifecycleTest, FourFactoriesHandOutOneProvider) {
    switchLogsOn();
    startAllInterfaces();
    ASSERT_NE(associationMI, nullptr);
    ASSERT_NE(methodMI, nullptr);
    ASSERT_NE(indicationMI, nullptr);
    EXPECT_EQ(associationMI->hdl, instanceMI->hdl);
    EXPECT_EQ(methodMI->hdl, instanceMI->hdl);
    EXPECT_EQ(indicationMI->hdl, instanceMI->hdl);
    EXPECT_EQ(occurrences(logLines(), "Merolt_CNA_Provider constructor was called"), 1U);
    EXPECT_EQ(occurrences(logLines(), "***** Merolt_CNA_Provider initialize was called *****"), 1U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Initialize(0)"), 1U);
}

TEST_F(LifecycleTest, AnyFactoryCanBeTheFirst) {
    indicationMI = createIndicationMI();
    ASSERT_NE(indicationMI, nullptr);
    services.waitUntilIdle();
    instanceMI = createInstanceMI();
    ASSERT_NE(instanceMI, nullptr);
    EXPECT_EQ(instanceMI->hdl, indicationMI->hdl);
    EXPECT_EQ(onlyInstance(computerSystem).className, computerSystem);
}

TEST_F(LifecycleTest, ASecondCallOfOneFactoryCountsAsWell) {
    start();
    CMPIInstanceMI* second = createInstanceMI();
    EXPECT_EQ(second, instanceMI);
    EXPECT_EQ(cleanUp(second, serverGoesDown).rc, CMPI_RC_OK);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 0U);
    EXPECT_EQ(cleanUp(instanceMI, serverGoesDown).rc, CMPI_RC_OK);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 1U);
}

TEST_F(LifecycleTest, TablesTellVersionAndName) {
    startAllInterfaces();
    EXPECT_EQ(instanceMI->ft->ftVersion, 200);
    EXPECT_EQ(instanceMI->ft->miVersion, 200);
    EXPECT_STREQ(instanceMI->ft->miName, "instanceMerolt_CNA_Provider");
    EXPECT_EQ(associationMI->ft->ftVersion, 200);
    EXPECT_EQ(associationMI->ft->miVersion, 200);
    EXPECT_STREQ(associationMI->ft->miName, "associationMerolt_CNA_Provider");
    EXPECT_EQ(methodMI->ft->ftVersion, 200);
    EXPECT_EQ(methodMI->ft->miVersion, 200);
    EXPECT_STREQ(methodMI->ft->miName, "methodMerolt_CNA_Provider");
    EXPECT_EQ(indicationMI->ft->ftVersion, 200);
    EXPECT_EQ(indicationMI->ft->miVersion, 200);
    EXPECT_STREQ(indicationMI->ft->miName, "indicationMerolt_CNA_Provider");
}

TEST_F(LifecycleTest, ServersEnableAndDisableCallsLeaveTheGateOfIndicationsAlone) {
    startAllInterfaces();
    cimhost::RequestScope scope(*broker);
    const CMPIContext* context = cimhost::ContextObject::make(scope.arena());
    EXPECT_EQ(indicationMI->ft->enableIndications(indicationMI, context).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_FALSE(merolt::gIndicationsEnabled);
    merolt::gIndicationsEnabled = true;
    EXPECT_EQ(indicationMI->ft->disableIndications(indicationMI, context).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_TRUE(merolt::gIndicationsEnabled);
}

TEST_F(LifecycleTest, AStartTakesTwoSecondsOfSleepAndDoesNotWaitForTheBuild) {
    Gate build;
    holdFirstBuild(build);
    instanceMI = createInstanceMI();
    ASSERT_NE(instanceMI, nullptr);
    build.waitForArrival();
    EXPECT_EQ(services.sleptHere(), 2000U);
    EXPECT_EQ(factoryStatus.rc, CMPI_RC_OK);
}

TEST_F(LifecycleTest, StartLogsItsSteps) {
    switchLogsOn();
    start();
    const std::vector<std::string> lines = logLines();
    EXPECT_TRUE(inOrder(lines, {
                                   "Merolt_CNA_Provider constructor was called",
                                   "***** Merolt_CNA_Provider constructor was called *****",
                                   "***** Merolt_CNA_Provider initialize was called *****",
                                   "Start Polling Loop",
                                   "Polling Loop Started",
                                   "***** Merolt_CNA_Provider initialize done *****",
                               }));
    EXPECT_NE(readFile("Merolt_CNA_Provider.log").find("initialize done *****\n\n\n"), std::string::npos);
}

TEST_F(LifecycleTest, TheLastOfFourCleanUpsEndsTheProvider) {
    switchLogsOn();
    startAllInterfaces();
    tavikLibrary.clearCalls();
    EXPECT_EQ(cleanUp(methodMI, serverGoesDown).rc, CMPI_RC_OK);
    EXPECT_EQ(cleanUp(associationMI, serverGoesDown).rc, CMPI_RC_OK);
    EXPECT_EQ(cleanUp(indicationMI, serverGoesDown).rc, CMPI_RC_OK);
    EXPECT_EQ(enumerateInstances("Merolt_FCHBA_Namespace").objects.size(), 2U) << "three of four interfaces are gone";
    EXPECT_FALSE(logHas("***** Merolt_CNA_Provider cleanup was called *****"));
    EXPECT_EQ(cleanUp(instanceMI, serverGoesDown).rc, CMPI_RC_OK);
    waitForEndedThreads();
    EXPECT_TRUE(inOrder(logLines(), {
                                        "***** Merolt_CNA_Provider cleanup was called *****",
                                        "Stop Polling Loop",
                                        "AdapterPollingLoop() thread has been killed",
                                    }));
    if (canJoinThreads()) {
        EXPECT_TRUE(inOrder(logLines(), {
                                            "AdapterPollingLoop() thread has been killed",
                                            "stopPollingLoop() calling joinThread",
                                            "stopPollingLoop() completed joinThread",
                                            "Entering Clear_CNA_List()",
                                        }));
        // The thread says so behind its last act, beside whoever waits for that act.
        EXPECT_TRUE(inOrder(logLines(), {
                                            "AdapterPollingLoop() thread has been killed",
                                            "AdapterPollingLoop() ending...",
                                            "stopPollingLoop() completed joinThread",
                                        }));
    }
    EXPECT_TRUE(inOrder(logLines(), {
                                        "AdapterPollingLoop() thread has been killed",
                                        "Entering Clear_CNA_List()",
                                        "Exiting Clear_CNA_List()",
                                        "***** Merolt_CNA_Provider cleanup done *****",
                                        "***** Merolt_CNA_Provider destructor was called *****",
                                        "Merolt_CNA_Provider destructor complete",
                                    }));
    const std::vector<std::string> ending = {"TAVIK_UnRegisterAlarmNotificationCallback", "TAVIK_Uninitialize"};
    EXPECT_EQ(tavikLibrary.calls(), ending);
    EXPECT_EQ(runningThreads(), 0U);
    // The start prepares two contexts. The thread gives back its own; not every server can take back an unused one.
    EXPECT_EQ(preparedContexts(), canReleaseContexts() ? 0U : 1U);
}

TEST_F(LifecycleTest, AnIdleServerMayUnloadTheProvider) {
    switchLogsOn();
    start();
    EXPECT_EQ(cleanUp(instanceMI, serverGoesOn).rc, CMPI_RC_OK);
    EXPECT_TRUE(inOrder(logLines(), {
                                        "***** Merolt_CNA_Provider isUnloadable was called *****",
                                        "***** Merolt_CNA_Provider cleanup was called *****",
                                        "Merolt_CNA_Provider destructor complete",
                                    }));
}

TEST_F(LifecycleTest, AfterTheLastCleanUpAFactoryMakesANewProvider) {
    start();
    stop();
    start();
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Initialize(0)"), 2U);
    EXPECT_EQ(onlyInstance(computerSystem).className, computerSystem);
}

TEST_F(LifecycleTest, CleanUpDuringTheFirstBuildOnlyLogsAndTheProviderGoesWhenItsThreadHasEnded) {
    switchLogsOn();
    Gate build;
    holdFirstBuild(build);
    instanceMI = createInstanceMI();
    build.waitForArrival();
    auto end = std::async(std::launch::async, [&] {
        services.adoptThisThread();
        stop();
    });
    EXPECT_EQ(end.wait_for(aMoment), std::future_status::timeout);
    EXPECT_TRUE(inOrder(logLines(), {
                                        "***** Merolt_CNA_Provider cleanup was called *****",
                                        "***** Merolt_CNA_Provider cleanup done *****",
                                        "***** Merolt_CNA_Provider destructor was called *****",
                                    }));
    EXPECT_FALSE(logHas("Entering Clear_CNA_List()"));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 0U);
    EXPECT_EQ(runningThreads(), 1U);
    build.open();
    ASSERT_EQ(end.wait_for(longEnough), std::future_status::ready);
    waitForEndedThreads();
    // The build ends in between: what is stopped and cleared stands between the destructor's own two lines.
    EXPECT_TRUE(inOrder(logLines(), {
                                        "***** Merolt_CNA_Provider cleanup done *****",
                                        "***** Merolt_CNA_Provider destructor was called *****",
                                        "Stop Polling Loop",
                                        "FCPort & PortController classes initialized...",
                                        "AdapterPollingLoop() thread has been killed",
                                        "Entering Clear_CNA_List()",
                                        "Merolt_CNA_Provider destructor complete",
                                    }));
    EXPECT_TRUE(logHas("AdapterPollingLoop() ending..."));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 1U);
    EXPECT_EQ(runningThreads(), 0U);
}

class BrokenServerTest : public LifecycleTest {
protected:
    BrokerHooks hooks{*broker};

    void TearDown() override { stop(); }

    void expectFailedStartAndThenASuccess() {
        EXPECT_EQ(createInstanceMI(), nullptr);
        EXPECT_EQ(factoryStatus.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(factoryStatus.msg, nullptr);
        EXPECT_EQ(tavikLibrary.calls(), std::vector<std::string>());
        hooks.beforeNewThread = nullptr;
        start();
        EXPECT_EQ(onlyInstance(computerSystem).className, computerSystem);
    }
};

TEST_F(BrokenServerTest, AnExceptionAtTheStartFailsTheFactoryAndTheNextOneTriesAgain) {
    switchLogsOn();
    hooks.beforeNewThread = [] { throw std::runtime_error("no thread"); };
    expectFailedStartAndThenASuccess();
    EXPECT_EQ(occurrences(logLines(), "Merolt_CNA_Provider constructor was called"), 2U);
    EXPECT_EQ(occurrences(logLines(), "Merolt_CNA_Provider destructor complete"), 1U);
}

TEST_F(BrokenServerTest, AStatusThrownAtTheStartIsReportedAsAPlainFailure) {
    hooks.beforeNewThread = [] { throw CmpiStatus(CMPI_RC_ERR_ACCESS_DENIED, "not here"); };
    expectFailedStartAndThenASuccess();
}

TEST_F(BrokenServerTest, FactoriesDoWithoutAPlaceForTheStatus) {
    hooks.beforeNewThread = [] { throw std::runtime_error("no thread"); };
    EXPECT_EQ(createInstanceMIWithoutStatus(), nullptr);
}

TEST_F(BrokenServerTest, WithoutThreadsThereIsNoInventoryAndNoError) {
    switchLogsOn();
    tavikLibrary.setFleet(fleet({card("S1", {storageFunction(1, 0xA107)})}));
    hooks.threads.newThread = nullptr;
    instanceMI = createInstanceMI();
    ASSERT_NE(instanceMI, nullptr);
    const Answer answer = enumerateInstances("Merolt_NIC_EthernetPort2");
    EXPECT_TRUE(answer.isOk());
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Initialize(0)"), 0U);
    stop();
    EXPECT_TRUE(logHas("***** Merolt_CNA_Provider cleanup done *****"));
    EXPECT_FALSE(logHas("Stop Polling Loop"));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 0U);
}

TEST_F(BrokenServerTest, AServerThatCannotJoinThreadsGetsTheProviderStoppedAllTheSame) {
    switchLogsOn();
    hooks.threads.joinThread = nullptr;
    start();
    stop();
    EXPECT_TRUE(inOrder(logLines(), {"AdapterPollingLoop() thread has been killed", "Entering Clear_CNA_List()",
                                     "Merolt_CNA_Provider destructor complete"}));
    EXPECT_FALSE(logHas("stopPollingLoop() calling joinThread"));
    hooks.joinLastThread();
}

/// A process that starts the provider for one question waits for what the fixed sleeps stand for.
class EventWaitsTest : public LifecycleTest {
protected:
    EventWaitsTest() { services.waitsByEvents = true; }

    /// Runs on a thread of its own, so that a wait that does not end fails one test alone.
    template <class Call>
    auto start(Call call) {
        return std::async(std::launch::async, [this, call] {
            services.adoptThisThread();
            call();
            services.dismissThisThread();
        });
    }

    BrokerHooks hooks{*broker};
};

TEST_F(EventWaitsTest, AStartWaitsUntilTheBuildHasTheLockAndNotForTheBuild) {
    Gate lock;
    Gate build;
    holdFirstBuild(build);
    std::future<void> holder;
    hooks.beforeNewThread = [&] {
        holder = std::async(std::launch::async, [&] {
            const std::lock_guard guard(*merolt::provider_lock);
            lock.pass();
        });
        lock.waitForArrival();
    };
    const auto creation = start([&] { instanceMI = createInstanceMI(); });
    EXPECT_EQ(creation.wait_for(aMoment), std::future_status::timeout);
    lock.open();
    ASSERT_EQ(creation.wait_for(longEnough), std::future_status::ready);
    const auto request = start([&] { onlyInstance(computerSystem); });
    EXPECT_EQ(request.wait_for(aMoment), std::future_status::timeout) << "a request comes before the build";
    build.open();
    EXPECT_EQ(request.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(services.sleptHere(), 0U);
}

TEST_F(EventWaitsTest, AStopWakesTheThreadAndGoesOnWhenItHasEnded) {
    switchLogsOn();
    instanceMI = createInstanceMI();
    onlyInstance(computerSystem);
    const auto end = start([&] { stop(); });
    ASSERT_EQ(end.wait_for(longEnough), std::future_status::ready);
    EXPECT_TRUE(inOrder(logLines(), {"Stop Polling Loop", "AdapterPollingLoop() thread has been killed",
                                     "***** Merolt_CNA_Provider cleanup done *****"}));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 1U);
    EXPECT_EQ(services.sleptHere(), 0U);
}

TEST_F(EventWaitsTest, AMethodWaitsForTheFirstBuildThroughTheLock) {
    Gate build;
    holdFirstBuild(build);
    instanceMI = createInstanceMI();
    const auto method = start([&] { invokeMethod("Merolt_FCHBA_SoftwareInstallationService", "None"); });
    EXPECT_EQ(method.wait_for(aMoment), std::future_status::timeout);
    build.open();
    EXPECT_EQ(method.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(services.sleptHere(), 0U);
}

TEST_F(EventWaitsTest, WithoutAThreadThereIsNothingToWaitFor) {
    hooks.threads.newThread = nullptr;
    const auto creation = start([&] { instanceMI = createInstanceMI(); });
    ASSERT_EQ(creation.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(services.sleptHere(), 0U);
}

/// What the variable of the environment asks for, as the system's own services read it.
class WaitsVariableTest : public testing::Test {
protected:
    bool areEvents(const char* value) {
        setenv("MEROLT_CNA_WAITS", value, 1);
        const bool answer = merolt::platform::Services().waitsForEvents();
        unsetenv("MEROLT_CNA_WAITS");
        return answer;
    }
};

TEST_F(WaitsVariableTest, OnlyEventsTakeTheClocksPlace) {
    EXPECT_TRUE(areEvents("events"));
    EXPECT_FALSE(areEvents("clock"));
    EXPECT_FALSE(areEvents(""));
    EXPECT_FALSE(merolt::platform::Services().waitsForEvents());
}

/// A mutex that cannot be made takes the process down.
struct MissingMutex {
    int mutexesBefore;
    const char* line;
};

void PrintTo(const MissingMutex& row, std::ostream* out) { *out << "after " << row.mutexesBefore; }

class MissingMutexDeathTest : public ProviderTest, public testing::WithParamInterface<MissingMutex> {};

TEST_P(MissingMutexDeathTest, EndsTheProcessWithStatusOneAfterALineInTheLog) {
    switchLogsOn();
    services.mutexesLeft = GetParam().mutexesBefore;
    services.mutexError = 12;
    EXPECT_EXIT(createInstanceMI(), testing::ExitedWithCode(1), "");
    const std::vector<std::string> lines = logLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(
    Mutexes, MissingMutexDeathTest,
    testing::Values(MissingMutex{0, "Error 12 Initializing provider_lock mutex"},
                    MissingMutex{1, "Error 12 Initializing enable_indications_mutex mutex"},
                    MissingMutex{2, "Error 12 Initializing properties_file_lock mutex"},
                    MissingMutex{3, "Error 12 Initializing properties_file_lock mutex"}, // the fourth says the third
                    MissingMutex{4, "Error 12 Initializing provider_lock mutex"}));      // the polling thread's own

using SilentDeathTest = ProviderTest;

TEST_F(SilentDeathTest, WithTheErrorLogOffAMissingThreadMutexEndsTheProcessWithoutALine) {
    services.mutexesLeft = 4;
    EXPECT_EXIT(createInstanceMI(), testing::ExitedWithCode(1), "");
    EXPECT_EQ(logLines(), std::vector<std::string>{"Merolt_CNA_Provider constructor was called"});
}

class MissingContextDeathTest : public ProviderTest {
protected:
    void expectEnd(PollThreadContext* record) {
        EXPECT_EXIT(merolt::AdapterPollingLoop(record), testing::ExitedWithCode(1), "");
        const std::vector<std::string> wanted = {"AdapterPollingLoop() starting",
                                                 "**** Error: Thread context not established for poll thread"};
        EXPECT_EQ(logLines(), wanted);
    }

    void SetUp() override { merolt::initializeLogging(); }
};

TEST_F(MissingContextDeathTest, APollingThreadWithoutRecordEndsTheProcess) { expectEnd(nullptr); }

TEST_F(MissingContextDeathTest, APollingThreadWithAnEmptyRecordEndsTheProcess) {
    PollThreadContext record;
    expectEnd(&record);
}

TEST_F(MissingContextDeathTest, APollingThreadWithoutProviderEndsTheProcess) {
    CmpiBroker server(const_cast<CMPIBroker*>(brokerOfProvider(*broker)));
    PollThreadContext record;
    record.broker = &server;
    record.context = std::make_unique<CmpiContext>(nullptr);
    expectEnd(&record);
}

} // namespace
