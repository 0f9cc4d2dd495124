// Associations at their edges: where the two directions of one disagree, where a search stops early or repeats itself,
// and where what a client sends fits nothing.
#include "broker_hooks.h"
#include "fleets.h"
#include "request_hooks.h"
#include "world_test.h"

#include "associations/families.h"
#include "log/log.h"

#include "CmpiContext.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string_view>

using namespace adapters;

namespace {

using Texts = std::vector<std::string>;

constexpr const char* host = "Merolt_Adapter_ComputerSystem";
constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* jack = "Merolt_Adapter_PhysicalPort";
constexpr const char* connector = "Merolt_Adapter_PhysicalConnector";
constexpr const char* package = "Merolt_Adapter_PhysicalPackage";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* nicController = "Merolt_NIC_PortController";
constexpr const char* nicSoftware = "Merolt_NIC_SoftwareIdentity";
constexpr const char* lanEndpoint = "Merolt_NIC_LANEndpoint";
constexpr const char* profile = "Merolt_NIC_RegisteredProfile";
constexpr const char* conformance = "Merolt_NIC_ElementConformsToRegisteredProfile";

class AssociationEdgeTest : public WorldTest {
protected:
    /// How many objects an association finds from there; the request must succeed.
    std::size_t countFrom(const Path& source, const std::string& association) {
        const Reply reply = askFor(Operation::associatorNames, source, association);
        EXPECT_EQ(reply.rc, CMPI_RC_OK) << reply.message;
        EXPECT_EQ(askFor(Operation::referenceNames, source, association).rows.size(), reply.rows.size());
        return reply.rows.size();
    }

    Path named(const std::string& className, const std::string& key) {
        for (const Path& path : names(className)) {
            if (path[lookedUpKey(path)] == key) return path;
        }
        ADD_FAILURE() << "no " << className << ' ' << key;
        return classPath(className);
    }

    Path profilePath(const std::string& number) { return {"root/PG_InterOp", profile, {{"InstanceID", number}}}; }

    /// One key of every far end, in order.
    static Texts keys(const Reply& reply, const std::string& name) {
        Texts texts;
        for (const Row& row : reply.rows) {
            for (const auto& [itsName, value] : row.values) {
                if (itsName == name) texts.push_back(value);
            }
        }
        return texts;
    }
};

// The pattern.

TEST_F(AssociationEdgeTest, HostWithoutCardsKeepsTheRowsOfWhatIsAlwaysThere) {
    serve(fleet({}));
    learn();
    Texts found;
    forEachFamily([&] {
        const std::size_t rows = instanceNames(classPath(family.associationClass)).rows.size();
        EXPECT_EQ(instances(classPath(family.associationClass)).rows.size(), rows);
        if (rows > 0) found.push_back(family.associationClass + ' ' + std::to_string(rows));
    });
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (Texts{"Merolt_FCHBA_ComputerSystemCommMech 1", "Merolt_FCHBA_ComputerSystemObjectManager 1",
                            "Merolt_FCHBA_ComputerSystemSoftwareInstallationService 1",
                            "Merolt_FCHBA_ObjectManagerCommMech 1", "Merolt_FCHBA_ObjectManagerNamespace 2",
                            "Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities 1"}));
}

TEST_F(AssociationEdgeTest, GetInstanceAnswersForAPairThatWasNeverEnumerated) {
    serveCards();
    const Family jackOfPort = familyOf("Merolt_FCHBA_PhysicalPortFCPort");
    const Path left = named(jack, "MLE004_1");
    const Path right = first(fcPort);
    const Reply reply = instance(associationPath(jackOfPort, left, right));
    EXPECT_EQ(reply.texts(), Rows{associationInstance(jackOfPort, left, right).text()});
}

TEST_F(AssociationEdgeTest, GetInstanceByTheBaseClassSucceedsWithNothing) {
    serveCards();
    const Path path = associationPath(familyOf("Merolt_FCHBA_ComputerSystemFCPort"), first(host), first(fcPort));
    const Reply reply = instance(path.ofClass("CIM_SystemDevice"));
    EXPECT_EQ(reply.rc, CMPI_RC_OK);
    EXPECT_TRUE(reply.rows.empty());
    EXPECT_EQ(instance(path.ofClass("merolt_fchba_computersystemFCPORT")).rows.size(), 1U);
}

TEST_F(AssociationEdgeTest, LeftEndStandsUnderTheFirstRoleAlsoFromTheRight) {
    serveCards();
    const Path port = first(fcPort);
    const Reply reply = askFor(Operation::referenceNames, port, "Merolt_FCHBA_ComputerSystemFCPort");
    EXPECT_EQ(reply.texts(),
              textsOf({associationPath(familyOf("Merolt_FCHBA_ComputerSystemFCPort"), first(host), port)}));
}

TEST_F(AssociationEdgeTest, RequestsOwnPathStandsInTheReferenceWithWhateverKeysItHas) {
    serveCards();
    const Path strange = first(host).with("Name", "another host").with("Extra", "kept");
    const Family ports = familyOf("Merolt_FCHBA_ComputerSystemFCPort");
    EXPECT_EQ(askFor(Operation::referenceNames, strange, ports.associationClass).texts().at(0),
              rowOf(associationPath(ports, strange, first(fcPort))).text());
}

/// The wrapper's result is made by its own drivers only.
struct Result : CmpiResult {
    explicit Result(CMPIResult* result) : CmpiResult(result) {}
};

// Past the dispatcher, which lets no other classes through to a family.
class FamilySearchTest : public AssociationEdgeTest {
protected:
    struct Outcome {
        CMPIrc rc = CMPI_RC_OK;
        std::string message;
        std::size_t rows = 0;
    };

    Outcome references(std::string_view association, const char* sourceClass, const char* resultClass) {
        return call(sourceClass, [&](CmpiResult& result, const CmpiObjectPath& source) {
            return answer(served(association), result, source, {merolt::association::FUNC_REF, resultClass});
        });
    }

