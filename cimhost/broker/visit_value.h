// Gives a CMPI value in its own C++ type. This is the only place that goes through all types.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/model/cim_type.h"

#include <cstdint>
#include <utility>

namespace cimhost {

/// Stands for a null, for a type that no value here has, and for an object that is broken or not made by these tables.
struct NoValue {};

/// Several functions in one, of which visitValue() calls the one that fits.
template <typename... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

/// Calls visit with the value: a bool, a char16_t, an integer of its width, a float or a double, a StringObject,
/// DateTimeObject, ObjectPathObject, InstanceObject or ArrayObject, or NoValue. visit takes each of them and always
/// returns the same type, so that no type is forgotten. It is inlined because answers are made with it: the compiler
/// then need not make an object of the functions.
template <typename Visit>
[[gnu::always_inline]] inline decltype(auto) visitValue(const CMPIData& data, Visit&& visit) {
    const CMPIValue& value = data.value;
    const auto object = [&visit](const auto* found) -> decltype(auto) {
        return found ? visit(std::as_const(*found)) : visit(NoValue());
    };
    if ((data.state & CMPI_nullValue) != 0) return visit(NoValue());
    switch (data.type) {
    case CMPI_string:
        return object(StringObject::from(value.string));
    case CMPI_boolean:
        return visit(value.boolean != 0);
    case CMPI_uint8:
        return visit(std::uint8_t{value.uint8});
    case CMPI_uint16:
        return visit(std::uint16_t{value.uint16});
    case CMPI_uint32:
        return visit(std::uint32_t{value.uint32});
    case CMPI_uint64:
        return visit(std::uint64_t{value.uint64});
    case CMPI_sint8:
        return visit(std::int8_t{value.sint8});
    case CMPI_sint16:
        return visit(std::int16_t{value.sint16});
    case CMPI_sint32:
        return visit(std::int32_t{value.sint32});
    case CMPI_sint64:
        return visit(std::int64_t{value.sint64});
    case CMPI_real32:
        return visit(value.real32);
    case CMPI_real64:
        return visit(value.real64);
    case CMPI_char16:
        return visit(static_cast<char16_t>(value.char16));
    case CMPI_dateTime:
        return object(DateTimeObject::from(value.dateTime));
    case CMPI_ref:
        return object(ObjectPathObject::from(static_cast<const CMPIObjectPath*>(value.ref)));
    case CMPI_instance:
        return object(InstanceObject::from(static_cast<const CMPIInstance*>(value.inst)));
    default:
        return isArrayType(data.type) ? object(ArrayObject::from(value.array)) : visit(NoValue());
    }
}

} // namespace cimhost
