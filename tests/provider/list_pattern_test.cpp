// What the twelve classes over a list have in common, each under its own name and key.
#include "class_support.h"
#include "family_call.h"

#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "classes/physical/product.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/fc_port_statistics.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/port_controller.h"
#include "classes/storage/scsi_protocol_controller.h"
#include "classes/storage/scsi_protocol_endpoint_hba.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"

#include <algorithm>
#include <cctype>

using namespace adapters;
using namespace merolt;

namespace {

using cimhost::ResultKind;
using Lines = std::vector<std::string>;
using Keys = std::vector<std::string>;

const Keys systemScope = {"SystemCreationClassName", "SystemName", "CreationClassName"};

struct ListRow {
    const char* name;
    const char* className;
    const char* key;
    const char* keyText;
    const char* property; ///< one that is no key
    Keys keys;            ///< in the order of the path
    bool skipsInvalid;
    EnumInstanceNames enumInstanceNames;
    EnumInstances enumInstances;
    GetInstance getInstance;
    std::uint8_t& (*valid)();
};

void PrintTo(const ListRow& row, std::ostream* stream) { *stream << row.name; }

Keys systemScopedBy(const char* key) {
    Keys keys = systemScope;
    keys.emplace_back(key);
    return keys;
}

#define FUNCTIONS(side, X, list)                                                                                       \
    side::enumInstanceNames_##X, side::enumInstances_##X, side::getInstance_##X,                                       \
        []() -> std::uint8_t& { return side::list[0].valid; }

// clang-format off
const ListRow rows[] = {
    {"FCPort", "Merolt_FCHBA_FCPort", "DeviceID", "A00007_20000002C90000F1_20000002C9000001", "Model",
     systemScopedBy("DeviceID"), false, FUNCTIONS(storage, FCPort, g_fcPortList)},
    {"PortController", "Merolt_FCHBA_PortController", "DeviceID", "A00007", "ControllerType",
     systemScopedBy("DeviceID"), false, FUNCTIONS(storage, PortController, g_portControllerList)},
    {"FCPortStatistics", "Merolt_FCHBA_FCPortStatistics", "InstanceID", "20000002C90000F1_20000002C9000001", "NOSCount",
     {"InstanceID"}, false, FUNCTIONS(storage, FCPortStatistics, g_fcPortStatisticsList)},
    {"LogicalPortGroup", "Merolt_FCHBA_LogicalPortGroup", "InstanceID",
     "192.0.2.10_A00007_20000002C90000F1_20000002C9000001", "NameFormat",
     {"InstanceID"}, false, FUNCTIONS(storage, LogicalPortGroup, g_logicalPortGroupList)},
    {"PhysicalConnector", "Merolt_Adapter_PhysicalConnector", "Tag", "SFP1_A00007_0", "SFPStatus",
     {"CreationClassName", "Tag"}, true, FUNCTIONS(physical, PhysicalConnector, g_physicalConnectorList)},
    {"PhysicalPackage", "Merolt_Adapter_PhysicalPackage", "Tag", "A00007", "PackageType",
     {"Tag", "CreationClassName"}, false, FUNCTIONS(physical, PhysicalPackage, g_physicalPackageList)},
    {"Product", "Merolt_Adapter_Product", "IdentifyingNumber", "A00007", "AdapterType",
     {"Name", "IdentifyingNumber", "Vendor", "Version"}, false, FUNCTIONS(physical, Product, g_productList)},
    {"SCSIProtocolController", "Merolt_FCHBA_SCSIProtocolController", "DeviceID", "20000002C9000001", "MaxUnitsControlled",
     systemScopedBy("DeviceID"), false, FUNCTIONS(storage, SCSIProtocolController, g_scsiProtocolControllerList)},
    {"SCSIProtocolEndpointHBA", "Merolt_FCHBA_SCSIProtocolEndpointHBA", "Name", "20000002C9000001", "Role",
     systemScopedBy("Name"), false, FUNCTIONS(storage, SCSIProtocolEndpointHBA, g_scsiEndpointHBAList)},
    {"SCSIProtocolEndpointTarget", "Merolt_FCHBA_SCSIProtocolEndpointTarget", "Name", "20000002C9000001_20000002C90000AA", "Role",
     systemScopedBy("Name"), false, FUNCTIONS(storage, SCSIProtocolEndpointTarget, g_scsiEndpointTargetList)},
    {"StorageExtent", "Merolt_FCHBA_StorageExtent", "DeviceID",
     "20000002C9000001_20000002C90000AA_ABCDEF0000000000_3", "LunID",
     systemScopedBy("DeviceID"), true, FUNCTIONS(storage, StorageExtent, g_storageExtentList)},
    {"PhysicalPort", "Merolt_Adapter_PhysicalPort", "Tag", "A00007_0", "PortNumber",
     {"CreationClassName", "Tag"}, true, FUNCTIONS(physical, PhysicalPort, g_physicalPortList)},
};
// clang-format on

#undef FUNCTIONS

/// One card, of which every class has one instance.
tavik::Card cardWithOneOfEach() {
    tavik::Lun lun;
    lun.number = 3;
    lun.identifier = {0xAB, 0xCD, 0xEF};
    tavik::Target target;
    target.portName = worldWideName(0xAA);
    target.luns.push_back(lun);
    tavik::StorageFunction function = storageFunction(1, chips::chip7);
    function.transceiver = transceiver("SFP1");
    function.targets.push_back(target);
    tavik::Card made = card("A00007", {function});
    made.version = "1.0";
    return made;
}

class ListPatternTest : public ClassTest, public testing::WithParamInterface<ListRow> {
protected:
    void SetUp() override {
        switchLogsOn();
        startWith({cardWithOneOfEach()});
        takeLogLines();
    }

