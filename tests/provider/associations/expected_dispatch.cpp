#include "expected_dispatch.h"

namespace {

// Names without their vendor, one row a line, in the order in which requests meet them.

struct Row2 {
    const char* source;
    const char* association;
};

struct Row3 {
    const char* source;
    const char* association;
    const char* base;
};

// clang-format off
constexpr Row2 lookUpRows[] = {
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemCommMech"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemFCPort"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemLogicalPortGroup"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemPortController"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSCSIProtocolController"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSCSIProtocolEndpointHBA"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSCSIProtocolEndpointTarget"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSoftwareIdentity"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemStorageExtent"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSoftwareInstallationService"},
    {"FCHBA_FCPort", "FCHBA_FCPortFCPortStatistics"},
    {"FCHBA_FCPort", "FCHBA_FCPortSCSIProtocolEndpointHBA"},
    {"FCHBA_FCPort", "FCHBA_PhysicalConnectorFCPort"},
    {"FCHBA_FCPort", "FCHBA_PhysicalPortFCPort"},
    {"FCHBA_LogicalPortGroup", "FCHBA_LogicalPortGroupFCPort"},
    {"Adapter_PhysicalPackage", "Adapter_PhysicalPackagePhysicalConnector"},
    {"Adapter_PhysicalPackage", "FCHBA_PhysicalPackagePortController"},
    {"Adapter_PhysicalPackage", "Adapter_PhysicalPackagePhysicalPort"},
    {"FCHBA_PortController", "FCHBA_PortControllerFCPort"},
    {"Adapter_Product", "Adapter_ProductPhysicalPackage"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemObjectManager"},
    {"FCHBA_ObjectManager", "FCHBA_ObjectManagerCommMech"},
    {"FCHBA_ObjectManager", "FCHBA_ObjectManagerNamespace"},
    {"FCHBA_RegisteredProfile", "FCHBA_RegisteredProfileObjectManager"},
    {"FCHBA_SCSIProtocolController", "FCHBA_SCSIProtocolControllerFCPort"},
    {"FCHBA_SoftwareIdentity", "FCHBA_SoftwareIdentityPortController"},
    {"FCHBA_SoftwareIdentity", "FCHBA_SoftwareIdentitySoftwareInstallationService"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"},
    {"FCHBA_CIMXMLCommMech", "FCHBA_ComputerSystemCommMech"},
    {"FCHBA_FCPort", "FCHBA_ComputerSystemFCPort"},
    {"FCHBA_LogicalPortGroup", "FCHBA_ComputerSystemLogicalPortGroup"},
    {"FCHBA_PortController", "FCHBA_ComputerSystemPortController"},
    {"FCHBA_SCSIProtocolController", "FCHBA_ComputerSystemSCSIProtocolController"},
    {"FCHBA_SCSIProtocolEndpointHBA", "FCHBA_ComputerSystemSCSIProtocolEndpointHBA"},
    {"FCHBA_SCSIProtocolEndpointTarget", "FCHBA_ComputerSystemSCSIProtocolEndpointTarget"},
    {"FCHBA_SoftwareIdentity", "FCHBA_ComputerSystemSoftwareIdentity"},
    {"FCHBA_StorageExtent", "FCHBA_ComputerSystemStorageExtent"},
    {"FCHBA_FCPortStatistics", "FCHBA_FCPortFCPortStatistics"},
    {"FCHBA_SCSIProtocolEndpointHBA", "FCHBA_FCPortSCSIProtocolEndpointHBA"},
    {"FCHBA_FCPort", "FCHBA_LogicalPortGroupFCPort"},
    {"Adapter_PhysicalPort", "NIC_PhysicalPortEthernetPort"},
    {"Adapter_PhysicalPort", "FCHBA_PhysicalPortFCPort"},
    {"Adapter_PhysicalPort", "Adapter_PhysicalPackagePhysicalPort"},
    {"Adapter_PhysicalConnector", "Adapter_PhysicalPackagePhysicalConnector"},
    {"Adapter_PhysicalConnector", "FCHBA_PhysicalConnectorFCPort"},
    {"FCHBA_PortController", "FCHBA_PhysicalPackagePortController"},
    {"FCHBA_FCPort", "FCHBA_PortControllerFCPort"},
    {"Adapter_PhysicalPackage", "Adapter_ProductPhysicalPackage"},
    {"FCHBA_ObjectManager", "FCHBA_ComputerSystemObjectManager"},
    {"FCHBA_ObjectManager", "FCHBA_RegisteredProfileObjectManager"},
    {"FCHBA_CIMXMLCommMech", "FCHBA_ObjectManagerCommMech"},
    {"FCHBA_Namespace", "FCHBA_ObjectManagerNamespace"},
    {"FCHBA_FCPort", "FCHBA_SCSIProtocolControllerFCPort"},
    {"FCHBA_PortController", "FCHBA_SoftwareIdentityPortController"},
    {"FCHBA_PortController", "FCHBA_PortControllerSoftwareInstallationService"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_SoftwareIdentitySoftwareInstallationService"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_ComputerSystemSoftwareInstallationService"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_PortControllerSoftwareInstallationService"},
    {"FCHBA_SoftwareInstallationServiceCapabilities", "FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemEthernetPort"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemIPProtocolEndpoint"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemLANEndpoint"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemNetworkPort"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemPortController"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemRemoteServiceAccessPoint"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemSoftwareIdentity"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemSoftwareInstallationService"},
    {"NIC_IPProtocolEndpointCapabilities", "NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint"},
    {"NIC_EthernetPort2", "NIC_ElementConformsToRegisteredProfile"},
    {"NIC_EthernetPort2", "NIC_ComputerSystemEthernetPort"},
    {"NIC_EthernetPort2", "NIC_EthernetPortLANEndpoint"},
    {"NIC_EthernetPort2", "NIC_PhysicalConnectorEthernetPort"},
    {"NIC_EthernetPort2", "NIC_PhysicalPortEthernetPort"},
    {"NIC_EthernetPort2", "NIC_PortControllerEthernetPort"},
    {"NIC_IPProtocolEndpoint", "NIC_ComputerSystemIPProtocolEndpoint"},
    {"NIC_IPProtocolEndpoint", "NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint"},
    {"NIC_IPProtocolEndpoint", "NIC_LANEndpointIPProtocolEndpoint"},
    {"NIC_IPProtocolEndpoint", "NIC_ElementConformsToRegisteredProfile"},
    {"NIC_LANEndpoint", "NIC_ComputerSystemLANEndpoint"},
    {"NIC_LANEndpoint", "NIC_EthernetPortLANEndpoint"},
    {"NIC_LANEndpoint", "NIC_LANEndpointIPProtocolEndpoint"},
    {"NIC_LANEndpoint", "NIC_NetworkPortLANEndpoint"},
    {"NIC_NetworkPort", "NIC_ComputerSystemNetworkPort"},
    {"NIC_NetworkPort", "NIC_NetworkPortLANEndpoint"},
    {"NIC_NetworkPort", "NIC_ElementConformsToRegisteredProfile"},
    {"Adapter_PhysicalConnector", "NIC_PhysicalConnectorEthernetPort"},
    {"Adapter_PhysicalPackage", "NIC_PhysicalPackagePortController"},
    {"NIC_PortController", "NIC_ComputerSystemPortController"},
    {"NIC_PortController", "NIC_PortControllerEthernetPort"},
    {"NIC_PortController", "NIC_PortControllerSoftwareInstallationService"},
    {"NIC_PortController", "NIC_SoftwareIdentityPortController"},
    {"NIC_PortController", "NIC_PhysicalPackagePortController"},
    {"NIC_RegisteredProfile", "NIC_ElementConformsToRegisteredProfile"},
    {"NIC_RemoteServiceAccessPoint", "NIC_ComputerSystemRemoteServiceAccessPoint"},
    {"NIC_SoftwareIdentity", "NIC_ComputerSystemSoftwareIdentity"},
    {"NIC_SoftwareIdentity", "NIC_SoftwareIdentityPortController"},
    {"NIC_SoftwareIdentity", "NIC_SoftwareIdentitySoftwareInstallationService"},
    {"NIC_SoftwareInstallationService", "NIC_ComputerSystemSoftwareInstallationService"},
    {"NIC_SoftwareInstallationService", "NIC_PortControllerSoftwareInstallationService"},
    {"NIC_SoftwareInstallationService", "NIC_SoftwareIdentitySoftwareInstallationService"},
    {"NIC_SoftwareInstallationService", "NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"},
    {"NIC_SoftwareInstallationServiceCapabilities", "NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"},
};

constexpr Row3 storageTests[] = {
    {"FCHBA_CIMXMLCommMech", "FCHBA_ComputerSystemCommMech", "CIM_HostedAccessPoint"},
    {"FCHBA_CIMXMLCommMech", "FCHBA_ObjectManagerCommMech", "CIM_CommMechanismForManager"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemCommMech", "CIM_HostedAccessPoint"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemFCPort", "CIM_SystemDevice"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemLogicalPortGroup", "CIM_HostedCollection"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemObjectManager", "CIM_HostedService"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemPortController", "CIM_SystemDevice"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSCSIProtocolController", "CIM_SystemDevice"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSoftwareIdentity", "CIM_InstalledSoftwareIdentity"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSoftwareInstallationService", "CIM_HostedService"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSCSIProtocolEndpointHBA", "CIM_HostedAccessPoint"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemSCSIProtocolEndpointTarget", "CIM_HostedAccessPoint"},
    {"Adapter_ComputerSystem", "FCHBA_ComputerSystemStorageExtent", "CIM_SystemDevice"},
    {"FCHBA_FCPort", "FCHBA_FCPortFCPortStatistics", "CIM_ElementStatisticalData"},
    {"FCHBA_FCPort", "FCHBA_FCPortSCSIProtocolEndpointHBA", "CIM_DeviceSAPImplementation"},
    {"FCHBA_FCPort", "FCHBA_ComputerSystemFCPort", "CIM_SystemDevice"},
    {"FCHBA_FCPort", "FCHBA_LogicalPortGroupFCPort", "CIM_MemberOfCollection"},
    {"FCHBA_FCPort", "FCHBA_PhysicalConnectorFCPort", "CIM_Realizes"},
    {"FCHBA_FCPort", "FCHBA_PhysicalPortFCPort", "CIM_Realizes"},
    {"FCHBA_FCPort", "FCHBA_PortControllerFCPort", "CIM_ControlledBy"},
    {"FCHBA_FCPort", "FCHBA_SCSIProtocolControllerFCPort", "CIM_ProtocolControllerForPort"},
    {"FCHBA_FCPortStatistics", "FCHBA_FCPortFCPortStatistics", "CIM_ElementStatisticalData"},
    {"FCHBA_LogicalPortGroup", "FCHBA_LogicalPortGroupFCPort", "CIM_MemberOfCollection"},
    {"FCHBA_LogicalPortGroup", "FCHBA_ComputerSystemLogicalPortGroup", "CIM_HostedCollection"},
    {"FCHBA_Namespace", "FCHBA_ObjectManagerNamespace", "CIM_NamespaceInManager"},
    {"FCHBA_ObjectManager", "FCHBA_ObjectManagerCommMech", "CIM_CommMechanismForManager"},
    {"FCHBA_ObjectManager", "FCHBA_ObjectManagerNamespace", "CIM_NamespaceInManager"},
    {"FCHBA_ObjectManager", "FCHBA_ComputerSystemObjectManager", "CIM_HostedService"},
    {"Adapter_PhysicalConnector", "Adapter_PhysicalPackagePhysicalConnector", "CIM_Container"},
    {"Adapter_PhysicalConnector", "FCHBA_PhysicalConnectorFCPort", "CIM_Realizes"},
    {"Adapter_PhysicalPort", "Adapter_PhysicalPackagePhysicalPort", "CIM_Container"},
    {"Adapter_PhysicalPort", "FCHBA_PhysicalPortFCPort", "CIM_Realizes"},
    {"Adapter_PhysicalPackage", "FCHBA_PhysicalPackagePortController", "CIM_Realizes"},
    {"Adapter_PhysicalPackage", "Adapter_PhysicalPackagePhysicalConnector", "CIM_Container"},
    {"Adapter_PhysicalPackage", "Adapter_PhysicalPackagePhysicalPort", "CIM_Container"},
    {"Adapter_PhysicalPackage", "Adapter_ProductPhysicalPackage", "CIM_ProductPhysicalComponent"},
    {"FCHBA_PortController", "FCHBA_PortControllerFCPort", "CIM_ControlledBy"},
    {"FCHBA_PortController", "FCHBA_PortControllerSoftwareInstallationService", "CIM_ServiceAffectsElement"},
    {"FCHBA_PortController", "FCHBA_ComputerSystemPortController", "CIM_SystemDevice"},
    {"FCHBA_PortController", "FCHBA_PhysicalPackagePortController", "CIM_Realizes"},
    {"FCHBA_PortController", "FCHBA_SoftwareIdentityPortController", "CIM_ElementSoftwareIdentity"},
    {"Adapter_Product", "Adapter_ProductPhysicalPackage", "CIM_ProductPhysicalComponent"},
    {"FCHBA_SCSIProtocolController", "FCHBA_SCSIProtocolControllerFCPort", "CIM_ProtocolControllerForPort"},
    {"FCHBA_SCSIProtocolController", "FCHBA_ComputerSystemSCSIProtocolController", "CIM_SystemDevice"},
    {"FCHBA_SoftwareIdentity", "FCHBA_SoftwareIdentityPortController", "CIM_ElementSoftwareIdentity"},
    {"FCHBA_SoftwareIdentity", "FCHBA_SoftwareIdentitySoftwareInstallationService", "CIM_ServiceAffectsElement"},
    {"FCHBA_SoftwareIdentity", "FCHBA_ComputerSystemSoftwareIdentity", "CIM_InstalledSoftwareIdentity"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", "CIM_ElementCapabilities"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_ComputerSystemSoftwareInstallationService", "CIM_HostedService"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_PortControllerSoftwareInstallationService", "CIM_ServiceAffectsElement"},
    {"FCHBA_SoftwareInstallationService", "FCHBA_SoftwareIdentitySoftwareInstallationService", "CIM_ServiceAffectsElement"},
    {"FCHBA_SoftwareInstallationServiceCapabilities", "FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", "CIM_ElementCapabilities"},
    {"FCHBA_SoftwareInstallationServiceCapabilities", "FCHBA_ComputerSystemSoftwareInstallationService", "CIM_HostedService"},
    {"FCHBA_SCSIProtocolEndpointHBA", "FCHBA_ComputerSystemSCSIProtocolEndpointHBA", "CIM_HostedAccessPoint"},
    {"FCHBA_SCSIProtocolEndpointHBA", "FCHBA_FCPortSCSIProtocolEndpointHBA", "CIM_DeviceSAPImplementation"},
    {"FCHBA_SCSIProtocolEndpointTarget", "FCHBA_ComputerSystemSCSIProtocolEndpointTarget", "CIM_HostedAccessPoint"},
    {"FCHBA_StorageExtent", "FCHBA_ComputerSystemStorageExtent", "CIM_SystemDevice"},
};

constexpr Row2 ethernetPairs[] = {
    {"Adapter_ComputerSystem", "NIC_ComputerSystemPortController"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemEthernetPort"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemLANEndpoint"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemNetworkPort"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemSoftwareInstallationService"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemIPProtocolEndpoint"},
    {"Adapter_ComputerSystem", "NIC_ComputerSystemSoftwareIdentity"},
    {"NIC_PortController", "NIC_ComputerSystemPortController"},
    {"NIC_PortController", "NIC_PortControllerEthernetPort"},
    {"NIC_PortController", "NIC_SoftwareIdentityPortController"},
    {"NIC_PortController", "NIC_PortControllerSoftwareInstallationService"},
    {"NIC_PortController", "NIC_PhysicalPackagePortController"},
    {"NIC_EthernetPort2", "NIC_PortControllerEthernetPort"},
    {"NIC_EthernetPort2", "NIC_ComputerSystemEthernetPort"},
    {"NIC_EthernetPort2", "NIC_PhysicalConnectorEthernetPort"},
    {"NIC_EthernetPort2", "NIC_PhysicalPortEthernetPort"},
    {"NIC_EthernetPort2", "NIC_EthernetPortLANEndpoint"},
    {"NIC_EthernetPort2", "NIC_ElementConformsToRegisteredProfile"},
    {"Adapter_PhysicalConnector", "NIC_PhysicalConnectorEthernetPort"},
    {"Adapter_PhysicalPort", "NIC_PhysicalPortEthernetPort"},
    {"Adapter_PhysicalPackage", "NIC_PhysicalPackagePortController"},
    {"NIC_RegisteredProfile", "NIC_ElementConformsToRegisteredProfile"},
    {"NIC_LANEndpoint", "NIC_EthernetPortLANEndpoint"},
    {"NIC_LANEndpoint", "NIC_ComputerSystemLANEndpoint"},
    {"NIC_LANEndpoint", "NIC_NetworkPortLANEndpoint"},
    {"NIC_LANEndpoint", "NIC_LANEndpointIPProtocolEndpoint"},
    {"NIC_SoftwareIdentity", "NIC_SoftwareIdentityPortController"},
    {"NIC_SoftwareIdentity", "NIC_SoftwareIdentitySoftwareInstallationService"},
    {"NIC_SoftwareIdentity", "NIC_ComputerSystemSoftwareIdentity"},
    {"NIC_NetworkPort", "NIC_ComputerSystemNetworkPort"},
    {"NIC_NetworkPort", "NIC_NetworkPortLANEndpoint"},
    {"NIC_NetworkPort", "NIC_ElementConformsToRegisteredProfile"},
    {"NIC_IPProtocolEndpoint", "NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint"},
    {"NIC_IPProtocolEndpoint", "NIC_ComputerSystemIPProtocolEndpoint"},
    {"NIC_IPProtocolEndpoint", "NIC_LANEndpointIPProtocolEndpoint"},
    {"NIC_IPProtocolEndpoint", "NIC_ElementConformsToRegisteredProfile"},
    {"NIC_SoftwareInstallationService", "NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"},
    {"NIC_SoftwareInstallationService", "NIC_SoftwareIdentitySoftwareInstallationService"},
    {"NIC_SoftwareInstallationService", "NIC_PortControllerSoftwareInstallationService"},
    {"NIC_SoftwareInstallationService", "NIC_ComputerSystemSoftwareInstallationService"},
    {"NIC_SoftwareInstallationServiceCapabilities", "NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities"},
    {"NIC_IPProtocolEndpointCapabilities", "NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint"},
};
// clang-format on

std::string whole(const char* name) { return std::string("Merolt_") + name; }

} // namespace

const std::vector<DispatchRow>& lookUpTable() {
    static const std::vector<DispatchRow> rows = [] {
        std::vector<DispatchRow> made;
        for (const auto& [source, association] : lookUpRows)
            made.push_back({whole(source), whole(association), {}});
        return made;
    }();
    return rows;
}

const std::vector<DispatchRow>& referenceTests() {
    static const std::vector<DispatchRow> rows = [] {
        std::vector<DispatchRow> made;
        for (const auto& [source, association, base] : storageTests)
            made.push_back({whole(source), whole(association), base});
        for (const auto& [source, association] : ethernetPairs)
            made.push_back({whole(source), whole(association), {}});
        return made;
    }();
    return rows;
}
