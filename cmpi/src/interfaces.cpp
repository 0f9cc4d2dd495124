// The interfaces of a provider: constructors, what is not overridden, and the drivers in their tables.

#include "CmpiAssociationMI.h"
#include "CmpiIndicationMI.h"
#include "CmpiInstanceMI.h"
#include "CmpiMethodMI.h"
#include "CmpiPropertyMI.h"
#include "driver.h"

namespace {

CmpiStatus notServed() { return CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED); }

} // namespace

CmpiInstanceMI::CmpiInstanceMI(const CmpiBroker& providerBroker, const CmpiContext& context)
    : CmpiBaseMI(providerBroker, context) {}

CmpiInstanceMI::~CmpiInstanceMI() = default;

CMPIStatus CmpiInstanceMI::driveEnumInstanceNames(CMPIInstanceMI* mi, const CMPIContext* context,
                                                  const CMPIResult* result, const CMPIObjectPath* path) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(
        mi, [&](CmpiInstanceMI& provider) { return provider.enumInstanceNames(plain(context), results, plain(path)); });
}

CMPIStatus CmpiInstanceMI::driveEnumInstances(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                              const CMPIObjectPath* path, const char** properties) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(mi, [&](CmpiInstanceMI& provider) {
        return provider.enumInstances(plain(context), results, plain(path), properties);
    });
}

CMPIStatus CmpiInstanceMI::driveGetInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                            const CMPIObjectPath* path, const char** properties) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(mi, [&](CmpiInstanceMI& provider) {
        return provider.getInstance(plain(context), results, plain(path), properties);
    });
}

CMPIStatus CmpiInstanceMI::driveCreateInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                               const CMPIObjectPath* path, const CMPIInstance* instance) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(mi, [&](CmpiInstanceMI& provider) {
        return provider.createInstance(plain(context), results, plain(path), CmpiInstance(instance));
    });
}

CMPIStatus CmpiInstanceMI::driveSetInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                            const CMPIObjectPath* path, const CMPIInstance* instance,
                                            const char** properties) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(mi, [&](CmpiInstanceMI& provider) {
        return provider.setInstance(plain(context), results, plain(path), CmpiInstance(instance), properties);
    });
}

CMPIStatus CmpiInstanceMI::driveDeleteInstance(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                               const CMPIObjectPath* path) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(
        mi, [&](CmpiInstanceMI& provider) { return provider.deleteInstance(plain(context), results, plain(path)); });
}

CMPIStatus CmpiInstanceMI::driveExecQuery(CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result,
                                          const CMPIObjectPath* path, const char* query, const char* language) {
    CmpiResult results(plain(result));
    return drive<CmpiInstanceMI>(mi, [&](CmpiInstanceMI& provider) {
        return provider.execQuery(plain(context), results, plain(path), query, language);
    });
}

CmpiStatus CmpiInstanceMI::enumInstanceNames(const CmpiContext&, CmpiResult&, const CmpiObjectPath&) {
    return notServed();
}
CmpiStatus CmpiInstanceMI::enumInstances(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char**) {
    return notServed();
}
CmpiStatus CmpiInstanceMI::getInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char**) {
    return notServed();
}
CmpiStatus CmpiInstanceMI::createInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const CmpiInstance&) {
    return notServed();
}
CmpiStatus CmpiInstanceMI::setInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const CmpiInstance&,
                                       const char**) {
    return notServed();
}
CmpiStatus CmpiInstanceMI::deleteInstance(const CmpiContext&, CmpiResult&, const CmpiObjectPath&) {
    return notServed();
}
CmpiStatus CmpiInstanceMI::execQuery(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*, const char*) {
    return notServed();
}

CmpiAssociationMI::CmpiAssociationMI(const CmpiBroker& providerBroker, const CmpiContext& context)
    : CmpiBaseMI(providerBroker, context) {}

CmpiAssociationMI::~CmpiAssociationMI() = default;

CMPIStatus CmpiAssociationMI::driveAssociators(CMPIAssociationMI* mi, const CMPIContext* context,
                                               const CMPIResult* result, const CMPIObjectPath* path,
                                               const char* assocClass, const char* resultClass, const char* role,
                                               const char* resultRole, const char** properties) {
    CmpiResult results(plain(result));
    return drive<CmpiAssociationMI>(mi, [&](CmpiAssociationMI& provider) {
        return provider.associators(plain(context), results, plain(path), assocClass, resultClass, role, resultRole,
                                    properties);
    });
}

