// Merolt_FCHBA_CIMXMLCommMech: how clients speak to the CIM server.
#pragma once

#include "classes/list_class.h"

namespace merolt::server {

CmpiObjectPath makePath_CIMXMLCommMech(const char* className, const char* nameSpace);
CmpiInstance makeInstance_CIMXMLCommMech(const char* className, const char* nameSpace, const char** properties);
DECLARE_REQUEST_FUNCTIONS(CIMXMLCommMech)

} // namespace merolt::server
