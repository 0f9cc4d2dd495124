// How a request finds the family of its class, and what a client gets when a family fails.
#include "adapters.h"
#include "broker_hooks.h"
#include "provider_host.h"
#include "test_support.h"

#include <algorithm>
#include <stdexcept>

using namespace adapters;

namespace {

using cimhost::ContextObject;
using cimhost::ObjectPathObject;
using cimhost::RequestScope;
using cimhost::ResultCollector;
using cimhost::ResultKind;
using Names = std::vector<std::string>;

constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* computerSystem = "Merolt_Adapter_ComputerSystem";
constexpr const char* withoutRow = "Merolt_FCHBA_RegisteredProfile";

/// Rows of one chain are tested until one matches; the other chains are tested all the same.
enum Chain { storage, storageExtent, scsiEndpoints, ethernet };

struct Row {
    const char* className;
    Chain chain;
};

// In the order in which enumerations test them.
constexpr Row rows[] = {
    {"Merolt_Adapter_ComputerSystem", storage},
    {"Merolt_FCHBA_FCPort", storage},
    {"Merolt_FCHBA_PortController", storage},
    {"Merolt_FCHBA_FCPortStatistics", storage},
    {"Merolt_FCHBA_LogicalPortGroup", storage},
    {"Merolt_Adapter_PhysicalPackage", storage},
    {"Merolt_Adapter_Product", storage},
    {"Merolt_FCHBA_SCSIProtocolController", storage},
    {"Merolt_FCHBA_SoftwareIdentity", storage},
    {"Merolt_FCHBA_ComputerSystemPortController", storage},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolController", storage},
    {"Merolt_FCHBA_ComputerSystemFCPort", storage},
    {"Merolt_FCHBA_ComputerSystemLogicalPortGroup", storage},
    {"Merolt_FCHBA_ComputerSystemSoftwareIdentity", storage},
    {"Merolt_FCHBA_SoftwareIdentityPortController", storage},
    {"Merolt_FCHBA_PhysicalPackagePortController", storage},
    {"Merolt_FCHBA_PhysicalConnectorFCPort", storage},
    {"Merolt_FCHBA_PhysicalPortFCPort", storage},
    {"Merolt_FCHBA_PortControllerFCPort", storage},
    {"Merolt_FCHBA_PortControllerSoftwareInstallationService", storage},
    {"Merolt_FCHBA_LogicalPortGroupFCPort", storage},
    {"Merolt_FCHBA_FCPortFCPortStatistics", storage},
    {"Merolt_Adapter_ProductPhysicalPackage", storage},
    {"Merolt_FCHBA_SCSIProtocolControllerFCPort", storage},
    {"Merolt_FCHBA_ObjectManager", storage},
    {"Merolt_FCHBA_CIMXMLCommMech", storage},
    {"Merolt_FCHBA_ComputerSystemObjectManager", storage},
    {"Merolt_FCHBA_ObjectManagerCommMech", storage},
    {"Merolt_FCHBA_ComputerSystemCommMech", storage},
    {"Merolt_FCHBA_Namespace", storage},
    {"Merolt_FCHBA_ObjectManagerNamespace", storage},
    {"Merolt_Adapter_PhysicalConnector", storage},
    {"Merolt_Adapter_PhysicalPort", storage},
    {"Merolt_Adapter_PhysicalPackagePhysicalConnector", storage},
    {"Merolt_Adapter_PhysicalPackagePhysicalPort", storage},
    {"Merolt_FCHBA_SoftwareInstallationService", storage},
    {"Merolt_FCHBA_SoftwareInstallationServiceCapabilities", storage},
    {"Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService", storage},
    {"Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", storage},
    {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService", storage},
    {"Merolt_FCHBA_StorageExtent", storageExtent},
    {"Merolt_FCHBA_SCSIProtocolEndpointHBA", scsiEndpoints},
    {"Merolt_FCHBA_SCSIProtocolEndpointTarget", scsiEndpoints},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA", scsiEndpoints},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget", scsiEndpoints},
    {"Merolt_FCHBA_ComputerSystemStorageExtent", scsiEndpoints},
    {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA", scsiEndpoints},
    {"Merolt_NIC_EthernetPort2", ethernet},
    {"Merolt_NIC_PortController", ethernet},
    {"Merolt_NIC_LANEndpoint", ethernet},
    {"Merolt_NIC_RegisteredProfile", ethernet},
    {"Merolt_NIC_SoftwareIdentity", ethernet},
    {"Merolt_NIC_NetworkPort", ethernet},
    {"Merolt_NIC_IPProtocolEndpointCapabilities", ethernet},
    {"Merolt_NIC_SoftwareInstallationService", ethernet},
    {"Merolt_NIC_SoftwareInstallationServiceCapabilities", ethernet},
    {"Merolt_NIC_IPProtocolEndpoint", ethernet},
    {"Merolt_NIC_ComputerSystemPortController", ethernet},
    {"Merolt_NIC_ComputerSystemEthernetPort", ethernet},
    {"Merolt_NIC_PortControllerEthernetPort", ethernet},
    {"Merolt_NIC_PhysicalConnectorEthernetPort", ethernet},
    {"Merolt_NIC_PhysicalPortEthernetPort", ethernet},
    {"Merolt_NIC_PhysicalPackagePortController", ethernet},
    {"Merolt_NIC_EthernetPortLANEndpoint", ethernet},
    {"Merolt_NIC_ComputerSystemLANEndpoint", ethernet},
    {"Merolt_NIC_ElementConformsToRegisteredProfile", ethernet},
    {"Merolt_NIC_SoftwareIdentityPortController", ethernet},
    {"Merolt_NIC_ComputerSystemNetworkPort", ethernet},
    {"Merolt_NIC_NetworkPortLANEndpoint", ethernet},
    {"Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint", ethernet},
    {"Merolt_NIC_ComputerSystemSoftwareInstallationService", ethernet},
    {"Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", ethernet},
    {"Merolt_NIC_SoftwareIdentitySoftwareInstallationService", ethernet},
    {"Merolt_NIC_PortControllerSoftwareInstallationService", ethernet},
    {"Merolt_NIC_ComputerSystemIPProtocolEndpoint", ethernet},
    {"Merolt_NIC_LANEndpointIPProtocolEndpoint", ethernet},
    {"Merolt_NIC_ComputerSystemSoftwareIdentity", ethernet},
};

constexpr std::size_t rowCount = std::size(rows);

/// getInstance tests the rows 59 to 67 in another order.
std::vector<Row> getInstanceRows() {
    std::vector<Row> order(std::begin(rows), std::end(rows));
    const Names reordered = {
        "Merolt_NIC_ComputerSystemEthernetPort",     "Merolt_NIC_PhysicalConnectorEthernetPort",
        "Merolt_NIC_PhysicalPortEthernetPort",       "Merolt_NIC_PhysicalPackagePortController",
        "Merolt_NIC_PortControllerEthernetPort",     "Merolt_NIC_ElementConformsToRegisteredProfile",
        "Merolt_NIC_ComputerSystemLANEndpoint",      "Merolt_NIC_EthernetPortLANEndpoint",
        "Merolt_NIC_SoftwareIdentityPortController",
    };
    std::size_t place = 58;
    for (const std::string& name : reordered) {
        order[place++] =
            *std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) { return row.className == name; });
    }
    return order;
}

