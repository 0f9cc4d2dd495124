#include <cstring>

#include "cimhost/broker/table_support.h"
#include "cimhost/broker/values.h"

namespace cimhost {
namespace {

// What an element of that type takes; 0 for a type that has no arrays.
std::size_t elementBytes(CMPIType type) noexcept {
    return isObjectType(inwardType(type)) ? sizeof(void*) : scalarSize(type);
}

} // namespace

ArrayObject* ArrayObject::make(Arena& arena, CMPICount size, CMPIType elementType) {
    const std::size_t bytes = elementBytes(elementType);
    if (bytes == 0) return nullptr;
    void* memory = arena.allocate(sizeof(ArrayObject) + contentBytes(size, bytes));
    auto* made = ::new (memory) ArrayObject();
    made->hdl = made;
    made->ft = tablePointer(tables::array);
    made->arena = &arena;
    made->ownsArena = false;
    made->sharesValues = false;
    made->type = elementType;
    made->elementSize = static_cast<std::uint8_t>(bytes);
    made->count = size;
    made->values = static_cast<unsigned char*>(memory) + sizeof(ArrayObject);
    made->present = made->values + size * bytes;
    std::memset(made->values, 0, contentBytes(size, bytes));
    return made;
}

const ArrayObject* ArrayObject::from(const CMPIArray* object) noexcept {
    return checkedObject<const ArrayObject>(object, tables::array);
}

CMPIData ArrayObject::element(CMPICount index) const noexcept {
    CMPIData data{};
    data.type = inwardType(type);
    if (!isPresent(index)) {
        data.state = CMPI_nullValue;
        return data;
    }
    std::memcpy(&data.value, values + std::size_t{index} * elementSize, elementSize);
    return data;
}

void ArrayObject::store(CMPICount index, const CMPIData& data) noexcept {
    unsigned char* place = values + std::size_t{index} * elementSize;
    const auto bit = static_cast<unsigned char>(1U << index % 8);
    unsigned char& byte = present[index / 8];
    if ((data.state & CMPI_nullValue) == 0) {
        byte = static_cast<unsigned char>(byte | bit);
        std::memcpy(place, &data.value, elementSize);
    } else {
        byte = static_cast<unsigned char>(byte & ~bit);
        std::memset(place, 0, elementSize);
    }
}

CMPIrc ArrayObject::setElement(CMPICount index, const CMPIValue* value, CMPIType valueType) {
    if (index >= count) return CMPI_RC_ERR_NO_SUCH_PROPERTY;
    if (valueType != type && valueType != CMPI_null) return CMPI_RC_ERR_TYPE_MISMATCH;
    CMPIData data{};
    data.state = CMPI_nullValue;
    if (valueType != CMPI_null) {
        const CMPIrc code = takeValue(*arena, value, valueType, data);
        if (code != CMPI_RC_OK) return code;
    }
    if (sharesValues) makeValuesOwn();
    store(index, data);
    return CMPI_RC_OK;
}

void ArrayObject::makeValuesOwn() {
    const std::size_t size = contentBytes(count, elementSize);
    auto* own = static_cast<unsigned char*>(arena->allocate(size));
    std::memcpy(own, values, size);
    present = own + (present - values);
    values = own;
    sharesValues = false;
}

ArrayObject* ArrayObject::copyTo(Arena& target) const {
    if (&target == arena && scalarSize(type) != 0) {
        auto* twin = target.make<ArrayObject>(*this);
        twin->hdl = twin;
        twin->ownsArena = false;
        sharesValues = twin->sharesValues = true;
        return twin;
    }
    ArrayObject* copy = make(target, count, type);
    if (scalarSize(type) != 0) {
        std::memcpy(copy->values, values, contentBytes(count, elementSize));
        return copy;
    }
    for (CMPICount index = 0; index < count; ++index) {
        copy->store(index, copyData(target, element(index)));
    }
    return copy;
}

namespace {

ArrayObject* writable(CMPIArray* object) noexcept { return const_cast<ArrayObject*>(ArrayObject::from(object)); }

CMPICount getSize(const CMPIArray* object, CMPIStatus* status) noexcept {
    const ArrayObject* array = ArrayObject::from(object);
    setStatus(status, array ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return array ? array->size() : 0;
}

CMPIType getSimpleType(const CMPIArray* object, CMPIStatus* status) noexcept {
    const ArrayObject* array = ArrayObject::from(object);
    setStatus(status, array ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return array ? array->elementType() : CMPIType(CMPI_null);
}

CMPIData getElementAt(const CMPIArray* object, CMPICount index, CMPIStatus* status) noexcept {
    const ArrayObject* array = ArrayObject::from(object);
    if (!array || index >= array->size()) {
        setStatus(status, array ? CMPI_RC_ERR_NO_SUCH_PROPERTY : CMPI_RC_ERR_INVALID_HANDLE);
        return absentData();
    }
    setStatus(status, CMPI_RC_OK);
    return handOut(array->element(index));
}

CMPIStatus setElementAt(CMPIArray* object, CMPICount index, const CMPIValue* value, CMPIType type) noexcept {
    ArrayObject* array = writable(object);
    if (!array) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    const CMPIrc code = array->setElement(index, value, type);
    if (code != CMPI_RC_ERR_TYPE_MISMATCH) return statusOf(code);
    return statusOf(code, "the element's type is not that of the array");
}

} // namespace

const CMPIArrayFT tables::array = {
    CMPICurrentVersion,
    releaseFromTable<ArrayObject, CMPIArray>,
    cloneFromTable<ArrayObject, CMPIArray>,
    getSize,
    getSimpleType,
    getElementAt,
    setElementAt,
};

} // namespace cimhost
