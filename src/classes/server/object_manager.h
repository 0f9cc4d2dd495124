// Merolt_FCHBA_ObjectManager: the CIM server that the provider runs in.
#pragma once

#include "classes/list_class.h"

namespace merolt::server {

/// Looks the host's name up anew: after a change of the name the object manager's can differ from gSystemName.
void buildObjectManagerList();

/// "pegasus:" and the host's name, whatever CIM server is configured.
const char* getObjectManagerName();

CmpiObjectPath makePath_ObjectManager(const char* className, const char* nameSpace);
CmpiInstance makeInstance_ObjectManager(const char* className, const char* nameSpace, const char** properties);
DECLARE_REQUEST_FUNCTIONS(ObjectManager)

} // namespace merolt::server
