// The arguments of a method.
#pragma once

#include "CmpiData.h"
#include "CmpiObject.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// Named arguments of the server. Copies are the same server object; what is set in the out arguments of a method is
/// what the client gets.
class CMPI_PROVIDER_LINKAGE CmpiArgs : public CmpiObject {
    friend class CmpiBroker;
    friend class CmpiMethodMI;

public:
    /// New, empty arguments. Throws CmpiStatus.
    CmpiArgs();

    /// How many arguments there are. Throws CmpiStatus.
    unsigned int getArgCount() const;

    /// An argument by name; isNotFound() of the result tells if the server has none and says so with
    /// CMPI_RC_ERR_NOT_FOUND. Every other error is thrown as CmpiStatus, with the name as message if the server gave
    /// none; with some servers an absent argument is such an error, CMPI_RC_ERR_NO_SUCH_PROPERTY.
    CmpiData getArg(const char* name) const;

    /// An argument by position from 0, and its name if name is given. Errors as above.
    CmpiData getArg(const int pos, CmpiString* name = nullptr) const;

    /// Sets or adds an argument; the state of data is not looked at. Throws CmpiStatus.
    void setArg(const char* name, const CmpiData& data);

protected:
    CmpiArgs(CMPIArgs* args) : CmpiObject(args) {}
    CMPIArgs* getEnc() const { return static_cast<CMPIArgs*>(enc); }
    void* makeArgs(CMPIBroker* broker);
};
