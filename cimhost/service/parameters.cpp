#include "cimhost/service/parameters.h"

#include "cimhost/model/cim_type.h"
#include "cimhost/model/names.h"
#include "cimhost/model/text_lines.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace cimhost {

namespace {

using cimxml::Argument;
using cimxml::Request;

constexpr std::size_t longestPropertyList = 1024; // each name is compared with each property of each class

bool isListed(std::string_view names, std::string_view name) {
    while (!names.empty()) {
        const std::string_view word = names.substr(0, names.find(' '));
        if (equalNames(word, name)) return true;
        names.remove_prefix(std::min(names.size(), word.size() + 1));
    }
    return false;
}

} // namespace

void refuseParameter(std::string_view name, std::string_view reason) {
    throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER,
                     "parameter " + std::string(name.substr(0, 64)) + ": " + std::string(reason));
}

const Argument* givenParameter(const Request& request, std::string_view name) {
    const Argument* argument = request.parameter(name);
    return argument && !std::holds_alternative<std::monostate>(*argument) ? argument : nullptr;
}

bool booleanParameter(const Request& request, std::string_view name, bool standard) {
    const Argument* argument = givenParameter(request, name);
    if (!argument) return standard;
    const auto* value = std::get_if<cimxml::Value>(argument);
    if (!value || value->isArray || value->texts.size() != 1) refuseParameter(name, "no boolean");
    if (equalNames(value->texts[0], "true")) return true;
    if (!equalNames(value->texts[0], "false")) refuseParameter(name, "neither TRUE nor FALSE");
    return false;
}

std::optional<std::string> optionalClassName(const Request& request, std::string_view name) {
    const Argument* argument = givenParameter(request, name);
    if (!argument) return std::nullopt;
    const auto* path = std::get_if<cimxml::ObjectPath>(argument);
    if (!path || path->namesInstance) refuseParameter(name, "no class name");
    return path->className;
}

std::string requiredClassName(const Request& request, std::string_view name) {
    std::optional<std::string> className = optionalClassName(request, name);
    if (!className) refuseParameter(name, "missing");
    return std::move(*className);
}

std::optional<std::string> textParameter(const Request& request, std::string_view name) {
    const Argument* argument = givenParameter(request, name);
    if (!argument) return std::nullopt;
    const auto* value = std::get_if<cimxml::Value>(argument);
    if (!value || value->isArray || value->texts.size() != 1) refuseParameter(name, "no text");
    return std::string(value->texts[0]);
}

std::optional<std::uint32_t> numberParameter(const Request& request, std::string_view name) {
    const std::optional<std::string> text = textParameter(request, name);
    if (!text) return std::nullopt;
    const std::optional<IntegerValue> number = parseInteger(trim(*text));
    if (!number || !fitsInteger(CMPI_uint32, *number)) refuseParameter(name, "no uint32");
    return static_cast<std::uint32_t>(number->magnitude);
}

std::string roleParameter(const Request& request, std::string_view name) {
    std::optional<std::string> role = textParameter(request, name);
    if (!role) return {};
    if (!isLegalName(*role)) refuseParameter(name, "no property can have this name");
    return std::move(*role);
}

PropertyList propertyList(const Request& request) {
    const Argument* argument = givenParameter(request, "PropertyList");
    if (!argument) return std::nullopt;
    const auto* value = std::get_if<cimxml::Value>(argument);
    if (!value || !value->isArray || value->type == CMPI_ref) refuseParameter("PropertyList", "no list of names");
    if (value->texts.size() > longestPropertyList) refuseParameter("PropertyList", "too many names");
    std::vector<std::string> names;
    names.reserve(value->texts.size());
    for (std::size_t index = 0; index < value->texts.size(); ++index) {
        if (value->texts.isNull(index)) refuseParameter("PropertyList", "a name is null");
        names.emplace_back(value->texts[index]);
    }
    return names;
}

CMPIFlags readFlags(const Request& request, std::initializer_list<FlagParameter> parameters) {
    CMPIFlags flags = 0;
    for (const FlagParameter& row : parameters) {
        if (booleanParameter(request, row.name, row.standard)) flags |= row.flag;
    }
    return flags;
}

void refuseUnknownParameters(const Request& request, std::string_view names) {
    for (const cimxml::Parameter& parameter : request.parameters) {
        if (!isListed(names, parameter.name)) refuseParameter(parameter.name, "unknown to " + request.methodName);
    }
}

} // namespace cimhost
