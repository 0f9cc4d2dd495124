// Which associations answer a request, in which order, and what the log tells of the way there.
#include "fleets.h"
#include "request_hooks.h"
#include "world_test.h"

#include "broker_hooks.h"
#include "log/log.h"
#include "provider/association_tables.h"

#include <algorithm>
#include <set>
#include <stdexcept>

namespace {

using Messages = std::vector<std::string>;

constexpr const char* host = "Merolt_Adapter_ComputerSystem";
constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
constexpr const char* hostPorts = "Merolt_FCHBA_ComputerSystemFCPort";
constexpr const char* hostEthernetPorts = "Merolt_NIC_ComputerSystemEthernetPort";

class AssociationDispatchTest : public WorldTest {
protected:
    /// What the association, asked for by name, delivers from that source.
    Rows rowsOf(Operation operation, const std::string& association, const Path& source) {
        return askFor(operation, source, association).texts();
    }

    /// The associations whose references a request delivers, in order.
    std::vector<std::string> visitedBy(Operation operation, const Path& source, const Filters& filters) {
        std::vector<std::string> visited;
        for (const Row& row : ask(operation, source, filters).rows) {
            if (visited.empty() || visited.back() != row.className) visited.push_back(row.className);
        }
        return visited;
    }

    std::set<std::string> sourceClasses() const {
        std::set<std::string> found;
        for (const auto& [className, ends] : world) {
            if (!ends.empty()) found.insert(className);
        }
        return found;
    }

    /// The line that tells how many rows there are: 102, and two for each association that has come since.
    static std::string tableSize() {
        const std::size_t rows = merolt::assocLookupTable().size();
        EXPECT_GE(rows, 102U);
        return "m_assocLookupTableSize = " + std::to_string(rows) + "\n";
    }

    /// The dispatcher's own lines.
    Messages takeDispatchMessages() {
        Messages own;
        for (const std::string& message : takeMessages()) {
            for (const char* beginning : {"Merolt_CNA_Provider", "Entering Merolt_CNA_Provider",
                                          "Exiting  Merolt_CNA_Provider", "Class ", "m_assoc", "Copied ", "sConst"}) {
                if (message.find(beginning) == 0) own.push_back(message);
            }
        }
        return own;
    }

