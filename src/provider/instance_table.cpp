#include "provider/instance_table.h"

#include "associations/families.h"
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
#include "provider/places.h"
#include "software/software_identity.h"
#include "software/software_installation_service.h"
#include "software/software_installation_service_capabilities.h"

namespace merolt {

namespace {

using association::Family;

struct ClassRow {
    int place; ///< among all classes and associations; association::behindAll for what comes new
    const char* className;
    Chain chain;
    ClassFunctions functions;
    const ClassList* fresh = nullptr; ///< read anew before each request
};

#define CLASS(side, X)                                                                                                 \
    { side::enumInstanceNames_##X, side::enumInstances_##X, side::getInstance_##X }

// clang-format off
constexpr ClassRow classRows[] = {
    { 1, "Merolt_Adapter_ComputerSystem", storageChain, CLASS(server, ComputerSystem)},
    { 2, "Merolt_FCHBA_FCPort", storageChain, CLASS(storage, FCPort), &storage::listOfFCPorts},
    { 3, "Merolt_FCHBA_PortController", storageChain, CLASS(storage, PortController)},
    { 4, "Merolt_FCHBA_FCPortStatistics", storageChain, CLASS(storage, FCPortStatistics), &storage::listOfFCPortStatistics},
    { 5, "Merolt_FCHBA_LogicalPortGroup", storageChain, CLASS(storage, LogicalPortGroup)},
    { 6, "Merolt_Adapter_PhysicalPackage", storageChain, CLASS(physical, PhysicalPackage)},
    { 7, "Merolt_Adapter_Product", storageChain, CLASS(physical, Product)},
    { 8, "Merolt_FCHBA_SCSIProtocolController", storageChain, CLASS(storage, SCSIProtocolController)},
    { 9, "Merolt_FCHBA_SoftwareIdentity", storageChain, CLASS(software, SoftwareIdentity)},
    {25, "Merolt_FCHBA_ObjectManager", storageChain, CLASS(server, ObjectManager)},
    {26, "Merolt_FCHBA_CIMXMLCommMech", storageChain, CLASS(server, CIMXMLCommMech)},
    {30, "Merolt_FCHBA_Namespace", storageChain, CLASS(server, Namespace)},
    {32, "Merolt_Adapter_PhysicalConnector", storageChain, CLASS(physical, PhysicalConnector)},
    {33, "Merolt_Adapter_PhysicalPort", storageChain, CLASS(physical, PhysicalPort)},
    {36, "Merolt_FCHBA_SoftwareInstallationService", storageChain, CLASS(software, SoftwareInstallationService)},
    {37, "Merolt_FCHBA_SoftwareInstallationServiceCapabilities", storageChain, CLASS(software, SoftwareInstallationServiceCapabilities)},
    {41, "Merolt_FCHBA_StorageExtent", storageExtentChain, CLASS(storage, StorageExtent), &storage::listOfStorageExtents},
    {42, "Merolt_FCHBA_SCSIProtocolEndpointHBA", scsiEndpointChain, CLASS(storage, SCSIProtocolEndpointHBA)},
    {43, "Merolt_FCHBA_SCSIProtocolEndpointTarget", scsiEndpointChain, CLASS(storage, SCSIProtocolEndpointTarget), &storage::listOfSCSIEndpointTargets},
    {48, "Merolt_NIC_EthernetPort2", ethernetChain, CLASS(ethernet, EthernetPort)},
    {49, "Merolt_NIC_PortController", ethernetChain, CLASS(ethernet, PortController)},
    {50, "Merolt_NIC_LANEndpoint", ethernetChain, CLASS(ethernet, LANEndPoint)},
    {51, "Merolt_NIC_RegisteredProfile", ethernetChain, CLASS(ethernet, RegisteredProfile)},
    {52, "Merolt_NIC_SoftwareIdentity", ethernetChain, CLASS(ethernet, SoftwareIdentity)},
    {53, "Merolt_NIC_NetworkPort", ethernetChain, CLASS(ethernet, NetworkPort)},
    {54, "Merolt_NIC_IPProtocolEndpointCapabilities", ethernetChain, CLASS(ethernet, IPProtocolEndPointCapabilities)},
    {55, "Merolt_NIC_SoftwareInstallationService", ethernetChain, CLASS(ethernet, SoftwareInstallationService)},
    {56, "Merolt_NIC_SoftwareInstallationServiceCapabilities", ethernetChain, CLASS(ethernet, SoftwareInstallationServiceCapabilities)},
    {57, "Merolt_NIC_IPProtocolEndpoint", ethernetChain, CLASS(ethernet, IPProtocolEndPoint)},
};
// clang-format on

#undef CLASS

InstanceRow rowOf(const ClassRow& row) {
    return {.className = row.className, .chain = row.chain, .functions = row.functions, .fresh = {row.fresh}};
}

InstanceRow rowOf(const Family& family, Chain chain) {
    InstanceRow row = {.className = family.className, .chain = chain, .association = &family};
    if (family.fresh.forEnumerations) row.fresh = family.fresh;
    return row;
}

/// @param associationPlace which of an association's two places.
std::vector<InstanceRow> makeRows(int association::Places::*associationPlace) {
    PlacedRows<InstanceRow> rows;
    for (const ClassRow& row : classRows)
        rows.add(row.place, rowOf(row));
    for (const Family* family : association::storageFamilies())
        rows.add(family->places.*associationPlace,
                 rowOf(*family, family->needsTargets ? scsiEndpointChain : storageChain));
    for (const Family* family : association::ethernetFamilies())
        rows.add(family->places.*associationPlace, rowOf(*family, ethernetChain));
    return rows.inOrder();
}

} // namespace

void InstanceRow::enumInstanceNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop) const {
    fresh.read();
    if (association) {
        association::enumInstanceNames(*association, result, cop);
    } else {
        functions.enumInstanceNames(context, result, cop);
    }
}

void InstanceRow::enumInstances(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                                const char** properties) const {
    fresh.read();
    if (association) {
        association::enumInstances(*association, result, cop);
    } else {
        functions.enumInstances(context, result, cop, properties);
    }
}

void InstanceRow::getInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& cop,
                              const char** properties) const {
    fresh.read();
    if (association) {
        association::getInstance(*association, context, result, cop);
    } else {
        functions.getInstance(context, result, cop, properties, true);
    }
}

const InstanceRows& enumerationRows() {
    static const InstanceRows rows = makeRows(&association::Places::row);
    return rows;
}

const InstanceRows& getInstanceRows() {
    static const InstanceRows rows = makeRows(&association::Places::getInstanceRow);
    return rows;
}

} // namespace merolt
