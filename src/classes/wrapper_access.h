// What values hold that not every package of the wrapper classes shows.
#pragma once

#include "CmpiData.h"
#include "CmpiStatus.h"
#include "cmpidt.h"

namespace merolt {

/// A value whose type can be asked for, or that was made of a C object. It shares what it points to.
class OpenData : public CmpiData {
public:
    explicit OpenData(const CmpiData& data) : CmpiData(data) {}

    /// A string; null is one, too.
    explicit OpenData(CMPIString* string) {
        _data.type = CMPI_string;
        _data.state = CMPI_goodValue;
        _data.value.string = string;
    }

    /// The type code; an array may have its element type beside CMPI_ARRAY.
    CMPIType type() const { return _data.type; }
};

/// A status whose message can be taken as the string that it is.
class OpenStatus : public CmpiStatus {
public:
    using CmpiStatus::CmpiStatus;

    CMPIString* message() const { return st.msg; }
};

/// A new string of the server with a copy of text, null if the server makes none. In some packages no class makes a
/// string of a text, but each makes one for the message of a status.
inline OpenData newString(const char* text) { return OpenData(OpenStatus(CMPI_RC_OK, text).message()); }

/// The text of a status' message, or null. Taken by value as not every package can ask a constant one.
inline const char* messageOf(CmpiStatus status) { return status.msg(); }

/// The same for the log, which says so where there is none.
inline const char* loggedMessage(const CmpiStatus& status) {
    const char* message = messageOf(status);
    return message ? message : "(null)";
}

} // namespace merolt