    /// What the dispatcher tells of a request from the namespace, for its only association by name or for all.
    Messages messagesFromNamespace(Operation operation, bool isNamed) {
        const Path nameSpace = first("Merolt_FCHBA_Namespace");
        logFromHere();
        takeMessages();
        ask(operation, nameSpace,
            isNamed ? Filters{.associationClass = "Merolt_FCHBA_ObjectManagerNamespace"} : Filters{});
        return takeDispatchMessages();
    }
};

void append(Rows& all, const Rows& more) { all.insert(all.end(), more.begin(), more.end()); }

TEST_F(AssociationDispatchTest, RequestThatNamesNoAssociationIsAnsweredFromEveryRowOfItsClassInOrder) {
    serveCards();
    for (const std::string& className : sourceClasses()) {
        for (const Operation operation : allOperations) {
            SCOPED_TRACE(nameOf(operation) + (" from " + className));
            const Path source = all(className).at(0).path;
            Rows wanted;
            // Which associations these are, and in which order, stands in their golden texts.
            for (const std::string& association : visitedBy(Operation::referenceNames, source, {}))
                append(wanted, rowsOf(operation, association, source));
            const Reply reply = ask(operation, source);
            EXPECT_EQ(reply.rc, CMPI_RC_OK) << reply.message;
            EXPECT_EQ(reply.doneCount, 1U);
            EXPECT_EQ(reply.texts(), wanted);
        }
    }
}

// Where a further association of the host stands behind these is told by its golden text.
TEST_F(AssociationDispatchTest, ComputerSystemIsAnsweredInTheOrderOfItsEighteenRows) {
    serveCards();
    std::vector<std::string> visited;
    for (const Row& row : ask(Operation::referenceNames, first(host)).rows) {
        if (visited.empty() || visited.back() != row.className) visited.push_back(row.className);
    }
    const std::string fc = "Merolt_FCHBA_ComputerSystem";
    const std::string nic = "Merolt_NIC_ComputerSystem";
    const std::size_t rows = 18;
    ASSERT_GE(visited.size(), rows);
    visited.resize(rows);
    EXPECT_EQ(visited, (std::vector<std::string>{
                           fc + "CommMech", fc + "FCPort", fc + "LogicalPortGroup", fc + "PortController",
                           fc + "SCSIProtocolController", fc + "SCSIProtocolEndpointHBA",
                           fc + "SCSIProtocolEndpointTarget", fc + "SoftwareIdentity", fc + "StorageExtent",
                           fc + "SoftwareInstallationService", fc + "ObjectManager", nic + "EthernetPort",
                           nic + "IPProtocolEndpoint", nic + "LANEndpoint", nic + "NetworkPort", nic + "PortController",
                           nic + "SoftwareIdentity", nic + "SoftwareInstallationService"}));
}

TEST_F(AssociationDispatchTest, BaseClassLeadsReferencesToEveryAssociationDerivedFromItInOrder) {
    serveCards();
    std::set<std::string> bases;
    for (const Family& each : families())
        bases.insert(each.baseClass);
    for (const std::string& className : sourceClasses()) {
        for (const std::string& base : bases) {
            const bool endsInAStatus =
                className == "Merolt_FCHBA_SoftwareInstallationServiceCapabilities" && base == "CIM_HostedService";
            if (endsInAStatus) continue;
            const Path source = all(className).at(0).path;
            for (const Operation operation : {Operation::references, Operation::referenceNames}) {
                SCOPED_TRACE(nameOf(operation) + (" of " + base + " from " + className));
                // Which associations these are, and in which order, stands in their golden texts.
                Rows wanted;
                for (const std::string& association : visitedBy(operation, source, {.associationClass = base}))
                    append(wanted, rowsOf(operation, association, source));
                const Reply reply = askFor(operation, source, base);
                EXPECT_EQ(reply.rc, CMPI_RC_OK) << reply.message;
                EXPECT_EQ(reply.texts(), wanted);
            }
        }
    }
}

TEST_F(AssociationDispatchTest, NamesOfAssociationsAreTakenInAnyLetterCase) {
    serveCards();
    const Path source = first(host);
    const auto expectSame = [&](Operation operation, const std::string& asked, const std::string& declared) {
        SCOPED_TRACE(nameOf(operation) + (" of " + asked));
        const Rows wanted = rowsOf(operation, declared, source);
        EXPECT_FALSE(wanted.empty());
        EXPECT_EQ(askFor(operation, source, asked).texts(), wanted);
    };
    for (const Operation operation : allOperations) {
        expectSame(operation, "merolt_fchba_computersystemFCPORT", hostPorts);
        expectSame(operation, "merolt_nic_computersystemETHERNETPORT", hostEthernetPorts);
    }
    expectSame(Operation::references, "cim_hostedCOLLECTION", "Merolt_FCHBA_ComputerSystemLogicalPortGroup");
}

TEST_F(AssociationDispatchTest, BaseClassIsUnknownToAssociators) {
    serveCards();
    logFromHere();
    for (const Operation operation : {Operation::associators, Operation::associatorNames}) {
        const Reply reply = askFor(operation, first(host), "CIM_SystemDevice");
        EXPECT_EQ(reply.rc, CMPI_RC_OK);
        EXPECT_EQ(reply.doneCount, 1U);
        EXPECT_TRUE(reply.rows.empty());
    }
    EXPECT_TRUE(logHas("Class Merolt_Adapter_ComputerSystem has no associators"));
    EXPECT_TRUE(logHas("Class Merolt_Adapter_ComputerSystem has no associatorNames"));
}

TEST_F(AssociationDispatchTest, ReferenceNamesOfAPortKnowRealizesByAnotherSpellingOnly) {
    serveCards();
    const Path port = first(fcPort);
    const Reply misspelled = askFor(Operation::referenceNames, port, "CIM_Reailizes");
    Rows wanted = rowsOf(Operation::referenceNames, "Merolt_FCHBA_PhysicalConnectorFCPort", port);
    append(wanted, rowsOf(Operation::referenceNames, "Merolt_FCHBA_PhysicalPortFCPort", port));
    EXPECT_EQ(wanted.size(), 2U);
    EXPECT_EQ(misspelled.texts(), wanted);
    EXPECT_TRUE(askFor(Operation::referenceNames, port, "CIM_Realizes").rows.empty());
    EXPECT_TRUE(askFor(Operation::references, port, "CIM_Reailizes").rows.empty());
    EXPECT_EQ(askFor(Operation::references, port, "CIM_Realizes").rows.size(), 2U);
    const Path connector = first("Merolt_Adapter_PhysicalConnector");
    EXPECT_EQ(askFor(Operation::referenceNames, connector, "CIM_Realizes").rows.size(), 1U);
}

TEST_F(AssociationDispatchTest, EthernetAssociationOnAStoragePortIsAnsweredWithNothing) {
    serveCards();
    logFromHere();
    for (const Operation operation : allOperations) {
        const Reply reply = askFor(operation, first(fcPort), hostEthernetPorts);
        EXPECT_EQ(reply.rc, CMPI_RC_OK);
        EXPECT_EQ(reply.doneCount, 1U);
        EXPECT_TRUE(reply.rows.empty());
    }
    EXPECT_TRUE(logHas("Class Merolt_FCHBA_FCPort has no associators"));
}

TEST_F(AssociationDispatchTest, EthernetPortHasNoReferencesByAnAssociationOfOtherClasses) {
    serveCards();
    for (const Operation operation : allOperations) {
        const Reply reply = askFor(operation, first(ethernetPort), "Merolt_NIC_NetworkPortLANEndpoint");
        EXPECT_EQ(reply.rc, CMPI_RC_OK);
        EXPECT_TRUE(reply.rows.empty());
    }
}

TEST_F(AssociationDispatchTest, RowsWithNothingBehindThemAnswerEmpty) {
    serveCards();
    logFromHere();
    const std::pair<std::string, std::string> rows[] = {
        {"Merolt_FCHBA_RegisteredProfile", "Merolt_FCHBA_RegisteredProfileObjectManager"},
        {"Merolt_FCHBA_ObjectManager", "Merolt_FCHBA_RegisteredProfileObjectManager"},
        {"Merolt_NIC_RemoteServiceAccessPoint", "Merolt_NIC_ComputerSystemRemoteServiceAccessPoint"},
        {host, "Merolt_NIC_ComputerSystemRemoteServiceAccessPoint"}};
    for (const auto& [source, association] : rows) {
        for (const Operation operation : allOperations) {
            SCOPED_TRACE(nameOf(operation) + (" from " + source));
            const Reply reply = askFor(operation, classPath(source), association);
            EXPECT_EQ(reply.rc, CMPI_RC_OK);
            EXPECT_EQ(reply.doneCount, 1U);
            EXPECT_TRUE(reply.rows.empty());
        }
    }
    EXPECT_TRUE(logHas("Class Merolt_FCHBA_RegisteredProfile has associators"));
    EXPECT_FALSE(logHas("Class Merolt_FCHBA_RegisteredProfile has no associators"));
}

TEST_F(AssociationDispatchTest, UnknownClassAnswersEmpty) {
    serveCards();
    for (const Operation operation : allOperations) {
        for (const Filters& filters : {Filters{}, Filters{.associationClass = hostPorts}}) {
            const Reply reply = ask(operation, classPath("CIM_NoSuchClass"), filters);
            EXPECT_EQ(reply.rc, CMPI_RC_OK);
            EXPECT_EQ(reply.doneCount, 1U);
            EXPECT_TRUE(reply.rows.empty());
        }
    }
}

TEST_F(AssociationDispatchTest, CapabilitiesAskedForTheHostsServicesAreRefused) {
    serveCards();
    const char* capabilities = "Merolt_FCHBA_SoftwareInstallationServiceCapabilities";
    for (const char* named : {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService", "CIM_HostedService"}) {
        for (const Operation operation : {Operation::references, Operation::referenceNames}) {
            logFromHere();
            const Reply reply = askFor(operation, first(capabilities), named);
            EXPECT_EQ(reply.rc, CMPI_RC_ERR_NOT_SUPPORTED);
            EXPECT_EQ(reply.message, capabilities);
            EXPECT_EQ(reply.doneCount, 1U);
            EXPECT_TRUE(logHas("Merolt_CNA_Provider " + std::string(nameOf(operation)) +
                               " caught exception status: 7 " + capabilities));
        }
    }
    const Reply associators =
        askFor(Operation::associators, first(capabilities), "Merolt_FCHBA_ComputerSystemSoftwareInstallationService");
    EXPECT_EQ(associators.rc, CMPI_RC_OK);
    EXPECT_TRUE(associators.rows.empty());
}

// Classes that a server derives from ours.

class DerivedClassTest : public AssociationDispatchTest {
protected:
    DerivedClassTest() {
        classes.loadText(implementationNamespace, "class Test_EthernetPort : Merolt_NIC_EthernetPort2 {};\n"
                                                  "class Test_FCPort : Merolt_FCHBA_FCPort {};\n"
                                                  "class Test_PhysicalPort : Merolt_Adapter_PhysicalPort {};\n"
                                                  "[Association] class Test_HostPort : "
                                                  "Merolt_FCHBA_ComputerSystemFCPort {};\n");
        serveCards();
    }
};

TEST_F(DerivedClassTest, IsLookedUpButHasNoRowsOfItsOwn) {
    logFromHere();
    for (const Operation operation : allOperations) {
        const Reply reply = ask(operation, first(ethernetPort).ofClass("Test_EthernetPort"));
        EXPECT_EQ(reply.rc, CMPI_RC_OK);
        EXPECT_TRUE(reply.rows.empty());
    }
    EXPECT_TRUE(logHas("Class Test_EthernetPort has associators"));
}

TEST_F(DerivedClassTest, FindsItsHostByAnEthernetAssociationThatAssociatorsName) {
    const Path source = first(ethernetPort).ofClass("Test_EthernetPort");
    EXPECT_EQ(askFor(Operation::associatorNames, source, hostEthernetPorts).texts(), textsOf({first(host)}));
    EXPECT_TRUE(askFor(Operation::referenceNames, source, hostEthernetPorts).rows.empty());
    const Reply byJack = askFor(Operation::referenceNames, source, "Merolt_NIC_PhysicalPortEthernetPort");
    ASSERT_EQ(byJack.rows.size(), 1U);
    EXPECT_EQ(byJack.texts(),
              textsOf({associationPath(familyOf("Merolt_NIC_PhysicalPortEthernetPort"),
                                       first("Merolt_Adapter_PhysicalPort").with("Tag", "MLC003_0"), source)}));
}

TEST_F(DerivedClassTest, IsForeignToTheProfiles) {
    const Path source = first(ethernetPort).ofClass("Test_EthernetPort");
    const Reply reply = askFor(Operation::associators, source, "Merolt_NIC_ElementConformsToRegisteredProfile");
    EXPECT_EQ(reply.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(reply.message, "Test_EthernetPort");
    EXPECT_EQ(reply.doneCount, 1U);
}

TEST_F(DerivedClassTest, OfAStorageClassFindsNothingExceptByThePhysicalPort) {
    const Path port = first(fcPort).ofClass("Test_FCPort");
    const Path jack = first("Merolt_Adapter_PhysicalPort");
    const Path derivedJack = jack.ofClass("Test_PhysicalPort");
    for (const Operation operation : allOperations)
        EXPECT_TRUE(askFor(operation, port, hostPorts).rows.empty());
    EXPECT_EQ(askFor(Operation::associatorNames, derivedJack, "Merolt_FCHBA_PhysicalPortFCPort").texts(),
              askFor(Operation::associatorNames, jack, "Merolt_FCHBA_PhysicalPortFCPort").texts());
    EXPECT_EQ(askFor(Operation::associatorNames, jack, "Merolt_FCHBA_PhysicalPortFCPort").rows.size(), 1U);
}

TEST_F(DerivedClassTest, OfAnAssociationIsEnumeratedButNotFetched) {
    const Reply enumerated = instanceNames(classPath("Test_HostPort"));
    ASSERT_EQ(enumerated.rows.size(), all(fcPort).size());
    EXPECT_EQ(enumerated.rows.at(0).className, "Test_HostPort");
    const Path path = associationPath(familyOf(hostPorts), first(host), first(fcPort)).ofClass("Test_HostPort");
    const Reply fetched = instance(path);
    EXPECT_EQ(fetched.rc, CMPI_RC_OK);
    EXPECT_TRUE(fetched.rows.empty());
}

// The log.

TEST_F(AssociationDispatchTest, AssociatorsAreLogged) {
    serveCards();
    const Path manager = first("Merolt_FCHBA_ObjectManager");
    const std::string association = "Merolt_FCHBA_ObjectManagerCommMech";
    logFromHere();
    takeMessages();
    askFor(Operation::associators, manager, association);
    EXPECT_EQ(
        takeDispatchMessages(),
        (Messages{"Merolt_CNA_Provider::associators entered",
                  "Entering Merolt_CNA_Provider associators: classname = Merolt_FCHBA_ObjectManager, "
                  "assocClass = " +
                      association + '\n',
                  "Class Merolt_FCHBA_ObjectManager has associators\n", tableSize(),
                  "Merolt_CNA_Provider::associators() assocClass=" + association,
                  "Merolt_CNA_Provider::associators() assocClass=" + association + "  DONE",
                  "Merolt_CNA_Provider::associators() status=0, ", "Exiting  Merolt_CNA_Provider associators\n"}));
    ask(Operation::associators, first("Merolt_FCHBA_Namespace"));
    const std::string only = "Merolt_FCHBA_ObjectManagerNamespace";
    const Messages unnamed = takeDispatchMessages();
    const auto start = std::find(unnamed.begin(), unnamed.end(), "Merolt_CNA_Provider::associators entered");
    EXPECT_EQ(
        Messages(start, unnamed.end()),
        (Messages{"Merolt_CNA_Provider::associators entered",
                  "Entering Merolt_CNA_Provider associators: classname = Merolt_FCHBA_Namespace, "
                  "assocClass = NULL",
                  "Class Merolt_FCHBA_Namespace has associators\n", tableSize(),
                  "Merolt_CNA_Provider::associators() assocClass=" + only,
                  "Merolt_CNA_Provider::associators() assocClass=" + only + "  DONE",
                  "Merolt_CNA_Provider::associators() status=0, ", "Exiting  Merolt_CNA_Provider associators\n"}));
}

TEST_F(AssociationDispatchTest, AssociatorNamesAreLogged) {
    serveCards();
    const std::string association = "Merolt_FCHBA_ObjectManagerNamespace";
    for (const bool isNamed : {true, false}) {
        EXPECT_EQ(messagesFromNamespace(Operation::associatorNames, isNamed),
                  (Messages{"Entering Merolt_CNA_Provider associatorNames: classname = Merolt_FCHBA_Namespace, "
                            "assocClass = " +
                                (isNamed ? association + '\n' : std::string("NULL")),
                            "Class Merolt_FCHBA_Namespace has associators\n", tableSize(),
                            "Merolt_CNA_Provider::associatorNames() assocClass=" + association,
                            "Exiting  Merolt_CNA_Provider associatorNames\n"}));
    }
}

TEST_F(AssociationDispatchTest, ReferencesAreLogged) {
    serveCards();
    for (const bool isNamed : {true, false}) {
        EXPECT_EQ(messagesFromNamespace(Operation::references, isNamed),
                  (Messages{"Entering Merolt_CNA_Provider references: classname = Merolt_FCHBA_Namespace, "
                            "resultClass = " +
                                (isNamed ? "Merolt_FCHBA_ObjectManagerNamespace\n" : std::string("NULL")),
                            tableSize(), "Exiting  Merolt_CNA_Provider references\n"}));
    }
}

TEST_F(AssociationDispatchTest, ReferenceNamesAreLoggedWithEachRow) {
    serveCards();
    const Path product = first("Merolt_Adapter_Product");
    const std::string association = "Merolt_Adapter_ProductPhysicalPackage";
    const std::string pass = "sConstCopStr = Merolt_Adapter_Product, calcResultClass = " + association;
    logFromHere();
    takeMessages();
    askFor(Operation::referenceNames, product, association);
    EXPECT_EQ(takeDispatchMessages(),
              (Messages{"Entering Merolt_CNA_Provider referenceNames: classname = Merolt_Adapter_Product, "
                        "resultClass = " +
                            association + '\n',
                        tableSize(), pass, "Exiting  Merolt_CNA_Provider referenceNames\n"}));
    ask(Operation::referenceNames, product);
    EXPECT_EQ(takeDispatchMessages(),
              (Messages{"Entering Merolt_CNA_Provider referenceNames: classname = Merolt_Adapter_Product, "
                        "resultClass = NULL",
                        tableSize(), "Copied " + association + " to calcResultClass", pass,
                        "Exiting  Merolt_CNA_Provider referenceNames\n"}));
}

TEST_F(AssociationDispatchTest, RequestOfAClassWithoutRowsEndsBeforeTheTable) {
    serveCards();
    logFromHere();
    takeMessages();
    for (const Operation operation : {Operation::associators, Operation::associatorNames}) {
        ask(operation, classPath("CIM_NoSuchClass"));
        const Messages messages = takeDispatchMessages();
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.back(), "Class CIM_NoSuchClass has no " + std::string(nameOf(operation)) + '\n');
    }
}

// Failures.

TEST_F(AssociationDispatchTest, UnreadableClassNameEndsEachOperationWithItsStatus) {
    serveCards();
    const Path source = first(host);
    for (const Operation operation : allOperations) {
        RequestHooks hooks(*broker);
        hooks.failingClassNameRead = 1;
        requestHooks = &hooks;
        logFromHere();
        const Reply reply = askFor(operation, source, hostPorts);
        requestHooks = nullptr;
        EXPECT_EQ(reply.rc, RequestHooks::refusal);
        EXPECT_EQ(reply.doneCount, 1U);
        EXPECT_TRUE(reply.rows.empty());
        EXPECT_TRUE(logHas("Merolt_CNA_Provider " + std::string(nameOf(operation)) +
                           ": Error getting classname, status.rc=2!"));
    }
}

TEST_F(AssociationDispatchTest, AnUnknownExceptionIsAFailureWithItsText) {
    serveCards();
    const Path source = first(host);
    for (const Operation operation : allOperations) {
        BrokerHooks hooks(*broker);
        const auto fail = []() -> CMPIrc { throw std::runtime_error("out of the ordinary"); };
        hooks.beforeNewInstance = fail;
        hooks.beforeNewObjectPath = fail;
        logFromHere();
        const Reply reply = askFor(operation, source, hostPorts);
        const std::string text =
            "Merolt_CNA_Provider " + std::string(nameOf(operation)) + " detected an unknown exception";
        EXPECT_EQ(reply.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(reply.message, text);
        EXPECT_EQ(reply.doneCount, 1U);
        EXPECT_TRUE(logHas(text));
    }
    EXPECT_FALSE(ask(Operation::associators, source).rows.empty()) << "the lock was not given back";
}

TEST_F(AssociationDispatchTest, StatusOfAFamilyIsLoggedAndReturned) {
    serveCards();
    const Path port = first(fcPort).without("SystemName");
    for (const Operation operation : allOperations) {
        logFromHere();
        const Reply reply = askFor(operation, port, hostPorts);
        EXPECT_EQ(reply.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(reply.doneCount, 1U);
        EXPECT_GE(linesThatBegin(logLines(), "Merolt_CNA_Provider " + std::string(nameOf(operation)) +
                                                 " caught exception status: 6 "),
                  1U);
    }
}

// Lists that are read anew for a request.

struct Refresh {
    std::string association;
    Messages builds; ///< how the lines of the list builders begin
};

/// Those without builds read nothing anew.
std::vector<Refresh> refreshes() {
    const std::string ports = "Entering createFCPort, index = 0";
    return {
        {"Merolt_FCHBA_FCPortFCPortStatistics", {"Entering createFCPortStatistics, index = 0", ports}},
        {"Merolt_FCHBA_LogicalPortGroupFCPort", {"Entering createLogicalPortGroup, index = 0", ports}},
        {"Merolt_FCHBA_SCSIProtocolControllerFCPort", {ports}},
        {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA", {ports}},
        {"Merolt_FCHBA_ComputerSystemStorageExtent", {"Entering createStorageExtent, index = 0"}},
        {"Merolt_FCHBA_ComputerSystemFCPort", {}},
        {"Merolt_FCHBA_ComputerSystemLogicalPortGroup", {}},
        {"Merolt_FCHBA_PortControllerFCPort", {}},
        {"Merolt_FCHBA_ComputerSystemSoftwareIdentity", {}},
        {"Merolt_NIC_ComputerSystemEthernetPort", {}},
    };
}

/// The beginnings of list builds among the messages.
Messages buildsIn(const Messages& messages) {
    Messages builds;
    for (const std::string& message : messages) {
        const bool isBuild = message.find("Entering create") == 0 && message.find(", index = 0") != std::string::npos;
        if (isBuild) builds.push_back(message);
    }
    return builds;
}

TEST_F(AssociationDispatchTest, SixAssociationsReadTheirListsAnewBeforeEachSearch) {
    serveCards();
    logFromHere();
    for (const auto& [association, builds] : refreshes()) {
        family = familyOf(association);
        for (const bool sourceIsLeft : {true, false}) {
            const Path source = fruitfulSource(sourceIsLeft).value();
            for (const Operation operation : allOperations) {
                SCOPED_TRACE(association + ' ' + nameOf(operation) + " from " + source.className);
                takeMessages();
                askFor(operation, source, association);
                EXPECT_EQ(buildsIn(takeMessages()), builds);
            }
        }
    }
}

TEST_F(AssociationDispatchTest, FourAssociationsReadTheirListsAnewForInstancesAndTwoDoNot) {
    serveCards();
    logFromHere();
    for (const auto& [association, builds] : refreshes()) {
        SCOPED_TRACE(association);
        const bool isOfSearchesOnly = association == "Merolt_FCHBA_LogicalPortGroupFCPort" ||
                                      association == "Merolt_FCHBA_SCSIProtocolControllerFCPort";
        const Messages wanted = isOfSearchesOnly ? Messages{} : builds;
        takeMessages();
        instanceNames(classPath(association));
        EXPECT_EQ(buildsIn(takeMessages()), wanted);
        instances(classPath(association));
        EXPECT_EQ(buildsIn(takeMessages()), wanted);
        instance(classPath(association));
        EXPECT_EQ(buildsIn(takeMessages()), wanted);
    }
}

TEST_F(AssociationDispatchTest, StorageStateOfAPortIsFreshOnlyWhereItsListIsReadAnew) {
    serveCards();
    const Path port = first(fcPort);
    const Filters enabled{.associationClass = hostPorts};
    const Rows before = ask(Operation::associators, first(host), enabled).texts();
    tavikLibrary.storage(1).property.state = tavik::PortLoopDown;
    EXPECT_EQ(ask(Operation::associators, first(host), enabled).texts(), before);
    const Path statistics = first("Merolt_FCHBA_FCPortStatistics");
    const Rows fresh = askFor(Operation::associators, statistics, "Merolt_FCHBA_FCPortFCPortStatistics").texts();
    ASSERT_EQ(fresh.size(), 1U);
    EXPECT_NE(fresh.at(0), before.at(0));
    EXPECT_EQ(ask(Operation::associators, first(host), enabled).texts().at(0), fresh.at(0));
}

TEST_F(AssociationDispatchTest, TargetsAndExtentsAreReadAnewWithTheirAssociations) {
    serveCards();
    tavik::Fleet more = manyCards();
    const auto countOf = [&](const char* association) {
        return askFor(Operation::associatorNames, first(host), association).rows.size();
    };
    EXPECT_EQ(countOf("Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget"), 3U);
    EXPECT_EQ(countOf("Merolt_FCHBA_ComputerSystemStorageExtent"), 4U);
    tavikLibrary.setFleet(adapters::fleet({more.cards->back()}));
    EXPECT_EQ(countOf("Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget"), 0U);
    EXPECT_EQ(countOf("Merolt_FCHBA_ComputerSystemStorageExtent"), 0U);
    EXPECT_EQ(countOf(hostPorts), 8U) << "other lists stay as they are";
}

} // namespace
