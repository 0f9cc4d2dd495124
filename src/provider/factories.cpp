// The four functions by which a CIM server gets the provider's interfaces. All hand out the same object: the first
// one called makes it, the others only count.
#include "provider/merolt_cna_provider.h"

#include "CmpiProviderBase.h"
#include "CmpiString.h"
#include "cmpift.h"

#include <memory>
#include <mutex>

namespace {

constexpr int cmpiVersion = 200;

CmpiProviderBase providerBase;

/// Servers may ask for two interfaces at the same time.
std::mutex factoryMutex;

/// Makes the object and connects it. @return null with the reason in the status.
CmpiBaseMI* makeProvider(const CMPIBroker* broker, const CmpiContext& context, CMPIStatus* status) {
    try {
        auto provider = std::make_unique<Merolt_CNA_Provider>(CmpiBroker(const_cast<CMPIBroker*>(broker)), context);
        CmpiBaseMI* base = provider.get();
        base->setProviderBase(&providerBase);
        const CmpiStatus outcome = base->initialize(context);
        if (outcome.rc() == CMPI_RC_OK) {
            providerBase.setBaseMI(base);
            provider.release();
            return base;
        }
        const char* message = outcome.msg();
        if (status) {
            status->rc = outcome.rc();
            status->msg = message ? broker->eft->newString(broker, message, nullptr) : nullptr;
        }
    } catch (...) {
        if (status) *status = {CMPI_RC_ERR_FAILED, nullptr};
    }
    return nullptr;
}

/// @param interface the static record of this interface. @return the record with the provider in it, or null.
template <class Interface, class Table>
Interface* offer(Interface& interface, Table& table, const CMPIBroker* broker, const CMPIContext* cmpiContext,
                 CMPIStatus* status) {
    const CmpiContext context(const_cast<CMPIContext*>(cmpiContext));
    interface.ft = &table;
    CmpiBaseMI* base = providerBase.getBaseMI();
    if (!base) base = makeProvider(broker, context, status);
    if (!base) return nullptr;
    interface.hdl = base;
    providerBase.incUseCount();
    return &interface;
}

/// The wrapper's clean-up takes any interface; each table wants it under its own.
template <class Interface>
CMPIStatus driveCleanup(Interface* interface, const CMPIContext* context, CMPIBoolean terminating) {
    return CmpiBaseMI::driveBaseCleanup(interface, context, terminating);
}

} // namespace

CMPI_EXTERN_C CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker* broker,
                                                                    const CMPIContext* context, CMPIStatus* status) {
    const std::lock_guard<std::mutex> guard(factoryMutex);
    static CMPIInstanceMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "instanceMerolt_CNA_Provider",
        driveCleanup<CMPIInstanceMI>,
        CmpiInstanceMI::driveEnumInstanceNames,
        CmpiInstanceMI::driveEnumInstances,
        CmpiInstanceMI::driveGetInstance,
        CmpiInstanceMI::driveCreateInstance,
        CmpiInstanceMI::driveSetInstance,
        CmpiInstanceMI::driveDeleteInstance,
        CmpiInstanceMI::driveExecQuery,
    };
    static CMPIInstanceMI interface = {nullptr, nullptr};
    return offer(interface, table, broker, context, status);
}

CMPI_EXTERN_C CMPIAssociationMI*
Merolt_CNA_Provider_Create_AssociationMI(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus* status) {
    const std::lock_guard<std::mutex> guard(factoryMutex);
    static CMPIAssociationMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "associationMerolt_CNA_Provider",
        driveCleanup<CMPIAssociationMI>,
        CmpiAssociationMI::driveAssociators,
        CmpiAssociationMI::driveAssociatorNames,
        CmpiAssociationMI::driveReferences,
        CmpiAssociationMI::driveReferenceNames,
    };
    static CMPIAssociationMI interface = {nullptr, nullptr};
    return offer(interface, table, broker, context, status);
}

CMPI_EXTERN_C CMPIMethodMI* Merolt_CNA_Provider_Create_MethodMI(const CMPIBroker* broker, const CMPIContext* context,
                                                                CMPIStatus* status) {
    const std::lock_guard<std::mutex> guard(factoryMutex);
    static CMPIMethodMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "methodMerolt_CNA_Provider",
        driveCleanup<CMPIMethodMI>,
        CmpiMethodMI::driveInvokeMethod,
    };
    static CMPIMethodMI interface = {nullptr, nullptr};
    return offer(interface, table, broker, context, status);
}

CMPI_EXTERN_C CMPIIndicationMI*
Merolt_CNA_Provider_Create_IndicationMI(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus* status) {
    const std::lock_guard<std::mutex> guard(factoryMutex);
    static CMPIIndicationMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "indicationMerolt_CNA_Provider",
        driveCleanup<CMPIIndicationMI>,
        CmpiIndicationMI::driveAuthorizeFilter,
        CmpiIndicationMI::driveMustPoll,
        CmpiIndicationMI::driveActivateFilter,
        CmpiIndicationMI::driveDeActivateFilter,
        CmpiIndicationMI::driveEnableIndications,
        CmpiIndicationMI::driveDisableIndications,
    };
    static CMPIIndicationMI interface = {nullptr, nullptr};
    return offer(interface, table, broker, context, status);
}
