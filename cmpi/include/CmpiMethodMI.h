// The interface of a provider that serves methods.
#pragma once

#include "CmpiArgs.h"
#include "CmpiBaseMI.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Derive from it to serve methods. Operations that are not overridden answer CMPI_RC_ERR_NOT_SUPPORTED and leave the
/// result alone. The drivers are the slots of the interface's C table: a CmpiStatus that an operation throws becomes
/// its answer, every other exception passes through to the server.
class CMPI_PROVIDER_LINKAGE CmpiMethodMI : public virtual CmpiBaseMI {
public:
    /// Hands both to CmpiBaseMI, which the most derived class constructs itself.
    CmpiMethodMI(const CmpiBroker& providerBroker, const CmpiContext& context);

    ~CmpiMethodMI() override;

    /// Table slot that ends in invokeMethod().
    static CMPIStatus driveInvokeMethod(CMPIMethodMI* mi, const CMPIContext* context, const CMPIResult* result,
                                        const CMPIObjectPath* path, const char* methodName, const CMPIArgs* in,
                                        CMPIArgs* out);

    /// Runs a method of path: its return value is added to result, its out parameters are set in out.
    virtual CmpiStatus invokeMethod(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                                    const char* methodName, const CmpiArgs& in, CmpiArgs& out);
};