CMPIStatus CmpiAssociationMI::driveAssociatorNames(CMPIAssociationMI* mi, const CMPIContext* context,
                                                   const CMPIResult* result, const CMPIObjectPath* path,
                                                   const char* assocClass, const char* resultClass, const char* role,
                                                   const char* resultRole) {
    CmpiResult results(plain(result));
    return drive<CmpiAssociationMI>(mi, [&](CmpiAssociationMI& provider) {
        return provider.associatorNames(plain(context), results, plain(path), assocClass, resultClass, role,
                                        resultRole);
    });
}

CMPIStatus CmpiAssociationMI::driveReferences(CMPIAssociationMI* mi, const CMPIContext* context,
                                              const CMPIResult* result, const CMPIObjectPath* path,
                                              const char* resultClass, const char* role, const char** properties) {
    CmpiResult results(plain(result));
    return drive<CmpiAssociationMI>(mi, [&](CmpiAssociationMI& provider) {
        return provider.references(plain(context), results, plain(path), resultClass, role, properties);
    });
}

CMPIStatus CmpiAssociationMI::driveReferenceNames(CMPIAssociationMI* mi, const CMPIContext* context,
                                                  const CMPIResult* result, const CMPIObjectPath* path,
                                                  const char* resultClass, const char* role) {
    CmpiResult results(plain(result));
    return drive<CmpiAssociationMI>(mi, [&](CmpiAssociationMI& provider) {
        return provider.referenceNames(plain(context), results, plain(path), resultClass, role);
    });
}

CmpiStatus CmpiAssociationMI::associators(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*,
                                          const char*, const char*, const char*, const char**) {
    return notServed();
}
CmpiStatus CmpiAssociationMI::associatorNames(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*,
                                              const char*, const char*, const char*) {
    return notServed();
}
CmpiStatus CmpiAssociationMI::references(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*,
                                         const char*, const char**) {
    return notServed();
}
CmpiStatus CmpiAssociationMI::referenceNames(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*,
                                             const char*) {
    return notServed();
}

CmpiMethodMI::CmpiMethodMI(const CmpiBroker& providerBroker, const CmpiContext& context)
    : CmpiBaseMI(providerBroker, context) {}

CmpiMethodMI::~CmpiMethodMI() = default;

CMPIStatus CmpiMethodMI::driveInvokeMethod(CMPIMethodMI* mi, const CMPIContext* context, const CMPIResult* result,
                                           const CMPIObjectPath* path, const char* methodName, const CMPIArgs* in,
                                           CMPIArgs* out) {
    CmpiResult results(plain(result));
    CmpiArgs outArgs(out);
    return drive<CmpiMethodMI>(mi, [&](CmpiMethodMI& provider) {
        return provider.invokeMethod(plain(context), results, plain(path), methodName, CmpiArgs(plain(in)), outArgs);
    });
}

CmpiStatus CmpiMethodMI::invokeMethod(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*,
                                      const CmpiArgs&, CmpiArgs&) {
    return notServed();
}

CmpiPropertyMI::CmpiPropertyMI(const CmpiBroker& providerBroker, const CmpiContext& context)
    : CmpiBaseMI(providerBroker, context) {}

CmpiPropertyMI::~CmpiPropertyMI() = default;

CMPIStatus CmpiPropertyMI::driveSetProperty(CMPIPropertyMI* mi, const CMPIContext* context, const CMPIResult* result,
                                            const CMPIObjectPath* path, const char* name, const CMPIData data) {
    CmpiResult results(plain(result));
    return drive<CmpiPropertyMI>(mi, [&](CmpiPropertyMI& provider) {
        return provider.setProperty(plain(context), results, plain(path), name, CmpiData(data));
    });
}

CMPIStatus CmpiPropertyMI::driveGetProperty(CMPIPropertyMI* mi, const CMPIContext* context, const CMPIResult* result,
                                            const CMPIObjectPath* path, const char* name) {
    CmpiResult results(plain(result));
    return drive<CmpiPropertyMI>(
        mi, [&](CmpiPropertyMI& provider) { return provider.getProperty(plain(context), results, plain(path), name); });
}

