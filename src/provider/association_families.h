// The 48 association families by the association class that names them.
#pragma once

#include "CmpiContext.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"

namespace merolt {

/// The four association requests of a family.
struct AssociationFamily {
    const char* className;
    CmpiStatus (*associators)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char* assocClass,
                              const char* resultClass, const char* role, const char* resultRole,
                              const char** properties);
    CmpiStatus (*associatorNames)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char* assocClass,
                                  const char* resultClass, const char* role, const char* resultRole);
    CmpiStatus (*references)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char* resultClass,
                             const char* role, const char** properties);
    CmpiStatus (*referenceNames)(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char* resultClass,
                                 const char* role);
    /// Both called, in this order, before each request; null for families that show the lists as they are.
    void (*clearLists)() = nullptr;
    void (*buildLists)() = nullptr;
};

/// In any letter case. @return null if no family serves the class.
const AssociationFamily* findAssociationFamily(const char* className);

} // namespace merolt
