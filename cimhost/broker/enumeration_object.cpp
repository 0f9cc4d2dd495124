#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {

EnumerationObject* EnumerationObject::make(Arena& arena, std::span<const CMPIData> given) {
    auto* copies = arena.allocateArray<CMPIData>(given.size());
    for (std::size_t place = 0; place < given.size(); ++place) {
        copies[place] = copyData(arena, given[place]);
    }
    auto* made = arena.make<EnumerationObject>();
    made->hdl = made;
    made->ft = tablePointer(tables::enumeration);
    made->arena = &arena;
    made->ownsArena = false;
    made->elements = copies;
    made->count = static_cast<CMPICount>(given.size());
    made->position = 0;
    return made;
}

const EnumerationObject* EnumerationObject::from(const CMPIEnumeration* object) noexcept {
    return checkedObject<const EnumerationObject>(object, tables::enumeration);
}

EnumerationObject* EnumerationObject::copyTo(Arena& target) const {
    EnumerationObject* copy = make(target, {elements, count});
    copy->position = position;
    return copy;
}

namespace {

CMPIData getNext(const CMPIEnumeration* object, CMPIStatus* status) noexcept {
    const EnumerationObject* enumeration = EnumerationObject::from(object);
    if (!enumeration || enumeration->position >= enumeration->count) {
        setStatus(status, enumeration ? CMPI_RC_NO_MORE_ELEMENTS : CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    return handOut(enumeration->elements[enumeration->position++]);
}

CMPIBoolean hasNext(const CMPIEnumeration* object, CMPIStatus* status) noexcept {
    const EnumerationObject* enumeration = EnumerationObject::from(object);
    setStatus(status, enumeration ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return enumeration && enumeration->position < enumeration->count ? 1 : 0;
}

CMPIArray* toArray(const CMPIEnumeration* object, CMPIStatus* status) noexcept {
    const EnumerationObject* enumeration = EnumerationObject::from(object);
    setStatus(status, enumeration ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!enumeration) return nullptr;
    Arena& arena = workArena();
    const CMPIType type = enumeration->count == 0 ? CMPIType(CMPI_instance) : enumeration->elements[0].type;
    ArrayObject* array = ArrayObject::make(arena, enumeration->count, type);
    for (CMPICount place = 0; array && place < enumeration->count; ++place) {
        array->store(place, copyData(arena, enumeration->elements[place]));
    }
    return array;
}

} // namespace

const CMPIEnumerationFT tables::enumeration = {
    CMPICurrentVersion,
    releaseFromTable<EnumerationObject, CMPIEnumeration>,
    cloneFromTable<EnumerationObject, CMPIEnumeration>,
    getNext,
    hasNext,
    toArray,
};

} // namespace cimhost
