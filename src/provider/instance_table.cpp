#include "provider/instance_table.h"

#include "associations/ethernet/families.h"
#include "associations/storage/families.h"
#include "classes/ethernet/ethernet_port.h"
#include "classes/ethernet/ip_protocol_endpoint.h"
#include "classes/ethernet/ip_protocol_endpoint_capabilities.h"
#include "classes/ethernet/lan_endpoint.h"
#include "classes/ethernet/network_port.h"
#include "classes/ethernet/port_controller.h"
#include "classes/ethernet/registered_profile.h"
#include "classes/ethernet/software_identity.h"
#include "classes/ethernet/software_installation_service.h"
#include "classes/ethernet/software_installation_service_capabilities.h"
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "classes/physical/product.h"
#include "classes/server/cimxml_comm_mech.h"
#include "classes/server/computer_system.h"
#include "classes/server/namespace.h"
#include "classes/server/object_manager.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/fc_port_statistics.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/port_controller.h"
#include "classes/storage/scsi_protocol_controller.h"
#include "classes/storage/scsi_protocol_endpoint_hba.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"
#include "software/software_identity.h"
#include "software/software_installation_service.h"
#include "software/software_installation_service_capabilities.h"

namespace merolt {

namespace {

#define FAMILY(side, X)                                                                                                \
    { side::enumInstanceNames_##X, side::enumInstances_##X, side::getInstance_##X }

/// An association's getInstance in the form of a class's: it knows no property filter and always answers.
template <auto GetAssociation>
CmpiStatus getAssociation(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop, const char**,
                          bool) {
    return GetAssociation(context, result, cop);
}

#define ASSOCIATION(side, X)                                                                                           \
    { side::enumInstanceNames_##X, side::enumInstances_##X, getAssociation<side::getInstance_##X> }

/// Clears and rebuilds a list, so that the request shows fresh data.
template <void (*Clear)(), void (*Build)()>
void rebuild() {
    Clear();
    Build();
}

constexpr auto freshFCPorts = rebuild<storage::clearFCPortList, storage::buildFCPortList>;
constexpr auto freshStatistics = rebuild<storage::clearFCPortStatisticsList, storage::buildFCPortStatisticsList>;
constexpr auto freshExtents = rebuild<storage::clearStorageExtentList, storage::buildStorageExtentList>;
constexpr auto freshTargets =
    rebuild<storage::clearSCSIProtocolEndpointTargetList, storage::buildSCSIProtocolEndpointTargetList>;

#define ASSOCIATION_LISTS(X) (rebuild<storage::clearLists_##X, storage::buildLists_##X>)

// clang-format off
constexpr InstanceRow rows[instanceRowCount] = {
    {"Merolt_Adapter_ComputerSystem", storageChain, nullptr, FAMILY(server, ComputerSystem)},
    {"Merolt_FCHBA_FCPort", storageChain, freshFCPorts, FAMILY(storage, FCPort)},
    {"Merolt_FCHBA_PortController", storageChain, nullptr, FAMILY(storage, PortController)},
    {"Merolt_FCHBA_FCPortStatistics", storageChain, freshStatistics, FAMILY(storage, FCPortStatistics)},
    {"Merolt_FCHBA_LogicalPortGroup", storageChain, nullptr, FAMILY(storage, LogicalPortGroup)},
    {"Merolt_Adapter_PhysicalPackage", storageChain, nullptr, FAMILY(physical, PhysicalPackage)},
    {"Merolt_Adapter_Product", storageChain, nullptr, FAMILY(physical, Product)},
    {"Merolt_FCHBA_SCSIProtocolController", storageChain, nullptr, FAMILY(storage, SCSIProtocolController)},
    {"Merolt_FCHBA_SoftwareIdentity", storageChain, nullptr, FAMILY(software, SoftwareIdentity)},
    {"Merolt_FCHBA_ComputerSystemPortController", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemPortController)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolController", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemSCSIProtocolController)},
    {"Merolt_FCHBA_ComputerSystemFCPort", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemFCPort)},
    {"Merolt_FCHBA_ComputerSystemLogicalPortGroup", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemLogicalPortGroup)},
    {"Merolt_FCHBA_ComputerSystemSoftwareIdentity", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemSoftwareIdentity)},
    {"Merolt_FCHBA_SoftwareIdentityPortController", storageChain, nullptr, ASSOCIATION(storage, AssocSoftwareIdentityPortController)},
    {"Merolt_FCHBA_PhysicalPackagePortController", storageChain, nullptr, ASSOCIATION(storage, AssocPhysicalPackagePortController)},
    {"Merolt_FCHBA_PhysicalConnectorFCPort", storageChain, nullptr, ASSOCIATION(storage, AssocPhysicalConnectorFCPort)},
    {"Merolt_FCHBA_PhysicalPortFCPort", storageChain, nullptr, ASSOCIATION(storage, AssocPhysicalPortFCPort)},
    {"Merolt_FCHBA_PortControllerFCPort", storageChain, nullptr, ASSOCIATION(storage, AssocPortControllerFCPort)},
    {"Merolt_FCHBA_PortControllerSoftwareInstallationService", storageChain, nullptr, ASSOCIATION(storage, AssocPortControllerSoftwareInstallationService)},
    {"Merolt_FCHBA_LogicalPortGroupFCPort", storageChain, nullptr, ASSOCIATION(storage, AssocLogicalPortGroupFCPort)},
    {"Merolt_FCHBA_FCPortFCPortStatistics", storageChain, ASSOCIATION_LISTS(AssocFCPortFCPortStatistics), ASSOCIATION(storage, AssocFCPortFCPortStatistics)},
    {"Merolt_Adapter_ProductPhysicalPackage", storageChain, nullptr, ASSOCIATION(storage, AssocProductPhysicalPackage)},
    {"Merolt_FCHBA_SCSIProtocolControllerFCPort", storageChain, nullptr, ASSOCIATION(storage, AssocSCSIProtocolControllerFCPort)},
    {"Merolt_FCHBA_ObjectManager", storageChain, nullptr, FAMILY(server, ObjectManager)},
    {"Merolt_FCHBA_CIMXMLCommMech", storageChain, nullptr, FAMILY(server, CIMXMLCommMech)},
    {"Merolt_FCHBA_ComputerSystemObjectManager", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemObjectManager)},
    {"Merolt_FCHBA_ObjectManagerCommMech", storageChain, nullptr, ASSOCIATION(storage, AssocObjectManagerCommMech)},
    {"Merolt_FCHBA_ComputerSystemCommMech", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemCommMech)},
    {"Merolt_FCHBA_Namespace", storageChain, nullptr, FAMILY(server, Namespace)},
    {"Merolt_FCHBA_ObjectManagerNamespace", storageChain, nullptr, ASSOCIATION(storage, AssocObjectManagerNamespace)},
    {"Merolt_Adapter_PhysicalConnector", storageChain, nullptr, FAMILY(physical, PhysicalConnector)},
    {"Merolt_Adapter_PhysicalPort", storageChain, nullptr, FAMILY(physical, PhysicalPort)},
    {"Merolt_Adapter_PhysicalPackagePhysicalConnector", storageChain, nullptr, ASSOCIATION(storage, AssocPhysicalPackagePhysicalConnector)},
    {"Merolt_Adapter_PhysicalPackagePhysicalPort", storageChain, nullptr, ASSOCIATION(storage, AssocPhysicalPackagePhysicalPort)},
    {"Merolt_FCHBA_SoftwareInstallationService", storageChain, nullptr, FAMILY(software, SoftwareInstallationService)},
    {"Merolt_FCHBA_SoftwareInstallationServiceCapabilities", storageChain, nullptr, FAMILY(software, SoftwareInstallationServiceCapabilities)},
    {"Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService", storageChain, nullptr, ASSOCIATION(storage, AssocSoftwareIdentitySoftwareInstallationService)},
    {"Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", storageChain, nullptr, ASSOCIATION(storage, AssocSoftwareInstallationServiceSoftwareInstallationServiceCapabilities)},
    {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService", storageChain, nullptr, ASSOCIATION(storage, AssocComputerSystemSoftwareInstallationService)},
    {"Merolt_FCHBA_StorageExtent", storageExtentChain, freshExtents, FAMILY(storage, StorageExtent)},
    {"Merolt_FCHBA_SCSIProtocolEndpointHBA", scsiEndpointChain, nullptr, FAMILY(storage, SCSIProtocolEndpointHBA)},
    {"Merolt_FCHBA_SCSIProtocolEndpointTarget", scsiEndpointChain, freshTargets, FAMILY(storage, SCSIProtocolEndpointTarget)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA", scsiEndpointChain, nullptr, ASSOCIATION(storage, AssocComputerSystemSCSIProtocolEndpointHBA)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget", scsiEndpointChain, ASSOCIATION_LISTS(AssocComputerSystemSCSIProtocolEndpointTarget), ASSOCIATION(storage, AssocComputerSystemSCSIProtocolEndpointTarget)},
    {"Merolt_FCHBA_ComputerSystemStorageExtent", scsiEndpointChain, ASSOCIATION_LISTS(AssocComputerSystemStorageExtent), ASSOCIATION(storage, AssocComputerSystemStorageExtent)},
    {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA", scsiEndpointChain, ASSOCIATION_LISTS(AssocFCPortSCSIProtocolEndpointHBA), ASSOCIATION(storage, AssocFCPortSCSIProtocolEndpointHBA)},
    {"Merolt_NIC_EthernetPort2", ethernetChain, nullptr, FAMILY(ethernet, EthernetPort)},
    {"Merolt_NIC_PortController", ethernetChain, nullptr, FAMILY(ethernet, PortController)},
    {"Merolt_NIC_LANEndpoint", ethernetChain, nullptr, FAMILY(ethernet, LANEndPoint)},
    {"Merolt_NIC_RegisteredProfile", ethernetChain, nullptr, FAMILY(ethernet, RegisteredProfile)},
    {"Merolt_NIC_SoftwareIdentity", ethernetChain, nullptr, FAMILY(ethernet, SoftwareIdentity)},
    {"Merolt_NIC_NetworkPort", ethernetChain, nullptr, FAMILY(ethernet, NetworkPort)},
    {"Merolt_NIC_IPProtocolEndpointCapabilities", ethernetChain, nullptr, FAMILY(ethernet, IPProtocolEndPointCapabilities)},
    {"Merolt_NIC_SoftwareInstallationService", ethernetChain, nullptr, FAMILY(ethernet, SoftwareInstallationService)},
    {"Merolt_NIC_SoftwareInstallationServiceCapabilities", ethernetChain, nullptr, FAMILY(ethernet, SoftwareInstallationServiceCapabilities)},
    {"Merolt_NIC_IPProtocolEndpoint", ethernetChain, nullptr, FAMILY(ethernet, IPProtocolEndPoint)},
    {"Merolt_NIC_ComputerSystemPortController", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemPortController)},
    {"Merolt_NIC_ComputerSystemEthernetPort", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemEthernetPort)},
    {"Merolt_NIC_PortControllerEthernetPort", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocPortControllerEthernetPort)},
    {"Merolt_NIC_PhysicalConnectorEthernetPort", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocPhysicalConnectorEthernetPort)},
    {"Merolt_NIC_PhysicalPortEthernetPort", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocPhysicalPortEthernetPort)},
    {"Merolt_NIC_PhysicalPackagePortController", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocPhysicalPackagePortController)},
    {"Merolt_NIC_EthernetPortLANEndpoint", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocEthernetPortLANEndPoint)},
    {"Merolt_NIC_ComputerSystemLANEndpoint", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemLANEndPoint)},
    {"Merolt_NIC_ElementConformsToRegisteredProfile", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocElementConformsToRegisteredProfile)},
    {"Merolt_NIC_SoftwareIdentityPortController", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocSoftwareIdentityPortController)},
    {"Merolt_NIC_ComputerSystemNetworkPort", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemNetworkPort)},
    {"Merolt_NIC_NetworkPortLANEndpoint", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocNetworkPortLANEndPoint)},
    {"Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocIPProtocolEndPointCapabilitiesIPProtocolEndPoint)},
    {"Merolt_NIC_ComputerSystemSoftwareInstallationService", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemSoftwareInstallationService)},
    {"Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocSoftwareInstallationServiceCapabilities)},
    {"Merolt_NIC_SoftwareIdentitySoftwareInstallationService", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocSoftwareIdentitySoftwareInstallationService)},
    {"Merolt_NIC_PortControllerSoftwareInstallationService", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocPortControllerSoftwareInstallationService)},
    {"Merolt_NIC_ComputerSystemIPProtocolEndpoint", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemIPProtocolEndPoint)},
    {"Merolt_NIC_LANEndpointIPProtocolEndpoint", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocLANEndPointIPProtocolEndPoint)},
    {"Merolt_NIC_ComputerSystemSoftwareIdentity", ethernetChain, nullptr, ASSOCIATION(ethernet, AssocComputerSystemSoftwareIdentity)},};
// clang-format on

#undef ASSOCIATION_LISTS
#undef ASSOCIATION
#undef FAMILY

// getInstance tests the rows from ComputerSystemEthernetPort to SoftwareIdentityPortController in this order.
constexpr std::size_t firstReordered = 59;
constexpr std::size_t getInstanceOrder[] = {59, 61, 62, 63, 60, 66, 65, 64, 67};

InstanceRows inTableOrder() {
    InstanceRows order{};
    for (std::size_t index = 0; index < instanceRowCount; ++index)
        order[index] = &rows[index];
    return order;
}

InstanceRows inGetInstanceOrder() {
    InstanceRows order = inTableOrder();
    std::size_t position = firstReordered;
    for (const std::size_t row : getInstanceOrder)
        order[position++ - 1] = &rows[row - 1];
    return order;
}

} // namespace

const InstanceRows& enumerationRows() {
    static const InstanceRows order = inTableOrder();
    return order;
}

const InstanceRows& getInstanceRows() {
    static const InstanceRows order = inGetInstanceOrder();
    return order;
}

} // namespace merolt
