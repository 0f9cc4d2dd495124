#include "expected_families.h"

#include <algorithm>
#include <map>

namespace {

constexpr const char* host = "Merolt_Adapter_ComputerSystem";
constexpr const char* connector = "Merolt_Adapter_PhysicalConnector";
constexpr const char* package = "Merolt_Adapter_PhysicalPackage";
constexpr const char* jack = "Merolt_Adapter_PhysicalPort";

std::string fc(const char* name) { return std::string("Merolt_FCHBA_") + name; }
std::string adapter(const char* name) { return std::string("Merolt_Adapter_") + name; }
std::string nic(const char* name) { return std::string("Merolt_NIC_") + name; }

constexpr const char* service = "SoftwareInstallationService";
constexpr const char* serviceCapabilities = "SoftwareInstallationServiceCapabilities";

// clang-format off
std::vector<Family> makeStorageFamilies() {
    return {
        {fc("ComputerSystemCommMech"), "AssocComputerSystemCommMech", "CIM_HostedAccessPoint",
         "Antecedent", host, "Dependent", fc("CIMXMLCommMech"), false, {}, {}, {}},
        {fc("ComputerSystemFCPort"), "AssocComputerSystemFCPort", "CIM_SystemDevice",
         "GroupComponent", host, "PartComponent", fc("FCPort"), false, {}, {}, {}},
        {fc("ComputerSystemLogicalPortGroup"), "AssocComputerSystemLogicalPortGroup", "CIM_HostedCollection",
         "Antecedent", host, "Dependent", fc("LogicalPortGroup"), false, {}, {}, {}},
        {fc("ComputerSystemObjectManager"), "AssocComputerSystemObjectManager", "CIM_HostedService",
         "Antecedent", host, "Dependent", fc("ObjectManager"), false, {}, {}, {}},
        {fc("ComputerSystemPortController"), "AssocComputerSystemPortController", "CIM_SystemDevice",
         "GroupComponent", host, "PartComponent", fc("PortController"), false, {}, {}, {}},
        {fc("ComputerSystemSCSIProtocolController"), "AssocComputerSystemSCSIProtocolController", "CIM_SystemDevice",
         "GroupComponent", host, "PartComponent", fc("SCSIProtocolController"), false, {}, {}, {}},
        {fc("ComputerSystemSCSIProtocolEndpointHBA"), "AssocComputerSystemSCSIProtocolEndpointHBA",
         "CIM_HostedAccessPoint",
         "Antecedent", host, "Dependent", fc("SCSIProtocolEndpointHBA"), false, {}, {}, {}},
        {fc("ComputerSystemSCSIProtocolEndpointTarget"), "AssocComputerSystemSCSIProtocolEndpointTarget",
         "CIM_HostedAccessPoint",
         "Antecedent", host, "Dependent", fc("SCSIProtocolEndpointTarget"), false, {}, {}, {}},
        {fc("ComputerSystemSoftwareIdentity"), "AssocComputerSystemSoftwareIdentity", "CIM_InstalledSoftwareIdentity",
         "System", host, "InstalledSoftware", fc("SoftwareIdentity"), false, {}, {}, {}},
        {fc("ComputerSystemStorageExtent"), "AssocComputerSystemStorageExtent", "CIM_SystemDevice",
         "GroupComponent", host, "PartComponent", fc("StorageExtent"), false, {}, {}, {}},
        {fc("FCPortFCPortStatistics"), "AssocFCPortFCPortStatistics", "CIM_ElementStatisticalData",
         "ManagedElement", fc("FCPort"), "Stats", fc("FCPortStatistics"), false, {}, {}, {}},
        {fc("FCPortSCSIProtocolEndpointHBA"), "AssocFCPortSCSIProtocolEndpointHBA", "CIM_DeviceSAPImplementation",
         "Antecedent", fc("FCPort"), "Dependent", fc("SCSIProtocolEndpointHBA"), false, {}, {}, {}},
        {fc("LogicalPortGroupFCPort"), "AssocLogicalPortGroupFCPort", "CIM_MemberOfCollection",
         "Collection", fc("LogicalPortGroup"), "Member", fc("FCPort"), false, {}, {}, {}},
        {fc("ObjectManagerCommMech"), "AssocObjectManagerCommMech", "CIM_CommMechanismForManager",
         "Antecedent", fc("ObjectManager"), "Dependent", fc("CIMXMLCommMech"), false, {}, {}, {}},
        {fc("ObjectManagerNamespace"), "AssocObjectManagerNamespace", "CIM_NamespaceInManager",
         "Antecedent", fc("ObjectManager"), "Dependent", fc("Namespace"), false, {}, {}, {}},
        {fc("PhysicalPackagePortController"), "AssocPhysicalPackagePortController", "CIM_Realizes",
         "Antecedent", package, "Dependent", fc("PortController"), false, {}, {}, {}},
        {fc("PhysicalConnectorFCPort"), "AssocPhysicalConnectorFCPort", "CIM_Realizes",
         "Antecedent", connector, "Dependent", fc("FCPort"), false, {}, {}, {}},
        {fc("PortControllerFCPort"), "AssocPortControllerFCPort", "CIM_ControlledBy",
         "Antecedent", fc("PortController"), "Dependent", fc("FCPort"), false, {"AccessMode", 2, true}, {}, {}},
        {adapter("PhysicalPackagePhysicalConnector"), "AssocPhysicalPackagePhysicalConnector", "CIM_Container",
         "GroupComponent", package, "PartComponent", connector, false, {}, {}, {}},
        {adapter("ProductPhysicalPackage"), "AssocProductPhysicalPackage", "CIM_ProductPhysicalComponent",
         "GroupComponent", adapter("Product"), "PartComponent", package, false, {}, {}, {}},
        {fc("SCSIProtocolControllerFCPort"), "AssocSCSIProtocolControllerFCPort", "CIM_ProtocolControllerForPort",
         "Antecedent", fc("SCSIProtocolController"), "Dependent", fc("FCPort"), false, {"AccessMode", 2, false}, {}, {}},
        {fc("SoftwareIdentityPortController"), "AssocSoftwareIdentityPortController", "CIM_ElementSoftwareIdentity",
         "Antecedent", fc("SoftwareIdentity"), "Dependent", fc("PortController"),
         false, {"UpgradeCondition", 3, true}, {}, {}},
        {fc("SoftwareIdentitySoftwareInstallationService"), "AssocSoftwareIdentitySoftwareInstallationService",
         "CIM_ServiceAffectsElement",
         "AffectedElement", fc("SoftwareIdentity"), "AffectingElement", fc(service), false, {}, {}, {}},
        {fc("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"),
         "AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities", "CIM_ElementCapabilities",
         "ManagedElement", fc(service), "Capabilities", fc(serviceCapabilities), true, {}, {}, {}},
        {fc("ComputerSystemSoftwareInstallationService"), "Assoc_ComputerSystem_SoftwareInstallationService",
         "CIM_HostedService",
         "Antecedent", host, "Dependent", fc(service), true, {}, {}, {}},
        {fc("PortControllerSoftwareInstallationService"), "Assoc_PortController_SoftwareInstallationService",
         "CIM_ServiceAffectsElement",
         "AffectedElement", fc("PortController"), "AffectingElement", fc(service),
         true, {}, "GroupComponent", "PartComponent"},
        {adapter("PhysicalPackagePhysicalPort"), "AssocPhysicalPackagePhysicalPort", "CIM_Container",
         "GroupComponent", package, "PartComponent", jack, false, {}, {}, {}},
        {fc("PhysicalPortFCPort"), "AssocPhysicalPortFCPort", "CIM_Realizes",
         "Antecedent", jack, "Dependent", fc("FCPort"), false, {}, {}, {}},
    };
}

std::vector<Family> makeEthernetFamilies() {
    return {
        {nic("ComputerSystemEthernetPort"), "Assoc_ComputerSystem_EthernetPort", "",
         "GroupComponent", host, "PartComponent", nic("EthernetPort2"), true, {}, {}, {}},
        {nic("ComputerSystemPortController"), "Assoc_ComputerSystem_PortController", "",
         "GroupComponent", host, "PartComponent", nic("PortController"), true, {}, {}, {}},
        {nic("ComputerSystemNetworkPort"), "Assoc_ComputerSystem_NetworkPort", "",
         "GroupComponent", host, "PartComponent", nic("NetworkPort"), true, {}, {}, {}},
        {nic("PortControllerEthernetPort"), "Assoc_PortController_EthernetPort", "",
         "Antecedent", nic("PortController"), "Dependent", nic("EthernetPort2"), true, {}, {}, {}},
        {nic("PhysicalConnectorEthernetPort"), "Assoc_PhysicalConnector_EthernetPort", "",
         "Antecedent", connector, "Dependent", nic("EthernetPort2"), true, {}, {}, {}},
        {nic("PhysicalPackagePortController"), "Assoc_PhysicalPackagePortController", "",
         "Antecedent", package, "Dependent", nic("PortController"), true, {}, {}, {}},
        {nic("EthernetPortLANEndpoint"), "Assoc_EthernetPort_LANEndPoint", "",
         "Antecedent", nic("EthernetPort2"), "Dependent", nic("LANEndpoint"), true, {}, {}, {}},
        {nic("NetworkPortLANEndpoint"), "Assoc_NetworkPort_LANEndPoint", "",
         "Antecedent", nic("NetworkPort"), "Dependent", nic("LANEndpoint"), true, {}, {}, {}},
        {nic("ComputerSystemLANEndpoint"), "Assoc_ComputerSystem_LANEndPoint", "",
         "Antecedent", host, "Dependent", nic("LANEndpoint"), true, {}, {}, {}, true},
        {nic("ComputerSystemIPProtocolEndpoint"), "Assoc_ComputerSystem_IPProtocolEndPoint", "",
         "Antecedent", host, "Dependent", nic("IPProtocolEndpoint"), true, {}, {}, {}, true},
        {nic("SoftwareIdentityPortController"), "Assoc_SoftwareIdentity_PortController", "",
         "Antecedent", nic("SoftwareIdentity"), "Dependent", nic("PortController"), true, {}, {}, {}},
        {nic("IPProtocolEndpointCapabilitiesIPProtocolEndpoint"),
         "Assoc_IPProtocolEndPointCapabilities_IPProtocolEndPoint", "",
         "Capabilities", nic("IPProtocolEndpointCapabilities"), "ManagedElement", nic("IPProtocolEndpoint"),
         true, {}, {}, {}},
        {nic("LANEndpointIPProtocolEndpoint"), "Assoc_LANEndPoint_IPProtocolEndPoint", "",
         "Antecedent", nic("LANEndpoint"), "Dependent", nic("IPProtocolEndpoint"), true, {}, {}, {}},
        {nic("ComputerSystemSoftwareIdentity"), "Assoc_ComputerSystem_SoftwareIdentity", "",
         "System", host, "InstalledSoftware", nic("SoftwareIdentity"), true, {}, {}, {}},
        {nic("ComputerSystemSoftwareInstallationService"), "Assoc_ComputerSystem_SoftwareInstallationService", "",
         "Antecedent", host, "Dependent", nic(service), true, {}, {}, {}, true},
        {nic("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"),
         "Assoc_SoftwareInstallationService_Capabilities", "",
         "ManagedElement", nic(service), "Capabilities", nic(serviceCapabilities), true, {}, {}, {}},
        {nic("SoftwareIdentitySoftwareInstallationService"), "Assoc_SoftwareIdentity_SoftwareInstallationService", "",
         "AffectedElement", nic("SoftwareIdentity"), "AffectingElement", nic(service), true, {}, {}, {}},
        {nic("PortControllerSoftwareInstallationService"), "Assoc_PortController_SoftwareInstallationService", "",
         "AffectedElement", nic("PortController"), "AffectingElement", nic(service),
         true, {}, "GroupComponent", "PartComponent"},
        {nic("PhysicalPortEthernetPort"), "Assoc_PhysicalPort_EthernetPort", "",
         "Antecedent", jack, "Dependent", nic("EthernetPort2"), true, {}, {}, {}},
        {nic("ElementConformsToRegisteredProfile"), "Assoc_ElementConformsToRegisteredProfile", "",
         "ConformantStandard", nic("RegisteredProfile"), "ManagedElement", nic("EthernetPort2"), true, {}, {}, {}},
    };
}
// clang-format on

struct SearchKeys {
    std::string associationClass;
    std::vector<std::string> towardsLeft;
    std::vector<std::string> towardsRight;
};

// clang-format off
std::vector<SearchKeys> makeSearchKeys() {
    const std::vector<std::string> system{"SystemName", "SystemCreationClassName"};
    const std::vector<std::string> systemItself{"Name", "CreationClassName"};
    return {
        {fc("ComputerSystemCommMech"), system, {}},
        {fc("ComputerSystemFCPort"), system, {}},
        {fc("ComputerSystemLogicalPortGroup"), {"InstanceID"}, {}},
        {fc("ComputerSystemObjectManager"), {"SystemCreationClassName"}, {}},
        {fc("ComputerSystemPortController"), system, {}},
        {fc("ComputerSystemSCSIProtocolController"), system, {}},
        {fc("ComputerSystemSCSIProtocolEndpointHBA"), system, {}},
        {fc("ComputerSystemSCSIProtocolEndpointTarget"), system, {}},
        {fc("ComputerSystemSoftwareIdentity"), {"InstanceID"}, {}},
        {fc("ComputerSystemStorageExtent"), system, {}},
        {fc("FCPortFCPortStatistics"), {"InstanceID"}, {"DeviceID"}},
        {fc("FCPortSCSIProtocolEndpointHBA"), {"Name"}, {"DeviceID"}},
        {fc("LogicalPortGroupFCPort"), {"DeviceID"}, {"InstanceID"}},
        {fc("ObjectManagerCommMech"), {"SystemName"}, {"SystemName"}},
        {fc("ObjectManagerNamespace"), {"ObjectManagerName"}, {"Name"}},
        {fc("PhysicalPackagePortController"), {"DeviceID"}, {"Tag"}},
        {fc("PhysicalConnectorFCPort"), {"DeviceID"}, {"Tag"}},
        {fc("PortControllerFCPort"), {"DeviceID"}, {"DeviceID"}},
        {adapter("PhysicalPackagePhysicalConnector"), {"Tag"}, {"Tag"}},
        {adapter("ProductPhysicalPackage"), {"Tag"}, {"IdentifyingNumber"}},
        {fc("SCSIProtocolControllerFCPort"), {"DeviceID"}, {"DeviceID"}},
        {fc("SoftwareIdentityPortController"), {"DeviceID"}, {"InstanceID"}},
        {fc("SoftwareIdentitySoftwareInstallationService"), {"Name"}, {"InstanceID"}},
        {fc("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"), {"InstanceID"}, {"Name"}},
        {fc("ComputerSystemSoftwareInstallationService"),
         {"SystemName", "SystemCreationClassName", "Name"}, {"Name"}},
        {fc("PortControllerSoftwareInstallationService"), {"Name"}, {"DeviceID"}},
        {adapter("PhysicalPackagePhysicalPort"), {"Tag"}, {"Tag"}},
        {fc("PhysicalPortFCPort"), {"DeviceID"}, {"Tag"}},
        {nic("ComputerSystemEthernetPort"), system, systemItself},
        {nic("ComputerSystemPortController"), {"SystemName", "SystemCreationClassName", "DeviceID"}, systemItself},
        {nic("ComputerSystemNetworkPort"),
         {"SystemName", "SystemCreationClassName", "CreationClassName", "DeviceID"}, systemItself},
        {nic("PortControllerEthernetPort"), {"DeviceID"}, {"DeviceID"}},
        {nic("PhysicalConnectorEthernetPort"), {"DeviceID"}, {"Tag"}},
        {nic("PhysicalPackagePortController"), {"DeviceID"}, {"Tag"}},
        {nic("EthernetPortLANEndpoint"), {"Name"}, {"DeviceID"}},
        {nic("NetworkPortLANEndpoint"), {"Name"}, {"DeviceID"}},
        {nic("ComputerSystemLANEndpoint"),
         {"SystemName", "SystemCreationClassName", "CreationClassName", "Name"}, systemItself},
        {nic("ComputerSystemIPProtocolEndpoint"), system, {"Name"}},
        {nic("SoftwareIdentityPortController"), {"DeviceID"}, {"InstanceID"}},
        {nic("IPProtocolEndpointCapabilitiesIPProtocolEndpoint"), {"Name"}, {"InstanceID"}},
        {nic("LANEndpointIPProtocolEndpoint"), {"Name"}, {"Name"}},
        {nic("ComputerSystemSoftwareIdentity"), {"InstanceID"}, {"Name"}},
        {nic("ComputerSystemSoftwareInstallationService"),
         {"SystemName", "SystemCreationClassName", "Name"}, {"Name"}},
        {nic("SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"), {"InstanceID"}, {"Name"}},
        {nic("SoftwareIdentitySoftwareInstallationService"), {"Name"}, {"InstanceID"}},
        {nic("PortControllerSoftwareInstallationService"), {"Name"}, {"DeviceID"}},
        {nic("PhysicalPortEthernetPort"), {"DeviceID"}, {"Tag"}},
        {nic("ElementConformsToRegisteredProfile"), {"DeviceID"}, {"InstanceID"}},
    };
}
// clang-format on

std::vector<Family> makeFamilies() {
    std::vector<Family> all = makeStorageFamilies();
    for (Family& family : makeEthernetFamilies())
        all.push_back(family);
    for (const SearchKeys& keys : makeSearchKeys()) {
        const auto found = std::find_if(all.begin(), all.end(), [&](const Family& family) {
            return family.associationClass == keys.associationClass;
        });
        found->keysTowardsLeft = keys.towardsLeft;
        found->keysTowardsRight = keys.towardsRight;
    }
    for (Family& family : all) {
        if (family.nameRole1.empty()) family.nameRole1 = family.role1;
        if (family.nameRole2.empty()) family.nameRole2 = family.role2;
    }
    return all;
}

} // namespace

