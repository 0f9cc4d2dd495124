#include "cimhost/service/path_text.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/names.h"

#include <algorithm>
#include <string>

namespace cimhost {

namespace {

constexpr std::string_view pathShape = "an instance path reads Class.Key=\"value\",Other=\"value\"";
constexpr int deepestReference = 8;

[[noreturn]] void refuse(const std::string& reason) { throw PathTextError(reason + "; " + std::string(pathShape)); }

void dropHost(std::string_view& text) {
    for (const std::string_view scheme : {"http://", "https://", "//"}) {
        if (text.substr(0, scheme.size()) != scheme) continue;
        const std::size_t slash = text.find('/', scheme.size());
        if (slash == std::string_view::npos) refuse("a host without a path behind it");
        text.remove_prefix(slash);
        return;
    }
}

// Takes what stands before the separator, and leaves what follows it. Empty if the keys begin before any separator.
std::string takePrefix(std::string_view& text, std::string_view separator) {
    const std::size_t end = text.substr(0, text.find_first_of("=\"")).find(separator);
    if (end == std::string_view::npos) return {};
    std::string prefix(text.substr(0, end));
    text.remove_prefix(end + 1);
    return prefix;
}

std::string takeQuoted(std::string_view& text) {
    std::string value;
    for (text.remove_prefix(1); !text.empty(); text.remove_prefix(1)) {
        if (text.front() == '"') {
            text.remove_prefix(1);
            return value;
        }
        if (text.front() == '\\' && text.size() > 1) text.remove_prefix(1);
        value += text.front();
    }
    refuse("a quote is not closed");
}

std::string takeValue(std::string_view& text) {
    if (!text.empty() && text.front() == '"') return takeQuoted(text);
    std::string value(text.substr(0, text.find(',')));
    text.remove_prefix(value.size());
    return value;
}

cimxml::ObjectPath parse(std::string_view text, std::string_view defaultNamespace, const ClassRepository& repository,
                         int depth);

void giveType(cimxml::KeyBinding& key, CMPIType type, std::string_view nameSpace, const ClassRepository& repository,
              int depth) {
    if (type == CMPI_boolean) key.type = cimxml::KeyType::boolean;
    if (isIntegerType(type) || type == CMPI_real32 || type == CMPI_real64) key.type = cimxml::KeyType::numeric;
    if (type != CMPI_ref) return;
    key.type = cimxml::KeyType::reference;
    key.reference = std::make_shared<cimxml::ObjectPath>(parse(key.text, nameSpace, repository, depth + 1));
}

// A key of an unknown class is what it looks like. With quotes it is a text.
void guessType(cimxml::KeyBinding& key, bool isQuoted) {
    if (isQuoted) return;
    if (parseInteger(key.text)) key.type = cimxml::KeyType::numeric;
    if (equalNames(key.text, "true") || equalNames(key.text, "false")) key.type = cimxml::KeyType::boolean;
}

cimxml::KeyBinding takeKey(std::string_view& text) {
    cimxml::KeyBinding key;
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0) refuse("a key without a value");
    key.name = std::string(text.substr(0, equals));
    text.remove_prefix(equals + 1);
    key.text = takeValue(text);
    if (text.empty()) return key;
    if (text.front() != ',') refuse("something stands behind the value of " + key.name);
    text.remove_prefix(1);
    return key;
}

cimxml::ObjectPath parse(std::string_view text, std::string_view defaultNamespace, const ClassRepository& repository,
                         int depth) {
    if (depth > deepestReference) refuse("references are nested too deeply");
    dropHost(text);
    cimxml::ObjectPath path;
    path.namesInstance = true;
    path.nameSpace = std::string(trimNamespace(takePrefix(text, ":")));
    if (path.nameSpace.empty()) path.nameSpace = std::string(defaultNamespace);
    path.className = takePrefix(text, ".");
    if (path.className.empty()) refuse("no class is named");
    const ClassDeclaration* declaration = repository.find(path.nameSpace, path.className);
    while (!text.empty()) {
        const bool isQuoted = text.find("=\"") == text.find('=');
        cimxml::KeyBinding key = takeKey(text);
        if (!declaration) guessType(key, isQuoted);
        const PropertyDeclaration* property = declaration ? declaration->property(key.name) : nullptr;
        if (property && property->isKey) giveType(key, property->type, path.nameSpace, repository, depth);
        path.keys.push_back(std::move(key));
    }
    if (path.keys.empty()) refuse("no key is given");
    return path;
}

} // namespace

cimxml::ObjectPath parsePath(std::string_view text, std::string_view defaultNamespace,
                             const ClassRepository& repository) {
    return parse(text, defaultNamespace, repository, 0);
}

} // namespace cimhost