CmpiStatus CmpiPropertyMI::setProperty(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*,
                                       const CmpiData&) {
    return notServed();
}
CmpiStatus CmpiPropertyMI::getProperty(const CmpiContext&, CmpiResult&, const CmpiObjectPath&, const char*) {
    return notServed();
}

CmpiIndicationMI::CmpiIndicationMI(const CmpiBroker& providerBroker, const CmpiContext& context)
    : CmpiBaseMI(providerBroker, context) {}

CmpiIndicationMI::~CmpiIndicationMI() = default;

CMPIStatus CmpiIndicationMI::driveAuthorizeFilter(CMPIIndicationMI* mi, const CMPIContext* context,
                                                  const CMPISelectExp* filter, const char* indicationClass,
                                                  const CMPIObjectPath* path, const char* user) {
    return drive<CmpiIndicationMI>(mi, [&](CmpiIndicationMI& provider) {
        return provider.authorizeFilter(plain(context), CmpiSelectExp(filter), indicationClass, plain(path), user);
    });
}

CMPIStatus CmpiIndicationMI::driveMustPoll(CMPIIndicationMI* mi, const CMPIContext* context,
                                           const CMPISelectExp* filter, const char* indicationClass,
                                           const CMPIObjectPath* path) {
    return drive<CmpiIndicationMI>(mi, [&](CmpiIndicationMI& provider) {
        return provider.mustPoll(plain(context), CmpiSelectExp(filter), indicationClass, plain(path));
    });
}

CMPIStatus CmpiIndicationMI::driveActivateFilter(CMPIIndicationMI* mi, const CMPIContext* context,
                                                 const CMPISelectExp* filter, const char* indicationClass,
                                                 const CMPIObjectPath* path, CMPIBoolean first) {
    return drive<CmpiIndicationMI>(mi, [&](CmpiIndicationMI& provider) {
        return provider.activateFilter(plain(context), CmpiSelectExp(filter), indicationClass, plain(path), first);
    });
}

CMPIStatus CmpiIndicationMI::driveDeActivateFilter(CMPIIndicationMI* mi, const CMPIContext* context,
                                                   const CMPISelectExp* filter, const char* indicationClass,
                                                   const CMPIObjectPath* path, CMPIBoolean last) {
    return drive<CmpiIndicationMI>(mi, [&](CmpiIndicationMI& provider) {
        return provider.deActivateFilter(plain(context), CmpiSelectExp(filter), indicationClass, plain(path), last);
    });
}

CMPIStatus CmpiIndicationMI::driveEnableIndications(CMPIIndicationMI* mi, const CMPIContext* context) {
    return drive<CmpiIndicationMI>(
        mi, [&](CmpiIndicationMI& provider) { return provider.enableIndications(plain(context)); });
}

CMPIStatus CmpiIndicationMI::driveDisableIndications(CMPIIndicationMI* mi, const CMPIContext* context) {
    return drive<CmpiIndicationMI>(
        mi, [&](CmpiIndicationMI& provider) { return provider.disableIndications(plain(context)); });
}

CmpiStatus CmpiIndicationMI::authorizeFilter(const CmpiContext&, const CmpiSelectExp&, const char*,
                                             const CmpiObjectPath&, const char*) {
    return notServed();
}
CmpiStatus CmpiIndicationMI::mustPoll(const CmpiContext&, const CmpiSelectExp&, const char*, const CmpiObjectPath&) {
    return notServed();
}
CmpiStatus CmpiIndicationMI::activateFilter(const CmpiContext&, const CmpiSelectExp&, const char*,
                                            const CmpiObjectPath&, CMPIBoolean) {
    return notServed();
}
CmpiStatus CmpiIndicationMI::deActivateFilter(const CmpiContext&, const CmpiSelectExp&, const char*,
                                              const CmpiObjectPath&, CMPIBoolean) {
    return notServed();
}
CmpiStatus CmpiIndicationMI::enableIndications(const CmpiContext&) { return notServed(); }
CmpiStatus CmpiIndicationMI::disableIndications(const CmpiContext&) { return notServed(); }
