#include "provider/list_builders.h"

#include "classes/ethernet/registered_profile.h"
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/physical/physical_port.h"
#include "classes/physical/product.h"
#include "classes/record_list.h"
#include "classes/server/namespace.h"
#include "classes/server/object_manager.h"
#include "classes/server/registered_profiles.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/fc_port_statistics.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/port_controller.h"
#include "classes/storage/scsi_protocol_controller.h"
#include "classes/storage/scsi_protocol_endpoint_hba.h"
#include "classes/storage/scsi_protocol_endpoint_target.h"
#include "classes/storage/storage_extent.h"
#include "classes/storage/vital_product_data.h"
#include "configuration/configuration.h"
#include "inventory/chain.h"
#include "inventory/cna_list.h"
#include "software/software_identity.h"

namespace merolt {

namespace {

enum class When { always, atStart, inRefresh };

/// Either function may be missing: some lists are built in one place and cleared in another, some are never cleared.
struct ListBuilder {
    void (*build)();
    void (*clear)();
    When when;
};

/// Lists of what lies behind the ports exist only where targets are published.
template <void (*Function)()>
void forTargets() {
    if (gTargetDiscoveryEnabled) Function();
}

// clang-format off
constexpr ListBuilder listBuilders[] = {
    {Initialize_CNA_List,                                nullptr,                                      When::atStart},
    {nullptr,                                            Clear_CNA_List,                               When::always},
    {nullptr,                                            ethernet::Clear_RegisteredProfile_List,       When::always},
    {server::buildNamespaceList,                         nullptr,                                      When::always},
    {server::buildObjectManagerList,                     nullptr,                                      When::always},
    {storage::buildFCPortStatisticsList,                 storage::clearFCPortStatisticsList,           When::always},
    {storage::buildLogicalPortGroupList,                 storage::clearLogicalPortGroupList,           When::always},
    {physical::buildPhysicalPackageList,                 physical::clearPhysicalPackageList,           When::always},
    {physical::buildProductList,                         physical::clearProductList,                   When::always},
    {server::buildRegisteredProfileList,                 server::clearRegisteredProfileList,           When::always},
    {server::buildRegisteredSubProfileList,              server::clearRegisteredSubProfileList,        When::always},
    {storage::buildSCSIProtocolControllerList,           storage::clearSCSIProtocolControllerList,     When::always},
    {software::buildSoftwareIdentityList,                software::clearSoftwareIdentityList,          When::always},
    {physical::buildPhysicalConnectorList,               physical::clearPhysicalConnectorList,         When::always},
    {physical::buildPhysicalPortList,                    physical::clearPhysicalPortList,              When::always},
    {forTargets<storage::buildSCSIProtocolEndpointHBAList>,    forTargets<storage::clearSCSIProtocolEndpointHBAList>,    When::always},
    {forTargets<storage::buildSCSIProtocolEndpointTargetList>, forTargets<storage::clearSCSIProtocolEndpointTargetList>, When::always},
    {forTargets<storage::buildStorageExtentList>,              forTargets<storage::clearStorageExtentList>,              When::always},
    {storage::buildFCPortList,                           storage::clearFCPortList,                     When::always},
    {storage::buildPortControllerList,                   storage::clearPortControllerList,             When::always},
    {Initialize_CNA_List,                                nullptr,                                      When::inRefresh},
    {ethernet::Initialize_RegisteredProfile_List,        nullptr,                                      When::always},
};
// clang-format on

void buildLists(When occasion) {
    forgetCutChains();
    storage::forgetVpdReadings();
    for (const ListBuilder& builder : listBuilders) {
        if (builder.build && (builder.when == When::always || builder.when == occasion)) builder.build();
    }
}

} // namespace

void buildListsAtStart() { buildLists(When::atStart); }

void buildListsInRefresh() { buildLists(When::inRefresh); }

void buildListsWithoutAdapters() {
    server::buildNamespaceList();
    server::buildObjectManagerList();
}

void clearLists() {
    for (const ListBuilder& builder : listBuilders) {
        if (builder.clear) builder.clear();
    }
}

void endLists() {
    clearLists();
    KeptMemory::releaseAll();
}

} // namespace merolt