    static const merolt::association::Family& served(std::string_view association) {
        using merolt::association::Families;
        for (const Families& side : {merolt::association::storageFamilies(), merolt::association::ethernetFamilies()}) {
            for (const merolt::association::Family* each : side) {
                if (each->className == association) return *each;
            }
        }
        throw std::invalid_argument("no such association");
    }

    template <class Function>
    Outcome call(const char* sourceClass, Function function) {
        ProviderCall call(*broker, cimhost::ResultKind::instances);
        cimhost::ObjectPathObject* path = call.host.make().path(implementationNamespace, sourceClass);
        for (const auto& [name, text] : {std::pair("Name", "192.0.2.10"), std::pair("CreationClassName", host)}) {
            CMPIValue value{};
            value.string = call.host.make().string(text);
            path->addKey(name, &value, CMPI_string);
        }
        if (requestHooks) requestHooks->watch(path, &call.collector);
        call.begin(path);
        Result result(call.result);
        Outcome outcome;
        try {
            const CmpiStatus status = function(result, CmpiObjectPath(call.path));
            outcome.rc = status.rc();
        } catch (const CmpiStatus& status) {
            outcome.rc = status.rc();
            outcome.message = status.msg() ? status.msg() : "";
        }
        call.end();
        outcome.rows = call.collector.instances.size();
        return outcome;
    }
};

