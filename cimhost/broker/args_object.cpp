#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {

ArgsObject* ArgsObject::make(Arena& arena) {
    auto* made = arena.make<ArgsObject>();
    made->hdl = made;
    made->ft = tablePointer(tables::args);
    made->arena = &arena;
    made->ownsArena = false;
    return made;
}

const ArgsObject* ArgsObject::from(const CMPIArgs* object) noexcept {
    return checkedObject<const ArgsObject>(object, tables::args);
}

CMPIrc ArgsObject::add(std::string_view name, const CMPIData& data) {
    return add(name, (data.state & CMPI_nullValue) != 0 ? nullptr : &data.value, data.type);
}

ArgsObject* ArgsObject::copyTo(Arena& target) const {
    ArgsObject* copy = make(target);
    copy->list = list.copyTo(target);
    return copy;
}

namespace {

CMPIStatus addArg(const CMPIArgs* object, const char* name, const CMPIValue* value, CMPIType type) noexcept {
    auto* args = const_cast<ArgsObject*>(ArgsObject::from(object));
    if (!args) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    if (!name) return statusOf(CMPI_RC_ERR_INVALID_PARAMETER);
    return statusOf(args->add(name, value, type));
}

CMPIData getArg(const CMPIArgs* object, const char* name, CMPIStatus* status) noexcept {
    const ArgsObject* args = ArgsObject::from(object);
    const NamedData* argument = args ? args->argument(textOf(name)) : nullptr;
    if (!argument) {
        setStatus(status, args ? CMPI_RC_ERR_NO_SUCH_PROPERTY : CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    return handOut(argument->data);
}

CMPIData getArgAt(const CMPIArgs* object, CMPICount position, CMPIString** name, CMPIStatus* status) noexcept {
    if (const ArgsObject* args = ArgsObject::from(object))
        return namedDataAt(args->arguments(), position, name, status);
    setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
    return absentData();
}

CMPICount getArgCount(const CMPIArgs* object, CMPIStatus* status) noexcept {
    const ArgsObject* args = ArgsObject::from(object);
    setStatus(status, args ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return args ? static_cast<CMPICount>(args->arguments().size()) : 0;
}

} // namespace

const CMPIArgsFT tables::args = {
    CMPICurrentVersion,
    releaseFromTable<ArgsObject, CMPIArgs>,
    cloneFromTable<ArgsObject, CMPIArgs>,
    addArg,
    getArg,
    getArgAt,
    getArgCount,
};

} // namespace cimhost
