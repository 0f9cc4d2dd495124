// What the requests on every class of a pattern have in common: what they read of the request's path and in which
// order, what they log, and how each bad input ends. Called past the dispatcher, as the associations do.
#include "adapters.h"
#include "family_call.h"
#include "provider_host.h"

#include "classes/ethernet/ethernet_port.h"
#include "classes/ethernet/network_port.h"
#include "classes/instance.h"
#include "classes/list_class.h"
#include "classes/server/cimxml_comm_mech.h"
#include "classes/server/computer_system.h"
#include "classes/server/namespace.h"
#include "classes/server/object_manager.h"
#include "classes/storage/fc_port.h"

#include <functional>

using namespace adapters;
using namespace merolt;
using cimhost::ResultKind;

namespace {

using Names = std::vector<std::string>;

constexpr CMPIrc refused = CMPI_RC_ERR_ACCESS_DENIED;

/// A class, and the key of its first object in the fleet of these tests.
struct Family {
    std::string name;
    std::string cimClass;
    std::string key;
    std::string firstKey;
    EnumInstanceNames enumInstanceNames;
    EnumInstances enumInstances;
    GetInstance getInstance;
};

void PrintTo(const Family& family, std::ostream* stream) { *stream << family.name; }

std::string nameOf(const testing::TestParamInfo<Family>& info) { return info.param.name; }

#define FAMILY_FUNCTIONS(side, X) side::enumInstanceNames_##X, side::enumInstances_##X, side::getInstance_##X

class FamilyTest : public ProviderTest, public testing::WithParamInterface<Family> {
protected:
    FamilyTest() {
        services.address = std::nullopt;
        switchLogsOn();
        tavikLibrary.setFleet(fleet({card("S1", {storageFunction(1, 0xA107), nicFunction(1, 1)})}));
        start();
        takeLogLines();
    }

    FamilyAnswer names() { return callFamily(*broker, ResultKind::paths, path, GetParam().enumInstanceNames); }

    FamilyAnswer instances() {
        return callFamily(*broker, ResultKind::instances, path, [](auto& context, auto& result, auto& cop) {
            return GetParam().enumInstances(context, result, cop, nullptr);
        });
    }

    FamilyAnswer one() { return getOne(true); }
    FamilyAnswer existence() { return getOne(false); }

    /// An error line of the operation, as most classes word it.
    static std::string line(const std::string& operation, const std::string& text) {
        return operation + '_' + GetParam().name + ": " + text;
    }

