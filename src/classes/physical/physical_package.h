// Merolt_Adapter_PhysicalPackage: each card as a thing, whatever functions it carries. The first function seen of a
// card decides the record. The class also decides under whose name a card is published.
#pragma once

#include "classes/list_class.h"
#include "inventory/cna_list.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>
#include <optional>

namespace merolt::physical {

struct PhysicalPackageEntry {
    std::uint8_t valid; ///< 1 after a create form finished
    std::uint8_t isCNA; ///< 1: published as a CNA, 0: as a Fibre Channel adapter
    FixedText<128> tag; ///< key: UUID of the card, or its serial number
    FixedText<128> model;
    FixedText<128> serialNumber; ///< by which functions of one card are recognised, and a CNACard is joined
    FixedText<128> sku;          ///< may be empty
    std::uint32_t adapterType;   ///< 0 for records made from an Ethernet function
};

extern std::int32_t g_physicalPackageCount;
extern PhysicalPackageEntry* g_physicalPackageList;

void buildPhysicalPackageList();
void clearPhysicalPackageList();

/// @return true if the entry was taken for a new card, which raises the index of the walk.
bool addPhysicalPackage(TAVIK_AdapterEntry* adapter, TAVIK_ProtocolEntry* entry, int index);
void createPhysicalPackage(TAVIK_AdapterEntry* adapter, TAVIK_DeviceRecord* device, int index);
void createNicPhysicalPackage(TAVIK_AdapterEntry* adapter, CNACard* card, int index);

/// The UUID among the VPD items of the card's first port, else the card's serial number.
FixedText<128> calcTag_Nic_PhysicalPackage(const CNACard* card);
/// The FRU number among those items, else the card's default one.
FixedText<128> getCardFruNumber(const CNACard* card);

CmpiObjectPath makePath_PhysicalPackage(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_PhysicalPackage(const char* className, const char* nameSpace, const char** properties,
                                          int index);
/// Of the first record with the card's serial number; nothing if there is none, as after a refresh.
std::optional<CmpiObjectPath> makePath_Nic_PhysicalPackage(const char* className, const char* nameSpace, CNACard* card);
std::optional<CmpiInstance> makeInstance_Nic_PhysicalPackage(const char* className, const char* nameSpace,
                                                             const char** properties, CNACard* card);
DECLARE_REQUEST_FUNCTIONS(PhysicalPackage)

} // namespace merolt::physical
