#include "cimhost/service/method_requests.h"

#include "cimhost/cimxml/argument.h"
#include "cimhost/model/cim_type.h"
#include "cimhost/service/parameters.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

namespace cimhost {

namespace {

cimxml::Value asArray(const cimxml::Value& single) {
    cimxml::Value list = single;
    list.isArray = true;
    return list;
}

/// A reference written as the text of its path.
cimxml::Value asReference(RequestScope& scope, std::string_view nameSpace, const ParameterDeclaration& declared,
                          const cimxml::Value& text) {
    cimxml::Value reference;
    reference.isNull = false;
    reference.type = CMPI_ref;
    reference.isArray = text.isArray;
    try {
        requireEntries(CMPI_ref, text);
        for (std::size_t index = 0; index < text.texts.size(); ++index) {
            reference.references.push_back(parsePath(text.texts[index], nameSpace, scope.broker().repository()));
        }
    } catch (const std::runtime_error& error) {
        refuseParameter(declared.name, error.what());
    }
    return reference;
}

/// The value of an argument. The error for a text that does not fit names the argument.
CMPIData makeTyped(RequestScope& scope, std::string_view nameSpace, const ParameterDeclaration& declared,
                   const cimxml::Value& given) {
    try {
        return makeValue(scope, nameSpace, declared.type, given);
    } catch (const CimFailure& failure) {
        refuseParameter(declared.name, failure.what());
    }
}

CMPIData makeArgument(RequestScope& scope, std::string_view nameSpace, const ParameterDeclaration& declared,
                      const cimxml::Value& given) {
    if (given.isNull) return ObjectMaker::null(declared.type);
    if (given.isArray && !declared.isArray()) refuseParameter(declared.name, "no array");
    if (declared.isArray() && !given.isArray) return makeArgument(scope, nameSpace, declared, asArray(given));
    if (declared.isReference() && given.type != CMPI_ref)
        return makeArgument(scope, nameSpace, declared, asReference(scope, nameSpace, declared, given));
    if (given.type == CMPI_ref && !declared.isReference()) refuseParameter(declared.name, "no reference");
    return makeTyped(scope, nameSpace, declared, given);
}

std::vector<NamedValue> valuesOf(const cimxml::Request& request) {
    std::vector<NamedValue> values;
    for (const cimxml::Parameter& parameter : request.parameters) {
        const auto* value = std::get_if<cimxml::Value>(&parameter.value);
        if (!value) refuseParameter(parameter.name, "no value");
        values.push_back({parameter.name, value});
    }
    return values;
}

} // namespace

const ArgsObject& makeArguments(RequestScope& scope, std::string_view nameSpace, const MethodDeclaration& method,
                                const std::vector<NamedValue>& values, ArrayArguments form) {
    ArgsObject& arguments = *scope.make().arguments();
    for (const NamedValue& value : values) {
        const ParameterDeclaration* declared = method.parameter(value.name);
        if (!declared || !declared->isIn) refuseParameter(value.name, "method " + method.name + " does not take it");
        if (arguments.argument(declared->name)) refuseParameter(declared->name, "given twice");
        CMPIData data = makeArgument(scope, nameSpace, *declared, *value.value);
        if (form == ArrayArguments::bare && declared->isArray()) data.type = CMPI_ARRAY;
        arguments.list.setNamed(scope.arena(), declared->name, data);
    }
    return arguments;
}

void invokeMethod(const Call& call) {
    const cimxml::ObjectPath& target = call.request.target;
    const MethodDeclaration& method = call.operations.findMethod(
        call.operations.findClass(call.request.nameSpace, target.className), call.request.methodName);
    const ObjectPathObject& path = makePath(call.scope, call.request.nameSpace, target);
    const ArgsObject& arguments = makeArguments(call.scope, call.request.nameSpace, method, valuesOf(call.request),
                                                call.operations.arrayArguments);
    const Outcome outcome = call.operations.invokeMethod(call.scope, call.caller, path, method, arguments);
    if (outcome.returnValue) {
        call.change.result = "ReturnValue ";
        appendValueText(call.change.result, *outcome.returnValue);
    }
    if (outcome.returnValue) cimxml::appendArgument(call.encoder, "RETURNVALUE", {}, *outcome.returnValue);
    for (const NamedData& given : outcome.outArguments->arguments())
        cimxml::appendArgument(call.encoder, "PARAMVALUE", given.name, given.data);
}

} // namespace cimhost
