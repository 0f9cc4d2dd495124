// Requests, refreshes, link polls, alarms and subscriptions at the same time. Says most under ThreadSanitizer.
#include "adapters.h"
#include "fast_services.h"
#include "provider_host.h"
#include "test_support.h"

#include <atomic>
#include <cstdlib>
#include <thread>

using namespace adapters;

namespace {

using cimhost::SelectExpObject;

/// A moment, or what the environment asks for: `./check tsan` takes a minute.
std::chrono::milliseconds duration() {
    const char* seconds = std::getenv("MEROLT_SOAK_SECONDS");
    return seconds ? std::chrono::seconds(std::atoi(seconds)) : std::chrono::milliseconds(1500);
}

tavik::Fleet someFleet(std::uint32_t ports) {
    tavik::NicFunction first = nicFunction(1, 1);
    first.ip = tavik::IPConfiguration{};
    first.ip->firstList.resize(2);
    first.fcoeLinkage.resize(1);
    std::vector<tavik::Function> functions = {first};
    for (std::uint32_t port = 1; port <= ports; ++port)
        functions.emplace_back(storageFunction(port, 0xA107));
    return fleet({card("S1", std::move(functions)), card("S2", {nicFunction(2, 2)})});
}

class ConcurrencyTest : public ProviderTest {
protected:
    void SetUp() override {
        merolt::platform::replaceServices(&fastServices);
        writeFile("meroltcna.properties", "ErrorLog=1\nLinkStatusPollIntervalSeconds=0\n");
        tavikLibrary.setFleet(someFleet(2));
        // Every check finds a change: the trees of two and three ports take turns.
        tavikLibrary.setNextFleet(someFleet(3));
        tavikLibrary.onUpdateBackup = [this] { tavikLibrary.setNextFleet(someFleet(2 + ++updates % 2)); };
        tavikLibrary.onGetLinkProperties = [this](const char*, TAVIK_LinkProperties* link) {
            *link = TAVIK_LinkProperties{};
            link->state = 1 + ++polls % 2;
            return 0U;
        };
        instanceMI = createInstanceMI();
        methodMI = createMethodMI();
        indicationMI = createIndicationMI();
        ASSERT_NE(instanceMI, nullptr);
    }
    void TearDown() override {
        stop();
        merolt::platform::replaceServices(&services);
    }

    template <class Work>
    void run(Work work) {
        threads.emplace_back([this, work] {
            while (!isOver) {
                work();
                std::this_thread::yield();
            }
        });
    }

    void request(const char* className) {
        const Answer names = enumerateInstanceNames(className);
        const Answer instances = enumerateInstances(className);
        if (!names.isOk() || !instances.isOk() || names.doneCount != 1 || instances.doneCount != 1) ++failures;
        if (!names.objects.empty()) getInstance(className, {{"DeviceID", "nothing"}});
        ++requests;
    }

    void change() {
        if (modifyInstance("Merolt_FCHBA_FCPort").rc != CMPI_RC_ERR_NOT_SUPPORTED) ++failures;
        if (!invokeMethod("Merolt_FCHBA_FCPort", "Restart").isOk()) ++failures;
    }

    void subscribe() {
        cimhost::RequestScope scope(*broker);
        const CMPIContext* context = cimhost::ContextObject::make(scope.arena());
        const CMPISelectExp* query = SelectExpObject::make(scope.arena(), "SELECT * FROM CIM_AlertIndication", "WQL");
        const CMPIObjectPath* path = scope.make().path(implementationNamespace, "CIM_AlertIndication");
        indicationMI->ft->activateFilter(indicationMI, context, query, "CIM_AlertIndication", path, 1);
        indicationMI->ft->deActivateFilter(indicationMI, context, query, "CIM_AlertIndication", path, 1);
    }

    void raiseAlarm() {
        tavikLibrary.raiseAlarm(1, 0, 0, "port state");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }

    FastServices fastServices;
    std::atomic<std::uint32_t> updates = 0;
    std::atomic<std::uint32_t> polls = 0;
    std::atomic<int> requests = 0;
    std::atomic<int> failures = 0;
    std::atomic<bool> isOver = false;
    std::vector<std::jthread> threads;
};

TEST_F(ConcurrencyTest, RequestsAreAnsweredDuringRefreshesPollsAndAlarms) {
    testing::internal::CaptureStdout();
    run([this] { request("Merolt_FCHBA_FCPort"); });
    run([this] { request("Merolt_NIC_EthernetPort2"); });
    run([this] { request("Merolt_NIC_NetworkPort"); });
    run([this] { change(); });
    run([this] { subscribe(); });
    run([this] { raiseAlarm(); });
    std::this_thread::sleep_for(duration());
    isOver = true;
    threads.clear();
    const std::string alarms = testing::internal::GetCapturedStdout();
    stop();
    EXPECT_EQ(failures, 0);
    EXPECT_GT(requests, 0);
    EXPECT_GT(updates, 0U) << "no refresh took place";
    EXPECT_NE(alarms.find("Alarm generated: Device Number: 1; coreAlarmType: 0, stringParameter: port state\n"),
              std::string::npos);
    EXPECT_EQ(tavikLibrary.outstandingBlocks(), 0U);
    EXPECT_EQ(broker->fatalUnattachedCalls(), 0U);
}

} // namespace
