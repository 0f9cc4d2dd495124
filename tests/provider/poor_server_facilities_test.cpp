// What becomes of the provider in a server that lacks functions, and how an administrator learns of it.
#include "poor_server_test.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr const char* notLoaded = ": the provider cannot work and is not loaded";
constexpr const char* noAdapters = ": no adapters are published and no indications are sent";
constexpr const char* noIndications = ": no indications are sent";

void raisePortAlarm(FakeTavik& tavik) {
    tavik.storage(1).property.state = tavik::PortLoopDown;
    tavik.raiseAlarm(1, 0, 0, "link down");
}

class CompleteServerTest : public PoorServerTest {};

TEST_F(CompleteServerTest, VersionWordsAreNotLookedAt) {
    ASSERT_EQ(plainBroker.objects.ftVersion, 1);
    ASSERT_EQ(plainBroker.threads.ftVersion, 0);
    ASSERT_EQ(plainBroker.functions.brokerVersion, 0U);
    loadAndBuild();
    EXPECT_EQ(enumerate(fcPort), oneObject);
    EXPECT_EQ(enumerate(ethernetPort), oneObject);
    EXPECT_EQ(getPort(), oneObject);
    EXPECT_GT(associatorsOfPort().objects, 3U);
}

TEST_F(CompleteServerTest, NothingIsReportedAndAlertsArrive) {
    switchLogsOn();
    loadAndBuild();
    subscribe();
    raisePortAlarm(tavikLibrary);
    services.pass(1);
    EXPECT_EQ(plainBroker.deliveredCount, 1U);
    EXPECT_EQ(plainBroker.messageCount, 0U);
    EXPECT_THAT(linesAboutTheServer(), IsEmpty());
}

/// A server without something.
struct Lack {
    const char* name; ///< as the line calls it
    void (*takeAway)();
};

void PrintTo(const Lack& lack, std::ostream* out) { *out << lack.name; }

class UselessServerTest : public PoorServerTest, public testing::WithParamInterface<Lack> {};