    WatchedPath path{*broker, GetParam().cimClass, implementationNamespace};

private:
    FamilyAnswer getOne(bool returnInstance) {
        return callFamily(*broker, ResultKind::instances, path, [&](auto& context, auto& result, auto& cop) {
            return GetParam().getInstance(context, result, cop, nullptr, returnInstance);
        });
    }
};

// The storage pattern.

class StoragePatternTest : public FamilyTest {};

INSTANTIATE_TEST_SUITE_P(
    EachClass, StoragePatternTest,
    testing::Values(Family{"FCPort", "Merolt_FCHBA_FCPort", "DeviceID", "A00000_20000002C90000F1_20000002C9000001",
                           FAMILY_FUNCTIONS(storage, FCPort)},
                    Family{"ComputerSystem", "Merolt_Adapter_ComputerSystem", "Name", "testhost",
                           FAMILY_FUNCTIONS(server, ComputerSystem)},
                    Family{"ObjectManager", "Merolt_FCHBA_ObjectManager", "Name", "pegasus:testhost",
                           FAMILY_FUNCTIONS(server, ObjectManager)},
                    Family{"CIMXMLCommMech", "Merolt_FCHBA_CIMXMLCommMech", "Name", "CIMXML Communication Mechanism",
                           FAMILY_FUNCTIONS(server, CIMXMLCommMech)},
                    Family{"Namespace", "Merolt_FCHBA_Namespace", "Name", "root/merolt_cmpi",
                           FAMILY_FUNCTIONS(server, Namespace)}),
    nameOf);

TEST_P(StoragePatternTest, EnumerationsReadTheClassNameFirstAndLogTheirWayInAndOut) {
    EXPECT_GE(names().returned, 1U);
    EXPECT_EQ(path.reads, (Names{"class name", "namespace"}));
    EXPECT_EQ(takeLogLines(), (Names{"Entering enumInstanceNames_" + GetParam().name,
                                     "Exiting  enumInstanceNames_" + GetParam().name}));
    path.reads.clear();
    const FamilyAnswer answer = instances();
    EXPECT_EQ(answer.rc, CMPI_RC_OK);
    EXPECT_GE(answer.returned, 1U);
    EXPECT_EQ(answer.doneCount, 0U);
    EXPECT_EQ(path.reads, (Names{"class name", "namespace"}));
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering enumInstances_" + GetParam().name, "Exiting  enumInstances_" + GetParam().name}));
}

TEST_P(StoragePatternTest, UnreadableClassNameEndsAnEnumerationWithItsStatus) {
    path.classNameStatus = refused;
    for (const std::string operation : {"enumInstanceNames", "enumInstances"}) {
        path.reads.clear();
        const FamilyAnswer answer = operation == "enumInstances" ? instances() : names();
        EXPECT_EQ(answer.rc, refused);
        EXPECT_FALSE(answer.thrown);
        EXPECT_EQ(answer.returned, 0U);
        EXPECT_EQ(path.reads, Names{"class name"});
        EXPECT_EQ(takeLogLines(), (Names{"Entering " + operation + '_' + GetParam().name,
                                         line(operation, "Error getting classname, status.rc=2!")}));
    }
}

TEST_P(StoragePatternTest, UnreadableNamespaceEndsAnEnumerationWithItsStatus) {
    path.nameSpaceStatus = refused;
    for (const std::string operation : {"enumInstanceNames", "enumInstances"}) {
        const FamilyAnswer answer = operation == "enumInstances" ? instances() : names();
        EXPECT_EQ(answer.rc, refused);
        EXPECT_FALSE(answer.thrown);
        EXPECT_EQ(answer.returned, 0U);
        EXPECT_EQ(takeLogLines(), (Names{"Entering " + operation + '_' + GetParam().name,
                                         line(operation, "Error getting namespace, status.rc=2!")}));
    }
}

TEST_P(StoragePatternTest, OneObjectIsFoundByItsKeyBeforeTheOtherNamesAreRead) {
    path.keyText = GetParam().firstKey;
    const FamilyAnswer answer = one();
    EXPECT_EQ(answer.rc, CMPI_RC_OK);
    EXPECT_EQ(answer.returned, 1U);
    EXPECT_EQ(answer.doneCount, 0U);
    EXPECT_EQ(path.reads, (Names{"key " + GetParam().key, "class name", "namespace"}));
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering getInstance_" + GetParam().name, "Exiting  getInstance_" + GetParam().name}));
}

TEST_P(StoragePatternTest, ExistenceIsToldFromTheKeyAloneAndNothingIsReturned) {
    path.keyText = GetParam().firstKey;
    path.classNameStatus = refused;
    path.nameSpaceStatus = refused;
    const FamilyAnswer answer = existence();
    EXPECT_EQ(answer.rc, CMPI_RC_OK);
    EXPECT_EQ(answer.returned, 0U);
    EXPECT_EQ(path.reads, Names{"key " + GetParam().key});
    EXPECT_EQ(takeLogLines(),
              (Names{"Entering getInstance_" + GetParam().name, "Exiting  getInstance_" + GetParam().name}));
}

TEST_P(StoragePatternTest, MissingObjectIsThrownWhetherItWasToBeReturnedOrNot) {
    path.keyText = "no such object";
    for (const bool returned : {true, false}) {
        const FamilyAnswer answer = returned ? one() : existence();
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.message, "no such object");
        EXPECT_TRUE(answer.thrown);
        const Names lines = takeLogLines();
        ASSERT_EQ(lines.size(), 2U);
        const std::string text = line("getInstance", "Error no matching instance found, KeyValue=no such object");
        EXPECT_EQ(lines[1].substr(0, text.size()), text);
    }
}

