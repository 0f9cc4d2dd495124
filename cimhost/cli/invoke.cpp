#include "cimhost/cli/commands.h"
#include "cimhost/cli/local_round.h"
#include "cimhost/cli/method_outcome.h"
#include "cimhost/cli/remote_source.h"
#include "cimhost/cli/server_round.h"
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
#include <utility>

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

/// What is to be called, read once for all servers: an argument may be a file.
struct PreparedCall {
    cimxml::ObjectPath target;
    const MethodDeclaration& method;
    std::deque<Argument> arguments;
    Form form;
};

/// declaration is that of the target's class, null where it is not declared here.
PreparedCall prepare(const InvokeOptions& options, cimxml::ObjectPath target, const ClassDeclaration* declaration) {
    if (!declaration) {
        throw CimFailure(CMPI_RC_ERR_INVALID_CLASS, "class " + target.className.substr(0, 64) +
                                                        " is not declared here, so its arguments have no types; --mof "
                                                        "names the folder of class definitions");
    }
    PreparedCall call{std::move(target), Operations::findMethod(*declaration, options.method), {}, options.form};
    for (const std::string& text : options.arguments)
        call.arguments.push_back(parseArgument(call.method, text));
    return call;
}

ServerAnswer answer(ObjectSource& source, const PreparedCall& call) {
    RequestScope scope(source.broker());
    const std::string& nameSpace = call.target.nameSpace;
    std::vector<NamedValue> values;
    for (const Argument& argument : call.arguments)
        values.push_back({argument.name, &argument.value});
    const Outcome outcome =
        source.invokeMethod(scope, makePath(scope, nameSpace, call.target), call.method,
                            makeArguments(scope, nameSpace, call.method, values, source.arrayArguments()));
    return {call.form == Form::json ? jsonOf(outcome) : listOf(call.method, outcome), failureOf(call.method, outcome)};
}

} // namespace

std::string invoke(const HostOptions& hostOptions, const InvokeOptions& options) {
    return askHere(hostOptions, [&](ObjectSource& source) {
        cimxml::ObjectPath target = parseObject(options, source.repository());
        const ClassDeclaration* declaration = source.findClass(target.nameSpace, target.className);
        return answer(source, prepare(options, std::move(target), declaration));
    });
}

ExitStatus invoke(const HostOptions& hostOptions, const InvokeOptions& options, const ServerOptions& servers,
                  const MessageOptions& messages) {
    DeclaredClasses declared(hostOptions, options.nameSpace);
    cimxml::ObjectPath target = parseObject(options, declared.repository);
    const ClassDeclaration* declaration = declared.repository.find(target.nameSpace, target.className);
    const PreparedCall call = prepare(options, std::move(target), declaration);
    return askServers(servers, messages, declared, [&](ObjectSource& source) { return answer(source, call); });
}

} // namespace cimhost::cli
