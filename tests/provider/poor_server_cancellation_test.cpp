// A server that cancels threads, its own as well as the provider's: the thread ends with every lock given back, and the
// next request is answered.
#include "poor_server_test.h"
#include "test_support.h"

#include <atomic>
#include <cstring>
#include <pthread.h>

namespace {

std::atomic<int> callsLeft = 0;
std::atomic<bool> isCancelled = false;

/// Whose calls are counted: threads of the server that make a request or load the provider, or the provider's own.
enum class Victim { request, pollingThread };
std::atomic<Victim> victim = Victim::request;
thread_local Victim thisThread = Victim::pollingThread;

/// Ahead of each of the server's functions: cancels the thread that makes the last call that is left.
void cancelAtLastCall(const char*) {
    if (thisThread != victim || --callsLeft != 0) return;
    isCancelled = true;
    pthread_cancel(pthread_self());
    pthread_testcancel();
}

void armCancellation(Victim chosen, unsigned n) {
    victim = chosen;
    callsLeft = static_cast<int>(n);
    isCancelled = false;
    plainBroker.before = cancelAtLastCall;
}

/// The calling thread sleeps as the test's own does.
class TestThread {
public:
    explicit TestThread(FakeServices& used) : services(used) { services.adoptThisThread(); }
    ~TestThread() { services.dismissThisThread(); }
    TestThread(const TestThread&) = delete;
    TestThread& operator=(const TestThread&) = delete;

private:
    FakeServices& services;
};

class CancellationTest : public PoorServerTest {
protected:
    void SetUp() override {
        switchLogsOn();
        thisThread = Victim::request;
    }

    void TearDown() override {
        plainBroker.before = nullptr;
        unload();
    }

    /// Does the work on a thread of its own, which is cancelled at the n-th call into the server.
    /// @return whether it came to that.
    bool isCancelledAt(unsigned n, const std::function<void()>& work) {
        struct Job {
            CancellationTest& test;
            const std::function<void()>& work;
        } job{*this, work};
        armCancellation(Victim::request, n);
        pthread_t thread{};
        const auto run = [](void* argument) -> void* {
            const auto* own = static_cast<Job*>(argument);
            const TestThread sleepy(own->test.services);
            thisThread = Victim::request;
            own->work();
            return nullptr;
        };
        EXPECT_EQ(pthread_create(&thread, nullptr, run, &job), 0);
        void* end = nullptr;
        EXPECT_EQ(pthread_join(thread, &end), 0);
        plainBroker.before = nullptr;
        EXPECT_EQ(end == PTHREAD_CANCELED, isCancelled.load());
        return isCancelled;
    }

    /// Cancels the request at each of its calls, and after each makes a good one.
    template <class Request>
    void survive(Request&& request) {
        const PlainAnswer usual = request();
        unsigned n = 1;
        while (isCancelledAt(n, [&] { request(); }) && !HasFailure()) {
            EXPECT_EQ(request(), usual) << "after call " << n;
            ++n;
        }
        EXPECT_EQ(usual.rc, CMPI_RC_OK);
        EXPECT_GT(n, 1U);
    }
};

TEST_F(CancellationTest, InEnumerationsGivesTheLocksBack) {
    loadAndBuild();
    for (const char* className :
         {fcPort, ethernetPort, computerSystem, "Merolt_FCHBA_ComputerSystemFCPort", "Merolt_NIC_RegisteredProfile"})
        survive([&] { return enumerate(className); });
}

TEST_F(CancellationTest, InGetInstanceGivesTheLocksBack) {
    loadAndBuild();
    survive([&] { return getPort(); });
}

TEST_F(CancellationTest, InAssociatorsGivesTheLocksBack) {
    loadAndBuild();
    survive([&] { return associatorsOfPort(); });
}

TEST_F(CancellationTest, InMethodsGivesTheLocksBack) {
    loadAndBuild();
    survive([&] { return install(); });
}

TEST_F(CancellationTest, InAFactoryLeavesNoProviderBehind) {
    unsigned n = 1;
    while (isCancelledAt(n, [&] { instances = make(Merolt_CNA_Provider_Create_InstanceMI); }) && !HasFailure()) {
        ASSERT_EQ(instances, nullptr) << "after call " << n;
        instances = make(Merolt_CNA_Provider_Create_InstanceMI);
        ASSERT_NE(instances, nullptr) << "after call " << n;
        services.waitUntilIdle();
        EXPECT_EQ(enumerate(fcPort), oneObject) << "after call " << n;
        EXPECT_EQ(cleanUp(std::exchange(instances, nullptr)), CMPI_RC_OK);
        ++n;
    }
    EXPECT_GT(n, 1U);
}

TEST_F(CancellationTest, OfThePollingThreadAnswersFromItsListsAndEndsWithTheCleanUp) {
    unsigned n = 1;
    for (;; ++n) {
        tavikLibrary.storage(1).property.state = tavik::PortOperational;
        const unsigned delivered = plainBroker.deliveredCount;
        loadAndBuild();
        subscribe();
        tavikLibrary.storage(1).property.state = tavik::PortLoopDown;
        tavikLibrary.raiseAlarm(1, 0, 0, "port state");
        armCancellation(Victim::pollingThread, n);
        services.wake(1);
        while (!isCancelled && plainBroker.deliveredCount == delivered)
            usleep(100);
        EXPECT_EQ(enumerate(fcPort), oneObject) << "after call " << n;
        unload();
        plainBroker.before = nullptr;
        ASSERT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), n);
        if (!isCancelled || HasFailure()) break;
    }
    EXPECT_GT(n, 1U);
}

} // namespace
