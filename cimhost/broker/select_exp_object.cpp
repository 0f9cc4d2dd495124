#include "cimhost/broker/table_support.h"

namespace cimhost {

SelectExpObject* SelectExpObject::make(Arena& arena, std::string_view query, std::string_view language) {
    auto* made = arena.make<SelectExpObject>();
    made->hdl = made;
    made->ft = tablePointer(tables::selectExp);
    made->arena = &arena;
    made->ownsArena = false;
    made->queryText = arena.copyText(query);
    made->languageText = arena.copyText(language);
    return made;
}

const SelectExpObject* SelectExpObject::from(const CMPISelectExp* object) noexcept {
    return checkedObject<const SelectExpObject>(object, tables::selectExp);
}

SelectExpObject* SelectExpObject::copyTo(Arena& target) const { return make(target, queryText, languageText); }

namespace {

CMPIBoolean evaluate(const CMPISelectExp* /*object*/, const CMPIInstance* /*instance*/, CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return 0;
}

CMPIBoolean evaluateUsingAccessor(const CMPISelectExp* /*object*/, CMPIAccessor* /*accessor*/, void* /*parameter*/,
                                  CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return 0;
}

CMPIString* getString(const CMPISelectExp* object, CMPIStatus* status) noexcept {
    const SelectExpObject* expression = SelectExpObject::from(object);
    setStatus(status, expression ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return expression ? StringObject::make(workArena(), expression->query()) : nullptr;
}

CMPISelectCond* noCondition(const CMPISelectExp* /*object*/, CMPIStatus* status) noexcept {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

} // namespace

const CMPISelectExpFT tables::selectExp = {
    CMPICurrentVersion,
    releaseFromTable<SelectExpObject, CMPISelectExp>,
    cloneFromTable<SelectExpObject, CMPISelectExp>,
    evaluate,
    getString,
    noCondition, // getDOC
    noCondition, // getCOD
    evaluateUsingAccessor,
};

} // namespace cimhost
