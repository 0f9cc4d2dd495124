// What the tables of all kinds share.
#pragma once

#include "objects.h"
#include "violations.h"

#include <cstring>
#include <string>

namespace foreign_server {

/// A table as large as its level and no larger, so that AddressSanitizer sees a read of a later level's slots; without
/// it they read as null.
template <class Table>
void* tableOfSize(const Table& whole, std::size_t size) {
#ifdef FOREIGN_SERVER_WITH_ASAN
    const std::size_t behind = 0;
#else
    const std::size_t behind = 128;
#endif
    void* table = ::operator new(size + behind);
    std::memset(table, 0, size + behind);
    std::memcpy(table, &whole, size);
    return table;
}

inline CMPIStatus answer(CMPIrc code) { return {code, nullptr}; }

/// A status is written when something failed, and only then.
inline void fail(CMPIStatus* status, CMPIrc code) {
    if (status && code != CMPI_RC_OK) *status = {code, nullptr};
}

/// Whether a pointer is given that no table allows to be null. @param what "the name".
inline bool isGiven(const void* argument, const char* function, const char* what) {
    if (!argument) violate(function, std::string("null for ") + what);
    return argument != nullptr;
}

/// The n-th by name. @param code what is said beyond the end.
inline CMPIData valueAt(const NamedValues& values, CMPICount position, CMPIString** name, CMPIStatus* status,
                        CMPIrc code, const char* function) {
    if (position >= values.size()) {
        fail(status, code);
        return absent();
    }
    const NamedValue& value = values[sortedPlaces(values)[position]];
    if (name) *name = make<StringObject>(function, value.name)->shown();
    return handOut(value.value, function);
}

// The tables, one made for the process.
void* stringTable();
void* arrayTable();
void* dateTimeTable();
void* pathTable();
void* instanceTable();
void* argsTable();
void* contextTable();
void* resultTable();
void* selectExpTable();
CMPIBrokerFT* brokerTable();
CMPIBrokerEncFT* encapsulationTable();
CMPIBrokerExtFT* extensionTable();

} // namespace foreign_server
