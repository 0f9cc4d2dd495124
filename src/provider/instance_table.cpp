#include "provider/instance_table.h"

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

// Families that are not published yet.
constexpr InstanceFamily LATER = {nullptr, nullptr, nullptr};

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
    {"Merolt_FCHBA_ComputerSystemPortController", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolController", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemFCPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemLogicalPortGroup", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemSoftwareIdentity", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_SoftwareIdentityPortController", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_PhysicalPackagePortController", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_PhysicalConnectorFCPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_PhysicalPortFCPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_PortControllerFCPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_PortControllerSoftwareInstallationService", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_LogicalPortGroupFCPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_FCPortFCPortStatistics", storageChain, nullptr, LATER},
    {"Merolt_Adapter_ProductPhysicalPackage", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_SCSIProtocolControllerFCPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ObjectManager", storageChain, nullptr, FAMILY(server, ObjectManager)},
    {"Merolt_FCHBA_CIMXMLCommMech", storageChain, nullptr, FAMILY(server, CIMXMLCommMech)},
    {"Merolt_FCHBA_ComputerSystemObjectManager", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ObjectManagerCommMech", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemCommMech", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_Namespace", storageChain, nullptr, FAMILY(server, Namespace)},
    {"Merolt_FCHBA_ObjectManagerNamespace", storageChain, nullptr, LATER},
    {"Merolt_Adapter_PhysicalConnector", storageChain, nullptr, FAMILY(physical, PhysicalConnector)},
    {"Merolt_Adapter_PhysicalPort", storageChain, nullptr, FAMILY(physical, PhysicalPort)},
    {"Merolt_Adapter_PhysicalPackagePhysicalConnector", storageChain, nullptr, LATER},
    {"Merolt_Adapter_PhysicalPackagePhysicalPort", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_SoftwareInstallationService", storageChain, nullptr, FAMILY(software, SoftwareInstallationService)},
    {"Merolt_FCHBA_SoftwareInstallationServiceCapabilities", storageChain, nullptr, FAMILY(software, SoftwareInstallationServiceCapabilities)},
    {"Merolt_FCHBA_SoftwareIdentitySoftwareInstallationService", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemSoftwareInstallationService", storageChain, nullptr, LATER},
    {"Merolt_FCHBA_StorageExtent", storageExtentChain, freshExtents, FAMILY(storage, StorageExtent)},
    {"Merolt_FCHBA_SCSIProtocolEndpointHBA", scsiEndpointChain, nullptr, FAMILY(storage, SCSIProtocolEndpointHBA)},
    {"Merolt_FCHBA_SCSIProtocolEndpointTarget", scsiEndpointChain, freshTargets, FAMILY(storage, SCSIProtocolEndpointTarget)},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointHBA", scsiEndpointChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemSCSIProtocolEndpointTarget", scsiEndpointChain, nullptr, LATER},
    {"Merolt_FCHBA_ComputerSystemStorageExtent", scsiEndpointChain, nullptr, LATER},
    {"Merolt_FCHBA_FCPortSCSIProtocolEndpointHBA", scsiEndpointChain, nullptr, LATER},
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
    {"Merolt_NIC_ComputerSystemPortController", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ComputerSystemEthernetPort", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_PortControllerEthernetPort", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_PhysicalConnectorEthernetPort", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_PhysicalPortEthernetPort", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_PhysicalPackagePortController", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_EthernetPortLANEndpoint", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ComputerSystemLANEndpoint", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ElementConformsToRegisteredProfile", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_SoftwareIdentityPortController", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ComputerSystemNetworkPort", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_NetworkPortLANEndpoint", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ComputerSystemSoftwareInstallationService", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_SoftwareInstallationServiceSoftwareInstallationServiceCapabilities", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_SoftwareIdentitySoftwareInstallationService", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_PortControllerSoftwareInstallationService", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ComputerSystemIPProtocolEndpoint", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_LANEndpointIPProtocolEndpoint", ethernetChain, nullptr, LATER},
    {"Merolt_NIC_ComputerSystemSoftwareIdentity", ethernetChain, nullptr, LATER},};
// clang-format on

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
