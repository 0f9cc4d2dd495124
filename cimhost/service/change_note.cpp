#include "cimhost/service/change_note.h"

#include <cstddef>
#include <string_view>
#include <variant>

namespace cimhost {

namespace {

// More than an audit line shows. A client's path may be as long as its message.
constexpr std::size_t longest = 1024;

void appendKeys(std::string& text, const cimxml::ObjectPath& path) {
    char separator = '.';
    for (const cimxml::KeyBinding& key : path.keys) {
        if (text.size() > longest) return;
        text += separator;
        text.append(key.name).append("=");
        separator = ',';
        if (key.reference) {
            text.append(key.reference->className);
            appendKeys(text, *key.reference);
        } else {
            text.append("\"").append(std::string_view(key.text).substr(0, longest)).append("\"");
        }
    }
}

std::string textOf(const std::string& nameSpace, const cimxml::ObjectPath& path) {
    std::string text = nameSpace + ":" + path.className;
    appendKeys(text, path);
    return text;
}

std::string textOf(const std::string& nameSpace, const cimxml::NamedInstance& given) {
    return given.path ? textOf(nameSpace, *given.path) : nameSpace + ":" + given.instance.className;
}

} // namespace

std::string objectOf(const cimxml::Request& request) {
    if (request.kind == cimxml::Request::Kind::extrinsic) return textOf(request.nameSpace, request.target);
    for (const cimxml::Parameter& parameter : request.parameters) {
        if (const auto* path = std::get_if<cimxml::ObjectPath>(&parameter.value)) {
            return textOf(request.nameSpace, *path);
        }
        if (const auto* given = std::get_if<cimxml::NamedInstance>(&parameter.value)) {
            return textOf(request.nameSpace, *given);
        }
    }
    return request.nameSpace;
}

} // namespace cimhost