/// The names that a request for the class is tested against.
Names expectedTests(const std::vector<Row>& order, const std::string& className) {
    Names names;
    bool isMatched[4] = {};
    for (const Row& row : order) {
        if (isMatched[row.chain]) continue;
        names.emplace_back(row.className);
        if (row.className == className) isMatched[row.chain] = true;
    }
    return names;
}

/// The functions of a path whose class name cannot be read.
CMPIObjectPathFT withoutClassName(const CMPIObjectPathFT& functions) {
    CMPIObjectPathFT changed = functions;
    changed.getClassName = [](const CMPIObjectPath*, CMPIStatus* status) -> CMPIString* {
        *status = {CMPI_RC_ERR_INVALID_HANDLE, nullptr};
        return nullptr;
    };
    return changed;
}

bool isInTable(const std::string& className) {
    return std::any_of(std::begin(rows), std::end(rows), [&](const Row& row) { return row.className == className; });
}

class DispatchTest : public ProviderTest {
protected:
    BrokerHooks hooks{*broker};

    void TearDown() override { stop(); }

    void startWithTwoPorts() {
        switchLogsOn();
        tavikLibrary.setFleet(fleet({card("S1", {storageFunction(1, 0xA107), storageFunction(2, 0xA107)})}));
        start();
    }

