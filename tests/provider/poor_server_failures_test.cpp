// A server whose functions throw, and a host whose memory runs out, at every place where they can: the answer is a
// status, and the next request finds everything as it should be.
#include "failing_memory.h"
#include "poor_server_test.h"
#include "test_support.h"

#include <atomic>
#include <cstring>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What goes wrong, at the n-th occasion from now on.
struct Trouble {
    const char* name;
    void (*arm)(unsigned n);
    /// @return whether it went wrong. Ends the effect.
    bool (*disarm)();
};

void PrintTo(const Trouble& trouble, std::ostream* out) { *out << trouble.name; }

std::atomic<int> callsLeft = 0;
std::atomic<bool> hasThrown = false;

bool isNow() {
    if (--callsLeft != 0) return false;
    hasThrown = true;
    return true;
}

template <PlainHook Hook>
void armHook(unsigned n) {
    callsLeft = static_cast<int>(n);
    hasThrown = false;
    plainBroker.before = Hook;
}

bool disarmHook() {
    plainBroker.before = nullptr;
    return hasThrown;
}

CMPIStatus throwError(const PlainCall* call) {
    if (isNow()) throw std::runtime_error(call->function);
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus throwNumber(const PlainCall*) {
    if (isNow()) throw 1;
    return {CMPI_RC_OK, nullptr};
}

// A status of another library's making, as C++ servers have them.
CMPIStatus throwPlainStatus(const PlainCall*) {
    if (isNow()) throw CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, nullptr};
    return {CMPI_RC_OK, nullptr};
}

const Trouble troubles[] = {
    {"memory runs out", failAllocation, allocationFailed},
    {"the server throws an error", armHook<throwError>, disarmHook},
    {"the server throws a number", armHook<throwNumber>, disarmHook},
    {"the server throws a plain status", armHook<throwPlainStatus>, disarmHook},
};

class TroubleTest : public PoorServerTest, public testing::WithParamInterface<Trouble> {
protected:
    void TearDown() override {
        plainBroker.before = nullptr;
        unload();
    }

    /// Requests that read lists as they are live on the stack.
    bool mayNeedNoMemory() const { return GetParam().arm == failAllocation; }

    /// Makes the request once for each occasion, and after each a good one.
    /// @return how many occasions there were.
    template <class Request>
    unsigned survive(Request&& request) {
        const PlainAnswer usual = request();
        for (unsigned n = 1;; ++n) {
            bool wentWrong = false;
            beforeRequest = [&] { GetParam().arm(n); };
            afterRequest = [&] { wentWrong = GetParam().disarm(); };
            request();
            beforeRequest = nullptr;
            afterRequest = nullptr;
            plainBroker.before = nullptr;
            EXPECT_EQ(request(), usual) << "after occasion " << n;
            EXPECT_EQ(usual.rc, CMPI_RC_OK);
            if (!wentWrong || HasFailure()) return n - 1;
        }
    }
};

TEST_P(TroubleTest, InEnumerationsLeavesTheProviderUsable) {
    switchLogsOn();
    loadAndBuild();
    for (const char* className :
         {fcPort, ethernetPort, computerSystem, "Merolt_Adapter_PhysicalPackage", "Merolt_FCHBA_SoftwareIdentity",
          "Merolt_FCHBA_ComputerSystemFCPort", "Merolt_NIC_ComputerSystemEthernetPort", "Merolt_NIC_RegisteredProfile"})
        EXPECT_TRUE(survive([&] { return enumerate(className); }) > 0 || mayNeedNoMemory()) << className;
}

TEST_P(TroubleTest, InGetInstanceLeavesTheProviderUsable) {
    switchLogsOn();
    loadAndBuild();
    EXPECT_TRUE(survive([&] { return getPort(); }) > 0);
}

TEST_P(TroubleTest, InAssociatorsLeavesTheProviderUsable) {
    switchLogsOn();
    loadAndBuild();
    EXPECT_GT(survive([&] { return associatorsOfPort(); }), 0U);
}

TEST_P(TroubleTest, InMethodsLeavesTheProviderUsable) {
    switchLogsOn();
    loadAndBuild();
    const unsigned occasions = survive([&] { return install(); });
    EXPECT_TRUE(occasions > 0 || mayNeedNoMemory());
}

