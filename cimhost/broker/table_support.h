// Functions that the implementations of the CMPI tables share.
#pragma once

#include <memory>

#include "cimhost/broker/objects.h"
#include "cimhost/broker/request_scope.h"

namespace cimhost {

namespace tables {

extern const CMPIStringFT string;
extern const CMPIArrayFT array;
extern const CMPIDateTimeFT dateTime;
extern const CMPIObjectPathFT objectPath;
extern const CMPIInstanceFT instance;
extern const CMPIArgsFT args;
extern const CMPIContextFT context;
extern const CMPIResultFT result;
extern const CMPISelectExpFT selectExp;
extern const CMPIEnumerationFT enumeration;
extern const CMPIBrokerFT broker;
extern const CMPIBrokerEncFT encapsulation;
extern const CMPIBrokerExtFT extension;
extern const CMPIBrokerMemFT memory;

} // namespace tables

/// Makes a binding the calling thread's innermost one. The binding must live until the same thread calls
/// unbindThread().
void bindThread(ThreadBinding& binding) noexcept;
/// Removes a binding of the calling thread, the innermost one or another. Nothing happens if it is none of these.
void unbindThread(const ThreadBinding& binding) noexcept;

/// The arena in which the calling thread makes objects now.
Arena& workArena() noexcept;

/// The structs of CMPI have pointers to tables that are not const. These tables are, and nobody may write to them.
template <typename Table>
Table* tablePointer(const Table& table) noexcept {
    return const_cast<Table*>(&table);
}

/// The object behind a CMPI struct; null unless it has a handle and the given table.
template <typename Wanted, typename Object, typename Table>
Wanted* checkedObject(Object* object, const Table& table) noexcept {
    return object && object->hdl && object->ft == &table ? static_cast<Wanted*>(object) : nullptr;
}

/// A status without a message, or with one that lies in the calling thread's arena.
inline CMPIStatus statusOf(CMPIrc code) noexcept { return {code, nullptr}; }

inline CMPIStatus statusOf(CMPIrc code, std::string_view message) {
    return {code, StringObject::make(workArena(), message)};
}

/// Sets the status of a call. Callers of the tables may leave it out: null.
inline void setStatus(CMPIStatus* status, CMPIrc code) noexcept {
    if (status) *status = statusOf(code);
}

inline void setStatus(CMPIStatus* status, CMPIrc code, std::string_view message) {
    if (status) *status = statusOf(code, message);
}

/// The text; empty for a null pointer.
inline std::string_view textOf(const char* text) noexcept { return text ? std::string_view(text) : std::string_view(); }

/// The result of a getter that finds nothing.
inline CMPIData absentData() noexcept {
    CMPIData data{};
    data.state = CMPI_nullValue | CMPI_notFound;
    return data;
}

/// A copy that lives until it is released, also after the request.
template <typename Object>
Object* cloneObject(const Object& source) {
    auto memory = std::make_unique<Arena>();
    Object* copy = source.copyTo(*memory);
    copy->ownsArena = true;
    memory.release(); // NOLINT: the copy frees it, in releaseObject
    return copy;
}

/// Frees a clone. An object of a request stays until the request ends. 0, or 60 for null.
template <typename Object>
CMPIStatus releaseObject(const Object* object) noexcept {
    if (!object) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    if (object->ownsArena) std::unique_ptr<Arena>(object->arena).reset();
    return statusOf(CMPI_RC_OK);
}

/// The function `clone` of a table, for a class that has copyTo().
template <typename Object, typename Base>
Base* cloneFromTable(const Base* object, CMPIStatus* status) noexcept {
    const Object* source = Object::from(object);
    setStatus(status, source ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return source ? cloneObject(*source) : nullptr;
}

/// The function `release` of a table.
template <typename Object, typename Base>
CMPIStatus releaseFromTable(Base* object) noexcept {
    return releaseObject(Object::from(static_cast<const Base*>(object)));
}

/// The value at a position of a list of named values, as the getters ...At give it. The status is 12 beyond the end.
CMPIData namedDataAt(std::span<const NamedData> items, CMPICount position, CMPIString** name, CMPIStatus* status);

} // namespace cimhost