TEST_P(StoragePatternTest, UnreadableKeyEndsWithItsStatus) {
    path.keyStatus = refused;
    const FamilyAnswer answer = one();
    EXPECT_EQ(answer.rc, refused);
    EXPECT_FALSE(answer.thrown);
    EXPECT_EQ(path.reads, Names{"key " + GetParam().key});
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_" + GetParam().name,
                                     line("getInstance", "Error getting key data, status.rc=2!")}));
}

TEST_P(StoragePatternTest, KeyOfAnotherTypeEndsAsSuccessWithoutAnInstance) {
    path.keyType = CMPI_uint32;
    const FamilyAnswer answer = one();
    EXPECT_EQ(answer.rc, CMPI_RC_OK);
    EXPECT_FALSE(answer.thrown);
    EXPECT_EQ(answer.returned, 0U);
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_" + GetParam().name,
                                     line("getInstance", "Error invalid key data type, keyData.type=160!")}));
}

TEST_P(StoragePatternTest, UnreadableNamesOfAFoundObjectEndWithTheirStatus) {
    path.keyText = GetParam().firstKey;
    path.nameSpaceStatus = refused;
    FamilyAnswer answer = one();
    EXPECT_EQ(answer.rc, refused);
    EXPECT_EQ(answer.returned, 0U);
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_" + GetParam().name,
                                     line("getInstance", "Error getting namespace, status.rc=2!")}));
    path.classNameStatus = refused;
    answer = one();
    EXPECT_EQ(answer.rc, refused);
    EXPECT_EQ(answer.returned, 0U);
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_" + GetParam().name,
                                     line("getInstance", "Error getting classname, status.rc=2!")}));
}

// Records that were not finished.

class UnfinishedRecordTest : public ProviderTest {
protected:
    void startWithTwoPortsOfOneKey() {
        switchLogsOn();
        tavik::StorageFunction twin = storageFunction(1, 0xA107);
        twin.handle = 2;
        twin.deviceNumber = 2;
        tavikLibrary.setFleet(fleet({card("S1", {storageFunction(1, 0xA107), twin})}));
        start();
        takeLogLines();
    }

    FamilyAnswer getPort() {
        WatchedPath path(*broker, "Merolt_FCHBA_FCPort", implementationNamespace);
        path.keyText = key;
        return callFamily(*broker, ResultKind::instances, path, [](auto& context, auto& result, auto& cop) {
            return storage::getInstance_FCPort(context, result, cop, nullptr, true);
        });
    }

    const std::string key = "a00000_20000002c90000f1_20000002c9000001";
    const std::string passedOver = "getInstance_FCPort: Found a device that has the same DeviceID but the entry is "
                                   "invalid.  Move on...";
};

TEST_F(UnfinishedRecordTest, IsPassedOverForALaterRecordOfTheSameKey) {
    startWithTwoPortsOfOneKey();
    storage::g_fcPortList[0].valid = 0;
    EXPECT_EQ(getPort().returned, 1U);
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_FCPort", passedOver, "Exiting  getInstance_FCPort"}));
}

TEST_F(UnfinishedRecordTest, IsNotFoundIfNoOtherHasItsKey) {
    startWithTwoPortsOfOneKey();
    storage::g_fcPortList[0].valid = 0;
    storage::g_fcPortList[1].valid = 0;
    const FamilyAnswer answer = getPort();
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(answer.message, key);
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_FCPort", passedOver, passedOver,
                                     "getInstance_FCPort: Error no matching instance found, KeyValue=" + key + '!'}));
}

TEST_F(UnfinishedRecordTest, IsStillEnumeratedByMostClasses) {
    startWithTwoPortsOfOneKey();
    storage::g_fcPortList[0].valid = 0;
    WatchedPath path(*broker, "Merolt_FCHBA_FCPort", implementationNamespace);
    EXPECT_EQ(callFamily(*broker, ResultKind::paths, path, storage::enumInstanceNames_FCPort).returned, 2U);
}