/// A factory may end the process by its own rules, where it gets no mutex; so each try is a process of its own.
TEST_P(TroubleTest, InAFactoryLeavesTheProviderUsable) {
    unsigned withoutMutex = 0;
    for (unsigned n = 1;; ++n) {
        std::fflush(nullptr);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            GetParam().arm(n);
            instances = make(Merolt_CNA_Provider_Create_InstanceMI);
            const bool wentWrong = GetParam().disarm();
            plainBroker.before = nullptr;
            if (!instances && loadStatus.rc != CMPI_RC_ERR_FAILED) _exit(2);
            if (!instances) instances = make(Merolt_CNA_Provider_Create_InstanceMI);
            if (!instances) _exit(3);
            services.waitUntilIdle();
            if (!(enumerate(fcPort) == oneObject)) _exit(4);
            if (cleanUp(std::exchange(instances, nullptr)) != CMPI_RC_OK) _exit(5);
            if (tavikLibrary.callCount("TAVIK_Uninitialize") == 0) _exit(6);
            _exit(wentWrong ? 0 : 100);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status) << " at occasion " << n;
        if (WEXITSTATUS(status) == 100) break;
        if (WEXITSTATUS(status) == 1) ++withoutMutex;
        ASSERT_LE(WEXITSTATUS(status), 1) << "at occasion " << n;
    }
    EXPECT_EQ(withoutMutex, GetParam().arm == failAllocation ? 5U : 0U);
}

INSTANTIATE_TEST_SUITE_P(Troubles, TroubleTest, testing::ValuesIn(troubles));

/// What happens on the polling thread, where nobody waits for an answer.
class PollingTroubleTest : public PoorServerTest {
protected:
    void SetUp() override { switchLogsOn(); }

    /// Whether the step of the thread failed since the log was begun.
    bool failed(const std::string& step) const {
        return logHas("AdapterPollingLoop() " + step + " failed: std::bad_alloc");
    }
};

TEST_F(PollingTroubleTest, AFirstBuildThatFindsNoMemoryIsTriedAgain) {
    loadAndBuild();
    const PlainAnswer packages = enumerate("Merolt_Adapter_PhysicalPackage");
    unload();
    bool wentWrong = true;
    for (unsigned n = 1; wentWrong && !HasFailure(); ++n) {
        bool isFirst = true;
        tavikLibrary.onInitialize = [&] {
            if (std::exchange(isFirst, false)) failAllocation(n);
        };
        loadAndBuild();
        wentWrong = failed("first build");
        services.pass(1);
        EXPECT_EQ(enumerate(fcPort), oneObject) << "after allocation " << n;
        EXPECT_EQ(enumerate(ethernetPort), oneObject) << "after allocation " << n;
        EXPECT_EQ(enumerate("Merolt_Adapter_PhysicalPackage"), packages) << "after allocation " << n;
        unload();
        std::filesystem::remove("Merolt_CNA_Provider.log");
        EXPECT_TRUE(wentWrong || n > 1);
    }
}

TEST_F(PollingTroubleTest, AProviderWhoseFirstBuildNeverSucceedsCanBeUnloaded) {
    tavikLibrary.onInitialize = [] { throw std::bad_alloc(); };
    loadAndBuild();
    services.pass(1);
    services.pass(1);
    EXPECT_EQ(enumerate(ethernetPort), noObject);
    unload();
    EXPECT_TRUE(logHas("AdapterPollingLoop() ending..."));
    EXPECT_TRUE(logHas("Merolt_CNA_Provider destructor complete"));
}

