// Merolt_FCHBA_LogicalPortGroup: the Fibre Channel node, the group of ports that share a node world wide name.
//
// By contract a record goes to the place of its function in the walk while the count only counts records: a function
// whose node is already there leaves an empty record behind it, and the last records can lie beyond the count, out of
// clients' sight. Corrected answers have each node once, and no empty record.
#pragma once

#include "classes/list_class.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::storage {

struct LogicalPortGroupEntry {
    std::uint8_t valid;         ///< 1 after createLogicalPortGroup finished
    FixedText<128> instanceID;  ///< key: host name, serial text, node name, port name
    FixedText<128> elementName; ///< node name
    std::int32_t function;      ///< index of its storage function in the walk, and so of that function's port
};

extern std::int32_t g_logicalPortGroupCount;
extern LogicalPortGroupEntry* g_logicalPortGroupList;

void buildLogicalPortGroupList();
void clearLogicalPortGroupList();
inline constexpr ClassList listOfLogicalPortGroups = {buildLogicalPortGroupList, clearLogicalPortGroupList};

CmpiObjectPath makePath_LogicalPortGroup(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_LogicalPortGroup(const char* className, const char* nameSpace, const char** properties,
                                           int index);
DECLARE_REQUEST_FUNCTIONS(LogicalPortGroup)

} // namespace merolt::storage
