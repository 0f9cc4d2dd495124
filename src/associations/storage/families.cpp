// The plain associations of storage ports, cards, host and software, one row each. What a row tells beyond its ends is
// what a client sees otherwise than with its neighbours.
#include "associations/families.h"

#include "associations/modules.h"
#include "associations/service_texts.h"
#include "associations/storage/contained_parts.h"
#include "associations/storage/keyed_lists.h"
#include "associations/storage/object_manager_texts.h"
#include "associations/storage/tree_position.h"
#include "classes/instance.h"

namespace merolt::association {

namespace {

using storage::listOfFCPorts;
using storage::listOfSCSIEndpointHBAs;
using storage::listOfSCSIEndpointTargets;
using storage::listOfSCSIProtocolControllers;
using storage::listOfStorageExtents;

/// Places that a walk of the library's tree left empty are no units.
void everyUnit(const Source&, const ObjectVisitor& visit) {
    matchingRecords(storage::g_storageExtentCount, visit,
                    [](int index) { return storage::g_storageExtentList[index].valid != 0; });
}

void bothNamespaces(const Source&, const ObjectVisitor& visit) {
    matchingRecords(server::namespaceCount, visit, [](int) { return true; });
}

bool namesHostsClass(const Source& source) { return source.equals(0, computerSystemClass); }
bool namesServer(const Source& source) { return source.equals(0, server::getObjectManagerName()); }

constexpr Search ofThisHost = {.keys = {{{"SystemName"}}}, .find = onlyIf<namesHost, theObject>};

// 2: the controller is the active one.
constexpr FurtherProperty accessMode = {.name = "AccessMode", .value = 2, .inEnumeration = true};
// Shown by references, but not by enumInstances.
constexpr FurtherProperty accessModeOfReferences = {.name = "AccessMode", .value = 2, .inEnumeration = false};

// The capabilities lead references to the host's association with the service, which then refuses them.
constexpr FurtherSource capabilitiesOfService[] = {
    {"Merolt_FCHBA_SoftwareInstallationServiceCapabilities", {.lookUp = nowhere, .test = 53}},
};

constexpr Family plainFamilies[] = {
    // The host and what is in it -------------------------------------------------------------------------------------
    {
        .token = "AssocComputerSystemPortController",
        .className = "Merolt_FCHBA_ComputerSystemPortController",
        .baseClass = "CIM_SystemDevice",
        .left = hostAs("GroupComponent"),
        .right = {"PartComponent", portController},
        .matching = hostWithEach<everyRecord<&storage::g_portControllerCount>>,
        .texts = deviating(storageTexts,
                           [](Texts& t) { t.getInstance.open = "Entering getInstance_AssocComputerSystemFCPort"; }),
        .places = {.row = 10, .left = {4, 7}, .right = {32, 39}},
    },
    {
        .token = "AssocComputerSystemSCSIProtocolController",
        .className = "Merolt_FCHBA_ComputerSystemSCSIProtocolController",
        .baseClass = "CIM_SystemDevice",
        .left = hostAs("GroupComponent"),
        .right = {"PartComponent", scsiProtocolController},
        .matching = hostWithEach<everyRecord<&storage::g_scsiProtocolControllerCount>>,
        .texts = storageTexts,
        .places = {.row = 11, .left = {5, 8}, .right = {33, 44}},
    },
    {
        .token = "AssocComputerSystemFCPort",
        .className = "Merolt_FCHBA_ComputerSystemFCPort",
        .baseClass = "CIM_SystemDevice",
        .left = hostAs("GroupComponent"),
        .right = {"PartComponent", fcPort},
        .matching = hostWithEach<everyRecord<&storage::g_fcPortCount>>,
        .texts = storageTexts,
        .places = {.row = 12, .left = {2, 4}, .right = {30, 16}},
    },
    {
        .token = "AssocComputerSystemSCSIProtocolEndpointHBA",
        .className = "Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA",
        .baseClass = "CIM_HostedAccessPoint",
        .left = hostAs("Antecedent"),
        .right = {"Dependent", scsiProtocolEndpointHBA},
        .matching = hostWithEach<everyRecord<&storage::g_scsiEndpointHBACount>>,
        .texts = storageTexts,
        .needsTargets = true,
        .places = {.row = 44, .left = {6, 11}, .right = {34, 54}},
    },
    {
        .token = "AssocComputerSystemSCSIProtocolEndpointTarget",
        .className = "Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget",
        .baseClass = "CIM_HostedAccessPoint",
        .left = hostAs("Antecedent"),
        .right = {"Dependent", scsiProtocolEndpointTarget},
        .matching = hostWithEach<everyRecord<&storage::g_scsiEndpointTargetCount>>,
        .texts = storageTexts,
        .needsTargets = true,
        .fresh = {.first = &listOfSCSIEndpointTargets, .forEnumerations = true},
        .places = {.row = 45, .left = {7, 12}, .right = {35, 56}},
    },
    {
        .token = "AssocComputerSystemStorageExtent",
        .className = "Merolt_FCHBA_ComputerSystemStorageExtent",
        .baseClass = "CIM_SystemDevice",
        .left = hostAs("GroupComponent"),
        .right = {"PartComponent", storageExtent},
        .matching = hostWithEach<everyUnit>,
        .texts = storageTexts,
        .needsTargets = true,
        .fresh = {.first = &listOfStorageExtents, .forEnumerations = true},
        .places = {.row = 46, .left = {9, 13}, .right = {37, 57}},
    },
    // In the Ethernet dialect: names other than the host's own class find nothing, and filters apply.
    {
        .token = "Assoc_ComputerSystem_SoftwareInstallationService",
        .className = "Merolt_FCHBA_ComputerSystemSoftwareInstallationService",
        .baseClass = "CIM_HostedService",
        .left = {"Antecedent", computerSystem},
        .right = {"Dependent", installationService},
        .matching = hostAndItsService<oneWithEach<theObject>>,
        .filters = Filters::applied,
        .texts = deviating(ethernetTexts,
                           [](Texts& t) {
                               speakOfHostAndService(t);
                               t.getInstance.open =
                                   "{F}: getInstance_AssocComputerSystemSoftwareInstallationService was called\n";
                           }),
        .furtherSources = capabilitiesOfService,
        .places = {.row = 40, .left = {10, 10}, .right = {57, 49}},
    },

    // Storage ports and what speaks through them: keys that are equal ------------------------------------------------
    {
        .token = "AssocFCPortSCSIProtocolEndpointHBA",
        .className = "Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA",
        .baseClass = "CIM_DeviceSAPImplementation",
        .left = {"Antecedent", fcPort},
        .right = {"Dependent", scsiProtocolEndpointHBA},
        .matching = equalTexts<portsByName, initiators>,
        .texts = storageTexts,
        .needsTargets = true,
        .fresh = {.first = &listOfSCSIEndpointHBAs, .second = &listOfFCPorts, .forEnumerations = true},
        .places = {.row = 47, .left = {12, 15}, .right = {39, 55}},
    },
    {
        .token = "AssocPortControllerFCPort",
        .className = "Merolt_FCHBA_PortControllerFCPort",
        .baseClass = "CIM_ControlledBy",
        .left = {"Antecedent", portController},
        .right = {"Dependent", fcPort},
        .matching = equalTexts<controllers, portsByController>,
        .texts = getInstanceAsObjectManagerNamespace,
        .further = &accessMode,
        .places = {.row = 19, .left = {19, 37}, .right = {47, 20}},
    },
    // Fresh in references, but not in an enumeration.
    {
        .token = "AssocSCSIProtocolControllerFCPort",
        .className = "Merolt_FCHBA_SCSIProtocolControllerFCPort",
        .baseClass = "CIM_ProtocolControllerForPort",
        .left = {"Antecedent", scsiProtocolController},
        .right = {"Dependent", fcPort},
        .matching = equalTexts<scsiControllers, portsByName>,
        .texts = storageTexts,
        .further = &accessModeOfReferences,
        .fresh = {.first = &listOfSCSIProtocolControllers, .second = &listOfFCPorts},
        .places = {.row = 24, .left = {25, 43}, .right = {53, 21}},
    },
    // Towards the product the package's Tag is compared and not its serial number: where the Tag is a UUID, a package
    // finds no product.
    {
        .token = "AssocProductPhysicalPackage",
        .className = "Merolt_Adapter_ProductPhysicalPackage",
        .baseClass = "CIM_ProductPhysicalComponent",
        .left = {"GroupComponent", product},
        .right = {"PartComponent", physicalPackage},
        .matching = equalTexts<products, packages>,
        .texts = storageTexts,
        .places = {.row = 23, .left = {20, 42}, .right = {48, 36}},
    },

    // Cards, modules and jacks: what stands in their tags -------------------------------------------------------------
    // referenceNames knows the base class of these two, from a port, under a name that no class has.
    {
        .token = "AssocPhysicalConnectorFCPort",
        .className = "Merolt_FCHBA_PhysicalConnectorFCPort",
        .baseClass = "CIM_Realizes",
        .left = {"Antecedent", physicalConnector},
        .right = {.name = "Dependent", .objects = fcPort, .referenceNamesBaseClass = "CIM_Reailizes"},
        .matching = atOnePlace<connectorsInTree>,
        .texts = getInstanceAsObjectManagerNamespace,
        .places = {.row = 17, .left = {45, 30}, .right = {13, 18}},
    },
    {
        .token = "AssocPhysicalPortFCPort",
        .className = "Merolt_FCHBA_PhysicalPortFCPort",
        .baseClass = "CIM_Realizes",
        .left = {.name = "Antecedent", .objects = physicalPort, .takesSubclasses = true},
        .right = {.name = "Dependent", .objects = fcPort, .referenceNamesBaseClass = "CIM_Reailizes"},
        .matching = atOnePlace<jacksInTree>,
        .texts = getInstanceAsObjectManagerNamespace,
        .places = {.row = 18, .left = {42, 32}, .right = {14, 19}},
    },
    {
        .token = "AssocPhysicalPackagePhysicalConnector",
        .className = "Merolt_Adapter_PhysicalPackagePhysicalConnector",
        .baseClass = "CIM_Container",
        .left = {"GroupComponent", physicalPackage},
        .right = {"PartComponent", physicalConnector},
        .matching = containedIn<connectorsInCards>,
        .texts = getInstanceAsObjectManagerNamespace,
        .places = {.row = 34, .left = {16, 34}, .right = {44, 29}},
    },
    {
        .token = "AssocPhysicalPackagePhysicalPort",
        .className = "Merolt_Adapter_PhysicalPackagePhysicalPort",
        .baseClass = "CIM_Container",
        .left = {"GroupComponent", physicalPackage},
        .right = {.name = "PartComponent", .objects = physicalPort, .takesSubclasses = true},
        .matching = containedIn<jacksInCards>,
        .texts = getInstanceAsObjectManagerNamespace,
        .places = {.row = 35, .left = {18, 35}, .right = {43, 31}},
    },

    // The CIM server -------------------------------------------------------------------------------------------------
    // Of the server's keys only the class of its system is tested, not the system's name.
    {
        .token = "AssocComputerSystemObjectManager",
        .className = "Merolt_FCHBA_ComputerSystemObjectManager",
        .baseClass = "CIM_HostedService",
        .left = hostAs("Antecedent"),
        .right = {"Dependent", objectManager},
        .matching = {.forEachPair = oneWithEach<theObject>,
                     .findLeft = {.keys = {{{"SystemCreationClassName"}}}, .find = onlyIf<namesHostsClass, theObject>},
                     .findRight = {.find = theObject}},
        .texts = storageTexts,
        .places = {.row = 27, .left = {21, 6}, .right = {49, 28}},
    },
    // Both directions test SystemName alone; the server's own path carries a name that was looked up separately, and
    // where the two differ it finds nothing.
    {
        .token = "AssocObjectManagerCommMech",
        .className = "Merolt_FCHBA_ObjectManagerCommMech",
        .baseClass = "CIM_CommMechanismForManager",
        .left = {"Antecedent", objectManager},
        .right = {"Dependent", commMech},
        .matching = {oneWithEach<theObject>, ofThisHost, ofThisHost},
        .texts = storageTexts,
        .places = {.row = 28, .left = {22, 26}, .right = {51, 2}},
    },
    // The only storage family whose searches test the namespace and whose requests log.
    {
        .token = "AssocComputerSystemCommMech",
        .className = "Merolt_FCHBA_ComputerSystemCommMech",
        .baseClass = "CIM_HostedAccessPoint",
        .left = hostAs("Antecedent"),
        .right = {"Dependent", commMech},
        .matching = hostWithEach<theObject>,
        .texts = deviating(storageTexts,
                           [](Texts& t) {
                               t.findLeft.nameSpace =
                                   "{F}-findMatchedRole1InstancesOrReferences: Error getting namespace, status.rc={n}!";
                               t.findRight.nameSpace =
                                   "{F}-findMatchedRole2InstancesOrReferences: Error getting namespace, status.rc={n}!";
                               for (Text& open : t.requests.open)
                                   open = debugText("Entering {O}_{F}");
                               t.requests.className = "{O}_{F}: Error getting classname, status.rc={n}!";
                               t.requests.foreignClass = "{O}_{F}: Error unsupported class, classname={n}!";
                           }),
        .places = {.row = 29, .left = {1, 3}, .right = {29, 1}},
    },
    {
        .token = "AssocObjectManagerNamespace",
        .className = "Merolt_FCHBA_ObjectManagerNamespace",
        .baseClass = "CIM_NamespaceInManager",
        .left = {"Antecedent", objectManager},
        .right = {"Dependent", cimNamespace},
        .matching = {.forEachPair = oneWithEach<bothNamespaces>,
                     .findLeft = {.keys = {{{"ObjectManagerName"}}}, .find = onlyIf<namesServer, theObject>},
                     .findRight = {.keys = {{{"Name"}}}, .find = onlyIf<namesServer, bothNamespaces>}},
        .texts = storageTexts,
        .places = {.row = 31, .left = {23, 27}, .right = {52, 25}},
    },
};

ASSERT_COMPLETE(plainFamilies);

#define ADDRESS_OF(module) &storage::module,
constexpr const Family* modules[] = {STORAGE_MODULES(ADDRESS_OF)};
#undef ADDRESS_OF

constexpr auto all = together(plainFamilies, modules);

} // namespace

Families storageFamilies() { return all; }

} // namespace merolt::association
