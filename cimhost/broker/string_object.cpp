#include "cimhost/broker/table_support.h"

namespace cimhost {

StringObject* StringObject::make(Arena& arena, std::string_view text) {
    void* memory = arena.allocate(sizeof(StringObject) + text.size() + 1);
    char* copy = static_cast<char*>(memory) + sizeof(StringObject);
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
    auto* made = ::new (memory) StringObject();
    made->hdl = copy;
    made->ft = tablePointer(tables::string);
    made->arena = &arena;
    made->ownsArena = false;
    made->length = static_cast<std::uint32_t>(text.size());
    return made;
}

const StringObject* StringObject::from(const CMPIString* object) noexcept {
    return checkedObject<const StringObject>(object, tables::string);
}

StringObject* StringObject::copyTo(Arena& target) const { return make(target, text()); }

namespace {

const char* getCharPtr(const CMPIString* object, CMPIStatus* status) noexcept {
    const StringObject* string = StringObject::from(object);
    setStatus(status, string ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return string ? string->text().data() : nullptr;
}

} // namespace

const CMPIStringFT tables::string = {
    CMPICurrentVersion,
    releaseFromTable<StringObject, CMPIString>,
    cloneFromTable<StringObject, CMPIString>,
    getCharPtr,
};

} // namespace cimhost
