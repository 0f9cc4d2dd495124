// The interface of a provider that serves instances.
#pragma once

#include "CmpiArray.h"
#include "CmpiBaseMI.h"
#include "CmpiBroker.h"
#include "CmpiContext.h"
#include "CmpiData.h"
#include "CmpiDateTime.h"
#include "CmpiEnumeration.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "CmpiStatus.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Derive from it to serve instances. Operations that are not overridden answer CMPI_RC_ERR_NOT_SUPPORTED and leave the
/// result alone. The drivers are the slots of the interface's C table: a CmpiStatus that an operation throws becomes
/// its answer, every other exception passes through to the server.
class CMPI_PROVIDER_LINKAGE CmpiInstanceMI : public virtual CmpiBaseMI {
public:
    /// Hands both to CmpiBaseMI, which the most derived class constructs itself.
    CmpiInstanceMI(const CmpiBroker& providerBroker, const CmpiContext& context);

    ~CmpiInstanceMI() override;

    /// Table slot that ends in enumInstanceNames().
    static CMPIStatus driveEnumInstanceNames(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                             const CMPIObjectPath* path);

    /// Table slot that ends in enumInstances().
    static CMPIStatus driveEnumInstances(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                         const CMPIObjectPath* path, const char** properties);

    /// Table slot that ends in getInstance().
    static CMPIStatus driveGetInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                       const CMPIObjectPath* path, const char** properties);

    /// Table slot that ends in createInstance().
    static CMPIStatus driveCreateInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                          const CMPIObjectPath* path, const CMPIInstance* instance);

    /// Table slot that ends in setInstance().
    static CMPIStatus driveSetInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                       const CMPIObjectPath* path, const CMPIInstance* instance,
                                       const char** properties);

    /// Table slot that ends in deleteInstance().
    static CMPIStatus driveDeleteInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                          const CMPIObjectPath* path);

    /// Table slot that ends in execQuery().
    static CMPIStatus driveExecQuery(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                     const CMPIObjectPath* path, const char* query, const char* language);

    /// Adds the paths of a class's instances to result.
    virtual CmpiStatus enumInstanceNames(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path);

    /// Adds a class's instances to result. properties ends with NULL, or is NULL for all.
    virtual CmpiStatus enumInstances(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                     const char** properties);

    /// Adds the instance that path names to result. properties ends with NULL, or is NULL for all.
    virtual CmpiStatus getInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                   const char** properties);

    /// Creates an instance and adds its path to result.
    virtual CmpiStatus createInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                      const CmpiInstance& instance);

    /// Changes the instance that path names. properties ends with NULL, or is NULL for all.
    virtual CmpiStatus setInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                   const CmpiInstance& instance, const char** properties);

    /// Deletes the instance that path names.
    virtual CmpiStatus deleteInstance(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path);

    /// Adds what a query selects to result.
    virtual CmpiStatus execQuery(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                 const char* query, const char* language);
};
