// The provider's shared library in a host that has classes of the same names, cannot join threads, or closes the
// library without a word.
#include "clashing_classes.h"
#include "foreign_server_program.h"
#include "short_sleeps.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

namespace {

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr CMPIBoolean serverGoesOn = 0;
constexpr CMPIBoolean serverGoesDown = 1;

/// The provider's thread in a server that does not join it.
struct UnjoinedThread {
    void* (*function)(void*);
    void* argument;
    std::atomic<pid_t> number{0};
};

UnjoinedThread unjoined;

void* newUnjoinedThread(void* (*function)(void*), void* argument, int) {
    unjoined.function = function;
    unjoined.argument = argument;
    unjoined.number = 0;
    const auto run = [](void*) -> void* {
        unjoined.number = gettid();
        void* const answer = unjoined.function(unjoined.argument);
        for (int pauses = 0; pauses < 20; ++pauses) // each a tenth of a millisecond: late, as on a host with much to do
            usleep(1000);
        return answer;
    };
    pthread_t thread;
    if (pthread_create(&thread, nullptr, run, nullptr) != 0) return nullptr;
    pthread_detach(thread);
    return reinterpret_cast<void*>(thread);
}

class ForeignHostTest : public testing::Test {
protected:
    bool isMappedNow() const { return isMapped("libMerolt_CNA_Provider"); }

