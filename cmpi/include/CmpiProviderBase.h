// The one object of a provider library that the interfaces share, and the broker that the value classes use.
#pragma once

#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

#include <atomic>

class CmpiBaseMI;

/// Anchor of a provider library: the provider object and how many interfaces use it. Nothing here is guarded against
/// factories that run at the same time.
class CMPI_PROVIDER_LINKAGE CmpiProviderBase {
    friend class CmpiArgs;
    friend class CmpiArray;
    friend class CmpiDateTime;
    friend class CmpiInstance;
    friend class CmpiObject;
    friend class CmpiObjectPath;
    friend class CmpiStatus;
    friend class CmpiString;
    friend class CmpiBaseMI;

public:
    /// No provider object, used by nobody.
    CmpiProviderBase() = default;

    /// Leaves the provider object alone.
    ~CmpiProviderBase() {}

    /// The provider object, or NULL.
    CmpiBaseMI* getBaseMI() { return baseMI; }

    /// Keeps the provider object, without owning it.
    void setBaseMI(CmpiBaseMI* provider) { baseMI = provider; }

    /// One more interface uses the provider object.
    void incUseCount() { ++useCount; }

    /// One interface less uses it. Returns how many are left.
    int decUseCount() { return --useCount; }

private:
    /// The server's broker, or NULL until the first setProviderBase of a provider object.
    static CMPIBroker* getBroker() { return currentBroker.load(std::memory_order_acquire); }
    /// The same for those that cannot do without: throws CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE) in place of NULL.
    static CMPIBroker* requireBroker();
    /// Keeps the broker for all that follows; NULL changes nothing.
    static void setBroker(const CMPIBroker* broker);

    static std::atomic<CMPIBroker*> currentBroker;

    CmpiBaseMI* baseMI = nullptr;
    int useCount = 0;
};
