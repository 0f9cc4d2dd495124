#include "cimhost/cli/commands.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/own_location.h"
#include "cimhost/cli/values_text.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/service/method_requests.h"
#include "cimhost/service/parameters.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <deque>
#include <fstream>
#include <stdexcept>

namespace cimhost::cli {

namespace {

/// One NAME=VALUE.
struct Argument {
    std::string name;
    cimxml::Value value;
};

std::vector<std::string> partsOf(std::string_view text) {
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t comma = std::min(text.find(',', begin), text.size());
        parts.emplace_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    return parts;
}

/// The bytes of a file as numbers.
void appendBytes(const std::string& fileName, cimxml::TextList& texts) {
    std::ifstream file(fileName, std::ios::binary);
    if (!file) throw std::runtime_error(fileName + ": cannot be read");
    for (char byte = 0; file.get(byte);)
        texts.append(std::to_string(static_cast<unsigned char>(byte)));
    if (!file.eof()) throw std::runtime_error(fileName + ": cannot be read");
}

cimxml::Value valueOf(const ParameterDeclaration& declared, std::string_view text) {
    cimxml::Value value;
    value.isNull = text.empty() && declared.type != CMPI_string;
    value.isArray = declared.isArray();
    if (declared.isArray() && text.substr(0, 1) == "@") {
        appendBytes(std::string(text.substr(1)), value.texts);
    } else if (declared.isArray()) {
        for (const std::string& part : partsOf(text))
            value.texts.append(part);
    } else {
        value.texts.append(text);
    }
    return value;
}

Argument parseArgument(const MethodDeclaration& method, const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw std::runtime_error(text + ": an argument is written NAME=VALUE");
    const std::string name = text.substr(0, equals);
    const ParameterDeclaration* declared = method.parameter(name);
    if (!declared) refuseParameter(name, "method " + method.name + " does not take it");
    return {name, valueOf(*declared, std::string_view(text).substr(equals + 1))};
}

/// A path, or the name of a class: its methods can be called without an instance.
cimxml::ObjectPath parseObject(const InvokeOptions& options, const ClassRepository& repository) {
    if (options.object.find('=') != std::string::npos) return parsePath(options.object, options.nameSpace, repository);
    cimxml::ObjectPath path;
    path.nameSpace = options.nameSpace;
    path.className = options.object;
    return path;
}

/// Of the methods of CIM, 0 and 4096 tell of success: the second of a job that was started.
bool tellsOfFailure(const Outcome& outcome) {
    if (!outcome.returnValue || !isIntegerType(outcome.returnValue->type)) return false;
    const std::string value = plainText(*outcome.returnValue);
    return value != "0" && value != "4096";
}

std::string withMeaning(const MethodDeclaration& method, const CMPIData& returned) {
    const std::string value = plainText(returned);
    const std::string meaning = meaningOf(method.qualifiers, value);
    return meaning.empty() ? value : value + " (" + meaning + ")";
}

std::string listOf(const MethodDeclaration& method, const Outcome& outcome) {
    std::string text;
    if (outcome.returnValue) text += "ReturnValue: " + withMeaning(method, *outcome.returnValue) + '\n';
    for (const NamedData& given : outcome.outArguments->arguments())
        text += std::string(given.name) + ": " + plainText(given.data) + '\n';
    return text;
}

std::string jsonOf(const Outcome& outcome) {
    nlohmann::ordered_json answer = nlohmann::ordered_json::object();
    const auto shown = [](const CMPIData& data) {
        const std::string text = plainText(data);
        // Numbers and booleans are spelt alike in both worlds.
        const bool isPlain = !isArrayType(data.type) && (isIntegerType(data.type) || data.type == CMPI_boolean);
        return isPlain && !text.empty() ? nlohmann::ordered_json::parse(text) : nlohmann::ordered_json(text);
    };
    if (outcome.returnValue) answer["ReturnValue"] = shown(*outcome.returnValue);
    for (const NamedData& given : outcome.outArguments->arguments())
        answer[std::string(given.name)] = shown(given.data);
    return answer.dump(2) + '\n';
}

/// What the command prints, and what is wrong with it.
struct Answer {
    std::string text;
    std::string failure; ///< empty: nothing
};

std::string failureOf(const MethodDeclaration& method, const Outcome& outcome) {
    if (!tellsOfFailure(outcome)) return {};
    return method.name + " answered " + withMeaning(method, *outcome.returnValue) +
           "; the provider's log tells why, if meroltcna.properties says ErrorLog=1 and DebugLog=1";
}

Answer answer(Host& host, const InvokeOptions& options) {
    RequestScope scope(host.broker());
    Operations& operations = host.operations();
    const cimxml::ObjectPath target = parseObject(options, operations.repository());
    const MethodDeclaration& method =
        Operations::findMethod(operations.findClass(target.nameSpace, target.className), options.method);
    std::deque<Argument> arguments;
    std::vector<NamedValue> values;
    for (const std::string& text : options.arguments) {
        const Argument& added = arguments.emplace_back(parseArgument(method, text));
        values.push_back({added.name, &added.value});
    }
    const Outcome outcome =
        operations.invokeMethod(scope, {}, makePath(scope, target.nameSpace, target), method,
                                makeArguments(scope, target.nameSpace, method, values, operations.arrayArguments));
    return {options.form == Form::json ? jsonOf(outcome) : listOf(method, outcome), failureOf(method, outcome)};
}

} // namespace

std::string invoke(const HostOptions& hostOptions, const InvokeOptions& options) {
    useOwnInstallLocation();
    const CleanOutput output(hostOptions.broker.log);
    Host host(hostOptions);
    const Answer given = answer(host, options);
    output.write(given.text);
    host.shutdown();
    return given.failure;
}

} // namespace cimhost::cli
