#include "cimhost/broker/table_support.h"
#include "cimhost/model/date_time.h"

namespace cimhost {

static_assert(DateTimeObject::textLength == dateTimeTextLength);

namespace {

DateTimeObject* makeEmpty(Arena& arena, std::uint64_t microseconds) {
    auto* made = arena.make<DateTimeObject>();
    made->hdl = made;
    made->ft = tablePointer(tables::dateTime);
    made->arena = &arena;
    made->ownsArena = false;
    made->value = microseconds;
    made->characters[DateTimeObject::textLength] = '\0';
    return made;
}

} // namespace

DateTimeObject* DateTimeObject::make(Arena& arena, std::string_view text) {
    const auto parsed = parseDateTime(text);
    if (!parsed) return nullptr;
    DateTimeObject* made = makeEmpty(arena, parsed->microseconds);
    text.copy(made->characters, textLength);
    return made;
}

DateTimeObject* DateTimeObject::make(Arena& arena, std::uint64_t microseconds, bool isInterval) {
    DateTimeObject* made = makeEmpty(arena, microseconds);
    return formatDateTime({microseconds, isInterval}, made->characters) ? made : nullptr;
}

const DateTimeObject* DateTimeObject::from(const CMPIDateTime* object) noexcept {
    return checkedObject<const DateTimeObject>(object, tables::dateTime);
}

DateTimeObject* DateTimeObject::copyTo(Arena& target) const {
    DateTimeObject* copy = makeEmpty(target, value);
    text().copy(copy->characters, textLength);
    return copy;
}

namespace {

CMPIUint64 getBinaryFormat(const CMPIDateTime* object, CMPIStatus* status) noexcept {
    const DateTimeObject* dateTime = DateTimeObject::from(object);
    setStatus(status, dateTime ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return dateTime ? dateTime->microseconds() : 0;
}

CMPIString* getStringFormat(const CMPIDateTime* object, CMPIStatus* status) noexcept {
    const DateTimeObject* dateTime = DateTimeObject::from(object);
    setStatus(status, dateTime ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return dateTime ? StringObject::make(workArena(), dateTime->text()) : nullptr;
}

CMPIBoolean isInterval(const CMPIDateTime* object, CMPIStatus* status) noexcept {
    const DateTimeObject* dateTime = DateTimeObject::from(object);
    setStatus(status, dateTime ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return dateTime && dateTime->isInterval() ? 1 : 0;
}

} // namespace

const CMPIDateTimeFT tables::dateTime = {
    CMPICurrentVersion,
    releaseFromTable<DateTimeObject, CMPIDateTime>,
    cloneFromTable<DateTimeObject, CMPIDateTime>,
    getBinaryFormat,
    getStringFormat,
    isInterval,
};

} // namespace cimhost
