// What the server answers to an enumeration.
#pragma once

#include "CmpiData.h"
#include "CmpiObject.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// An enumeration of the server. Its operations throw CmpiStatus, CMPI_RC_ERR_INVALID_HANDLE for a null enumeration.
class CMPI_PROVIDER_LINKAGE CmpiEnumeration : public CmpiObject {
    friend class CmpiBroker;

public:
    /// A null enumeration.
    CmpiEnumeration() = default;

    /// The next element.
    CmpiData getNext();

    /// Non-zero while there is a next element.
    CmpiBoolean hasNext();

    /// All elements, as a value that holds an array.
    CmpiData toArray();

protected:
    CmpiEnumeration(CMPIEnumeration* enumeration) : CmpiObject(enumeration) {}
    CMPIEnumeration* getEnc() const { return static_cast<CMPIEnumeration*>(enc); }
};