// A class whose enumerations pass unfinished records over, and whose key has another name.

struct Thing {
    const char* tag;
    bool valid;
};

const Thing things[] = {{"one", false}, {"two", true}, {"ONE", true}};

const ListClass thingClass = {
    .name = "Thing",
    .key = "Tag",
    .count = [] { return static_cast<int>(std::size(things)); },
    .keyText = [](int index) { return things[index].tag; },
    .makePath =
        [](const char* className, const char* nameSpace, int index) {
            CmpiObjectPath path(nameSpace, className);
            path.setKey("Tag", CmpiData(things[index].tag));
            return path;
        },
    .makeInstance =
        [](const char* className, const char* nameSpace, const char** properties, int index) {
            static const char* keys[] = {"Tag", nullptr};
            CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
            instance.setProperty("Tag", CmpiData(things[index].tag));
            return instance;
        },
    .valid = [](int index) { return things[index].valid; },
    .enumerationSkipsInvalid = true,
};

TEST_F(UnfinishedRecordTest, IsLeftOutWhereTheClassWantsIt) {
    switchLogsOn();
    start();
    takeLogLines();
    WatchedPath path(*broker, "Test_Thing", implementationNamespace);
    const auto enumerate = [](auto&, auto& result, auto& cop) { return enumInstanceNames(thingClass, result, cop); };
    EXPECT_EQ(callFamily(*broker, ResultKind::paths, path, enumerate).returned, 2U);
    const auto enumerateAll = [](auto&, auto& result, auto& cop) {
        return enumInstances(thingClass, result, cop, nullptr);
    };
    EXPECT_EQ(callFamily(*broker, ResultKind::instances, path, enumerateAll).returned, 2U);
    takeLogLines();
    path.keyText = "One";
    const auto get = [](auto&, auto& result, auto& cop) {
        return merolt::getInstance(thingClass, result, cop, nullptr, true);
    };
    EXPECT_EQ(callFamily(*broker, ResultKind::instances, path, get).returned, 1U);
    EXPECT_EQ(takeLogLines(), (Names{"Entering getInstance_Thing",
                                     "getInstance_Thing: Found a device that has the same Tag but the entry is "
                                     "invalid.  Move on...",
                                     "Exiting  getInstance_Thing"}));
}

// The Ethernet pattern.

/// The error lines of a class.
struct EthernetErrors {
    Names nameSpace; ///< of enumInstanceNames, enumInstances, getInstance
    Names className;
    std::string key;
};

EthernetErrors errorsOf(const std::string& name) {
    if (name == "EthernetPort") {
        return {{"Merolt_NIC_EthernetPort: Error getting namespace in enumInstanceNames",
                 "Merolt_NIC_EthernetPort: Error getting namespace in enumIntances",
                 "Merolt_NIC_EthernetPort: Error getting namespace in getIntances"},
                {"Merolt_NIC_EthernetPort: Error getting ClassName in enumInstanceNames",
                 "Merolt_NIC_EthernetPort: Error getting classname in enumIntances",
                 "Merolt_NIC_EthernetPort: Error getting classname in getIntances"},
                "Merolt_NIC_EthernetPort: Error getting DeviceID key in findMatchedRole1"};
    }
    return {Names(3, "Merolt_NIC_NetworkPort: Error getting namespace"),
            Names(3, "Merolt_NIC_NetworkPort: Error getting ClassName"),
            "Merolt_NIC_NetworkPort: Error getting DeviceID key in findMatchedRole1"};
}

class EthernetPatternTest : public FamilyTest {
protected:
    /// The operations in the order of the error lines.
    std::vector<std::function<FamilyAnswer()>> operations() {
        return {[this] { return names(); }, [this] { return instances(); }, [this] { return one(); }};
    }

    /// The line behind the entry line; both end in a line feed of their own.
    std::string errorLine() {
        const Names lines = takeLogLines();
        return lines.size() == 4 && lines[1].empty() && lines[3].empty() ? lines[2] : "not logged like that";
    }

