// Instance paths as people type them: Class.Key="value",Other=17, with host and namespace in front if they like.
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

/// Takes `Class.Key="v"`, `root/ns:Class.Key="v"`, `//host/root/ns:Class...` and
/// `http://host:5988/root/ns:Class.Key=v`. Text stands between double quotes, where \" and \\ are escapes; the quotes
/// may be left out where the text has no comma. Each key is typed as its class declares it, references are paths again;
/// of a class that the repository lacks, numbers and booleans without quotes are such. Where the text names no
/// namespace, defaultNamespace is it. Throws PathTextError.
cimxml::ObjectPath parsePath(std::string_view text, std::string_view defaultNamespace,
                             const ClassRepository& repository);

} // namespace cimhost
