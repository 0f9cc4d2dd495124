#include "cimhost/cli/method_outcome.h"

#include "cimhost/cli/values_text.h"
#include "cimhost/model/cim_type.h"

namespace cimhost::cli {

namespace {

/// Of the methods of CIM, 0 and 4096 tell of success: the second of a job that was started.
bool tellsOfFailure(const Outcome& outcome) {
    if (!outcome.returnValue || !isIntegerType(outcome.returnValue->type)) return false;
    const std::string value = plainText(*outcome.returnValue);
    return value != "0" && value != "4096";
}

} // namespace

std::string withMeaning(const MethodDeclaration& method, const CMPIData& returned) {
    const std::string value = plainText(returned);
    const std::string meaning = meaningOf(method.qualifiers, value);
    return meaning.empty() ? value : value + " (" + meaning + ")";
}

std::string failureOf(const MethodDeclaration& method, const Outcome& outcome) {
    if (!tellsOfFailure(outcome)) return {};
    return method.name + " answered " + withMeaning(method, *outcome.returnValue) +
           "; the provider's log tells why, if meroltcna.properties says ErrorLog=1 and DebugLog=1";
}

} // namespace cimhost::cli
