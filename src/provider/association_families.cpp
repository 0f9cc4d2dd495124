#include "provider/association_families.h"

#include "associations/ethernet/families.h"
#include "associations/storage/families.h"
#include "text/text.h"

namespace merolt {

namespace {

#define FAMILY(side, X) side::associators_##X, side::associatorNames_##X, side::references_##X, side::referenceNames_##X
// A family that shows freshly read lists.
#define FRESH(side, X) FAMILY(side, X), side::clearLists_##X, side::buildLists_##X

// clang-format off
constexpr AssociationFamily families[] = {
    {"Merolt_FCHBA_ComputerSystemPortController", FAMILY(storage, AssocComputerSystemPortController)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolController", FAMILY(storage, AssocComputerSystemSCSIProtocolController)},
    {"Merolt_FCHBA_ComputerSystemFCPort", FAMILY(storage, AssocComputerSystemFCPort)},
    {"Merolt_FCHBA_ComputerSystemLogicalPortGroup", FAMILY(storage, AssocComputerSystemLogicalPortGroup)},
    {"Merolt_FCHBA_ComputerSystemSoftwareIdentity", FAMILY(storage, AssocComputerSystemSoftwareIdentity)},
    {"Merolt_FCHBA_SoftwareIdentityPortController", FAMILY(storage, AssocSoftwareIdentityPortController)},
    {"Merolt_FCHBA_PhysicalPackagePortController", FAMILY(storage, AssocPhysicalPackagePortController)},
    {"Merolt_FCHBA_PhysicalConnectorFCPort", FAMILY(storage, AssocPhysicalConnectorFCPort)},
    {"Merolt_FCHBA_PhysicalPortFCPort", FAMILY(storage, AssocPhysicalPortFCPort)},
    {"Merolt_FCHBA_PortControllerFCPort", FAMILY(storage, AssocPortControllerFCPort)},
    {"Merolt_FCHBA_PortControllerSoftwareInstallationService", FAMILY(storage, AssocPortControllerSoftwareInstallationService)},
    {"Merolt_FCHBA_LogicalPortGroupFCPort", FRESH(storage, AssocLogicalPortGroupFCPort)},
    {"Merolt_FCHBA_FCPortFCPortStatistics", FRESH(storage, AssocFCPortFCPortStatistics)},
    {"Merolt_Adapter_ProductPhysicalPackage", FAMILY(storage, AssocProductPhysicalPackage)},
    {"Merolt_FCHBA_SCSIProtocolControllerFCPort", FRESH(storage, AssocSCSIProtocolControllerFCPort)},
    {"Merolt_FCHBA_ComputerSystemObjectManager", FAMILY(storage, AssocComputerSystemObjectManager)},
    {"Merolt_FCHBA_ObjectManagerCommMech", FAMILY(storage, AssocObjectManagerCommMech)},
    {"Merolt_FCHBA_ComputerSystemCommMech", FAMILY(storage, AssocComputerSystemCommMech)},
    {"Merolt_FCHBA_ObjectManagerNamespace", FAMILY(storage, AssocObjectManagerNamespace)},
    {"Merolt_Adapter_PhysicalPackagePhysicalConnector", FAMILY(storage, AssocPhysicalPackagePhysicalConnector)},
    {"Merolt_Adapter_PhysicalPackagePhysicalPort", FAMILY(storage, AssocPhysicalPackagePhysicalPort)},
    {"Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService", FAMILY(storage, AssocSoftwareIdentitySoftwareInstallationService)},
    {"Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", FAMILY(storage, AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities)},
    {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService", FAMILY(storage, AssocComputerSystemSoftwareInstallationService)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA", FAMILY(storage, AssocComputerSystemSCSIProtocolEndpointHBA)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget", FRESH(storage, AssocComputerSystemSCSIProtocolEndpointTarget)},
    {"Merolt_FCHBA_ComputerSystemStorageExtent", FRESH(storage, AssocComputerSystemStorageExtent)},
    {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA", FRESH(storage, AssocFCPortSCSIProtocolEndpointHBA)},
    {"Merolt_NIC_ComputerSystemPortController", FAMILY(ethernet, AssocComputerSystemPortController)},
    {"Merolt_NIC_ComputerSystemEthernetPort", FAMILY(ethernet, AssocComputerSystemEthernetPort)},
    {"Merolt_NIC_PortControllerEthernetPort", FAMILY(ethernet, AssocPortControllerEthernetPort)},
    {"Merolt_NIC_PhysicalConnectorEthernetPort", FAMILY(ethernet, AssocPhysicalConnectorEthernetPort)},
    {"Merolt_NIC_PhysicalPortEthernetPort", FAMILY(ethernet, AssocPhysicalPortEthernetPort)},
    {"Merolt_NIC_PhysicalPackagePortController", FAMILY(ethernet, AssocPhysicalPackagePortController)},
    {"Merolt_NIC_EthernetPortLANEndpoint", FAMILY(ethernet, AssocEthernetPortLANEndPoint)},
    {"Merolt_NIC_ComputerSystemLANEndpoint", FAMILY(ethernet, AssocComputerSystemLANEndPoint)},
    {"Merolt_NIC_ElementConformsToRegisteredProfile", FAMILY(ethernet, AssocElementConformsToRegisteredProfile)},
    {"Merolt_NIC_SoftwareIdentityPortController", FAMILY(ethernet, AssocSoftwareIdentityPortController)},
    {"Merolt_NIC_ComputerSystemNetworkPort", FAMILY(ethernet, AssocComputerSystemNetworkPort)},
    {"Merolt_NIC_NetworkPortLANEndpoint", FAMILY(ethernet, AssocNetworkPortLANEndPoint)},
    {"Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint", FAMILY(ethernet, AssocIPProtocolEndPointCapabilitiesIPProtocolEndPoint)},
    {"Merolt_NIC_ComputerSystemSoftwareInstallationService", FAMILY(ethernet, AssocComputerSystemSoftwareInstallationService)},
    {"Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", FAMILY(ethernet, AssocSoftwareInstallationServiceCapabilities)},
    {"Merolt_NIC_SoftwareIdentitySoftwareInstallationService", FAMILY(ethernet, AssocSoftwareIdentitySoftwareInstallationService)},
    {"Merolt_NIC_PortControllerSoftwareInstallationService", FAMILY(ethernet, AssocPortControllerSoftwareInstallationService)},
    {"Merolt_NIC_ComputerSystemIPProtocolEndpoint", FAMILY(ethernet, AssocComputerSystemIPProtocolEndPoint)},
    {"Merolt_NIC_LANEndpointIPProtocolEndpoint", FAMILY(ethernet, AssocLANEndPointIPProtocolEndPoint)},
    {"Merolt_NIC_ComputerSystemSoftwareIdentity", FAMILY(ethernet, AssocComputerSystemSoftwareIdentity)},
};
// clang-format on

#undef FRESH
#undef FAMILY

} // namespace

const AssociationFamily* findAssociationFamily(const char* className) {
    for (const AssociationFamily& family : families)
        if (equalsIgnoringCase(className, family.className)) return &family;
    return nullptr;
}

} // namespace merolt
