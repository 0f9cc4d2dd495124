// Merolt_FCHBA_Namespace: the two namespaces of the CIM server that concern the adapters.
#pragma once

#include "classes/list_class.h"

namespace merolt::server {

constexpr int namespaceCount = 2;
extern const char* g_namespaceNames[namespaceCount];

void buildNamespaceList();

CmpiObjectPath makePath_Namespace(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_Namespace(const char* className, const char* nameSpace, const char** properties, int index);
DECLARE_REQUEST_FUNCTIONS(Namespace)

} // namespace merolt::server