    /// What has come since stands behind the rows of the table.
    Names takeTests() {
        Names tests = hooks.takeTestedClasses();
        while (!tests.empty() && !isInTable(tests.back()))
            tests.pop_back();
        return tests;
    }

    std::string keyOfFirstPort() {
        const std::string described = enumerateInstanceNames(fcPort).objects.front()["DeviceID"];
        const std::size_t quote = described.find('"') + 1;
        return described.substr(quote, described.size() - quote - 1);
    }

    /// The mutexes know their owner, so only another thread sees whether they are free.
    void expectLocksFree() {
        auto refusal = std::async(std::launch::async, [&] { return modifyInstance(computerSystem).rc; });
        ASSERT_EQ(refusal.wait_for(longEnough), std::future_status::ready) << "a lock is still held";
        EXPECT_EQ(refusal.get(), CMPI_RC_ERR_NOT_SUPPORTED);
    }
};

class RowTest : public DispatchTest, public testing::WithParamInterface<std::size_t> {
protected:
    const Row& row() const { return rows[GetParam()]; }
    std::vector<Row> tableOrder{std::begin(rows), std::end(rows)};
};

TEST_P(RowTest, AnEnumerationOfPathsTestsTheRowsInOrder) {
    start();
    hooks.takeTestedClasses();
    enumerateInstanceNames(row().className);
    EXPECT_EQ(takeTests(), expectedTests(tableOrder, row().className));
}

TEST_P(RowTest, AnEnumerationOfInstancesTestsTheRowsInOrder) {
    start();
    hooks.takeTestedClasses();
    enumerateInstances(row().className);
    EXPECT_EQ(takeTests(), expectedTests(tableOrder, row().className));
}

std::string rowName(const testing::TestParamInfo<std::size_t>& test) { return rows[test.param].className; }

INSTANTIATE_TEST_SUITE_P(Rows, RowTest, testing::Range(std::size_t{0}, rowCount), rowName);

/// Rows of the last chain: whether the family finds its instance changes nothing about the tests before.
class EthernetRowTest : public RowTest {};

TEST_P(EthernetRowTest, GetInstanceTestsTheRowsInItsOwnOrder) {
    start();
    hooks.takeTestedClasses();
    getInstance(row().className, {});
    EXPECT_EQ(takeTests(), expectedTests(getInstanceRows(), row().className));
}

INSTANTIATE_TEST_SUITE_P(Rows, EthernetRowTest, testing::Range(std::size_t{47}, rowCount), rowName);

/// The three operations that families answer.
enum class Operation { enumInstanceNames, enumInstances, getInstance };

const char* nameOf(Operation operation) {
    switch (operation) {
    case Operation::enumInstanceNames:
        return "enumInstanceNames";
    case Operation::enumInstances:
        return "enumInstances";
    default:
        return "getInstance";
    }
}

void PrintTo(Operation operation, std::ostream* out) { *out << nameOf(operation); }

class OperationTest : public DispatchTest, public testing::WithParamInterface<Operation> {
protected:
    Answer request(const std::string& className, const std::string& deviceID = "") {
        switch (GetParam()) {
        case Operation::enumInstanceNames:
            return enumerateInstanceNames(className);
        case Operation::enumInstances:
            return enumerateInstances(className);
        default:
            return getInstance(className, {{"DeviceID", deviceID}});
        }
    }

    std::string text(const std::string& end) const {
        return std::string("Merolt_CNA_Provider ") + nameOf(GetParam()) + end;
    }