TEST_F(PollingTroubleTest, ARefreshThatFindsNoMemoryIsTriedAgain) {
    const tavik::Fleet one = adapters::fleet({adapters::card("S2", {adapters::storageFunction(2, 0xA107)})});
    bool wentWrong = true;
    for (unsigned n = 1; wentWrong && !HasFailure(); ++n) {
        loadAndBuild();
        bool isFirst = true;
        tavikLibrary.onUpdateBackup = [&] {
            if (std::exchange(isFirst, false)) failAllocation(n);
        };
        tavikLibrary.setNextFleet(one);
        services.pass(200);
        wentWrong = failed("pass");
        services.pass(1);
        EXPECT_EQ(enumerate("Merolt_FCHBA_PortController"), oneObject) << "after allocation " << n;
        EXPECT_EQ(enumerate("Merolt_FCHBA_SCSIProtocolController"), oneObject) << "after allocation " << n;
        unload();
        std::filesystem::remove("Merolt_CNA_Provider.log");
        EXPECT_TRUE(wentWrong || n > 1);
    }
}

TEST_F(PollingTroubleTest, AThreadThatCannotBeAttachedServesWithoutAlerts) {
    plainBroker.before = [](const PlainCall* call) {
        if (std::strcmp(call->function, "attachThread") == 0) throw std::runtime_error("no");
        return CMPIStatus{CMPI_RC_OK, nullptr};
    };
    loadAndBuild();
    plainBroker.before = nullptr;
    subscribe();
    EXPECT_EQ(enumerate(fcPort), oneObject);
    tavikLibrary.storage(1).property.state = tavik::PortLoopDown;
    tavikLibrary.raiseAlarm(1, 0, 0, "link down");
    services.pass(1);
    EXPECT_EQ(plainBroker.deliveredCount, 0U);
}

TEST_F(PollingTroubleTest, AThreadThatTheServerFailsToJoinIsGoneAllTheSame) {
    static int (*join)(void*, void**) = nullptr;
    join = plainBroker.threads.joinThread;
    plainBroker.threads.joinThread = [](void* thread, void** answer) -> int {
        join(thread, answer);
        throw std::runtime_error("no");
    };
    loadAndBuild();
    unload();
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 1U);
    EXPECT_TRUE(logHas("Merolt_CNA_Provider: the CIM server failed to join the polling thread"));
    EXPECT_TRUE(logHas("Merolt_CNA_Provider destructor complete"));
}

/// Trouble while an alert is made, from the moment at which the thread prepares for it.
class AlertTroubleTest : public PoorServerTest, public testing::WithParamInterface<Trouble> {
protected:
    static inline const Trouble* trouble = nullptr;
    static inline unsigned occasion = 0;

    void changePortState() {
        std::uint8_t& state = tavikLibrary.storage(1).property.state;
        state = state == tavik::PortLoopDown ? tavik::PortOperational : tavik::PortLoopDown;
        tavikLibrary.raiseAlarm(1, 0, 0, "port state");
        services.pass(1);
    }
};

TEST_P(AlertTroubleTest, LosesAtMostThatAlert) {
    trouble = &GetParam();
    loadAndBuild();
    subscribe();
    for (occasion = 1; occasion < 120; ++occasion) {
        plainBroker.before = [](const PlainCall* call) {
            if (std::strcmp(call->function, "prepareAttachThread") == 0) trouble->arm(occasion);
            if (std::strcmp(call->function, "detachThread") == 0) trouble->disarm();
            return CMPIStatus{CMPI_RC_OK, nullptr};
        };
        changePortState();
        plainBroker.before = nullptr;
        enumerate(fcPort); // takes in the state that the lost alert told of
        const unsigned before = plainBroker.deliveredCount;
        changePortState();
        ASSERT_EQ(plainBroker.deliveredCount, before + 1) << "after occasion " << occasion;
    }
}

INSTANTIATE_TEST_SUITE_P(Troubles, AlertTroubleTest, testing::ValuesIn(troubles));

class AlarmTest : public PoorServerTest {};

TEST_F(AlarmTest, WithoutMemoryForItIsLostAndTheNextIsNot) {
    loadAndBuild();
    subscribe();
    tavikLibrary.storage(1).property.state = tavik::PortLoopDown;
    const std::string longText(100, 'x');
    failAllocation(1);
    tavikLibrary.alarmCallback(1, 0, 0, longText.c_str());
    EXPECT_TRUE(allocationFailed());
    tavikLibrary.alarmCallback(1, 0, 0, longText.c_str());
    services.pass(1);
    EXPECT_EQ(plainBroker.deliveredCount, 1U);
}

} // namespace
