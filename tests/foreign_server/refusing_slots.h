// Slots that do nothing but say so: those of dead objects, and those that this server does not serve.
#pragma once

#include "violations.h"

#include "cmpift.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace foreign_server {

/// A slot's name as a template argument.
template <std::size_t size>
struct SlotName {
    // NOLINTNEXTLINE(google-explicit-constructor): to be written as a plain text.
    constexpr SlotName(const char (&name)[size]) { std::copy_n(name, size, text); }
    char text[size];
};

/// The answer of a refused call, by type; a status among the arguments gets the code too.
template <class Returned, class... Arguments>
Returned refuse(CMPIrc code, Arguments... arguments) {
    const auto tell = [code](auto argument) {
        if constexpr (std::is_same_v<decltype(argument), CMPIStatus*>) {
            if (argument) *argument = {code, nullptr};
        }
    };
    (tell(arguments), ...);
    if constexpr (std::is_same_v<Returned, CMPIStatus>) {
        return {code, nullptr};
    } else if constexpr (std::is_same_v<Returned, CMPIData>) {
        return {CMPI_null, CMPI_badValue, {}};
    } else if constexpr (!std::is_void_v<Returned>) {
        return Returned{};
    }
}

template <SlotName name, CMPIrc code, bool isBreach, class Signature>
struct RefusingSlot;

template <SlotName name, CMPIrc code, bool isBreach, class Returned, class... Arguments>
struct RefusingSlot<name, code, isBreach, Returned (*)(Arguments...)> {
    static Returned call(Arguments... arguments) {
        if (isBreach) violate(name.text, "use after the end of what it belongs to");
        return refuse<Returned>(code, arguments...);
    }
};

/// A slot of something that is gone.
#define FOREIGN_DEAD_SLOT(table, slot)                                                                                 \
    (table).slot = RefusingSlot<#table "." #slot, CMPI_RC_ERR_INVALID_HANDLE, true, decltype((table).slot)>::call
/// A slot that is there and serves nothing.
#define FOREIGN_UNSERVED_SLOT(table, slot)                                                                             \
    (table).slot = RefusingSlot<#slot, CMPI_RC_ERR_NOT_SUPPORTED, false, decltype((table).slot)>::call

} // namespace foreign_server
