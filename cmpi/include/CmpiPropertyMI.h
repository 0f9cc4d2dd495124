// The interface of a provider that serves single properties.
#pragma once

#include "CmpiBaseMI.h"
#include "CmpiData.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Derive from it to serve single properties. Operations that are not overridden answer CMPI_RC_ERR_NOT_SUPPORTED and
/// leave the result alone. The drivers are the slots of the interface's C table: a CmpiStatus that an operation throws
/// becomes its answer, every other exception passes through to the server.
class CMPI_PROVIDER_LINKAGE CmpiPropertyMI : public virtual CmpiBaseMI {
public:
    /// Hands both to CmpiBaseMI, which the most derived class constructs itself.
    CmpiPropertyMI(const CmpiBroker& providerBroker, const CmpiContext& context);

    ~CmpiPropertyMI() override;

    /// Table slot that ends in setProperty().
    static CMPIStatus driveSetProperty(CMPIPropertyMI* mi, const CMPIContext* context, const CMPIResult* result,
                                       const CMPIObjectPath* path, const char* name, const CMPIData data);

    /// Table slot that ends in getProperty().
    static CMPIStatus driveGetProperty(CMPIPropertyMI* mi, const CMPIContext* context, const CMPIResult* result,
                                       const CMPIObjectPath* path, const char* name);

    /// Sets a property of the instance that path names.
    virtual CmpiStatus setProperty(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                   const char* name, const CmpiData& data);

    /// Adds a property of the instance that path names to result.
    virtual CmpiStatus getProperty(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                   const char* name);
};
