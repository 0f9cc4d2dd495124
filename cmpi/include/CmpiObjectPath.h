// The name of a CIM instance or class: namespace, class and keys.
#pragma once

#include "CmpiObject.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

class CmpiData;

/// An object path of the server. Copies are the same server object: a key set in one shows in the other.
class CMPI_PROVIDER_LINKAGE CmpiObjectPath : public CmpiObject {
    friend class CmpiBroker;
    friend class CmpiResult;
    friend class CmpiInstance;
    friend class CmpiData;
    friend class CmpiInstanceMI;
    friend class CmpiAssociationMI;
    friend class CmpiMethodMI;
    friend class CmpiPropertyMI;
    friend class CmpiIndicationMI;

public:
    /// A new path without keys. Throws CmpiStatus if the server makes none.
    CmpiObjectPath(const char* nameSpace, const char* className);

    /// A new path without keys. Throws CmpiStatus if the server makes none.
    CmpiObjectPath(const CmpiString& nameSpace, const char* className);

    /// Shares the given path.
    CmpiObjectPath(CMPIObjectPath* path) : CmpiObject(path) {}

    /// The server's path, for calls through its function table.
    CMPIObjectPath* getEnc() const { return static_cast<CMPIObjectPath*>(enc); }

    /// Non-zero if the path's class is className or derived from it. Throws CmpiStatus, with some servers also for a
    /// text that is no legal class name.
    CmpiBoolean classPathIsA(const char* className) const;

    /// The host, as a new server string. Throws CmpiStatus.
    CmpiString getHostname() const;

    /// Sets the host. Throws CmpiStatus.
    void setHostname(const char* hostname);

    /// Sets the host. Throws CmpiStatus.
    void setHostname(const CmpiString hostname);

    /// The namespace, as a new server string. Throws CmpiStatus.
    CmpiString getNameSpace() const;

    /// Sets the namespace. Throws CmpiStatus.
    void setNameSpace(const char* nameSpace);

    /// Sets the namespace. Throws CmpiStatus.
    void setNameSpace(const CmpiString nameSpace);

    /// The class, as a new server string. Throws CmpiStatus.
    CmpiString getClassName() const;

    /// Sets the class. Throws CmpiStatus.
    void setClassName(const char* className);

    /// Sets the class. Throws CmpiStatus.
    void setClassName(const CmpiString className);

    /// How many keys the path has. Throws CmpiStatus.
    unsigned int getKeyCount() const;

    /// A key by name. Throws CmpiStatus, CMPI_RC_ERR_NOT_FOUND if the path has no such key.
    CmpiData getKey(const char* name) const;

    /// A key by position from 0, and its name if name is given. Throws CmpiStatus.
    CmpiData getKey(const int pos, CmpiString* name = nullptr) const;

    /// Sets or adds a key; the state of data is not looked at. Throws CmpiStatus.
    void setKey(const char* name, const CmpiData data);
};

// Keys are handed over as CmpiData, which in turn needs the whole class above.
#include "CmpiData.h"
