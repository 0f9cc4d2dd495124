// A point in time or an interval.
#pragma once

#include "CmpiObject.h"
#include "CmpiString.h"
#include "Linkage.h"
#include "cmpidt.h"
#include "cmpift.h"

/// A date of the server. Copying makes a new date; assignment shares the one there is.
class CMPI_PROVIDER_LINKAGE CmpiDateTime : public CmpiObject {
public:
    /// The current time. Throws CmpiStatus.
    CmpiDateTime();

    /// Shares the given date.
    CmpiDateTime(const CMPIDateTime* date) : CmpiObject(date) {}

    /// A new date of the same value; its text form may name another offset from UTC. Throws CmpiStatus,
    /// CMPI_RC_ERR_INVALID_HANDLE for a null date.
    CmpiDateTime(const CmpiDateTime& original);

    /// A date from CIM's text form of 25 characters. Throws CmpiStatus if the text is none.
    CmpiDateTime(const char* text);

    /// An interval if the flag is set, otherwise a time since 1970-01-01 00:00 UTC; both in microseconds. Throws
    /// CmpiStatus.
    CmpiDateTime(const CMPIUint64 microseconds, const CmpiBoolean interval);

    /// Shares the server's date of the other.
    CmpiDateTime& operator=(const CmpiDateTime& other) = default;

    /// Non-zero for an interval. Throws CmpiStatus, CMPI_RC_ERR_INVALID_HANDLE for a null date.
    CmpiBoolean isInterval() const;

    /// Microseconds: the interval's length, or the time since 1970-01-01 00:00 UTC. Throws CmpiStatus,
    /// CMPI_RC_ERR_INVALID_HANDLE for a null date.
    CMPIUint64 getDateTime() const;

    /// The server's date, for calls through its function table.
    CMPIDateTime* getEnc() const { return static_cast<CMPIDateTime*>(enc); }

protected:
    void* makeDateTime(CMPIBroker* broker);
    void* makeDateTime(CMPIBroker* broker, const char* text);
    void* makeDateTime(CMPIBroker* broker, const CMPIUint64 microseconds, const CmpiBoolean interval);
};
