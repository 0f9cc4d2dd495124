// The descriptor of a class with exactly one object, whose make functions take no index.
#pragma once

#include "classes/list_class.h"

namespace merolt::server {

/// @param keyText the one object's key Name, whatever the index.
template <auto MakePath, auto MakeInstance>
constexpr ListClass singleObject(const char* name, const char* (*keyText)(int)) {
    return {
        .name = name,
        .key = "Name",
        .count = [] { return 1; },
        .keyText = keyText,
        .makePath = [](const char* className, const char* nameSpace, int) { return MakePath(className, nameSpace); },
        .makeInstance = [](const char* className, const char* nameSpace, const char** properties,
                           int) { return MakeInstance(className, nameSpace, properties); },
        .noMatchNamesElement = true,
    };
}

} // namespace merolt::server