    /// Makes the making of what the operation delivers fail.
    void setMakerHook(const std::function<CMPIrc()>& hook) {
        if (GetParam() == Operation::enumInstanceNames) {
            hooks.beforeNewObjectPath = hook;
        } else {
            hooks.beforeNewInstance = hook;
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Operations, OperationTest,
                         testing::Values(Operation::enumInstanceNames, Operation::enumInstances,
                                         Operation::getInstance),
                         [](const auto& test) { return nameOf(test.param); });

TEST_P(OperationTest, AClassWithoutRowAnswersWithNothingAndNoError) {
    start();
    hooks.takeTestedClasses();
    const Answer answer = request(withoutRow);
    EXPECT_TRUE(answer.isOk());
    EXPECT_TRUE(answer.objects.empty());
    EXPECT_EQ(answer.doneCount, 1U);
    EXPECT_EQ(takeTests().size(), rowCount) << "every row is tested";
}

TEST_P(OperationTest, EntryAndExitAreLogged) {
    switchLogsOn();
    start();
    request(withoutRow);
    EXPECT_TRUE(inOrder(
        logLines(), {"Entering " + text(": classname = Merolt_FCHBA_RegisteredProfile"), "Exiting  " + text(""), ""}));
}

TEST_P(OperationTest, EndsTheAnswerOnce) {
    startWithTwoPorts();
    const Answer answer = request(fcPort, keyOfFirstPort());
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.objects.size(), GetParam() == Operation::getInstance ? 1U : 2U);
    EXPECT_EQ(answer.doneCount, 1U);
    expectLocksFree();
}

TEST_P(OperationTest, PortsAreReadAnewAtEachRequest) {
    startWithTwoPorts();
    const std::string key = keyOfFirstPort();
    tavikLibrary.clearCalls();
    request(fcPort, key);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetAdapterList"), 1U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_GetHbaDevicePortProperty"), 2U);
}

TEST_P(OperationTest, OtherClassesAnswerFromTheLists) {
    startWithTwoPorts();
    tavikLibrary.clearCalls();
    request("Merolt_FCHBA_Namespace");
    request("Merolt_NIC_EthernetPort2");
    request("Merolt_NIC_NetworkPort");
    EXPECT_EQ(tavikLibrary.calls(), Names());
}

TEST_P(OperationTest, AnUnreadableClassNameFailsTheRequestWithTheServersStatus) {
    switchLogsOn();
    start();
    hooks.takeTestedClasses();
    RequestScope scope(*broker);
    const CMPIContext* context = ContextObject::make(scope.arena());
    ResultCollector result(scope, ResultKind::instances);
    ObjectPathObject* path = scope.make().path(implementationNamespace, fcPort);
    CMPIObjectPathFT unreadable = withoutClassName(*path->ft);
    path->ft = &unreadable;
    CMPIStatus status{};
    switch (GetParam()) {
    case Operation::enumInstanceNames:
        status = instanceMI->ft->enumerateInstanceNames(instanceMI, context, &result, path);
        break;
    case Operation::enumInstances:
        status = instanceMI->ft->enumerateInstances(instanceMI, context, &result, path, nullptr);
        break;
    default:
        status = instanceMI->ft->getInstance(instanceMI, context, &result, path, nullptr);
    }
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(result.doneCount(), 1U);
    EXPECT_EQ(hooks.takeTestedClasses(), Names());
    EXPECT_EQ(logLines().back(), text(": Error getting classname, status.rc=60!"));
    expectLocksFree();
}

TEST_P(OperationTest, AThrownStatusReachesTheClient) {
    startWithTwoPorts();
    const std::string key = keyOfFirstPort();
    setMakerHook([] { return CMPI_RC_ERR_ACCESS_DENIED; });
    const Answer answer = request(fcPort, key);
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(answer.message, "");
    EXPECT_EQ(answer.doneCount, 1U);
    EXPECT_EQ(logLines().back(), text(" caught exception status: 2 (null)"));
    expectLocksFree();
}

TEST_P(OperationTest, AStatusThrownByAClassTestReachesTheClient) {
    startWithTwoPorts();
    hooks.beforeClassPathIsA = [] { return CMPI_RC_ERR_INVALID_CLASS; };
    const Answer answer = request(fcPort);
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(answer.doneCount, 1U);
    EXPECT_EQ(logLines().back(), text(" caught exception status: 5 (null)"));
    expectLocksFree();
}

/// What a client gets of an exception that is no status.
TEST_P(OperationTest, AnUnknownExceptionIsReportedExceptByEnumInstances) {
    startWithTwoPorts();
    const std::string key = keyOfFirstPort();
    int made = 0;
    const int failing = GetParam() == Operation::getInstance ? 1 : 2;
    setMakerHook([&]() -> CMPIrc {
        if (++made == failing) throw std::runtime_error("out of order");
        return CMPI_RC_OK;
    });
    const Answer answer = request(fcPort, key);
    const std::string report = text(" detected an unknown exception");
    EXPECT_EQ(answer.doneCount, 1U);
    EXPECT_EQ(answer.objects.size(), static_cast<std::size_t>(failing - 1)) << "what was delivered before stays";
    if (GetParam() == Operation::enumInstances) {
        EXPECT_TRUE(answer.isOk());
        EXPECT_FALSE(logHas(report));
        EXPECT_TRUE(
            inOrder(logLines(), {"Entering " + text(": classname = Merolt_FCHBA_FCPort"), "Exiting  " + text("")}));
    } else {
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(answer.message, report);
        EXPECT_EQ(logLines().back(), report);
    }
    expectLocksFree();
}