TEST_P(UselessServerTest, GetsAMessageAndNoInterface) {
    GetParam().takeAway();
    const bool hasLog = plainBroker.broker.eft != nullptr;
    EXPECT_FALSE(load());
    EXPECT_EQ(loadStatus.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(loadStatus.msg, nullptr);
    EXPECT_THAT(linesAboutTheServer(), ElementsAre(testing::AllOf(HasSubstr(GetParam().name), EndsWith(notLoaded))));
    EXPECT_EQ(plainBroker.messageCount, hasLog ? 1U : 0U);
    if (hasLog) {
        EXPECT_EQ(plainBroker.lastSeverity, CMPI_SEV_ERROR);
        EXPECT_EQ(plainBroker.lastMessage, linesAboutTheServer().front());
    }
    EXPECT_THAT(tavikLibrary.calls(), IsEmpty());
    plainBrokerReset();
    loadAndBuild();
    EXPECT_EQ(enumerate(fcPort), oneObject) << "of the same library in a better server";
}

INSTANTIATE_TEST_SUITE_P(
    Lacks, UselessServerTest,
    testing::Values(Lack{"its function table", [] { plainBroker.broker.bft = nullptr; }},
                    Lack{"newInstance, newObjectPath, newString, newArray, classPathIsA, newDateTime",
                         [] { plainBroker.broker.eft = nullptr; }},
                    Lack{"newInstance", [] { plainBroker.objects.newInstance = nullptr; }},
                    Lack{"newObjectPath", [] { plainBroker.objects.newObjectPath = nullptr; }},
                    Lack{"newString", [] { plainBroker.objects.newString = nullptr; }},
                    Lack{"newArray", [] { plainBroker.objects.newArray = nullptr; }},
                    Lack{"classPathIsA", [] { plainBroker.objects.classPathIsA = nullptr; }}));

using NoServerTest = PoorServerTest;

TEST_F(NoServerTest, ANullBrokerGetsNoInterface) {
    EXPECT_EQ(make(Merolt_CNA_Provider_Create_AssociationMI, nullptr), nullptr);
    EXPECT_EQ(loadStatus.rc, CMPI_RC_ERR_FAILED);
    EXPECT_THAT(linesAboutTheServer(),
                ElementsAre("Merolt_CNA_Provider: the CIM server does not give a broker" + std::string(notLoaded)));
}

TEST_F(NoServerTest, ANullStatusAndContextGetNoInterfaceEither) {
    EXPECT_EQ(Merolt_CNA_Provider_Create_InstanceMI(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(Merolt_CNA_Provider_Create_MethodMI(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(linesAboutTheServer().size(), 2U);
}

/// Servers in which no thread of the provider can run.
class ThreadlessServerTest : public PoorServerTest, public testing::WithParamInterface<Lack> {};

TEST_P(ThreadlessServerTest, ShowsWhatNeedsNoAdapters) {
    switchLogsOn();
    GetParam().takeAway();
    ASSERT_TRUE(load());
    EXPECT_EQ(loadStatus.rc, CMPI_RC_OK);
    const char* empty[] = {fcPort,
                           ethernetPort,
                           "Merolt_Adapter_PhysicalPackage",
                           "Merolt_FCHBA_SoftwareIdentity",
                           "Merolt_NIC_PortController",
                           "Merolt_FCHBA_ComputerSystemFCPort"};
    tavikLibrary.setFleet({});
    for (const char* className : empty)
        EXPECT_EQ(enumerate(className), noObject) << className;
    EXPECT_EQ(enumerate(computerSystem), oneObject);
    EXPECT_EQ(enumerate("Merolt_FCHBA_ObjectManager"), oneObject);
    EXPECT_EQ(enumerate("Merolt_FCHBA_Namespace").objects, 2U);
    EXPECT_EQ(invoke("Merolt_NIC_SoftwareInstallationService", "NoMethod", nullptr, nullptr).objects, 1U);
    EXPECT_EQ(install().rc, CMPI_RC_OK);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Initialize(0)"), 0U);
}

TEST_P(ThreadlessServerTest, GetsOneMessage) {
    switchLogsOn();
    GetParam().takeAway();
    ASSERT_TRUE(load());
    enumerate(fcPort);
    EXPECT_THAT(linesAboutTheServer(), ElementsAre(testing::AllOf(HasSubstr(GetParam().name), EndsWith(noAdapters))));
    EXPECT_EQ(plainBroker.messageCount, 1U);
    EXPECT_EQ(plainBroker.lastSeverity, CMPI_SEV_WARNING);
    EXPECT_EQ(plainBroker.lastMessage, linesAboutTheServer().front());
}

TEST_P(ThreadlessServerTest, NamesItsComputerSystem) {
    GetParam().takeAway();
    ASSERT_TRUE(load());
    const PlainScope scope;
    CMPIResult* result = plainResult();
    instances->ft->enumerateInstances(instances, plainContext(), result,
                                      plainPath(implementationNamespace, computerSystem), nullptr);
    EXPECT_STREQ(plainText(result, 0, "Name"), "192.0.2.10");
}

TEST_P(ThreadlessServerTest, CleansUpWithoutErrors) {
    GetParam().takeAway();
    ASSERT_TRUE(load());
    EXPECT_EQ(cleanUp(std::exchange(instances, nullptr), 0), CMPI_RC_OK);
    EXPECT_EQ(cleanUp(std::exchange(associations, nullptr), 0), CMPI_RC_OK);
    EXPECT_EQ(cleanUp(std::exchange(methods, nullptr), 0), CMPI_RC_OK);
    EXPECT_EQ(cleanUp(std::exchange(filters, nullptr), 0), CMPI_RC_OK);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_Uninitialize"), 0U);
}

void* makeNoThread(void* (*)(void*), void*, int) { return nullptr; }

INSTANTIATE_TEST_SUITE_P(Lacks, ThreadlessServerTest,
                         testing::Values(Lack{"newThread", [] { plainBroker.broker.xft = nullptr; }},
                                         Lack{"newThread", [] { plainBroker.threads.newThread = nullptr; }},
                                         Lack{"made no thread", [] { plainBroker.threads.newThread = makeNoThread; }}));

/// Servers to which no alert can be delivered.
class SilentServerTest : public PoorServerTest, public testing::WithParamInterface<Lack> {};

TEST_P(SilentServerTest, ShowsAdaptersAndGetsNoAlerts) {
    switchLogsOn();
    GetParam().takeAway();
    loadAndBuild();
    subscribe();
    EXPECT_EQ(enumerate(fcPort), oneObject);
    EXPECT_EQ(enumerate(ethernetPort), oneObject);
    raisePortAlarm(tavikLibrary);
    tavikLibrary.nic("eth1").link.state = tavik::LinkUp;
    services.pass(200);
    EXPECT_EQ(plainBroker.deliveredCount, 0U);
    EXPECT_EQ(enumerate(fcPort), oneObject);
}

TEST_P(SilentServerTest, GetsOneMessage) {
    switchLogsOn();
    GetParam().takeAway();
    loadAndBuild();
    services.pass(200);
    EXPECT_THAT(linesAboutTheServer(),
                ElementsAre(testing::AllOf(HasSubstr(GetParam().name), EndsWith(noIndications))));
    EXPECT_EQ(plainBroker.messageCount, 1U);
    EXPECT_EQ(plainBroker.lastSeverity, CMPI_SEV_WARNING);
}

CMPIContext* prepareNothing(const CMPIBroker*, const CMPIContext*) { return nullptr; }

INSTANTIATE_TEST_SUITE_P(
    Lacks, SilentServerTest,
    testing::Values(Lack{"prepareAttachThread", [] { plainBroker.functions.prepareAttachThread = nullptr; }},
                    Lack{"attachThread", [] { plainBroker.functions.attachThread = nullptr; }},
                    Lack{"detachThread", [] { plainBroker.functions.detachThread = nullptr; }},
                    Lack{"deliverIndication", [] { plainBroker.functions.deliverIndication = nullptr; }},
                    Lack{"newDateTime", [] { plainBroker.objects.newDateTime = nullptr; }},
                    Lack{"made no context", [] { plainBroker.functions.prepareAttachThread = prepareNothing; }}));

TEST_F(CompleteServerTest, WithoutAContextInTheFactoryCallThereAreNoAlerts) {
    hasContext = false;
    loadAndBuild();
    subscribe();
    raisePortAlarm(tavikLibrary);
    services.pass(1);
    EXPECT_EQ(plainBroker.deliveredCount, 0U);
    EXPECT_EQ(enumerate(fcPort), oneObject);
    EXPECT_THAT(linesAboutTheServer(), ElementsAre("Merolt_CNA_Provider: the CIM server does not give a context" +
                                                   std::string(noIndications)));
}

TEST_F(CompleteServerTest, WithoutALogOfItsOwnTheProvidersLogHasTheLine) {
    plainBroker.objects.logMessage = nullptr;
    plainBroker.broker.xft = nullptr;
    ASSERT_TRUE(load());
    EXPECT_EQ(linesAboutTheServer().size(), 1U);
}

TEST_F(CompleteServerTest, ALogThatThrowsDoesNoHarm) {
    plainBroker.objects.logMessage = [](const CMPIBroker*, CMPISeverity, const char*, const char*,
                                        const CMPIString*) -> CMPIStatus { throw 1; };
    plainBroker.broker.xft = nullptr;
    ASSERT_TRUE(load());
    EXPECT_EQ(linesAboutTheServer().size(), 1U);
}

} // namespace
