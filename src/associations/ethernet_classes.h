// The ends of the Ethernet side's associations. Services of the Ethernet side stand here in two forms: some families
// show the Ethernet class's own objects, others objects made by the storage class's makers under the Ethernet name.
#pragma once

#include "associations/source_tests.h"
#include "classes/ethernet/ethernet_port.h"
#include "classes/ethernet/ip_protocol_endpoint.h"
#include "classes/ethernet/ip_protocol_endpoint_capabilities.h"
#include "classes/ethernet/lan_endpoint.h"
#include "classes/ethernet/network_port.h"
#include "classes/ethernet/port_controller.h"
#include "classes/ethernet/software_identity.h"
#include "classes/ethernet/software_installation_service.h"
#include "classes/ethernet/software_installation_service_capabilities.h"
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "software/software_installation_service.h"
#include "software/software_installation_service_capabilities.h"

namespace merolt::association::nic {

inline constexpr ObjectClass ethernetPort = OBJECT_CLASS("Merolt_NIC_EthernetPort2", ethernet, EthernetPort);
inline constexpr ObjectClass networkPort = OBJECT_CLASS("Merolt_NIC_NetworkPort", ethernet, NetworkPort);
inline constexpr ObjectClass portController = OBJECT_CLASS("Merolt_NIC_PortController", ethernet, PortController);
inline constexpr ObjectClass lanEndPoint = OBJECT_CLASS("Merolt_NIC_LANEndpoint", ethernet, LANEndPoint);
inline constexpr ObjectClass ipProtocolEndPoint =
    OBJECT_CLASS("Merolt_NIC_IPProtocolEndpoint", ethernet, IPProtocolEndPoint);
inline constexpr ObjectClass ipProtocolEndPointCapabilities =
    OBJECT_CLASS("Merolt_NIC_IPProtocolEndpointCapabilities", ethernet, IPProtocolEndPointCapabilities);
inline constexpr ObjectClass softwareIdentity = OBJECT_CLASS("Merolt_NIC_SoftwareIdentity", ethernet, SoftwareIdentity);
inline constexpr ObjectClass installationService =
    OBJECT_CLASS("Merolt_NIC_SoftwareInstallationService", ethernet, SoftwareInstallationService);

inline constexpr ObjectClass physicalPackage =
    NIC_OBJECT_CLASS("Merolt_Adapter_PhysicalPackage", physical, PhysicalPackage);
inline constexpr ObjectClass physicalConnector =
    NIC_OBJECT_CLASS("Merolt_Adapter_PhysicalConnector", physical, PhysicalConnector);
inline constexpr ObjectClass physicalPort = NIC_OBJECT_CLASS("Merolt_Adapter_PhysicalPort", physical, PhysicalPort);

/// Their CreationClassName stays that of the storage side.
inline constexpr ObjectClass storageMadeService =
    OBJECT_CLASS("Merolt_NIC_SoftwareInstallationService", software, SoftwareInstallationService);
inline constexpr ObjectClass storageMadeCapabilities = OBJECT_CLASS(
    "Merolt_NIC_SoftwareInstallationServiceCapabilities", software, SoftwareInstallationServiceCapabilities);

} // namespace merolt::association::nic
