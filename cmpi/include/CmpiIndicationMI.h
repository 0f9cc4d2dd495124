// The interface of a provider that serves indications.
#pragma once

#include "CmpiBaseMI.h"
#include "CmpiObjectPath.h"
#include "CmpiSelectExp.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Derive from it to serve indications. Operations that are not overridden answer CMPI_RC_ERR_NOT_SUPPORTED. The
/// drivers are the slots of the interface's C table: a CmpiStatus that an operation throws becomes its answer, every
/// other exception passes through to the server.
class CMPI_PROVIDER_LINKAGE CmpiIndicationMI : public virtual CmpiBaseMI {
public:
    /// Hands both to CmpiBaseMI, which the most derived class constructs itself.
    CmpiIndicationMI(const CmpiBroker& providerBroker, const CmpiContext& context);

    ~CmpiIndicationMI() override;

    /// Table slot that ends in authorizeFilter().
    static CMPIStatus driveAuthorizeFilter(CMPIIndicationMI* mi, const CMPIContext* context,
                                           const CMPISelectExp* filter, const char* indicationClass,
                                           const CMPIObjectPath* path, const char* user);

    /// Table slot that ends in mustPoll().
    static CMPIStatus driveMustPoll(CMPIIndicationMI* mi, const CMPIContext* context, const CMPISelectExp* filter,
                                    const char* indicationClass, const CMPIObjectPath* path);

    /// Table slot that ends in activateFilter().
    static CMPIStatus driveActivateFilter(CMPIIndicationMI* mi, const CMPIContext* context, const CMPISelectExp* filter,
                                          const char* indicationClass, const CMPIObjectPath* path, CMPIBoolean first);

    /// Table slot that ends in deActivateFilter().
    static CMPIStatus driveDeActivateFilter(CMPIIndicationMI* mi, const CMPIContext* context,
                                            const CMPISelectExp* filter, const char* indicationClass,
                                            const CMPIObjectPath* path, CMPIBoolean last);

    /// Table slot that ends in enableIndications().
    static CMPIStatus driveEnableIndications(CMPIIndicationMI* mi, const CMPIContext* context);

    /// Table slot that ends in disableIndications().
    static CMPIStatus driveDisableIndications(CMPIIndicationMI* mi, const CMPIContext* context);

    /// Whether user may subscribe with that filter to the indication class.
    virtual CmpiStatus authorizeFilter(const CmpiContext& context, const CmpiSelectExp& filter,
                                       const char* indicationClass, const CmpiObjectPath& path, const char* user);

    /// Whether the server has to poll for that filter.
    virtual CmpiStatus mustPoll(const CmpiContext& context, const CmpiSelectExp& filter, const char* indicationClass,
                                const CmpiObjectPath& path);

    /// A subscription begins; first is set for the first one.
    virtual CmpiStatus activateFilter(const CmpiContext& context, const CmpiSelectExp& filter,
                                      const char* indicationClass, const CmpiObjectPath& path, CmpiBoolean first);

    /// A subscription ends; last is set for the last one.
    virtual CmpiStatus deActivateFilter(const CmpiContext& context, const CmpiSelectExp& filter,
                                        const char* indicationClass, const CmpiObjectPath& path, CmpiBoolean last);

    /// Indications may be sent from now on.
    virtual CmpiStatus enableIndications(const CmpiContext& context);

    /// Nobody subscribes any more.
    virtual CmpiStatus disableIndications(const CmpiContext& context);
};