    ServerProgram program{MEROLT_SMALL_FLEET};
    const long ownThreads = countOwnThreads();
};

class ClashTest : public ForeignHostTest, public testing::WithParamInterface<const char*> {};

TEST_P(ClashTest, SymbolsOfTheHostAreFoundFirst) {
    ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
    Dl_info place{};
    void* const found = dlsym(RTLD_DEFAULT, GetParam());
    ASSERT_NE(found, nullptr) << "the host does not clash";
    ASSERT_NE(dladdr(found, &place), 0);
    EXPECT_EQ(std::string(place.dli_fname).find("libMerolt_CNA_Provider"), std::string::npos);
    EXPECT_EQ(dlsym(library.get(), GetParam()), nullptr) << "the provider shows its own";
}

INSTANTIATE_TEST_SUITE_P(Names, ClashTest,
                         testing::Values("_ZN10CmpiStringC1EPKc",
                                         "_ZN10CmpiBaseMI16driveBaseCleanupEPvPK12_CMPIContexth", "_ZTI10CmpiBaseMI",
                                         "_ZTV19Merolt_CNA_Provider", "_ZN6merolt8debugLogEPKcz",
                                         "OSSGenerateHostNotificationAlarm"));

TEST_F(ForeignHostTest, TheProviderUsesItsOwnClasses) {
    clashes = 0;
    ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
    auto* instances = makeInterface<CMPIInstanceMI>(library, "Instance");
    ASSERT_NE(instances, nullptr);
    EXPECT_TRUE(waitForInstances(instances, fcPort));
    EXPECT_EQ(countInstances(instances, "Merolt_Adapter_ComputerSystem"), 1);
    {
        // Throws and catches a status of its own.
        const ServerScope scope;
        CMPIObjectPath* path = plainPath("root/merolt_cmpi", fcPort);
        path->ft->addKey(path, "DeviceID", reinterpret_cast<const CMPIValue*>("none"), CMPI_chars);
        EXPECT_EQ(instances->ft->getInstance(instances, plainContext(), plainResult(), path, nullptr).rc,
                  CMPI_RC_ERR_NOT_FOUND);
    }
    EXPECT_EQ(cleanUp(instances, serverGoesDown), CMPI_RC_OK);
    EXPECT_EQ(clashes, 0);
}

TEST_F(ForeignHostTest, AServerThatCannotJoinThreadsMayCloseTheLibraryAtOnce) {
    plainBroker.threads.joinThread = nullptr;
    plainBroker.threads.newThread = newUnjoinedThread;
    for (int cycle = 0; cycle < 50; ++cycle) {
        ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
        auto* instances = makeInterface<CMPIInstanceMI>(library, "Instance");
        ASSERT_NE(instances, nullptr);
        ASSERT_TRUE(waitForInstances(instances, fcPort));
        ASSERT_EQ(cleanUp(instances, serverGoesOn), CMPI_RC_OK);
        ASSERT_NE(tgkill(getpid(), unjoined.number, 0), 0) << "its thread is still in the library that is closed now";
        library.close();
        ASSERT_FALSE(library.isLoaded());
        ASSERT_FALSE(isMappedNow());
    }
    EXPECT_LE(threadsAtRest(ownThreads), ownThreads);
}

#ifndef __SANITIZE_ADDRESS__ // which does not know how a cancelled thread is unwound

TEST_F(ForeignHostTest, AServerMayCancelTheProvidersThread) {
    static pthread_t thread;
    plainBroker.threads.newThread = [](void* (*function)(void*), void* argument, int) -> void* {
        return pthread_create(&thread, nullptr, function, argument) == 0 ? &thread : nullptr;
    };
    plainBroker.threads.joinThread = [](void*, void**) { return 0; };
    ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
    auto* instances = makeInterface<CMPIInstanceMI>(library, "Instance");
    ASSERT_NE(instances, nullptr);
    ASSERT_TRUE(waitForInstances(instances, fcPort));
    ASSERT_EQ(pthread_cancel(thread), 0);
    void* end = nullptr;
    ASSERT_EQ(pthread_join(thread, &end), 0);
    EXPECT_EQ(end, PTHREAD_CANCELED);
    EXPECT_EQ(countInstances(instances, fcPort), 1);
    EXPECT_EQ(cleanUp(instances, serverGoesDown), CMPI_RC_OK);
    library.close();
    EXPECT_FALSE(isMappedNow());
}

#endif

TEST_F(ForeignHostTest, WithoutACleanUpTheLibraryStaysLoadedForItsThread) {
    ProviderLibrary first(MEROLT_PROVIDER_LIBRARY);
    auto* instances = makeInterface<CMPIInstanceMI>(first, "Instance");
    ASSERT_NE(instances, nullptr);
    ASSERT_TRUE(waitForInstances(instances, fcPort));
    first.close();
    EXPECT_TRUE(first.isLoaded()) << "the polling thread runs in it";
    usleep(1000);

    ProviderLibrary second(MEROLT_PROVIDER_LIBRARY);
    auto* associations = makeInterface<CMPIAssociationMI>(second, "Association");
    ASSERT_NE(associations, nullptr);
    EXPECT_EQ(countInstances(instances, fcPort), 1);
    EXPECT_EQ(cleanUp(associations, serverGoesDown), CMPI_RC_OK);
    EXPECT_EQ(cleanUp(instances, serverGoesDown), CMPI_RC_OK);
    EXPECT_LE(threadsAtRest(ownThreads), ownThreads);
    second.close();
    EXPECT_FALSE(second.isLoaded());
    EXPECT_FALSE(isMappedNow());
}

using ForeignHostDeathTest = ForeignHostTest;

TEST_F(ForeignHostDeathTest, AServerMayEndWithoutACleanUp) {
    for (int tries = 0; tries < 20; ++tries) {
        EXPECT_EXIT(
            {
                ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
                auto* instances = makeInterface<CMPIInstanceMI>(library, "Instance");
                const bool served = instances && waitForInstances(instances, fcPort);
                std::exit(served ? 0 : 1);
            },
            testing::ExitedWithCode(0), "");
    }
}

TEST_F(ForeignHostDeathTest, AServerMayCloseTheLibraryWithoutACleanUpAndEnd) {
    EXPECT_EXIT(
        {
            ProviderLibrary library(MEROLT_PROVIDER_LIBRARY);
            auto* instances = makeInterface<CMPIInstanceMI>(library, "Instance");
            const bool served = instances && waitForInstances(instances, fcPort);
            library.close();
            std::exit(served ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
