// The outcome of an operation: a return code and perhaps a message.
#pragma once

#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// What operations of a provider return, and the only thing that the wrapper classes throw. Copies share the message,
/// which belongs to the server.
class CMPI_PROVIDER_LINKAGE CmpiStatus {
    friend class CmpiBaseMI;
    friend class CmpiInstanceMI;
    friend class CmpiAssociationMI;
    friend class CmpiMethodMI;
    friend class CmpiPropertyMI;
    friend class CmpiIndicationMI;

public:
    /// The same code, and the same message as status has.
    CmpiStatus(const CMPIStatus status) : st(status) {}

    /// A code without message.
    CmpiStatus(const CMPIrc rcp) : st{rcp, nullptr} {}

    /// A code with a new server string as message; without message if the server makes no string of the text, and
    /// before a provider has been given its broker.
    CmpiStatus(const CMPIrc rcp, const char* message);

    /// The code.
    CMPIrc rc() const { return st.rc; }

    /// The message's text, or NULL if there is no message. Valid until the end of the request.
    const char* msg() const;

protected:
    CMPIStatus status() const { return st; }

    CMPIStatus st;

private:
    CmpiStatus() : st{CMPI_RC_OK, nullptr} {}
};
