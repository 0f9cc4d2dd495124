// The ends of the storage side's associations.
#pragma once

#include "associations/source_tests.h"
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "classes/physical/product.h"
#include "classes/server/cimxml_comm_mech.h"
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

namespace merolt::association {

inline constexpr ObjectClass objectManager = OBJECT_CLASS("Merolt_FCHBA_ObjectManager", server, ObjectManager);
inline constexpr ObjectClass commMech = OBJECT_CLASS("Merolt_FCHBA_CIMXMLCommMech", server, CIMXMLCommMech);
inline constexpr ObjectClass cimNamespace = OBJECT_CLASS("Merolt_FCHBA_Namespace", server, Namespace);

inline constexpr ObjectClass fcPort = OBJECT_CLASS("Merolt_FCHBA_FCPort", storage, FCPort);
inline constexpr ObjectClass fcPortStatistics =
    OBJECT_CLASS("Merolt_FCHBA_FCPortStatistics", storage, FCPortStatistics);
inline constexpr ObjectClass portController = OBJECT_CLASS("Merolt_FCHBA_PortController", storage, PortController);
inline constexpr ObjectClass logicalPortGroup =
    OBJECT_CLASS("Merolt_FCHBA_LogicalPortGroup", storage, LogicalPortGroup);
inline constexpr ObjectClass scsiProtocolController =
    OBJECT_CLASS("Merolt_FCHBA_SCSIProtocolController", storage, SCSIProtocolController);
inline constexpr ObjectClass scsiProtocolEndpointHBA =
    OBJECT_CLASS("Merolt_FCHBA_SCSIProtocolEndpointHBA", storage, SCSIProtocolEndpointHBA);
inline constexpr ObjectClass scsiProtocolEndpointTarget =
    OBJECT_CLASS("Merolt_FCHBA_SCSIProtocolEndpointTarget", storage, SCSIProtocolEndpointTarget);
inline constexpr ObjectClass storageExtent = OBJECT_CLASS("Merolt_FCHBA_StorageExtent", storage, StorageExtent);

inline constexpr ObjectClass physicalPackage =
    OBJECT_CLASS("Merolt_Adapter_PhysicalPackage", physical, PhysicalPackage);
inline constexpr ObjectClass physicalConnector =
    OBJECT_CLASS("Merolt_Adapter_PhysicalConnector", physical, PhysicalConnector);
inline constexpr ObjectClass physicalPort = OBJECT_CLASS("Merolt_Adapter_PhysicalPort", physical, PhysicalPort);
inline constexpr ObjectClass product = OBJECT_CLASS("Merolt_Adapter_Product", physical, Product);

inline constexpr ObjectClass softwareIdentity =
    OBJECT_CLASS("Merolt_FCHBA_SoftwareIdentity", software, SoftwareIdentity);
inline constexpr ObjectClass installationService =
    OBJECT_CLASS("Merolt_FCHBA_SoftwareInstallationService", software, SoftwareInstallationService);
inline constexpr ObjectClass installationServiceCapabilities = OBJECT_CLASS(
    "Merolt_FCHBA_SoftwareInstallationServiceCapabilities", software, SoftwareInstallationServiceCapabilities);

/// Storage families take these for the host's class.
inline constexpr const char* computerSystemAliases[] = {"CIM_System", "CIM_ComputerSystem", nullptr};

} // namespace merolt::association
