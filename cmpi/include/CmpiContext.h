// What the server says about a request beside its arguments.
#pragma once

#include "CmpiData.h"
#include "CmpiObject.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// The context of a request, or of a thread of the provider's own. A request's context dies with the request: a thread
/// needs one of its own from CmpiBroker::prepareAttachThread.
class CMPI_PROVIDER_LINKAGE CmpiContext : public CmpiObject {
    friend class CmpiBroker;
    friend class CmpiInstanceMI;
    friend class CmpiAssociationMI;
    friend class CmpiMethodMI;
    friend class CmpiPropertyMI;
    friend class CmpiIndicationMI;

public:
    /// Shares the given context.
    CmpiContext(CMPIContext* context) : CmpiObject(context) {}

    /// The server's context, for calls through its function table.
    CMPIContext* getEnc() const { return static_cast<CMPIContext*>(enc); }

    /// Name of the entry that holds the invocation flags.
    static const char* invocationFlags;

    /// An entry by name. Throws CmpiStatus, CMPI_RC_ERR_NO_SUCH_PROPERTY if the context has no such entry.
    CmpiData getEntry(const char* name) const;

protected:
    CmpiContext() = default;
};
