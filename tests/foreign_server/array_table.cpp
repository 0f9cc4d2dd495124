#include "tables.h"

namespace foreign_server {

namespace {

CMPIStatus releaseArray(CMPIArray* array) { return answer(release(array, Kind::array, "CMPIArray.release")); }

CMPIArray* cloneArray(const CMPIArray* array, CMPIStatus* status) {
    const auto* object = use<ArrayObject>(array, "CMPIArray.clone");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    if (!object) return nullptr;
    auto* copy = makeClone<ArrayObject>();
    copy->elementType = object->elementType;
    copy->numbers = object->numbers;
    copy->objects = object->objects;
    copy->isSet = object->isSet;
    return copy->shown();
}

CMPICount getSize(const CMPIArray* array, CMPIStatus* status) {
    const auto* object = use<ArrayObject>(array, "CMPIArray.getSize");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? static_cast<CMPICount>(object->isSet.size()) : 0;
}

CMPIType getSimpleType(const CMPIArray* array, CMPIStatus* status) {
    const auto* object = use<ArrayObject>(array, "CMPIArray.getSimpleType");
    fail(status, object ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return object ? object->elementType : CMPIType{CMPI_null};
}

CMPIData getElementAt(const CMPIArray* array, CMPICount index, CMPIStatus* status) {
    const auto* object = use<ArrayObject>(array, "CMPIArray.getElementAt");
    if (!object) {
        fail(status, CMPI_RC_ERR_INVALID_HANDLE);
        return absent();
    }
    CMPIData data{};
    if (index >= object->isSet.size()) {
        data.state = CMPI_badValue;
        return data;
    }
    data.type = object->elementType;
    const std::size_t size = numberSize(object->elementType);
    if (!object->isSet[index]) {
        data.state = CMPI_nullValue;
    } else if (size != 0) {
        std::memcpy(&data.value, object->numbers.data() + size * index, size);
    } else {
        data.value.string = static_cast<CMPIString*>(object->objects[index]);
    }
    return data;
}

/// Makes room for one more element of an array that was made with none.
bool reaches(ArrayObject& array, CMPICount index) {
    if (index < array.isSet.size()) return true;
    if (!array.mayGrow) return false;
    array.isSet.resize(index + 1U);
    const std::size_t size = numberSize(array.elementType);
    if (size != 0) {
        array.numbers.resize(size * array.isSet.size());
    } else {
        array.objects.resize(array.isSet.size());
    }
    return true;
}

CMPIStatus setElementAt(CMPIArray* array, CMPICount index, const CMPIValue* value, CMPIType type) {
    constexpr const char* function = "CMPIArray.setElementAt";
    auto* object = use<ArrayObject>(array, function);
    if (!object) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (type != CMPI_null && inwardType(type) != object->elementType) return answer(CMPI_RC_ERR_FAILED);
    if (!reaches(*object, index)) return answer(CMPI_RC_ERR_FAILED);
    object->isSet[index] = false;
    if (type == CMPI_null || !value) return answer(CMPI_RC_OK);
    const std::size_t size = numberSize(object->elementType);
    if (size != 0) {
        std::memcpy(object->numbers.data() + size * index, value, size);
    } else if (type == CMPI_chars) {
        object->objects[index] = make<StringObject>(function, reinterpret_cast<const char*>(value))->shown();
    } else {
        // The pointer is kept, but it must be one to an object of that type.
        Value taken;
        const CMPIrc code = take(value, type, taken, function);
        if (code != CMPI_RC_OK) return answer(code);
        if (taken.isNull()) return answer(CMPI_RC_OK);
        object->objects[index] = value->string;
    }
    object->isSet[index] = true;
    return answer(CMPI_RC_OK);
}

} // namespace

void* arrayTable() {
    static void* table =
        tableOfSize(CMPIArrayFT{1, releaseArray, cloneArray, getSize, getSimpleType, getElementAt, setElementAt},
                    sizeof(CMPIArrayFT));
    return table;
}

} // namespace foreign_server
