#include "cimhost/service/call.h"

#include "cimhost/model/host_name.h"
#include "cimhost/service/parameters.h"
#include "cimhost/service/request_values.h"

#include <algorithm>

namespace cimhost {

ObjectPathObject& instancePath(const Call& call, const cimxml::ObjectPath& path, std::string_view parameter) {
    if (!path.namesInstance) refuseParameter(parameter, "no instance name");
    call.operations.findClass(call.request.nameSpace, path.className);
    return makePath(call.scope, call.request.nameSpace, path);
}

std::string hostOf(const Call& call) { return call.caller.host.empty() ? hostName() : call.caller.host; }

bool isListed(const std::vector<std::string>& names, std::string_view name) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& listed) { return equalNames(listed, name); });
}

const std::vector<bool>* Selection::of(const ClassDeclaration* declaration) {
    if (!declaration || (!requested && !list)) return nullptr;
    if (declaration == last) return &selected;
    last = declaration;
    selected.clear();
    for (const PropertyDeclaration& property : declaration->properties()) {
        selected.push_back((!list || isListed(*list, property.name)) &&
                           (!requested || requested->property(property.name)));
    }
    return &selected;
}

} // namespace cimhost