const std::vector<Family>& families() {
    static const std::vector<Family> all = makeFamilies();
    return all;
}

const Family& familyOf(const std::string& associationClass) {
    const auto isNamed = [&](const Family& family) { return family.associationClass == associationClass; };
    return *std::find_if(families().begin(), families().end(), isNamed);
}

std::vector<std::string> keysReadOf(const Family& family, const std::string& sourceClass, bool sourceIsLeft) {
    const bool isElement = family.role1 == "ConformantStandard" && !sourceIsLeft;
    if (isElement) return {lookedUpKey(sourceClass)};
    return sourceIsLeft ? family.keysTowardsRight : family.keysTowardsLeft;
}

std::string lookedUpKey(const std::string& className) {
    static const std::map<std::string, std::string> keys = {
        {host, "Name"},
        {connector, "Tag"},
        {package, "Tag"},
        {jack, "Tag"},
        {adapter("Product"), "IdentifyingNumber"},
        {fc("CIMXMLCommMech"), "Name"},
        {fc("FCPort"), "DeviceID"},
        {fc("LogicalPortGroup"), "InstanceID"},
        {fc("ObjectManager"), "Name"},
        {fc("PortController"), "DeviceID"},
        {fc("SCSIProtocolController"), "DeviceID"},
        {fc("SCSIProtocolEndpointHBA"), "Name"},
        {fc("SCSIProtocolEndpointTarget"), "Name"},
        {fc("SoftwareIdentity"), "InstanceID"},
        {fc("StorageExtent"), "DeviceID"},
        {fc("FCPortStatistics"), "InstanceID"},
        {fc("Namespace"), "Name"},
        {fc(service), "Name"},
        {fc(serviceCapabilities), "InstanceID"},
        {nic("EthernetPort2"), "DeviceID"},
        {nic("PortController"), "DeviceID"},
        {nic("NetworkPort"), "DeviceID"},
        {nic("LANEndpoint"), "Name"},
        {nic("IPProtocolEndpoint"), "Name"},
        {nic("IPProtocolEndpointCapabilities"), "InstanceID"},
        {nic("SoftwareIdentity"), "InstanceID"},
        {nic(service), "Name"},
        {nic(serviceCapabilities), "InstanceID"},
        {nic("RegisteredProfile"), "InstanceID"},
    };
    return keys.at(className);
}
