// A CIM instance: a path and properties.
#pragma once

#include "CmpiObject.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

class CmpiData;
class CmpiObjectPath;

/// An instance of the server. Copies are the same server object: a property set in one shows in the other.
class CMPI_PROVIDER_LINKAGE CmpiInstance : public CmpiObject {
    friend class CmpiBroker;
    friend class CmpiResult;
    friend class CmpiInstanceMI;
    friend class CmpiMethodMI;
    friend class CmpiData;

public:
    /// A new instance of the path's class with the path's keys. Throws CmpiStatus if the server makes none.
    CmpiInstance(const CmpiObjectPath& path);

    /// Non-zero if the instance's class is className or derived from it. Throws CmpiStatus.
    CmpiBoolean instanceIsA(const char* className) const;

    /// How many properties the instance has. Throws CmpiStatus.
    unsigned int getPropertyCount() const;

    /// A property by name; isNotFound() of the result tells if the server has none and says so with
    /// CMPI_RC_ERR_NO_SUCH_PROPERTY. Every other error is thrown as CmpiStatus, with the name as message if the server
    /// gave none.
    CmpiData getProperty(const char* name) const;

    /// A property by position from 0, and its name if name is given. isNotFound() of the result tells if the server
    /// said CMPI_RC_ERR_NOT_FOUND; every other error is thrown as CmpiStatus.
    CmpiData getProperty(const int pos, CmpiString* name = nullptr) const;

    /// Sets a property; the state of data is not looked at. Throws CmpiStatus: servers may demand the exact type.
    void setProperty(const char* name, const CmpiData data);

    /// Tells the server which properties and keys are wanted; both end with NULL, keys may be NULL. What comes of it is
    /// the server's affair. Throws CmpiStatus.
    void setPropertyFilter(const char** properties, const char** keys);

    /// The instance's path, keys included. Throws CmpiStatus.
    CmpiObjectPath getObjectPath() const;

protected:
    CmpiInstance(const CMPIInstance* instance) : CmpiObject(instance) {}
    CMPIInstance* getEnc() const { return static_cast<CMPIInstance*>(enc); }

private:
    CmpiInstance() = default;
};

// Properties are handed over as CmpiData, which in turn needs the whole class above.
#include "CmpiData.h"
