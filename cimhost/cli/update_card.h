// A card as an update sees it: its identity, the installed software, and the service that writes its flash. All of it
// is found by the classes and associations of the CIM Schema (DSP1023, Software Inventory; DSP1025, Software Update).
#pragma once

#include "cimhost/cli/object_source.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cli {

/// A controller of the card, as the target of the installation service that is associated with it.
struct InstallationSide {
    std::string controller; ///< path
    std::string service;    ///< path
    const ClassDeclaration* serviceClass = nullptr;

    /// Null where the service does not declare it.
    [[nodiscard]] const MethodDeclaration* byUri() const { return serviceClass->method("InstallFromURI"); }
    [[nodiscard]] const MethodDeclaration* byBytes() const { return serviceClass->method("InstallFromByteStream"); }
};

struct UpdateCard {
    std::string serial; ///< as it was asked for
    std::string model;  ///< empty: no package tells it
    std::vector<InstallationSide> sides;
};

/// What a software identity says.
struct InstalledSoftware {
    std::string id; ///< InstanceID
    std::string name;
    std::string version;

    bool operator==(const InstalledSoftware&) const = default;
};

/// In the source's order; what each function of a card says alike, once.
using Versions = std::vector<InstalledSoftware>;

/// A card by its serial number, which its package tells or with which its controllers' DeviceID begins. Nothing if the
/// source has none of it. Throws as the source does.
std::optional<UpdateCard> findCard(ObjectSource& source, std::string_view nameSpace, const std::string& serial);

/// What is installed now.
Versions installedVersions(ObjectSource& source, std::string_view nameSpace, const UpdateCard& card);

} // namespace cimhost::cli