TEST_F(DispatchTest, AnInstanceThatIsNotThereIsNotFound) {
    startWithTwoPorts();
    const Answer answer = getInstance(fcPort, {{"DeviceID", "nothing"}});
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(answer.message, "nothing");
    EXPECT_EQ(answer.doneCount, 1U);
    EXPECT_EQ(logLines().back(), "Merolt_CNA_Provider getInstance caught exception status: 6 nothing");
    expectLocksFree();
}

TEST_F(DispatchTest, PortsThatAreGoneInTheMeantimeLeaveAnEmptyAnswer) {
    startWithTwoPorts();
    tavikLibrary.setFleet({});
    const Answer answer = enumerateInstances(fcPort);
    EXPECT_TRUE(answer.isOk());
    EXPECT_TRUE(answer.objects.empty());
}

class SubclassTest : public DispatchTest {
protected:
    SubclassTest() { classes.loadText(implementationNamespace, "class Site_FCPort : Merolt_FCHBA_FCPort { };"); }
};

TEST_F(SubclassTest, ASubclassIsAnsweredByItsAncestorsFamily) {
    startWithTwoPorts();
    hooks.takeTestedClasses();
    const Answer answer = enumerateInstances("Site_FCPort");
    ASSERT_EQ(answer.objects.size(), 2U);
    EXPECT_EQ(answer.objects.front().className, "Site_FCPort");
    EXPECT_EQ(takeTests(), expectedTests({std::begin(rows), std::end(rows)}, fcPort));
}

class RefusalTest : public DispatchTest {
protected:
    void SetUp() override { switchLogsOn(); }

    static void expectRefusal(const Answer& answer, const char* message) {
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(answer.message, message);
        EXPECT_EQ(answer.doneCount, 0U);
    }
};

TEST_F(RefusalTest, NothingCanBeCreatedChangedOrDeleted) {
    start();
    expectRefusal(createInstance(computerSystem), "Merolt_CNA_Provider cannot create");
    expectRefusal(modifyInstance(computerSystem), "Merolt_CNA_Provider cannot set");
    expectRefusal(deleteInstance(computerSystem), "Merolt_CNA_Provider cannot delete");
    EXPECT_TRUE(inOrder(logLines(), {"Merolt_CNA_Provider createInstance was called but NOT SUPPORTED",
                                     "Merolt_CNA_Provider setInstance was called but NOT SUPPORTED",
                                     "Merolt_CNA_Provider deleteInstance was called but NOT SUPPORTED"}));
}

TEST_F(RefusalTest, QueriesAreNotServed) {
    start();
    RequestScope scope(*broker);
    ResultCollector result(scope, ResultKind::instances);
    const CMPIStatus status = instanceMI->ft->execQuery(instanceMI, ContextObject::make(scope.arena()), &result,
                                                        scope.make().path(implementationNamespace, fcPort),
                                                        "SELECT * FROM Merolt_FCHBA_FCPort", "WQL");
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(status.msg, nullptr);
    EXPECT_EQ(result.doneCount(), 0U);
}

TEST_F(RefusalTest, DuringTheFirstBuildOnlySetInstanceWaits) {
    Gate build;
    tavikLibrary.onInitialize = [&] { build.pass(); };
    instanceMI = createInstanceMI();
    build.waitForArrival();
    auto change = std::async(std::launch::async, [&] { return modifyInstance(computerSystem); });
    auto enumeration = std::async(std::launch::async, [&] { return enumerateInstances(computerSystem); });
    expectRefusal(createInstance(computerSystem), "Merolt_CNA_Provider cannot create");
    expectRefusal(deleteInstance(computerSystem), "Merolt_CNA_Provider cannot delete");
    EXPECT_EQ(change.wait_for(aMoment), std::future_status::timeout);
    EXPECT_EQ(enumeration.wait_for(aMoment), std::future_status::timeout);
    build.open();
    ASSERT_EQ(change.wait_for(longEnough), std::future_status::ready);
    expectRefusal(change.get(), "Merolt_CNA_Provider cannot set");
    ASSERT_EQ(enumeration.wait_for(longEnough), std::future_status::ready);
    EXPECT_EQ(enumeration.get().objects.size(), 1U);
}

