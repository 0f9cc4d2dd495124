// Clean-ups in any number and order, and a working directory that is none.
#include "poor_server_test.h"
#include "test_support.h"

#include "log/log.h"

#include <future>

namespace {

constexpr CMPIBoolean serverGoesOn = 0;
constexpr CMPIBoolean serverGoesDown = 1;

class OddCleanUpTest : public PoorServerTest, public testing::WithParamInterface<CMPIBoolean> {
protected:
    void SetUp() override { loadAndBuild(); }

    std::size_t endings() { return tavikLibrary.callCount("TAVIK_Uninitialize"); }
};

TEST_P(OddCleanUpTest, AnInterfaceCleanedUpTwiceLeavesTheOthersTheirs) {
    EXPECT_EQ(cleanUp(instances, GetParam()), CMPI_RC_OK);
    for (int again = 0; again < 5; ++again)
        EXPECT_EQ(cleanUp(instances, GetParam()), CMPI_RC_OK);
    EXPECT_EQ(endings(), 0U);
    EXPECT_EQ(invoke("Merolt_NIC_SoftwareInstallationService", "NoMethod", nullptr, nullptr).objects, 1U);
    EXPECT_EQ(enumerate(fcPort).rc, CMPI_RC_ERR_NOT_SUPPORTED) << "of an interface that was given up";
    EXPECT_EQ(cleanUp(associations, GetParam()), CMPI_RC_OK);
    EXPECT_EQ(cleanUp(methods, GetParam()), CMPI_RC_OK);
    EXPECT_EQ(endings(), 0U);
    EXPECT_EQ(cleanUp(filters, GetParam()), CMPI_RC_OK);
    EXPECT_EQ(endings(), 1U);
}

TEST_P(OddCleanUpTest, AProviderThatIsGoneCanBeCleanedUpAgain) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(cleanUp(instances, GetParam()), CMPI_RC_OK);
        EXPECT_EQ(cleanUp(associations, GetParam()), CMPI_RC_OK);
        EXPECT_EQ(cleanUp(methods, GetParam()), CMPI_RC_OK);
        EXPECT_EQ(cleanUp(filters, GetParam()), CMPI_RC_OK);
    }
    EXPECT_EQ(endings(), 1U);
    EXPECT_EQ(enumerate(fcPort).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    loadAndBuild();
    EXPECT_EQ(enumerate(fcPort), oneObject);
}

TEST_P(OddCleanUpTest, AnInterfaceComesBackWhileOthersStay) {
    EXPECT_EQ(cleanUp(instances, GetParam()), CMPI_RC_OK);
    instances = make(Merolt_CNA_Provider_Create_InstanceMI);
    ASSERT_NE(instances, nullptr);
    EXPECT_EQ(enumerate(fcPort), oneObject);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Initialize(0)"), 1U);
}

INSTANTIATE_TEST_SUITE_P(Servers, OddCleanUpTest, testing::Values(serverGoesOn, serverGoesDown));

class StartTest : public PoorServerTest {};

TEST_F(StartTest, AFactoryMayBeCalledWhileTheLastInterfaceIsCleanedUp) {
    instances = make(Merolt_CNA_Provider_Create_InstanceMI);
    ASSERT_NE(instances, nullptr);
    services.waitUntilIdle();
    CMPIInstanceMI* last = std::exchange(instances, nullptr);
    auto end = std::async(std::launch::async, [&] {
        services.adoptThisThread();
        return cleanUp(last);
    });
    associations = make(Merolt_CNA_Provider_Create_AssociationMI);
    ASSERT_EQ(end.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(end.get(), CMPI_RC_OK);
    ASSERT_NE(associations, nullptr);
    services.waitUntilIdle();
    instances = make(Merolt_CNA_Provider_Create_InstanceMI);
    EXPECT_EQ(enumerate(fcPort), oneObject);
}

class WorkingDirectoryTest : public PoorServerTest {
protected:
    /// Starts, writes to both logs, answers and stops.
    void live() {
        loadAndBuild();
        merolt::gDebugLog = true;
        merolt::gErrorLog = true;
        EXPECT_EQ(enumerate(fcPort), oneObject);
        EXPECT_EQ(install().rc, CMPI_RC_OK);
        services.pass(200);
        unload();
        EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 1U);
    }
};

TEST_F(WorkingDirectoryTest, MayBeGone) {
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove("../gone");
    live();
}

TEST_F(WorkingDirectoryTest, MayHaveFoldersInPlaceOfFiles) {
    std::filesystem::create_directory("Merolt_CNA_Provider.log");
    std::filesystem::create_directory("meroltcna.properties");
    live();
}

} // namespace
