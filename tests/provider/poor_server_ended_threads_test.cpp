// A server that ends threads, its own as well as the provider's: by cancelling them, which waits until the provider's
// call is over, or in one of its functions, which the provider is unwound through. Every lock is given back, and the
// next request is answered.
#include "poor_server_test.h"
#include "test_support.h"

#include <atomic>
#include <cstring>
#include <pthread.h>

namespace {

/// How a thread is ended.
struct Way {
    const char* name;
    void (*end)();
    /// Whether the call of the provider comes to its end.
    bool letsFinish;
};

void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

const Way ways[] = {
    {"Cancelled",
     [] {
         pthread_cancel(pthread_self());
         pthread_testcancel();
     },
     true},
    {"EndedInTheServersFunction", [] { pthread_exit(PTHREAD_CANCELED); }, false},
};

/// Whose calls are counted: threads of the server while the provider answers or is made, or the provider's own.
enum class Victim { nobody, request, pollingThread };
std::atomic<Victim> victim = Victim::request;
thread_local Victim thisThread = Victim::pollingThread;

std::atomic<int> callsLeft = 0;
std::atomic<bool> wasReached = false;
std::atomic<void (*)()> endThread = nullptr;

/// Ahead of each of the server's functions: ends the thread that makes the last call that is left.
CMPIStatus endAtLastCall(const PlainCall*) {
    if (thisThread == victim && --callsLeft == 0) {
        wasReached = true;
        endThread.load()();
    }
    return {CMPI_RC_OK, nullptr};
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

/// Does the work on a thread of its own. @return whether the thread was ended.
bool isThreadEndedBy(const std::function<void()>& work) {
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        pthread_testcancel();
        return nullptr;
    };
    pthread_t thread{};
    EXPECT_EQ(pthread_create(&thread, nullptr, run, const_cast<std::function<void()>*>(&work)), 0);
    void* end = nullptr;
    EXPECT_EQ(pthread_join(thread, &end), 0);
    return end == PTHREAD_CANCELED;
}

class EndedThreadTest : public PoorServerTest, public testing::WithParamInterface<Way> {
protected:
    void SetUp() override {
        switchLogsOn();
        thisThread = Victim::nobody;
    }

    void TearDown() override {
        plainBroker.before = nullptr;
        unload();
    }

    /// Ends the chosen thread at its n-th call into the server from now on.
    void arm(Victim chosen, unsigned n) {
        endThread = GetParam().end;
        victim = chosen;
        callsLeft = static_cast<int>(n);
        wasReached = false;
        plainBroker.before = endAtLastCall;
    }

    /// Does the work on a thread of its own, which is ended at the n-th call. @return whether it came to that.
    bool isEndedAt(unsigned n, const std::function<void()>& work) {
        arm(Victim::request, n);
        const bool isEnded = isThreadEndedBy([&] {
            const TestThread sleepy(services);
            thisThread = Victim::nobody;
            work();
        });
        plainBroker.before = nullptr;
        EXPECT_EQ(isEnded, wasReached.load());
        return isEnded;
    }

    /// Ends the thread at each of the request's calls, and after each makes a good one.
    template <class Request>
    void survive(Request&& request) {
        const PlainAnswer usual = request();
        unsigned n = 0;
        for (bool isEnded = true; isEnded && !HasFailure();) {
            std::optional<PlainAnswer> given;
            beforeRequest = [] { thisThread = Victim::request; };
            afterRequest = [] { thisThread = Victim::nobody; };
            isEnded = isEndedAt(++n, [&] { given = request(); });
            EXPECT_EQ(given, !isEnded || GetParam().letsFinish ? std::optional(usual) : std::nullopt)
                << "at call " << n;
            beforeRequest = nullptr;
            afterRequest = nullptr;
            EXPECT_EQ(request(), usual) << "after call " << n;
        }
        EXPECT_EQ(usual.rc, CMPI_RC_OK);
        EXPECT_GT(n, 1U);
    }
};

TEST_P(EndedThreadTest, InEnumerationsGivesTheLocksBack) {
    loadAndBuild();
    for (const char* className :
         {fcPort, ethernetPort, computerSystem, "Merolt_FCHBA_ComputerSystemFCPort", "Merolt_NIC_RegisteredProfile"})
        survive([&] { return enumerate(className); });
}

TEST_P(EndedThreadTest, InGetInstanceGivesTheLocksBack) {
    loadAndBuild();
    survive([&] { return getPort(); });
}

TEST_P(EndedThreadTest, InAssociatorsGivesTheLocksBack) {
    loadAndBuild();
    survive([&] { return associatorsOfPort(); });
}

TEST_P(EndedThreadTest, InMethodsGivesTheLocksBack) {
    loadAndBuild();
    survive([&] { return install(); });
}

TEST_P(EndedThreadTest, InAFactoryLeavesAWholeProviderOrNone) {
    unsigned n = 0;
    for (bool isEnded = true; isEnded && !HasFailure();) {
        isEnded = isEndedAt(++n, [&] {
            thisThread = Victim::request;
            instances = make(Merolt_CNA_Provider_Create_InstanceMI);
        });
        EXPECT_EQ(instances != nullptr, !isEnded || GetParam().letsFinish) << "at call " << n;
        if (!instances) instances = make(Merolt_CNA_Provider_Create_InstanceMI);
        ASSERT_NE(instances, nullptr) << "after call " << n;
        services.waitUntilIdle();
        EXPECT_EQ(enumerate(fcPort), oneObject) << "after call " << n;
        EXPECT_EQ(cleanUp(std::exchange(instances, nullptr)), CMPI_RC_OK);
        EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), n);
    }
    EXPECT_GT(n, 1U);
}

/// A clean-up sleeps while the polling thread ends, joins it, and writes to its log: there a cancellation would come
/// in.
TEST_F(PoorServerTest, ACleanUpThatTheServerCancelsIsDoneAllTheSame) {
    switchLogsOn(); // writing a file is such a place, too
    loadAndBuild();
    services.afterSleep = [] { pthread_cancel(pthread_self()); };
    EXPECT_TRUE(isThreadEndedBy([&] {
        const TestThread sleepy(services);
        unload();
    }));
    services.afterSleep = nullptr;
    EXPECT_EQ(instances, nullptr);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 1U);
    loadAndBuild();
    EXPECT_EQ(enumerate(fcPort), oneObject);
    unload();
}

TEST_P(EndedThreadTest, OfTheProviderAnswersFromItsListsAndEndsWithTheCleanUp) {
    unsigned n = 0;
    for (bool isEnded = true; isEnded && !HasFailure();) {
        tavikLibrary.storage(1).property.state = tavik::PortOperational;
        loadAndBuild();
        subscribe();
        tavikLibrary.storage(1).property.state = tavik::PortLoopDown;
        tavikLibrary.raiseAlarm(1, 0, 0, "port state");
        arm(Victim::pollingThread, ++n);
        services.wake(1);
        while (!wasReached && !services.becomesIdle(std::chrono::milliseconds(1))) {
        }
        EXPECT_EQ(enumerate(fcPort), oneObject) << "after call " << n;
        cleanUpAll();
        isEnded = wasReached;
        plainBroker.before = nullptr;
        ASSERT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), n);
    }
    EXPECT_GT(n, 1U);
}

INSTANTIATE_TEST_SUITE_P(Ways, EndedThreadTest, testing::ValuesIn(ways),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
