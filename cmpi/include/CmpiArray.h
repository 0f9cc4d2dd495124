// Arrays of CIM values and the access to one element.
#pragma once

#include "CmpiObject.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

class CmpiArrayIdx;
class CmpiData;
class CmpiDateTime;
class CmpiInstance;
class CmpiObjectPath;

/// An array of the server; all elements have one type. Copies are the same server object.
class CMPI_PROVIDER_LINKAGE CmpiArray : public CmpiObject {
    friend class CmpiArrayIdx;
    friend class CmpiData;
    friend class CmpiEnumeration;

public:
    /// A null array, of size 0.
    CmpiArray() = default;

    /// A new array of max null elements; type is the element's type code without CMPI_ARRAY. Throws CmpiStatus.
    CmpiArray(CMPICount max, CMPIType type);

    /// How many elements the array has; 0 for a null array. Throws CmpiStatus.
    CMPICount size() const;

    /// Access to the element at a position from 0. Throws CmpiStatus, CMPI_RC_ERR_NO_SUCH_PROPERTY if there is none.
    CmpiArrayIdx operator[](CMPICount index) const;

private:
    CmpiArray(CMPIArray* array) : CmpiObject(array) {}
    CMPIArray* getEnc() const { return static_cast<CMPIArray*>(enc); }
    CMPIType elementType() const;

    // What is known of an array that was made here and need not be asked for at each element. Arrays never shrink nor
    // change their type; 0 and CMPI_null mean that the server must be asked.
    CMPICount knownSize = 0;
    CMPIType knownType = CMPI_null;
};

/// One place of a CmpiArray, to be used at once: it refers to that array object. Every conversion and getter demands
/// exactly the element's type, otherwise it throws CmpiStatus(CMPI_RC_ERR_TYPE_MISMATCH), and throws what the server
/// says about reading the element.
class CMPI_PROVIDER_LINKAGE CmpiArrayIdx {
    friend class CmpiArray;

public:
    /// Stores a value whose type is the array's element type; uint8 also fits boolean, and uint16 fits char16. Throws
    /// CmpiStatus, CMPI_RC_ERR_TYPE_MISMATCH for every other type: a text needs a CmpiString.
    CmpiArrayIdx& operator=(const CmpiData& value);

    /// The element. Throws CmpiStatus.
    CmpiData getData() const;

    operator CmpiString() const;     ///< As getString().
    operator const char*() const;    ///< As getCString().
    operator CmpiDateTime() const;   ///< As getDateTime().
    operator CMPISint8() const;      ///< As getSint8().
    operator CMPISint16() const;     ///< As getSint16().
    operator CMPISint32() const;     ///< As getSint32().
    operator CMPISint64() const;     ///< As getSint64().
    operator unsigned char() const;  ///< As getUint8().
    operator unsigned short() const; ///< As getUint16().
    operator CMPIUint32() const;     ///< As getUint32().
    operator CMPIUint64() const;     ///< As getUint64().
    operator CMPIReal32() const;     ///< As getReal32().
    operator CMPIReal64() const;     ///< As getReal64().
    operator CmpiInstance() const;   ///< As getInstance().
    operator CmpiObjectPath() const; ///< As getObjectPath().

    CMPIBoolean getBoolean() const;       ///< A boolean, or a uint8.
    CMPISint8 getSint8() const;           ///< A sint8.
    CMPISint16 getSint16() const;         ///< A sint16.
    CMPISint32 getSint32() const;         ///< A sint32.
    CMPISint64 getSint64() const;         ///< A sint64.
    CMPIUint8 getUint8() const;           ///< A uint8.
    CMPIUint16 getUint16() const;         ///< A uint16.
    CMPIUint32 getUint32() const;         ///< A uint32.
    CMPIUint64 getUint64() const;         ///< A uint64.
    CMPIReal32 getReal32() const;         ///< A real32.
    CMPIReal64 getReal64() const;         ///< A real64.
    CMPIChar16 getChar16() const;         ///< A char16, or a uint16.
    CmpiString getString() const;         ///< A string, shared with the server.
    const char* getCString() const;       ///< A text of type chars.
    CmpiDateTime getDateTime() const;     ///< A date, shared with the server.
    CmpiInstance getInstance() const;     ///< An embedded instance, shared with the server.
    CmpiObjectPath getObjectPath() const; ///< A reference, shared with the server.

private:
    CmpiArrayIdx(const CmpiArray& array, CMPICount index) : ar(array), idx(index) {}

    const CmpiArray& ar;
    CMPICount idx;
};

// Elements are handed over as CmpiData, which in turn needs the whole class CmpiArray.
#include "CmpiData.h"
