// The makers of paths and instances in one form, whatever a class makes them of.
#pragma once

#include "inventory/cna_list.h"

#include <type_traits>

namespace merolt {

/// Calls a maker of a class with what it takes of an object: nothing, a software type with its card, card and port, one
/// of the two, a profile, or the index of a record.
template <auto make, class Object, class... Leading>
auto callMaker(const Object& object, Leading... leading) {
    using Make = decltype(make);
    if constexpr (std::is_invocable_v<Make, Leading...>) {
        return make(leading...);
    } else if constexpr (std::is_invocable_v<Make, Leading..., int, CNACard*>) {
        return make(leading..., object.softwareType, object.card);
    } else if constexpr (std::is_invocable_v<Make, Leading..., CNACard*, CNAPort*>) {
        return make(leading..., object.card, object.port);
    } else if constexpr (std::is_invocable_v<Make, Leading..., CNACard*>) {
        return make(leading..., object.card);
    } else if constexpr (std::is_invocable_v<Make, Leading..., CNAPort*>) {
        return make(leading..., object.port);
    } else if constexpr (requires { object.profile; }) {
        return make(leading..., object.profile);
    } else {
        return make(leading..., object.index);
    }
}

} // namespace merolt
