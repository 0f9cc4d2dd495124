#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {

ContextObject* ContextObject::make(Arena& arena) {
    auto* made = arena.make<ContextObject>();
    made->hdl = made;
    made->ft = tablePointer(tables::context);
    made->arena = &arena;
    return made;
}

const ContextObject* ContextObject::from(const CMPIContext* object) noexcept {
    return checkedObject<const ContextObject>(object, tables::context);
}

void ContextObject::addText(std::string_view name, std::string_view text) {
    CMPIValue value{};
    value.string = StringObject::make(*arena, text);
    add(name, &value, CMPI_string);
}

void ContextObject::addNumber(std::string_view name, CMPIUint32 number) {
    CMPIValue value{};
    value.uint32 = number;
    add(name, &value, CMPI_uint32);
}

namespace {

// A context belongs to the server. That of a request ends with the request, that of a thread with detachThread.
CMPIStatus release(CMPIContext* object) noexcept {
    return statusOf(ContextObject::from(object) ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIData getEntry(const CMPIContext* object, const char* name, CMPIStatus* status) noexcept {
    const ContextObject* context = ContextObject::from(object);
    const NamedData* entry = context ? context->entry(textOf(name)) : nullptr;
    if (!entry) {
        setStatus(status, context ? CMPI_RC_ERR_NO_SUCH_PROPERTY : CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    return handOut(entry->data);
}

CMPIData getEntryAt(const CMPIContext* object, CMPICount position, CMPIString** name, CMPIStatus* status) noexcept {
    const ContextObject* context = ContextObject::from(object);
    if (context) return namedDataAt(context->entries(), position, name, status);
    setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
    return absentData();
}

CMPICount getEntryCount(const CMPIContext* object, CMPIStatus* status) noexcept {
    const ContextObject* context = ContextObject::from(object);
    setStatus(status, context ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return context ? static_cast<CMPICount>(context->entries().size()) : 0;
}

CMPIStatus addEntry(const CMPIContext* object, const char* name, const CMPIValue* value, CMPIType type) noexcept {
    auto* context = const_cast<ContextObject*>(ContextObject::from(object));
    if (!context) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    if (!name) return statusOf(CMPI_RC_ERR_INVALID_PARAMETER);
    return statusOf(context->add(name, value, type));
}

} // namespace

const CMPIContextFT tables::context = {
    CMPICurrentVersion,
    release,
    nullptr, // clone: production servers have none
    getEntry,
    getEntryAt,
    getEntryCount,
    addEntry,
};

} // namespace cimhost
