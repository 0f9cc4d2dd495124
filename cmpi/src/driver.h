// The way from a slot of a C table to the provider object behind it.
#pragma once

#include "CmpiBaseMI.h"
#include "CmpiStatus.h"
#include "cmpidt.h"

/// The C struct inside a CmpiStatus.
inline CMPIStatus plainStatus(const CmpiStatus& status) {
    struct Access : CmpiStatus {
        explicit Access(const CmpiStatus& original) : CmpiStatus(original) {}
        using CmpiStatus::status;
    };
    return Access(status).status();
}

/// The provider object of an interface; hdl holds the pointer to its CmpiBaseMI, which differs from every other pointer
/// to the object, since the base is virtual. NULL if the object does not serve that interface.
template <typename Interface, typename CInterface>
Interface* providerOf(const CInterface* mi) {
    return dynamic_cast<Interface*>(static_cast<CmpiBaseMI*>(mi->hdl));
}

/// Runs an operation of the provider and gives its status, thrown or returned. Other exceptions pass through.
template <typename Interface, typename CInterface, typename Operation>
CMPIStatus drive(const CInterface* mi, Operation operation) {
    Interface* provider = providerOf<Interface>(mi);
    if (!provider) return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    try {
        return plainStatus(operation(*provider));
    } catch (const CmpiStatus& status) {
        return plainStatus(status);
    }
}

// The tables hand out const objects; the wrapper classes take them all as non-const, as they are in the server.
inline CMPIContext* plain(const CMPIContext* context) { return const_cast<CMPIContext*>(context); }
inline CMPIResult* plain(const CMPIResult* result) { return const_cast<CMPIResult*>(result); }
inline CMPIObjectPath* plain(const CMPIObjectPath* path) { return const_cast<CMPIObjectPath*>(path); }
inline CMPIArgs* plain(const CMPIArgs* args) { return const_cast<CMPIArgs*>(args); }
