// What all interfaces of a provider have in common.
#pragma once

#include "CmpiBroker.h"
#include "CmpiContext.h"
#include "CmpiStatus.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

class CmpiProviderBase;

/// Virtual base of the interface classes: a provider derives from as many of those as it serves and has one CmpiBaseMI,
/// which it constructs itself. The hdl of each interface's C struct must hold the pointer to this part of the object.
class CMPI_PROVIDER_LINKAGE CmpiBaseMI {
public:
    /// Keeps the broker. The value classes work from setProviderBase on, so not yet in a constructor.
    CmpiBaseMI(const CmpiBroker& providerBroker, const CmpiContext& context);

    /// A provider object is never copied: interfaces share the one.
    CmpiBaseMI(const CmpiBaseMI&) = delete;
    CmpiBaseMI& operator=(const CmpiBaseMI&) = delete;

    /// driveBaseCleanup destroys providers through this.
    virtual ~CmpiBaseMI();

    /// Connects the provider with the anchor of its library, and gives its broker to the value classes.
    void setProviderBase(CmpiProviderBase* base);

    /// The anchor, or NULL.
    CmpiProviderBase* getProviderBase() { return providerBase; }

    /// The cleanup slot of all interface tables (it needs a cast there). mi is the interface's C struct.
    ///
    /// An idle server (terminating zero) gets CMPI_RC_ERR_NOT_SUPPORTED while isUnloadable() says no. Otherwise each
    /// call gives up one use; the last one runs cleanup() and, if that allows it, deletes the provider. An idle
    /// server's request is refused with any code but CMPI_RC_OK, a terminating server's with CMPI_RC_ERR_FAILED only.
    static CMPIStatus driveBaseCleanup(void* mi, const CMPIContext* context, CMPIBoolean terminating);

    /// Called by the factory after construction; here the value classes work. CMPI_RC_OK unless overridden.
    virtual CmpiStatus initialize(const CmpiContext& context);

    /// Called before the provider is deleted; see driveBaseCleanup. CMPI_RC_OK unless overridden.
    virtual CmpiStatus cleanup(CmpiContext& context);

    /// Zero keeps an idle server from unloading the provider. 1 unless overridden.
    virtual int isUnloadable() const;

protected:
    /// The server; valid from constructor to destructor.
    CmpiBroker* broker;

private:
    CmpiBroker ownBroker;
    CmpiProviderBase* providerBase = nullptr;
};
