// What the calls through the server's tables have in common: throwing, and how a value is handed over.
#pragma once

#include "CmpiStatus.h"
#include "cmpidt.h"

/// Where a call leaves its outcome. Set before each call: some servers leave it alone when all is well.
inline constexpr CMPIStatus noErrorYet = {CMPI_RC_OK, nullptr};

/// Throws CmpiStatus with the same code and message unless status is CMPI_RC_OK.
inline void throwOnError(const CMPIStatus& status) {
    if (status.rc != CMPI_RC_OK) throw CmpiStatus(status);
}

/// As throwOnError, but the code that a server uses for an absent item is no error. name becomes the message of a
/// status without one; it may be NULL.
inline void throwOnErrorUnlessAbsent(const CMPIStatus& status, CMPIrc absent, const char* name) {
    if (status.rc == CMPI_RC_OK || status.rc == absent) return;
    if (status.msg || !name) throw CmpiStatus(status);
    throw CmpiStatus(status.rc, name);
}

/// A slot of the server's tables, to be called at once. Throws CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED) where the server
/// left it empty.
template <typename Function>
Function offered(Function slot) {
    if (!slot) throw CmpiStatus(CMPI_RC_ERR_NOT_SUPPORTED);
    return slot;
}

/// An object of the server. Throws CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE) where the server gave none.
template <typename Object>
Object* given(Object* object) {
    if (!object) throw CmpiStatus(CMPI_RC_ERR_INVALID_HANDLE);
    return object;
}

/// The value argument of the tables: for chars the pointer is the text itself.
inline const CMPIValue* valueArgument(const CMPIData& data) {
    return data.type == CMPI_chars ? reinterpret_cast<const CMPIValue*>(data.value.chars) : &data.value;
}
