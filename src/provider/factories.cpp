// The four functions by which a CIM server gets the provider's interfaces. All hand out the same object: the first
// one called makes it, the others only count.
#include "classes/object_memory.h"
#include "classes/wrapper_access.h"
#include "log/log.h"
#include "platform/threads.h"
#include "provider/guarded.h"
#include "provider/merolt_cna_provider.h"
#include "provider/server_facilities.h"

#include "CmpiProviderBase.h"
#include "CmpiString.h"
#include "cmpift.h"

#include <cxxabi.h>
#include <memory>
#include <mutex>

using namespace merolt;

namespace {

constexpr int cmpiVersion = 200;

CmpiProviderBase providerBase;

/// Servers may ask for two interfaces at the same time, and for one while another is cleaned up.
std::mutex factoryMutex;

/// Writes down what the server lacks. The log's flags still stand as they were loaded, so that on the first load the
/// line is written whatever the settings say.
void reportPoorServer(const ServerFacilities& facilities, const CMPIBroker* broker, const CmpiContext& context) {
    if (facilities.canAnswer && facilities.canRunThread && facilities.canAlert) return;
    initializeLogging();
    reportMissingFacilities(broker, context.getEnc());
}

/// Makes the object and connects it. @return null with the reason in the status.
CmpiBaseMI* makeProvider(const CMPIBroker* broker, const CmpiContext& context, CMPIStatus* status) {
    try {
        const ServerFacilities facilities = facilitiesOf(broker, context.getEnc());
        reportPoorServer(facilities, broker, context);
        if (!facilities.canAnswer) throw CmpiStatus(CMPI_RC_ERR_FAILED);
        auto provider = std::make_unique<Merolt_CNA_Provider>(CmpiBroker(const_cast<CMPIBroker*>(broker)), context);
        useMemoryOf(broker);
        CmpiBaseMI* base = provider.get();
        base->setProviderBase(&providerBase);
        const CmpiStatus outcome = base->initialize(context);
        if (outcome.rc() == CMPI_RC_OK) {
            providerBase.setBaseMI(base);
            return provider.release();
        }
        const char* message = messageOf(outcome);
        if (status) {
            status->rc = outcome.rc();
            status->msg = message ? broker->eft->newString(broker, message, nullptr) : nullptr;
        }
    } catch (const abi::__forced_unwind&) {
        throw; // the server ends its thread
    } catch (...) {
        if (status) *status = {CMPI_RC_ERR_FAILED, nullptr};
    }
    return nullptr;
}

/// An interface as servers see it: its static record, and how often its factory handed that out.
template <class Interface>
struct Offer {
    Interface record;
    int uses;
};

template <class Interface>
constinit Offer<Interface> offered{};

/// @return the record of this interface with the provider in it, or null.
template <class Interface, class Table>
Interface* offer(Table& table, const CMPIBroker* broker, const CMPIContext* cmpiContext, CMPIStatus* status) {
    const platform::CancellationDelay delay;
    const std::lock_guard<std::mutex> guard(factoryMutex);
    Offer<Interface>& own = offered<Interface>;
    const CmpiContext context(const_cast<CMPIContext*>(cmpiContext));
    own.record.ft = &table;
    CmpiBaseMI* base = providerBase.getBaseMI();
    if (!base) base = makeProvider(broker, context, status);
    if (!base) return nullptr;
    own.record.hdl = base;
    providerBase.incUseCount();
    ++own.uses;
    return &own.record;
}

/// Gives up one use of the interface; with the last use of all the provider goes. An interface that is asked once more
/// than its factory was called has nothing to give up: it must not take the provider from the others, nor find one that
/// is gone.
template <class Interface>
CMPIStatus driveCleanup(Interface*, const CMPIContext* context, CMPIBoolean terminating) {
    const std::lock_guard<std::mutex> guard(factoryMutex);
    Offer<Interface>& own = offered<Interface>;
    if (own.uses == 0) return {CMPI_RC_OK, nullptr};
    const CMPIStatus answer = CmpiBaseMI::driveBaseCleanup(&own.record, context, terminating);
    if (answer.rc == CMPI_RC_OK && --own.uses == 0) own.record.hdl = nullptr;
    return answer;
}

} // namespace

CMPI_EXTERN_C CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker* broker,
                                                                    const CMPIContext* context, CMPIStatus* status) {
    static CMPIInstanceMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "instanceMerolt_CNA_Provider",
        Guarded<driveCleanup<CMPIInstanceMI>>::call,
        Guarded<CmpiInstanceMI::driveEnumInstanceNames>::call,
        Guarded<CmpiInstanceMI::driveEnumInstances>::call,
        Guarded<CmpiInstanceMI::driveGetInstance>::call,
        Guarded<CmpiInstanceMI::driveCreateInstance>::call,
        Guarded<CmpiInstanceMI::driveSetInstance>::call,
        Guarded<CmpiInstanceMI::driveDeleteInstance>::call,
        Guarded<CmpiInstanceMI::driveExecQuery>::call,
    };
    return offer<CMPIInstanceMI>(table, broker, context, status);
}

CMPI_EXTERN_C CMPIAssociationMI*
Merolt_CNA_Provider_Create_AssociationMI(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus* status) {
    static CMPIAssociationMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "associationMerolt_CNA_Provider",
        Guarded<driveCleanup<CMPIAssociationMI>>::call,
        Guarded<CmpiAssociationMI::driveAssociators>::call,
        Guarded<CmpiAssociationMI::driveAssociatorNames>::call,
        Guarded<CmpiAssociationMI::driveReferences>::call,
        Guarded<CmpiAssociationMI::driveReferenceNames>::call,
    };
    return offer<CMPIAssociationMI>(table, broker, context, status);
}

CMPI_EXTERN_C CMPIMethodMI* Merolt_CNA_Provider_Create_MethodMI(const CMPIBroker* broker, const CMPIContext* context,
                                                                CMPIStatus* status) {
    static CMPIMethodMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "methodMerolt_CNA_Provider",
        Guarded<driveCleanup<CMPIMethodMI>>::call,
        Guarded<CmpiMethodMI::driveInvokeMethod>::call,
    };
    return offer<CMPIMethodMI>(table, broker, context, status);
}

CMPI_EXTERN_C CMPIIndicationMI*
Merolt_CNA_Provider_Create_IndicationMI(const CMPIBroker* broker, const CMPIContext* context, CMPIStatus* status) {
    static CMPIIndicationMIFT table = {
        cmpiVersion,
        cmpiVersion,
        "indicationMerolt_CNA_Provider",
        Guarded<driveCleanup<CMPIIndicationMI>>::call,
        Guarded<CmpiIndicationMI::driveAuthorizeFilter>::call,
        Guarded<CmpiIndicationMI::driveMustPoll>::call,
        Guarded<CmpiIndicationMI::driveActivateFilter>::call,
        Guarded<CmpiIndicationMI::driveDeActivateFilter>::call,
        Guarded<CmpiIndicationMI::driveEnableIndications>::call,
        Guarded<CmpiIndicationMI::driveDisableIndications>::call,
    };
    return offer<CMPIIndicationMI>(table, broker, context, status);
}