    /// Each operation ends with the status of its last read and one of the lines, in their order.
    void expectEachIsRefused(const Names& reads, const Names& lines) {
        for (std::size_t index = 0; index < 3; ++index) {
            path.reads.clear();
            const FamilyAnswer answer = operations()[index]();
            EXPECT_EQ(answer.rc, refused);
            EXPECT_FALSE(answer.thrown);
            EXPECT_EQ(answer.returned, 0U);
            EXPECT_EQ(path.reads, reads);
            EXPECT_EQ(errorLine(), lines[index]);
        }
    }

    const EthernetErrors errors = errorsOf(GetParam().name);
};

INSTANTIATE_TEST_SUITE_P(EachClass, EthernetPatternTest,
                         testing::Values(Family{"EthernetPort", "Merolt_NIC_EthernetPort2", "DeviceID", "020000000001",
                                                FAMILY_FUNCTIONS(ethernet, EthernetPort)},
                                         Family{"NetworkPort", "Merolt_NIC_NetworkPort", "DeviceID", "S1_1",
                                                FAMILY_FUNCTIONS(ethernet, NetworkPort)}),
                         nameOf);

TEST_P(EthernetPatternTest, EnumerationsReadTheNamespaceFirst) {
    for (const auto& operation : {operations()[0], operations()[1]}) {
        path.reads.clear();
        const FamilyAnswer answer = operation();
        EXPECT_EQ(answer.rc, CMPI_RC_OK);
        EXPECT_EQ(answer.returned, 1U);
        EXPECT_EQ(answer.doneCount, 0U);
        EXPECT_EQ(path.reads, (Names{"namespace", "class name"}));
    }
}

TEST_P(EthernetPatternTest, OneObjectIsSoughtAfterEverythingWasRead) {
    path.keyText = GetParam().firstKey;
    EXPECT_EQ(one().returned, 1U);
    EXPECT_EQ(path.reads, (Names{"namespace", "class name", "key DeviceID"}));
}

TEST_P(EthernetPatternTest, UnreadableNamespaceEndsEachOperationWithItsStatus) {
    path.nameSpaceStatus = refused;
    expectEachIsRefused({"namespace"}, errors.nameSpace);
}

TEST_P(EthernetPatternTest, UnreadableClassNameEndsEachOperationWithItsStatus) {
    path.classNameStatus = refused;
    expectEachIsRefused({"namespace", "class name"}, errors.className);
}

TEST_P(EthernetPatternTest, UnreadableKeyEndsWithItsStatus) {
    path.keyStatus = refused;
    const FamilyAnswer answer = one();
    EXPECT_EQ(answer.rc, refused);
    EXPECT_FALSE(answer.thrown);
    EXPECT_EQ(errorLine(), errors.key);
}

TEST_P(EthernetPatternTest, KeyOfAnotherTypeEndsAsSuccessWithoutAnInstance) {
    path.keyType = CMPI_uint64;
    const FamilyAnswer answer = one();
    EXPECT_EQ(answer.rc, CMPI_RC_OK);
    EXPECT_FALSE(answer.thrown);
    EXPECT_EQ(answer.returned, 0U);
    EXPECT_EQ(errorLine(), errors.key);
}

TEST_P(EthernetPatternTest, ExistenceIsToldAndNothingIsReturned) {
    path.keyText = GetParam().firstKey;
    const FamilyAnswer answer = existence();
    EXPECT_EQ(answer.rc, CMPI_RC_OK);
    EXPECT_EQ(answer.returned, 0U);
    // The instance is made before it is known whether it is wanted, and that shows in the log.
    EXPECT_EQ(takeLogLines().size(), 4U);
}

TEST_P(EthernetPatternTest, MissingObjectIsThrownWhetherItWasToBeReturnedOrNot) {
    path.keyText = "no such port";
    for (const bool returned : {true, false}) {
        const FamilyAnswer answer = returned ? one() : existence();
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.message, "no such port");
        EXPECT_TRUE(answer.thrown);
        EXPECT_EQ(takeLogLines().size(), 2U);
    }
}

} // namespace
