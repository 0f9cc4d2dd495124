// Instance paths as people type them: Class.Key="value",Other=17. Host and namespace may stand in front.
#pragma once

#include "cimhost/cimxml/values.h"
#include "cimhost/model/class_repository.h"

#include <stdexcept>
#include <string_view>

namespace cimhost {

/// The text is no path; what() says why.
class PathTextError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads `Class.Key="v"`, `root/ns:Class.Key="v"`, `//host/root/ns:Class...` and
/// `http://host:5988/root/ns:Class.Key=v`. The host is dropped. Text stands between double quotes, in which \\ and
/// \" are escapes; text without a comma needs no quotes. Each key gets the type that its class declares; a reference is
/// a path again, up to eight deep. If the repository lacks the class, a key without quotes that looks like a number or
/// a boolean is one, and any other is a text. Throws PathTextError.
/// @param defaultNamespace the namespace if the text names none
cimxml::ObjectPath parsePath(std::string_view text, std::string_view defaultNamespace,
                             const ClassRepository& repository);

} // namespace cimhost
