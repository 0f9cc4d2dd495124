// A text that the CIM server keeps.
#pragma once

#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

#ifndef CmpiBoolean
#define CmpiBoolean CMPIBoolean
#endif
#ifndef CmpiRc
#define CmpiRc CMPIrc
#endif

/// A server string. Copying makes a new server string; assignment shares the one there is. Nothing is released here:
/// the server frees its strings at the end of the request, so texts from charPtr() outlive this object but not the
/// request.
class CMPI_PROVIDER_LINKAGE CmpiString {
    friend class CmpiBroker;
    friend class CmpiData;
    friend class CmpiObjectPath;
    friend class CmpiInstance;
    friend class CmpiObject;
    friend class CmpiArgs;
    friend class CmpiArrayIdx;

public:
    /// A null string; needs no server.
    CmpiString() = default;

    /// A new server string with a copy of text. Null if the server makes none, and before a provider has been given
    /// its broker.
    CmpiString(const char* text);

    /// A new server string with the same text.
    CmpiString(const CmpiString& original);

    /// Shares the server string of the other.
    CmpiString& operator=(const CmpiString& other) = default;

    /// The text, or NULL for a null string. Valid until the end of the request.
    const char* charPtr() const {
        if (!enc) return nullptr;
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        const CMPIString* string = getEnc();
        return string->ft->getCharPtr(string, &status);
    }

    /// Non-zero if both texts are the same, case included. A null text equals only another null text.
    CmpiBoolean equals(const char* text) const;

    /// Non-zero if both texts are the same, case included. A null text equals only another null text.
    CmpiBoolean equals(const CmpiString& other) const;

    /// As equals, but upper and lower case are the same.
    CmpiBoolean equalsIgnoreCase(const char* text) const;

    /// As equals, but upper and lower case are the same.
    CmpiBoolean equalsIgnoreCase(const CmpiString& other) const;

private:
    CmpiString(CMPIString* string) : enc(string) {}
    CMPIString* getEnc() const { return static_cast<CMPIString*>(enc); }

    void* enc = nullptr;
};