class MethodTest : public DispatchTest {
protected:
    static constexpr const char* waiting = "invokeMethod is waiting for the provider to initialize...";

    void SetUp() override { switchLogsOn(); }
};

TEST_F(MethodTest, OfAClassWithoutMethodsAnswersWithNothing) {
    start();
    const unsigned long slept = services.sleptHere();
    hooks.takeTestedClasses();
    const Answer answer = invokeMethod(computerSystem, "Restart");
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.doneCount, 1U);
    const Names tested = {"Merolt_FCHBA_SoftwareInstallationService", "Merolt_NIC_SoftwareInstallationService"};
    EXPECT_EQ(hooks.takeTestedClasses(), tested);
    EXPECT_EQ(services.sleptHere(), slept) << "nothing to wait for after the first build";
    EXPECT_TRUE(inOrder(logLines(), {"Entering Merolt_CNA_Provider invokeMethod: classname = " +
                                         std::string(computerSystem) + ", MethodName=Restart",
                                     "Exiting  Merolt_CNA_Provider invokeMethod", ""}));
    expectLocksFree();
}

TEST_F(MethodTest, GivesUpWaitingForALongFirstBuildAfterTenSecondsAndThenWaitsForTheLock) {
    // The build goes on when the five waits are over.
    constexpr unsigned long startAndWaits = 2000 + 5 * 2000;
    std::promise<void> begun;
    tavikLibrary.onInitialize = [&] {
        begun.set_value();
        while (services.sleptHere() < startAndWaits)
            std::this_thread::yield();
    };
    instanceMI = createInstanceMI();
    methodMI = createMethodMI();
    begun.get_future().wait(); // servers may start a thread late
    EXPECT_TRUE(invokeMethod(computerSystem, "Restart").isOk());
    EXPECT_EQ(services.sleptHere(), startAndWaits);
    EXPECT_EQ(occurrences(logLines(), waiting), 5U);
    EXPECT_TRUE(inOrder(logLines(), {waiting, "Merolt_CNA_Provider::time taken to initialize devices: 0 seconds.",
                                     "Entering Merolt_CNA_Provider invokeMethod: classname = " +
                                         std::string(computerSystem) + ", MethodName=Restart"}));
}

TEST_F(MethodTest, StopsWaitingWhenTheFirstBuildIsOver) {
    Gate build;
    tavikLibrary.onInitialize = [&] { build.pass(); };
    instanceMI = createInstanceMI();
    methodMI = createMethodMI();
    build.waitForArrival();
    services.afterSleep = [&] {
        if (services.sleptHere() < 2000 + 2 * 2000) return;
        build.open();
        services.waitUntilIdle();
    };
    EXPECT_TRUE(invokeMethod(computerSystem, "Restart").isOk());
    services.afterSleep = nullptr;
    EXPECT_EQ(occurrences(logLines(), waiting), 2U);
}

TEST_F(MethodTest, AnUnreadableClassNameFailsTheRequestWithTheServersStatus) {
    start();
    methodMI = createMethodMI();
    RequestScope scope(*broker);
    ResultCollector result(scope, ResultKind::data);
    ObjectPathObject* path = scope.make().path(implementationNamespace, computerSystem);
    CMPIObjectPathFT unreadable = withoutClassName(*path->ft);
    path->ft = &unreadable;
    const CMPIStatus status =
        methodMI->ft->invokeMethod(methodMI, ContextObject::make(scope.arena()), &result, path, "Restart",
                                   cimhost::ArgsObject::make(scope.arena()), cimhost::ArgsObject::make(scope.arena()));
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(result.doneCount(), 1U);
    EXPECT_NE(readFile("Merolt_CNA_Provider.log").find("Merolt_CNA_Provider: invokeMethod error getting ClassName\n\n"),
              std::string::npos);
    expectLocksFree();
}

TEST_F(MethodTest, AStatusThatLeavesTheMethodReachesTheClientUnchangedAndLeavesNoLockHeld) {
    start();
    hooks.beforeClassPathIsA = [] { return CMPI_RC_ERR_INVALID_CLASS; };
    const Answer answer = invokeMethod(computerSystem, "Restart");
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(answer.doneCount, 0U);
    expectLocksFree();
}

} // namespace
