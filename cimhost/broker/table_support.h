// What the implementations of the CMPI tables share.
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

/// Makes a binding the calling thread's innermost one. It must stay until unbindThread(), in the same thread.
void bindThread(ThreadBinding& binding) noexcept;
/// Takes a binding away, the innermost one or one further out; nothing happens if it is none of this thread's.
void unbindThread(const ThreadBinding& binding) noexcept;

/// Where the calling thread's objects lie now.
Arena& workArena() noexcept;

/// CMPI's structs want pointers to tables that could be written; nobody may write these.
template <typename Table>
Table* tablePointer(const Table& table) noexcept {
    return const_cast<Table*>(&table);
}

/// The object behind a CMPI struct; null unless it is whole and its table is the given one.
template <typename Wanted, typename Object, typename Table>
Wanted* checkedObject(Object* object, const Table& table) noexcept {
    return object && object->hdl && object->ft == &table ? static_cast<Wanted*>(object) : nullptr;
}

/// A status without a message, or with one that lies in the calling thread's arena.
inline CMPIStatus statusOf(CMPIrc code) noexcept { return {code, nullptr}; }

inline CMPIStatus statusOf(CMPIrc code, std::string_view message) {
    return {code, StringObject::make(workArena(), message)};
}

/// Callers of the tables may leave their status out.
inline void setStatus(CMPIStatus* status, CMPIrc code) noexcept {
    if (status) *status = statusOf(code);
}

inline void setStatus(CMPIStatus* status, CMPIrc code, std::string_view message) {
    if (status) *status = statusOf(code, message);
}

/// The text; empty for a null pointer.
inline std::string_view textOf(const char* text) noexcept { return text ? std::string_view(text) : std::string_view(); }

/// The answer of every getter that finds nothing.
inline CMPIData absentData() noexcept {
    CMPIData data{};
    data.state = CMPI_nullValue | CMPI_notFound;
    return data;
}

/// A copy that outlives the request, until it is released.
template <typename Object>
Object* cloneObject(const Object& source) {
    auto memory = std::make_unique<Arena>();
    Object* copy = source.copyTo(*memory);
    copy->ownsArena = true;
    memory.release(); // NOLINT: the copy frees it, in releaseObject
    return copy;
}

/// Frees a clone; objects of a request stay until its end.
template <typename Object>
CMPIStatus releaseObject(const Object* object) noexcept {
    if (!object) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    if (object->ownsArena) std::unique_ptr<Arena>(object->arena).reset();
    return statusOf(CMPI_RC_OK);
}

/// The clone slot of a table, for a class that has copyTo().
template <typename Object, typename Base>
Base* cloneFromTable(const Base* object, CMPIStatus* status) noexcept {
    const Object* source = Object::from(object);
    setStatus(status, source ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return source ? cloneObject(*source) : nullptr;
}

/// The release slot of a table.
template <typename Object, typename Base>
CMPIStatus releaseFromTable(Base* object) noexcept {
    return releaseObject(Object::from(static_cast<const Base*>(object)));
}

/// The n-th of a list of named values, as the ...At getters give it: 12 beyond the end.
CMPIData namedDataAt(std::span<const NamedData> items, CMPICount position, CMPIString** name, CMPIStatus* status);

} // namespace cimhost
