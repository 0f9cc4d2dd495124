// The interface of a provider that serves associations.
#pragma once

#include "CmpiBaseMI.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Derive from it to serve associations. Operations that are not overridden answer CMPI_RC_ERR_NOT_SUPPORTED and leave
/// the result alone. The drivers are the slots of the interface's C table: a CmpiStatus that an operation throws
/// becomes its answer, every other exception passes through to the server.
class CMPI_PROVIDER_LINKAGE CmpiAssociationMI : public virtual CmpiBaseMI {
public:
    /// Hands both to CmpiBaseMI, which the most derived class constructs itself.
    CmpiAssociationMI(const CmpiBroker& providerBroker, const CmpiContext& context);

    ~CmpiAssociationMI() override;

    /// Table slot that ends in associators().
    static CMPIStatus driveAssociators(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                                       const CMPIObjectPath* path, const char* assocClass, const char* resultClass,
                                       const char* role, const char* resultRole, const char** properties);

    /// Table slot that ends in associatorNames().
    static CMPIStatus driveAssociatorNames(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                                           const CMPIObjectPath* path, const char* assocClass, const char* resultClass,
                                           const char* role, const char* resultRole);

    /// Table slot that ends in references().
    static CMPIStatus driveReferences(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                                      const CMPIObjectPath* path, const char* resultClass, const char* role,
                                      const char** properties);

    /// Table slot that ends in referenceNames().
    static CMPIStatus driveReferenceNames(CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                                          const CMPIObjectPath* path, const char* resultClass, const char* role);

    /// Adds the instances at the other end of path's associations to result. Every filter may be NULL.
    virtual CmpiStatus associators(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                   const char* assocClass, const char* resultClass, const char* role,
                                   const char* resultRole, const char** properties);

    /// Adds the paths at the other end of path's associations to result. Every filter may be NULL.
    virtual CmpiStatus associatorNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                       const char* assocClass, const char* resultClass, const char* role,
                                       const char* resultRole);

    /// Adds the association instances that refer to path to result. Every filter may be NULL.
    virtual CmpiStatus references(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                  const char* resultClass, const char* role, const char** properties);

    /// Adds the paths of the associations that refer to path to result. Every filter may be NULL.
    virtual CmpiStatus referenceNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                      const char* resultClass, const char* role);
};