TEST_F(FamilySearchTest, StorageSideTakesTheHostByItsBaseClassesAndTheEthernetSideDoesNot) {
    serveCards();
    for (const char* base : {"CIM_ComputerSystem", "CIM_System"}) {
        EXPECT_EQ(references("Merolt_FCHBA_ComputerSystemFCPort", base, nullptr).rows, 8U);
        const Outcome refused = references("Merolt_NIC_ComputerSystemEthernetPort", base, nullptr);
        EXPECT_EQ(refused.rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(refused.message, base);
    }
}

TEST_F(FamilySearchTest, ForeignSourceIsRefusedUnlessTheResultClassFiltersTheRequestOutFirst) {
    serveCards();
    const char* search = "Merolt_NIC_ComputerSystemEthernetPort";
    EXPECT_EQ(references(search, jack, "Merolt_NIC_ComputerSystemLANEndpoint").rc, CMPI_RC_OK);
    EXPECT_EQ(references(search, jack, "Merolt_NIC_ComputerSystemEthernetPort").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(references(search, jack, "").rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(references("Merolt_FCHBA_PhysicalPortFCPort", host, "CIM_NoSuchClass").rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(FamilySearchTest, MechanismOfTheHostLogsAForeignClass) {
    serveCards();
    logFromHere();
    const Outcome refused = references("Merolt_FCHBA_ComputerSystemCommMech", jack, nullptr);
    EXPECT_EQ(refused.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(linesThatBegin(logLines(), "references_AssocComputerSystemCommMech: Error unsupported class, classname="),
              1U);
}

TEST_F(FamilySearchTest, ForeignClassThatCannotBeReadEndsWithTheStatusOfTheRead) {
    serveCards();
    RequestHooks hooks(*broker);
    hooks.failingClassNameRead = 1;
    requestHooks = &hooks;
    logFromHere();
    const Outcome outcome = references("Merolt_FCHBA_ComputerSystemCommMech", jack, nullptr);
    requestHooks = nullptr;
    EXPECT_EQ(outcome.rc, RequestHooks::refusal);
    EXPECT_EQ(outcome.message, "");
    EXPECT_TRUE(logHas("references_AssocComputerSystemCommMech: Error getting classname, status.rc=2!"));
}

TEST_F(AssociationEdgeTest, ResultClassMayBeAnAncestorOfWhatIsFound) {
    serveCards();
    const Path port = first(ethernetPort);
    for (const auto& [resultClass, count] :
         {std::pair("CIM_ManagedElement", 1U), std::pair("CIM_PortController", 1U), std::pair("CIM_Service", 0U)}) {
        const Reply reply =
            ask(Operation::associatorNames, port,
                {.associationClass = "Merolt_NIC_PortControllerEthernetPort", .resultClass = resultClass});
        EXPECT_EQ(reply.rows.size(), count) << resultClass;
    }
}

// The storage catalogue.

TEST_F(AssociationEdgeTest, SoftwareIsSplitBetweenTheHostAndTheInstallationService) {
    serveCards();
    const std::string all = "Merolt_FCHBA_SoftwareIdentity";
    std::size_t drivers = 0;
    std::size_t images = 0;
    for (const Path& identity : names(all)) {
        drivers += identity["InstanceID"].find("_Driver") != std::string::npos ? 1 : 0;
        images += identity["InstanceID"].find("_FlashImage") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(drivers, 16U);
    EXPECT_EQ(images, 1U);
    EXPECT_EQ(countFrom(first(host), "Merolt_FCHBA_ComputerSystemSoftwareIdentity"), drivers);
    EXPECT_EQ(countFrom(first("Merolt_FCHBA_SoftwareInstallationService"),
                        "Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService"),
              images);
    // A driver finds the service all the same.
    const Path driver = first(all);
    EXPECT_EQ(countFrom(driver, "Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService"), 1U);
}

TEST_F(AssociationEdgeTest, ReferenceOfAScsiControllerHasAnAccessModeThatItsEnumerationLacks) {
    serveCards();
    const std::string association = "Merolt_FCHBA_SCSIProtocolControllerFCPort";
    EXPECT_EQ(keys(askFor(Operation::references, first(fcPort), association), "AccessMode"), Texts{"2"});
    const Reply enumerated = instances(classPath(association));
    EXPECT_EQ(enumerated.rows.size(), 8U);
    EXPECT_TRUE(keys(enumerated, "AccessMode").empty());
    const Path pair =
        associationPath(familyOf(association), first("Merolt_FCHBA_SCSIProtocolController"), first(fcPort));
    EXPECT_TRUE(keys(instance(pair), "AccessMode").empty());
}

TEST_F(AssociationEdgeTest, ComputerSystemOfAnotherNameGetsThePortsOfThisHost) {
    serveCards();
    const Path foreign = first(host).with("Name", "another host");
    EXPECT_EQ(countFrom(foreign, "Merolt_FCHBA_ComputerSystemFCPort"), 8U);
    EXPECT_EQ(countFrom(foreign, "Merolt_NIC_ComputerSystemEthernetPort"), 0U);
}

TEST_F(AssociationEdgeTest, PortsTwinSharesItsGroupOnlyInTheList) {
    serveCards();
    // The hole behind the group of function 6 repeats that group from the port, and itself finds nothing.
    const Path port = named(fcPort, "MLD005_20000002C90000F6_20000002C9000006");
    const Reply groups = askFor(Operation::associatorNames, port, "Merolt_FCHBA_LogicalPortGroupFCPort");
    EXPECT_EQ(keys(groups, "InstanceID"), (Texts{"\"192.0.2.10_MLD005_20000002C90000F6_20000002C9000006\"", "\"\""}));
    const Path hole = classPath("Merolt_FCHBA_LogicalPortGroup").with("InstanceID", "");
    EXPECT_EQ(countFrom(hole, "Merolt_FCHBA_LogicalPortGroupFCPort"), 0U);
}

TEST_F(AssociationEdgeTest, MemberOfAGroupIsThePortAtTheGroupsPlace) {
    tavik::StorageFunction twin = storageFunction(2, chips::chip7);
    twin.nodeName = worldWideName(0xF1);
    // Two functions of one node: one group and a hole, and the third group lies beyond the list's end.
    serve(fleet({card("S1", {storageFunction(1, chips::chip7), twin, storageFunction(3, chips::chip7)})}));
    const Reply rows = instanceNames(classPath("Merolt_FCHBA_LogicalPortGroupFCPort"));
    ASSERT_EQ(rows.rows.size(), 2U);
    const std::vector<Path> ports = names(fcPort);
    ASSERT_EQ(ports.size(), 3U);
    const Texts members = keys(rows, "Member");
    EXPECT_EQ(members.at(0), '[' + ports.at(0).text() + ']');
    EXPECT_EQ(members.at(1), '[' + ports.at(1).text() + ']') << "matched by the first port's name";
}

TEST_F(AssociationEdgeTest, HostThatChangedItsAddressLosesTheAssociationsThatCompareIt) {
    serveCards();
    services.address = std::vector<std::uint8_t>{192, 0, 2, 77};
    refreshTo(*manyCards().cards);
    const Path manager = first("Merolt_FCHBA_ObjectManager");
    EXPECT_EQ(manager["SystemName"], "192.0.2.77");
    EXPECT_EQ(first(host)["Name"], "192.0.2.10");
    EXPECT_EQ(countFrom(manager, "Merolt_FCHBA_ObjectManagerCommMech"), 0U);
    EXPECT_EQ(countFrom(first("Merolt_FCHBA_CIMXMLCommMech"), "Merolt_FCHBA_ObjectManagerCommMech"), 1U);
    EXPECT_EQ(countFrom(manager, "Merolt_FCHBA_ObjectManagerNamespace"), 2U);
    EXPECT_EQ(countFrom(manager, "Merolt_FCHBA_ComputerSystemObjectManager"), 1U);
    EXPECT_EQ(countFrom(first("Merolt_FCHBA_LogicalPortGroup"), "Merolt_FCHBA_ComputerSystemLogicalPortGroup"), 0U);
    EXPECT_EQ(countFrom(first(fcPort), "Merolt_FCHBA_ComputerSystemFCPort"), 1U);
}

// Through the tree of the adapters.

TEST_F(AssociationEdgeTest, TwoPortsOfOneModuleLeadToItOnceEach) {
    serveCards();
    for (const char* key : {"MLD005_20000002C90000F6_20000002C9000006", "MLD005_20000002C90000F6_20000002C9000007"}) {
        EXPECT_EQ(countFrom(named(fcPort, key), "Merolt_FCHBA_PhysicalConnectorFCPort"), 1U);
        EXPECT_EQ(countFrom(named(fcPort, key), "Merolt_FCHBA_PhysicalPortFCPort"), 1U);
    }
    EXPECT_EQ(
        countFrom(named(fcPort, "MLA001_20000002C90000F2_20000002C9000002"), "Merolt_FCHBA_PhysicalConnectorFCPort"),
        0U);
}

TEST_F(AssociationEdgeTest, NamesInARecordsHeaderDecideTheWayToThePortAndNotTheWayBack) {
    serveCards();
    const std::string shown = "\"MLD005_20000002C90000F6_20000002C9000006\"";
    EXPECT_EQ(keys(askFor(Operation::associatorNames, named(connector, "MODD1_MLD005_2"),
                          "Merolt_FCHBA_PhysicalConnectorFCPort"),
                   "DeviceID"),
              Texts{shown});
    EXPECT_EQ(keys(askFor(Operation::associatorNames, named(jack, "MLD005_2"), "Merolt_FCHBA_PhysicalPortFCPort"),
                   "DeviceID"),
              Texts{shown});
    std::size_t enumerated = 0;
    for (const std::string& reference :
         keys(instanceNames(classPath("Merolt_FCHBA_PhysicalConnectorFCPort")), "Antecedent"))
        enumerated += reference.find("MODD1_MLD005_2") != std::string::npos ? 1 : 0;
    EXPECT_EQ(enumerated, 2U);
}

TEST_F(AssociationEdgeTest, ALibraryWithoutAListGivesNoRowsAndNoError) {
    serveCards();
    const Path port = first(fcPort);
    const Path module = first(connector);
    const Path place = first(jack);
    tavik::Fleet none;
    none.cards = std::nullopt;
    tavikLibrary.setFleet(none);
    logFromHere();
    takeMessages();
    for (const char* association : {"Merolt_FCHBA_PhysicalConnectorFCPort", "Merolt_FCHBA_PhysicalPortFCPort"}) {
        EXPECT_TRUE(instanceNames(classPath(association)).rows.empty());
        EXPECT_EQ(occurrences(takeMessages(), "Failed to find TAVIK structs"), 0U);
        const Reply reply = instances(classPath(association));
        EXPECT_EQ(reply.rc, CMPI_RC_OK);
        EXPECT_TRUE(reply.rows.empty());
        EXPECT_GT(occurrences(takeMessages(), "Failed to find TAVIK structs"), 0U);
        EXPECT_EQ(countFrom(port, association), 0U);
    }
    EXPECT_EQ(countFrom(module, "Merolt_FCHBA_PhysicalConnectorFCPort"), 0U);
    EXPECT_EQ(countFrom(place, "Merolt_FCHBA_PhysicalPortFCPort"), 0U);
}

TEST_F(AssociationEdgeTest, TagsOfTheWrongShapeLeadNowhere) {
    serveCards();
    const std::string tags[] = {"",
                                "_",
                                "__",
                                "MODA1",
                                "MODA1_MLA001",
                                "MODA1_MLA001_9",
                                "x_MLA001_0_9",
                                "__0",
                                "0",
                                "MLA001",
                                "MLA001_",
                                "_0",
                                std::string(5000, '_'),
                                std::string(300, 'A') + '_' + std::string(300, 'B') + "_0"};
    for (const std::string& tag : tags) {
        SCOPED_TRACE(tag.substr(0, 40));
        const Path module = first(connector).with("Tag", tag);
        EXPECT_EQ(countFrom(module, "Merolt_Adapter_PhysicalPackagePhysicalConnector"),
                  tag == "MODA1_MLA001_9" || tag == "x_MLA001_0_9" ? 1U : 0U);
        EXPECT_EQ(countFrom(module, "Merolt_FCHBA_PhysicalConnectorFCPort"), tag == "x_MLA001_0_9" ? 1U : 0U);
        // A number that is missing reads as 0.
        EXPECT_EQ(countFrom(first(jack).with("Tag", tag), "Merolt_FCHBA_PhysicalPortFCPort"),
                  tag == "MLA001_" ? 1U : 0U);
    }
}

TEST_F(AssociationEdgeTest, SoftwareKeyWithoutTwoUnderscoresLeadsToNoController) {
    serveCards();
    const std::string association = "Merolt_FCHBA_SoftwareIdentityPortController";
    const Path identity = first("Merolt_FCHBA_SoftwareIdentity");
    for (const std::string& key :
         {std::string("MLA001"), std::string("host_MLA001"), std::string("_"), "host_" + std::string(5000, 'A') + "_x"})
        EXPECT_EQ(countFrom(identity.with("InstanceID", key), association), 0U) << key.substr(0, 40);
    EXPECT_EQ(countFrom(identity.with("InstanceID", "_mla001_"), association), 1U);
}

TEST_F(AssociationEdgeTest, TagThatIsAUuidHidesAPackageFromThreeOfItsDirections) {
    serve(cardsWithUuids());
    const Path card = first(package);
    EXPECT_EQ(card["Tag"], "uuid-a");
    EXPECT_EQ(countFrom(card, "Merolt_FCHBA_PhysicalPackagePortController"), 0U);
    EXPECT_EQ(countFrom(first("Merolt_FCHBA_PortController"), "Merolt_FCHBA_PhysicalPackagePortController"), 1U);
    EXPECT_EQ(countFrom(card, "Merolt_Adapter_ProductPhysicalPackage"), 0U);
    EXPECT_EQ(countFrom(first("Merolt_Adapter_Product"), "Merolt_Adapter_ProductPhysicalPackage"), 1U);
    EXPECT_EQ(countFrom(card, "Merolt_Adapter_PhysicalPackagePhysicalConnector"), 0U);
    EXPECT_EQ(countFrom(first(connector), "Merolt_Adapter_PhysicalPackagePhysicalConnector"), 1U);
    EXPECT_FALSE(instanceNames(classPath("Merolt_Adapter_PhysicalPackagePhysicalConnector")).rows.empty());
}

TEST_F(AssociationEdgeTest, ControllerOfTheInstallationServiceBearsOtherRolesInItsReferenceNames) {
    serveCards();
    for (const std::string side : {"FCHBA", "NIC"}) {
        const std::string association = "Merolt_" + side + "_PortControllerSoftwareInstallationService";
        const Path controller = first("Merolt_" + side + "_PortController");
        const Reply pathsOnly = askFor(Operation::referenceNames, controller, association);
        EXPECT_EQ(keys(pathsOnly, "GroupComponent").size(), 1U);
        EXPECT_EQ(keys(pathsOnly, "PartComponent").size(), 1U);
        EXPECT_TRUE(keys(pathsOnly, "AffectedElement").empty());
        EXPECT_EQ(keys(askFor(Operation::references, controller, association), "AffectingElement").size(), 1U);
    }
}

// Debug lines of single associations.

TEST_F(AssociationEdgeTest, ComparisonsOfPackagesAndControllersAreLogged) {
    serve(fleet({cardsWithUuids().cards->front()}));
    logFromHere();
    takeMessages();
    const std::string association = "Merolt_FCHBA_PhysicalPackagePortController";
    const std::string token = "AssocPhysicalPackagePortController";
    instanceNames(classPath(association));
    EXPECT_EQ(occurrences(takeMessages(), "enumInstanceNames_" + token + ": Comparing MLA001 to MLA001"), 1U);
    instances(classPath(association));
    EXPECT_EQ(occurrences(takeMessages(), "enumInstances_" + token + ": Comparing MLA001 to MLA001"), 1U);
    const Path controller = first("Merolt_FCHBA_PortController");
    takeMessages();
    askFor(Operation::associatorNames, controller.with("DeviceID", "11S1234567ABCDEFGHIJKL"), association);
    EXPECT_EQ(occurrences(takeMessages(), "findMatchedRole1InstancesOrReferences: Comparing ABCDEFGHIJKL to MLA001"),
              1U);
}

TEST_F(AssociationEdgeTest, LogOfSerialNumbersChangesNoAnswer) {
    const std::string serial = "  11S1234567ABCDEFGHIJKL ";
    serve(fleet({card(serial, {functionWithVpd(1, {{"SN", serial}}), nicFunction(1, 1)})}));
    for (const char* association :
         {"Merolt_FCHBA_PhysicalPackagePortController", "Merolt_NIC_PhysicalPackagePortController",
          "Merolt_Adapter_ProductPhysicalPackage"}) {
        const Rows quiet = instanceNames(classPath(association)).texts();
        logFromHere();
        EXPECT_EQ(instanceNames(classPath(association)).texts(), quiet) << association;
        EXPECT_EQ(instances(classPath(association)).rows.size(), quiet.size()) << association;
        merolt::gDebugLog = false;
        EXPECT_EQ(instanceNames(classPath(association)).texts(), quiet) << association;
    }
}

TEST_F(AssociationEdgeTest, ComparedTagsAreLoggedInTheEnumerationOfInstancesOnly) {
    serve(fleet({manyCards().cards->front()}));
    logFromHere();
    takeMessages();
    instances(classPath("Merolt_FCHBA_PhysicalConnectorFCPort"));
    const Texts messages = takeMessages();
    EXPECT_TRUE(inOrder(messages, {"PHYSICALCONNECTOR_Tag(0) = MODA1_MLA001_0", "tmp_buf = MODA1_MLA001_0",
                                   "PHYSICALCONNECTOR_Tag(0) = MODA1_MLA001_0", "tmp_buf = MODA1_MLA001_1"}));
    instances(classPath("Merolt_FCHBA_PhysicalPortFCPort"));
    EXPECT_TRUE(inOrder(takeMessages(),
                        {"PHYSICALPORT_Tag(0) = MLA001_0", "tmp_buf = MLA001_0", "PHYSICALPORT_Tag(0) = MLA001_0",
                         "tmp_buf = MLA001_1", "PHYSICALPORT_Tag(1) = MLA001_1", "tmp_buf = MLA001_0"}));
    instanceNames(classPath("Merolt_FCHBA_PhysicalConnectorFCPort"));
    instanceNames(classPath("Merolt_FCHBA_PhysicalPortFCPort"));
    EXPECT_EQ(linesThatBegin(takeMessages(), "tmp_buf"), 0U);
}

TEST_F(AssociationEdgeTest, PartsOfTagsAreLogged) {
    serve(fleet({manyCards().cards->front()}));
    logFromHere();
    takeMessages();
    const std::string connectors = "Merolt_Adapter_PhysicalPackagePhysicalConnector";
    const std::string jacks = "Merolt_Adapter_PhysicalPackagePhysicalPort";
    instances(classPath(connectors));
    EXPECT_TRUE(inOrder(takeMessages(), {"PHYSICALCONNECTOR_Tag(0) = MODA1_MLA001_0", "serialNumber = MLA001",
                                         "PHYSICALPACKAGE_SerialNumber(0) = MLA001"}));
    instances(classPath(jacks));
    EXPECT_TRUE(inOrder(takeMessages(), {"PHYSICALPORT_Tag(0) = MLA001_0", "serialNumber = MLA001",
                                         "PHYSICALPACKAGE_SerialNumber(0) = MLA001", "PHYSICALPORT_Tag(0) = MLA001_1",
                                         "serialNumber = MLA001"}));
    instanceNames(classPath(connectors));
    instanceNames(classPath(jacks));
    const Texts messages = takeMessages();
    EXPECT_EQ(occurrences(messages, "serialNumber = MLA001"), 3U);
    EXPECT_EQ(occurrences(messages, "PHYSICALPACKAGE_SerialNumber(0) = MLA001"), 3U);
    EXPECT_EQ(linesThatBegin(messages, "PHYSICALCONNECTOR_Tag"), 0U);
    EXPECT_EQ(linesThatBegin(messages, "PHYSICALPORT_Tag"), 0U);
}

// The Ethernet side.

TEST_F(AssociationEdgeTest, AdaptersThatShareAnAddressAreBothFound) {
    tavik::NicFunction twin = nicFunction(2, 9);
    twin.macAddress = nicFunction(1, 1).macAddress;
    serve(fleet({card("CARDA", {nicFunction(1, 1)}), card("CARDB", {twin})}));
    const Path port = first(ethernetPort);
    const Path endpoint = first(lanEndpoint);
    EXPECT_EQ(countFrom(port, "Merolt_NIC_EthernetPortLANEndpoint"), 2U);
    EXPECT_EQ(countFrom(endpoint, "Merolt_NIC_EthernetPortLANEndpoint"), 2U);
    EXPECT_EQ(countFrom(endpoint, "Merolt_NIC_LANEndpointIPProtocolEndpoint"), 2U);
    EXPECT_EQ(countFrom(endpoint, "Merolt_NIC_ComputerSystemLANEndpoint"), 2U) << "once for each card";
    EXPECT_EQ(keys(askFor(Operation::associatorNames, endpoint, "Merolt_NIC_NetworkPortLANEndpoint"), "DeviceID"),
              (Texts{"\"CARDA_1\"", "\"CARDB_9\""}));
    EXPECT_EQ(keys(askFor(Operation::associatorNames, port, "Merolt_NIC_PortControllerEthernetPort"), "DeviceID"),
              Texts{"\"CARDA_NIC\""})
        << "the walk ends at the first";
    EXPECT_EQ(countFrom(port, conformance), 2U);
}

TEST_F(AssociationEdgeTest, HostIsFoundOnceForEachCardWhosePortHasTheEndpointsAddress) {
    tavik::NicFunction twin = nicFunction(1, 2);
    twin.macAddress = nicFunction(1, 1).macAddress;
    serve(fleet({card("CARDA", {nicFunction(1, 1), twin})}));
    EXPECT_EQ(countFrom(first(lanEndpoint), "Merolt_NIC_ComputerSystemLANEndpoint"), 1U);
    EXPECT_EQ(countFrom(first("Merolt_NIC_IPProtocolEndpoint"),
                        "Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint"),
              1U);
    EXPECT_EQ(countFrom(first(lanEndpoint), "Merolt_NIC_EthernetPortLANEndpoint"), 2U);
}

TEST_F(AssociationEdgeTest, EmptyCageHasNoConnectorButItsJackIsThere) {
    serveCards();
    const Path port = named(ethernetPort, "020000000004");
    EXPECT_EQ(countFrom(port, "Merolt_NIC_PhysicalConnectorEthernetPort"), 0U);
    EXPECT_EQ(countFrom(port, "Merolt_NIC_PhysicalPortEthernetPort"), 1U);
    EXPECT_EQ(instanceNames(classPath("Merolt_NIC_PhysicalConnectorEthernetPort")).rows.size(), 3U);
    EXPECT_EQ(instanceNames(classPath("Merolt_NIC_PhysicalPortEthernetPort")).rows.size(), 4U);
}

TEST_F(AssociationEdgeTest, PortsWithOneAddressHaveItsFirstJackAndTheLibraryIsAskedForEach) {
    tavik::NicFunction twin = nicFunction(1, 2);
    twin.macAddress = nicFunction(1, 1).macAddress;
    serve(fleet({card("CARDA", {nicFunction(1, 1), twin, nicFunction(1, 3)})}));
    const Path pairs = classPath("Merolt_NIC_PhysicalPortEthernetPort");
    const Texts before = keys(instanceNames(pairs), "Antecedent");
    ASSERT_EQ(before.size(), 3U);
    EXPECT_EQ(before[0], before[1]);
    EXPECT_NE(before[0].find("CARDA_0"), std::string::npos) << before[0];
    EXPECT_NE(before[2].find("CARDA_2"), std::string::npos) << before[2];
    tavikLibrary.clearCalls();
    instanceNames(pairs);
    EXPECT_EQ(tavikLibrary.calls(), Texts(3, "TAVIK_GetAdapterList")) << "once for each pair";
    // What a request learned of the tree is forgotten with it.
    std::memset(tavikLibrary.tree().function(0, 0, 0)->nic.port.macAddress, 0xEE, 6);
    const Texts after = keys(instanceNames(pairs), "Antecedent");
    ASSERT_EQ(after.size(), 3U);
    EXPECT_NE(after[0].find("CARDA_1"), std::string::npos) << after[0];
}

TEST_F(AssociationEdgeTest, ModuleThatTheListLostAfterARefreshGivesNoRowAndStopsNothing) {
    serveCards();
    refreshTo(*manyCards().cards);
    const Reply rows = instanceNames(classPath("Merolt_NIC_PhysicalConnectorEthernetPort"));
    EXPECT_EQ(rows.rc, CMPI_RC_OK);
    ASSERT_EQ(rows.rows.size(), 1U) << "the module that a storage function shares";
    EXPECT_NE(keys(rows, "Antecedent").at(0).find("MODC1_MLC003_0"), std::string::npos);
    EXPECT_EQ(countFrom(named(ethernetPort, "020000000002"), "Merolt_NIC_PhysicalConnectorEthernetPort"), 0U);
}

TEST_F(AssociationEdgeTest, AnUnknownEndpointIsNotChecked) {
    serveCards();
    const Family endpoints = familyOf("Merolt_NIC_ComputerSystemLANEndpoint");
    const Path nobody = first(lanEndpoint).with("Name", "FFFFFFFFFFFF");
    logFromHere();
    const Reply reply = instance(associationPath(endpoints, first(host), nobody));
    EXPECT_EQ(reply.texts(), Rows{associationInstance(endpoints, first(host), nobody).text()});
    EXPECT_TRUE(logHas("Merolt_NIC_EthernetPort: Error getting DeviceID key in findMatchedRole1"));
}

TEST_F(AssociationEdgeTest, ReferenceNamesOfAControllerNameItsDriverTwice) {
    serveCards();
    const std::string association = "Merolt_NIC_SoftwareIdentityPortController";
    const Path controller = first(nicController);
    const Reply pathsOnly = askFor(Operation::referenceNames, controller, association);
    ASSERT_EQ(pathsOnly.rows.size(), 2U);
    EXPECT_EQ(pathsOnly.texts().at(0), pathsOnly.texts().at(1));
    EXPECT_NE(pathsOnly.texts().at(0).find("2_MLC003"), std::string::npos);
    const Reply full = askFor(Operation::references, controller, association);
    ASSERT_EQ(full.rows.size(), 2U);
    EXPECT_NE(full.texts().at(1).find("3_MLC003"), std::string::npos);
}

TEST_F(AssociationEdgeTest, SoftwareOfAnUnknownKindLeadsNowhere) {
    serveCards();
    for (const std::string& key :
         {std::string("9_MLC003"), std::string("1_MLC003"), std::string("MLC003"), std::string("_MLC003"),
          std::string("x_MLC003"), std::string("2MLC003"), std::string("2_"), "2_" + std::string(5000, 'x')}) {
        SCOPED_TRACE(key.substr(0, 40));
        const Path identity = first(nicSoftware).with("InstanceID", key);
        EXPECT_EQ(countFrom(identity, "Merolt_NIC_ComputerSystemSoftwareIdentity"), 0U);
        EXPECT_EQ(countFrom(identity, "Merolt_NIC_SoftwareIdentityPortController"), 0U);
        EXPECT_EQ(countFrom(identity, "Merolt_NIC_SoftwareIdentitySoftwareInstallationService"), 0U);
    }
    // Only the low eight bits of the kind count.
    const Path wrapped = first(nicSoftware).with("InstanceID", "258_MLC003");
    EXPECT_EQ(countFrom(wrapped, "Merolt_NIC_ComputerSystemSoftwareIdentity"), 1U);
}

TEST_F(AssociationEdgeTest, SerialNumberWithAnUnderscoreIsCutAtTheFirstOnly) {
    serve(fleet({card("ML_C_3", {nicFunction(1, 1)})}));
    const Path identity = first(nicSoftware);
    EXPECT_EQ(identity["InstanceID"], "2_ML_C_3");
    EXPECT_EQ(countFrom(identity, "Merolt_NIC_ComputerSystemSoftwareIdentity"), 1U);
    EXPECT_EQ(countFrom(identity, "Merolt_NIC_SoftwareIdentityPortController"), 1U);
}

TEST_F(AssociationEdgeTest, ServicesOfTheEthernetSideBearTheStorageServicesKeysInTwoAssociations) {
    serveCards();
    const std::string service = "Merolt_NIC_SoftwareInstallationService";
    const Reply ofHost =
        askFor(Operation::associatorNames, first(host), "Merolt_NIC_ComputerSystemSoftwareInstallationService");
    ASSERT_EQ(ofHost.rows.size(), 1U);
    EXPECT_EQ(ofHost.rows.at(0).className, service);
    EXPECT_EQ(keys(ofHost, "CreationClassName"), Texts{"\"Merolt_FCHBA_SoftwareInstallationService\""});
    const Reply ofController = askFor(Operation::associatorNames, first(nicController),
                                      "Merolt_NIC_PortControllerSoftwareInstallationService");
    EXPECT_EQ(keys(ofController, "CreationClassName"), Texts{'"' + service + '"'});
}

TEST_F(AssociationEdgeTest, ReferenceNamesOfCapabilitiesNameAServiceByTheCapabilitiesKey) {
    serveCards();
    for (const std::string side : {"FCHBA", "NIC"}) {
        const std::string association =
            "Merolt_" + side + "_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities";
        const Path capabilities = first("Merolt_" + side + "_SoftwareInstallationServiceCapabilities");
        const Reply pathsOnly = askFor(Operation::referenceNames, capabilities, association);
        EXPECT_EQ(keys(pathsOnly, "ManagedElement"),
                  Texts{"[root/merolt_cmpi:Merolt_" + side +
                        "_SoftwareInstallationService.InstanceID=\"CNA_SW_INSTALLER\"]"});
        EXPECT_NE(keys(askFor(Operation::references, capabilities, association), "ManagedElement")
                      .at(0)
                      .find("Name=\"CNA_SW_INSTALLER\""),
                  std::string::npos);
    }
}

TEST_F(AssociationEdgeTest, FetchedCapabilitiesComeBeforeTheirAssociation) {
    serveCards();
    const std::string association = "Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint";
    const Reply reply = instance(first(association));
    ASSERT_EQ(reply.rows.size(), 2U);
    EXPECT_EQ(reply.rows.at(0).className, "Merolt_NIC_IPProtocolEndpointCapabilities");
    EXPECT_EQ(reply.rows.at(1).className, association);
}

TEST_F(AssociationEdgeTest, StepsFromAControllerToItsPackageAreLogged) {
    serve(fleet({manyCards().cards->at(3)}));
    const Path controller = first(nicController);
    logFromHere();
    const std::pair<Operation, std::string> steps[] = {
        {Operation::associators, "Before FUNC_ASSOC makeInstance_Nic_PhysicalPackage"},
        {Operation::associatorNames, "Before FUNC_ASSOCNAME makePath_Nic_PhysicalPackage"},
        {Operation::references, "Before FUNC_REF makePath_Nic_PhysicalPackage"},
        {Operation::referenceNames, "Before FUNC_REFNAME makePath_Nic_PhysicalPackage"}};
    const std::string search = "Assoc_PhysicalPackagePortController:findMatchedRole1InstancesOrReferences()";
    for (const auto& [operation, action] : steps) {
        takeMessages();
        askFor(operation, controller, "Merolt_NIC_PhysicalPackagePortController");
        Texts trail;
        for (const std::string& message : takeMessages()) {
            if (message.find(search) == 0) trail.push_back(message.substr(search.size()));
        }
        EXPECT_EQ(trail, (Texts{" called with ftype = " + std::to_string(static_cast<int>(operation)),
                                " deviceId = MLE004_NIC", "", " Before calcDeviceID_PortController",
                                " Addr = MLE004_NIC", ' ' + action}));
    }
}

// Two rows of one card.

/// What the makers of paths and instances are called for while both enumerations of an association run.
struct Made {
    std::size_t rows = 0;
    int paths = 0;
    int instances = 0;
    Texts messages;
};

class SecondRowTest : public AssociationEdgeTest {
protected:
    Made makesFor(const std::string& association) {
        BrokerHooks hooks(*broker);
        Made made;
        hooks.beforeNewObjectPath = [&] { return ++made.paths, CMPI_RC_OK; };
        hooks.beforeNewInstance = [&] { return ++made.instances, CMPI_RC_OK; };
        logFromHere();
        made.rows = instanceNames(classPath(association)).rows.size() + instances(classPath(association)).rows.size();
        made.messages = takeMessages();
        return made;
    }
};

TEST_F(SecondRowTest, SharesTheOtherEndAndTheAssociationsOwnObjectWithTheFirst) {
    serveCards();
    const int cards = static_cast<int>(names(nicController).size());
    for (const char* association :
         {"Merolt_NIC_SoftwareIdentityPortController", "Merolt_NIC_ComputerSystemSoftwareIdentity",
          "Merolt_NIC_SoftwareIdentitySoftwareInstallationService"}) {
        SCOPED_TRACE(association);
        const Made made = makesFor(association);
        EXPECT_EQ(made.rows, static_cast<std::size_t>(2 * 2 * cards));
        EXPECT_EQ(made.paths, 2 * 3 * cards);
        EXPECT_EQ(made.instances, cards);
    }
}

TEST_F(SecondRowTest, LogsItsOwnIdentityOnly) {
    serve(fleet({manyCards().cards->at(3)}));
    const std::string identity = "Merolt_NIC_SoftwareIdentity makePath was called\n";
    const std::pair<const char*, std::string> otherEnds[] = {
        {"Merolt_NIC_SoftwareIdentityPortController", "Merolt_NIC_PortController makePath_PortController was called\n"},
        {"Merolt_NIC_SoftwareIdentitySoftwareInstallationService",
         "Merolt_NIC_SoftwareInstallationService makePath was called\n"}};
    for (const auto& [association, otherEnd] : otherEnds) {
        Texts makers;
        for (const std::string& message : makesFor(association).messages) {
            if (message == identity || message == otherEnd) makers.push_back(message);
        }
        EXPECT_EQ(makers, (Texts{identity, otherEnd, identity, identity, otherEnd, identity})) << association;
    }
}

// Profiles.

TEST_F(AssociationEdgeTest, EveryProfileIsNamedForEveryPortInTheLogOfBothEnumerations) {
    serveCards();
    const std::size_t combinations = names(profile).size() * names(ethernetPort).size();
    const std::string named = "Merolt_NIC_RegisteredProfile makePath_RegisteredProfile was called\n";
    logFromHere();
    instanceNames(classPath(conformance));
    const Texts ofNames = takeMessages();
    EXPECT_EQ(occurrences(ofNames, named), combinations);
    instances(classPath(conformance));
    const Texts ofInstances = takeMessages();
    ASSERT_EQ(ofInstances.size(), ofNames.size());
    for (std::size_t line = 2; line < ofNames.size() - 1; ++line)
        EXPECT_EQ(ofInstances[line], ofNames[line]) << "line " << line;
}

TEST_F(AssociationEdgeTest, OnlyTheFirstThreeProfilesHaveElements) {
    serveCards();
    const std::pair<std::string, std::size_t> counts[] = {
        {"1", 4},        {"2", 4},          {"3", 4},  {"4", 0},
        {"5", 0},        {"6", 0},          {"7", 0},  {"8", 0},
        {"1st port", 4}, {"01", 4},         {" 2", 4}, {"", 0},
        {"x", 0},        {"4294967297", 0}, {"-1", 0}, {"99999999999999999999999", 0}};
    for (const auto& [number, count] : counts) {
        SCOPED_TRACE(number);
        EXPECT_EQ(countFrom(profilePath(number), conformance), count);
    }
}

TEST_F(AssociationEdgeTest, HostWithoutPortsConformsToNothing) {
    serve(fleet({manyCards().cards->front()}));
    EXPECT_TRUE(instanceNames(classPath(conformance)).rows.empty());
    EXPECT_TRUE(instances(classPath(conformance)).rows.empty());
    EXPECT_EQ(countFrom(profilePath("1"), conformance), 0U);
}

TEST_F(AssociationEdgeTest, ConformanceCrossesNamespaces) {
    serveCards();
    const Path port = first(ethernetPort);
    for (const std::string& nameSpace : {std::string("root/merolt_cmpi"), std::string("root/elsewhere")}) {
        Path source = port;
        source.nameSpace = nameSpace;
        const Reply reply = askFor(Operation::references, source, conformance);
        EXPECT_EQ(reply.texts(),
                  Rows{associationInstance(familyOf(conformance), profilePath("1"), source, nameSpace).text()});
    }
    const Reply elements = askFor(Operation::associators, profilePath("2"), conformance);
    ASSERT_EQ(elements.rows.size(), 4U);
    EXPECT_EQ(elements.rows.at(0).nameSpace, "root/merolt_cmpi");
    Path here = profilePath("1");
    here.nameSpace = implementationNamespace;
    EXPECT_EQ(countFrom(here, conformance), 4U);
    const Reply profiles = askFor(Operation::associators, port, conformance);
    ASSERT_EQ(profiles.rows.size(), 1U);
    EXPECT_EQ(profiles.rows.at(0).nameSpace, "root/PG_InterOp");
}

TEST_F(AssociationEdgeTest, ElementsOfOtherClassesAreNotChecked) {
    serveCards();
    const Path nobody = first(lanEndpoint).with("Name", "FFFFFFFFFFFF");
    const Path pair = associationPath(familyOf(conformance), profilePath("7"), nobody);
    EXPECT_EQ(instance(pair).texts(),
              Rows{associationInstance(familyOf(conformance), profilePath("7"), nobody).text()});
    const Path noProfile = associationPath(familyOf(conformance), profilePath("8"), nobody);
    EXPECT_EQ(instance(noProfile).rc, CMPI_RC_ERR_NOT_FOUND);
    for (const char* className : {"Merolt_NIC_NetworkPort", "Merolt_NIC_IPProtocolEndpoint"}) {
        const Path object = first(className);
        const Path missing = object.with(lookedUpKey(object), "nothing");
        EXPECT_EQ(instance(associationPath(familyOf(conformance), profilePath("1"), missing)).rc,
                  CMPI_RC_ERR_NOT_FOUND);
    }
}

TEST_F(AssociationEdgeTest, ResultClassOfOneElementDoesNotNarrowWhatAProfileFinds) {
    serveCards();
    for (const char* resultClass :
         {"Merolt_NIC_EthernetPort2", "Merolt_NIC_IPProtocolEndpoint", "Merolt_NIC_NetworkPort", "CIM_NetworkPort"}) {
        const Reply reply = ask(Operation::associatorNames, profilePath("3"),
                                {.associationClass = conformance, .resultClass = resultClass});
        EXPECT_EQ(reply.rows.size(), 4U) << resultClass;
        for (const Row& row : reply.rows)
            EXPECT_EQ(row.className, "Merolt_NIC_IPProtocolEndpoint");
    }
    EXPECT_TRUE(
        ask(Operation::associatorNames, profilePath("3"), {.associationClass = conformance, .resultClass = lanEndpoint})
            .rows.empty());
}

TEST_F(AssociationEdgeTest, ProfileKeyThatCannotBeReadIsLoggedWithStatusAndType) {
    serveCards();
    logFromHere();
    takeMessages();
    const std::string failure =
        "Assoc_ElementConformsToRegisteredProfile: Error getting InstanceID key in findMatchedRole2\n";
    askFor(Operation::associators, profilePath("1").without("InstanceID"), conformance);
    EXPECT_TRUE(
        inOrder(takeMessages(), {failure, "Assoc_ElementConformsToRegisteredProfile: status.rc = 6, keyData.type=0"}));
    askFor(Operation::associators, profilePath("1").with("InstanceID", std::uint32_t{1}), conformance);
    EXPECT_TRUE(inOrder(takeMessages(),
                        {failure, "Assoc_ElementConformsToRegisteredProfile: status.rc = 0, keyData.type=240"}));
}

TEST_F(AssociationEdgeTest, IdentifierOfAnElementIsLogged) {
    serveCards();
    const Path port = first("Merolt_NIC_NetworkPort");
    logFromHere();
    takeMessages();
    askFor(Operation::associatorNames, port, conformance);
    const std::string search = "Assoc_ElementConformsToRegisteredProfile:findMatchedRole1InstancesOrReferences()";
    EXPECT_TRUE(inOrder(takeMessages(), {"Assoc_ElementConformsToRegisteredProfile: associatorNames was called\n",
                                         search, search + " identifier=MLC003_1"}));
}

} // namespace
