// The CIM server as a provider sees it.
#pragma once

#include "CmpiContext.h"
#include "CmpiData.h"
#include "CmpiEnumeration.h"
#include "CmpiInstance.h"
#include "CmpiObject.h"
#include "CmpiObjectPath.h"
#include "CmpiStatus.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

class CmpiArgs;

/// The server's broker. It is valid as long as the provider is loaded. Threads, mutexes and conditions are reached
/// through getEnc()->xft, where any slot may be NULL.
class CMPI_PROVIDER_LINKAGE CmpiBroker : public CmpiObject {
public:
    /// Shares the given broker.
    CmpiBroker(CMPIBroker* broker) : CmpiObject(broker) {}

    /// The server's own broker, for calls through its function tables.
    CMPIBroker* getEnc() const { return static_cast<CMPIBroker*>(enc); }

    /// A context for a thread of the provider's own. Call it while the given context is alive. One context serves one
    /// thread, once. Never throws; the result may be null.
    CmpiContext prepareAttachThread(const CmpiContext& context);

    /// Makes the calling thread known to the server, before it makes or asks for anything. Throws CmpiStatus.
    void attachThread(const CmpiContext& context);

    /// Ends what attachThread began: the server frees all that the thread made, and the context. Throws CmpiStatus.
    void detachThread(const CmpiContext& context);

    /// Sends an indication to its subscribers. Throws CmpiStatus, with some servers also while nobody subscribes.
    void deliverIndication(const CmpiContext& context, const char* nameSpace, const CmpiInstance& indication);

    /// The paths of a class's instances. Throws CmpiStatus.
    CmpiEnumeration enumInstanceNames(const CmpiContext& context, const CmpiObjectPath& path);

    /// One instance. properties ends with NULL, or is NULL for all. Throws CmpiStatus.
    CmpiInstance getInstance(const CmpiContext& context, const CmpiObjectPath& path, const char** properties);

    /// Creates an instance and returns its path. Throws CmpiStatus.
    CmpiObjectPath createInstance(const CmpiContext& context, const CmpiObjectPath& path, const CmpiInstance& instance);

    /// Changes an instance. properties ends with NULL, or is NULL for all. Throws CmpiStatus.
    void setInstance(const CmpiContext& context, const CmpiObjectPath& path, const CmpiInstance& instance,
                     const char** properties);

    /// Deletes an instance. Throws CmpiStatus.
    void deleteInstance(const CmpiContext& context, const CmpiObjectPath& path);

    /// The instances of a class. properties ends with NULL, or is NULL for all. Throws CmpiStatus.
    CmpiEnumeration enumInstances(const CmpiContext& context, const CmpiObjectPath& path, const char** properties);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiEnumeration execQuery(const CmpiContext& context, const CmpiObjectPath& path, const char* query,
                              const char* language);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiEnumeration associators(const CmpiContext& context, const CmpiObjectPath& path, const char* assocClass,
                                const char* resultClass, const char* role, const char* resultRole,
                                const char** properties);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiEnumeration associatorNames(const CmpiContext& context, const CmpiObjectPath& path, const char* assocClass,
                                    const char* resultClass, const char* role, const char* resultRole);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiEnumeration references(const CmpiContext& context, const CmpiObjectPath& path, const char* resultClass,
                               const char* role, const char** properties);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiEnumeration referenceNames(const CmpiContext& context, const CmpiObjectPath& path, const char* resultClass,
                                   const char* role);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiData invokeMethod(const CmpiContext& context, const CmpiObjectPath& path, const char* method,
                          const CmpiArgs& in, CmpiArgs& out);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    void setProperty(const CmpiContext& context, const CmpiObjectPath& path, const char* name, const CmpiData& data);

    /// Always throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED).
    CmpiData getProperty(const CmpiContext& context, const CmpiObjectPath& path, const char* name);
};
