#include "cimhost/cli/update_card.h"

#include "cimhost/cli/values_text.h"
#include "cimhost/model/names.h"
#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <algorithm>

namespace cimhost::cli {

namespace {

std::string textOf(const InstanceObject& instance, std::string_view property) {
    const CMPIData* data = instance.value(property);
    return data ? plainText(*data) : std::string();
}

std::string pathOf(const InstanceObject& instance) {
    Arena arena;
    std::string text;
    instance.path(arena)->appendText(text);
    return text;
}

bool isA(const InstanceObject& instance, std::string_view className) {
    return instance.declaration() && instance.declaration()->isA(className);
}

// "SERIAL" itself, or "SERIAL_NIC" for one of several controllers of the card.
bool isNamedAfter(const InstanceObject& controller, std::string_view serial) {
    const std::string id = textOf(controller, "DeviceID");
    if (!equalNames(std::string_view(id).substr(0, serial.size()), serial)) return false;
    return id.size() == serial.size() || id[serial.size()] == '_';
}

using Instances = ObjectSource::Instances;

Instances associated(ObjectSource& source, RequestScope& scope, const InstanceObject& controller,
                     std::string_view className) {
    Instances found = source.associators(scope, *controller.path(scope.arena()), {});
    std::erase_if(found, [className](const InstanceObject* object) { return !isA(*object, className); });
    return found;
}

bool hasPackageOf(ObjectSource& source, RequestScope& scope, const InstanceObject& controller,
                  std::string_view serial) {
    const Instances packages = associated(source, scope, controller, "CIM_PhysicalPackage");
    return std::any_of(packages.begin(), packages.end(), [serial](const InstanceObject* package) {
        return equalNames(textOf(*package, "SerialNumber"), serial);
    });
}

// By their own names where these tell; their packages cost a question for each.
Instances controllersOf(ObjectSource& source, RequestScope& scope, std::string_view nameSpace,
                        std::string_view serial) {
    const Instances all = source.enumerateInstances(scope, nameSpace, "CIM_PortController");
    Instances found;
    std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                 [serial](const InstanceObject* controller) { return isNamedAfter(*controller, serial); });
    if (!found.empty()) return found;
    std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                 [&](const InstanceObject* controller) { return hasPackageOf(source, scope, *controller, serial); });
    return found;
}

void addVersions(const Instances& identities, Versions& versions) {
    for (const InstanceObject* identity : identities) {
        InstalledSoftware software{textOf(*identity, "InstanceID"), textOf(*identity, "Name"),
                                   textOf(*identity, "VersionString")};
        const auto isSame = [&software](const InstalledSoftware& known) {
            return known.name == software.name && known.version == software.version;
        };
        if (std::none_of(versions.begin(), versions.end(), isSame)) versions.push_back(std::move(software));
    }
}

} // namespace

std::optional<UpdateCard> findCard(ObjectSource& source, std::string_view nameSpace, const std::string& serial) {
    RequestScope scope(source.broker());
    UpdateCard card{serial, {}, {}};
    const Instances controllers = controllersOf(source, scope, nameSpace, serial);
    for (const InstanceObject* controller : controllers) {
        for (const InstanceObject* package : associated(source, scope, *controller, "CIM_PhysicalPackage")) {
            if (card.model.empty()) card.model = textOf(*package, "Model");
        }
        for (const InstanceObject* service :
             associated(source, scope, *controller, "CIM_SoftwareInstallationService")) {
            card.sides.push_back({pathOf(*controller), pathOf(*service), service->declaration()});
        }
    }
    if (controllers.empty()) return std::nullopt;
    return card;
}

Versions installedVersions(ObjectSource& source, std::string_view nameSpace, const UpdateCard& card) {
    Versions versions;
    for (const InstallationSide& side : card.sides) {
        RequestScope scope(source.broker());
        const cimxml::ObjectPath path = parsePath(side.controller, nameSpace, source.repository());
        Instances identities = source.associators(scope, makePath(scope, path.nameSpace, path), {});
        std::erase_if(identities, [](const InstanceObject* object) { return !isA(*object, "CIM_SoftwareIdentity"); });
        addVersions(identities, versions);
    }
    return versions;
}

} // namespace cimhost::cli