    const ListRow& row = GetParam();
    const std::string name = row.name;

    KeyValues keyOf(const std::string& text) const { return {{row.key, text}}; }

    WatchedPath& pathTo(const std::string& text) {
        path.keyText = text;
        return path;
    }

    FamilyAnswer names(WatchedPath& of) { return callFamily(*broker, ResultKind::paths, of, row.enumInstanceNames); }

    FamilyAnswer instances(WatchedPath& of) {
        return callFamily(*broker, ResultKind::instances, of, [&](auto& context, auto& result, auto& cop) {
            return row.enumInstances(context, result, cop, nullptr);
        });
    }

    FamilyAnswer one(WatchedPath& of, bool returnInstance) {
        return callFamily(*broker, ResultKind::instances, of, [&](auto& context, auto& result, auto& cop) {
            return row.getInstance(context, result, cop, nullptr, returnInstance);
        });
    }

    WatchedPath path{*broker, row.className, implementationNamespace};
};

INSTANTIATE_TEST_SUITE_P(Lists, ListPatternTest, testing::ValuesIn(rows),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(ListPatternTest, ObjectsHaveTheClassAndNamespaceOfTheRequestAndTheClassesOwnKey) {
    for (const char* nameSpace : {"root/merolt_cmpi", "root/elsewhere"}) {
        std::vector<TestObject> objects = enumerateInstanceNames(row.className, nameSpace).objects;
        ASSERT_EQ(objects.size(), 1U);
        EXPECT_EQ(objects[0].names, row.keys);
        for (const Answer& answer : {enumerateInstances(row.className, std::nullopt, nameSpace),
                                     getInstance(row.className, keyOf(row.keyText), std::nullopt, nameSpace)})
            objects.insert(objects.end(), answer.objects.begin(), answer.objects.end());
        ASSERT_EQ(objects.size(), 3U);
        EXPECT_EQ(objects[1].values, objects[2].values);
        for (const TestObject& object : objects) {
            EXPECT_EQ(object.className, row.className);
            EXPECT_EQ(object.nameSpace, nameSpace);
            EXPECT_EQ(object[row.key], inQuotes(row.keyText));
        }
    }
}

TEST_P(ListPatternTest, PropertyListGivesTheKeysAndTheListedPropertiesOnly) {
    Keys wanted = row.keys;
    wanted.emplace_back(row.property);
    std::sort(wanted.begin(), wanted.end());
    const std::vector<std::string> list = {row.property, "Unknown"};
    for (const Answer& answer :
         {enumerateInstances(row.className, list), getInstance(row.className, keyOf(row.keyText), list)}) {
        ASSERT_EQ(answer.objects.size(), 1U);
        Keys shown = answer.objects[0].names;
        std::sort(shown.begin(), shown.end());
        EXPECT_EQ(shown, wanted);
    }
}

TEST_P(ListPatternTest, OperationsLogTheirOwnNames) {
    enumerateInstanceNames(row.className);
    EXPECT_TRUE(inOrder(takeLogLines(),
                        {"Entering Merolt_CNA_Provider enumInstanceNames: classname = " + std::string(row.className),
                         "Entering enumInstanceNames_" + name, "Exiting  enumInstanceNames_" + name,
                         "Exiting  Merolt_CNA_Provider enumInstanceNames"}));
    enumerateInstances(row.className);
    EXPECT_TRUE(inOrder(takeLogLines(), {"Entering enumInstances_" + name, "Exiting  enumInstances_" + name}));
    getInstance(row.className, keyOf(row.keyText));
    EXPECT_TRUE(inOrder(takeLogLines(), {"Entering getInstance_" + name, "Exiting  getInstance_" + name}));
}

TEST_P(ListPatternTest, KeyInAnotherLetterCaseFindsTheInstance) {
    std::string lower = row.keyText;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    const Answer answer = getInstance(row.className, keyOf(lower));
    ASSERT_EQ(answer.objects.size(), 1U);
    EXPECT_EQ(answer.objects[0][row.key], inQuotes(row.keyText));
}

TEST_P(ListPatternTest, UnknownKeyEndsAsNotFoundWithTheKeyAsMessage) {
    for (const std::string& key : {std::string("none"), row.keyText + std::string("_"), std::string()}) {
        const Answer answer = getInstance(row.className, keyOf(key));
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.message, key);
        EXPECT_TRUE(answer.objects.empty());
        EXPECT_EQ(answer.doneCount, 1U);
        EXPECT_TRUE(inOrder(takeLogLines(),
                            {"Entering getInstance_" + name,
                             "getInstance_" + name + ": Error no matching instance found, KeyValue=" + key + "!",
                             "Merolt_CNA_Provider getInstance caught exception status: 6 " + key}));
    }
}

TEST_P(ListPatternTest, NumericOrMissingKeyEndsAsSuccessWithoutAnInstance) {
    for (const Answer& answer :
         {getInstanceByNumber(row.className, row.key, 7), getInstance(row.className, {{"Another", row.keyText}})}) {
        EXPECT_TRUE(answer.isOk());
        EXPECT_TRUE(answer.objects.empty());
        EXPECT_EQ(answer.doneCount, 1U);
    }
    EXPECT_TRUE(inOrder(takeLogLines(), {"getInstance_" + name + ": Error invalid key data type, keyData.type=240!",
                                         "getInstance_" + name + ": Error getting key data, status.rc=6!"}));
}

TEST_P(ListPatternTest, OnlyTheClassesOwnKeyOfThePathIsLookedAt) {
    KeyValues keys = keyOf(row.keyText);
    for (const std::string& key : row.keys) {
        if (key != row.key) keys.emplace_back(key, "another");
    }
    EXPECT_EQ(getInstance(row.className, keys).objects.size(), 1U);
}

TEST_P(ListPatternTest, TestForExistenceReturnsNothingAndReadsTheKeyOnly) {
    const FamilyAnswer found = one(pathTo(row.keyText), false);
    EXPECT_EQ(found.rc, CMPI_RC_OK);
    EXPECT_EQ(found.returned, 0U);
    EXPECT_EQ(found.doneCount, 0U);
    EXPECT_EQ(path.reads, Keys{std::string("key ") + row.key});
    EXPECT_EQ(takeLogLines(), (Lines{"Entering getInstance_" + name, "Exiting  getInstance_" + name}));
    const FamilyAnswer missed = one(pathTo("none"), false);
    EXPECT_TRUE(missed.thrown);
    EXPECT_EQ(missed.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(missed.message, "none");
}

TEST_P(ListPatternTest, UnreadableClassNameOrNamespaceEndsTheOperationWithTheServersStatus) {
    const auto expectFailure = [&](const FamilyAnswer& answer, const std::string& operation, const std::string& what) {
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
        EXPECT_FALSE(answer.thrown);
        EXPECT_EQ(answer.returned, 0U);
        EXPECT_EQ(takeLogLines(), (Lines{"Entering " + operation + "_" + name,
                                         operation + "_" + name + ": Error getting " + what + ", status.rc=1!"}));
    };
    for (const bool isClassName : {true, false}) {
        WatchedPath& broken = pathTo(row.keyText);
        broken.classNameStatus = isClassName ? CMPI_RC_ERR_FAILED : CMPI_RC_OK;
        broken.nameSpaceStatus = CMPI_RC_ERR_FAILED;
        const std::string what = isClassName ? "classname" : "namespace";
        expectFailure(names(broken), "enumInstanceNames", what);
        expectFailure(instances(broken), "enumInstances", what);
        expectFailure(one(broken, true), "getInstance", what);
    }
    // The names are read after the match: an unknown key fails for itself.
    EXPECT_TRUE(one(pathTo("none"), true).thrown);
}

TEST_P(ListPatternTest, RecordThatIsNotFinishedIsNeverFoundAndShownByMostEnumerations) {
    row.valid() = 0;
    const FamilyAnswer answer = one(pathTo(row.keyText), true);
    EXPECT_TRUE(answer.thrown);
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(takeLogLines(),
              (Lines{"Entering getInstance_" + name,
                     "getInstance_" + name + ": Found a device that has the same " + row.key +
                         " but the entry is invalid.  Move on...",
                     "getInstance_" + name + ": Error no matching instance found, KeyValue=" + row.keyText + "!"}));
    const std::size_t shown = row.skipsInvalid ? 0 : 1;
    EXPECT_EQ(names(path).returned, shown);
    EXPECT_EQ(instances(path).returned, shown);
}

TEST_P(ListPatternTest, WithoutAdaptersEnumerationsAreEmptyAndNoKeyIsFound) {
    for (const bool hasList : {true, false}) {
        tavik::Fleet none;
        if (!hasList) none.cards = std::nullopt;
        tavikLibrary.setNextFleet(none);
        services.pass(181);
        EXPECT_EQ(countOf(row.className), 0U);
        const Answer answer = getInstance(row.className, keyOf(row.keyText));
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.message, row.keyText);
    }
}

TEST_P(ListPatternTest, FunctionsOfUnknownTypesAndEmptyPlacesOfTheTreeAreNoTrouble) {
    tavik::Card withoutPorts = card("S2", {});
    withoutPorts.ports = std::nullopt;
    tavik::Card withoutFunctions = card("S3", {nicFunction(1, 1)});
    withoutFunctions.ports->at(0).functions = std::nullopt;
    tavik::StorageFunction unknown = storageFunction(9, chips::chip7);
    unknown.transceiver = transceiver("SFP9");
    unknown.protocolType = 3;
    tavik::StorageFunction absurd = unknown;
    absurd.protocolType = 0xFFFFFFFF;
    tavik::Card last = cardWithOneOfEach();
    std::get<tavik::StorageFunction>(last.ports->at(0).functions->at(0)).protocolType = 1;
    refreshTo({withoutPorts, withoutFunctions, card("S4", {}), card("S5", {unknown, absurd}), last});
    EXPECT_EQ(getInstance(row.className, keyOf(row.keyText)).objects.size(), 1U);
    // Cards count as products, and jacks as ports, whatever runs over them.
    const std::size_t others = name == "Product" ? 4 : name == "PhysicalPort" ? 3 : 0;
    EXPECT_EQ(countOf(row.className), others + 1);
}

} // namespace
