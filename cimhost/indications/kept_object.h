// A filter, destination or subscription as it is kept: the instance and its meaning.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/http/client.h"
#include "cimhost/indications/query.h"
#include "cimhost/indications/state_file.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace cimhost {

enum class KeptKind { filter, destination, subscription };

struct KeptClass {
    std::string_view name;
    KeptKind kind;
};

/// The classes of the interop namespace whose instances clients make.
std::span<const KeptClass> keptClasses();

/// An instance with its meaning. Never changes.
struct KeptObject {
    KeptKind kind = KeptKind::filter;
    Arena arena;
    InstanceObject* instance = nullptr;
    const ObjectPathObject* path = nullptr;
    std::string key;
    Owner owner;

    std::shared_ptr<const Query> query; // of a filter
    std::string sourceNamespace;
    http::Url url;                      // of a destination
    const KeptObject* filter = nullptr; // of a subscription
    const KeptObject* destination = nullptr;

    /// Ends with the server.
    [[nodiscard]] bool isTransient() const;
    /// A subscription that is to have an effect.
    [[nodiscard]] bool isActive() const;
    [[nodiscard]] bool refersTo(const KeptObject& other) const { return filter == &other || destination == &other; }
};

/// Null where the instance has no value.
const CMPIData* givenValue(const InstanceObject& instance, std::string_view property);
/// Empty where it has none.
std::string givenText(const InstanceObject& instance, std::string_view property);
/// 0 where it has none. Of a uint16.
CMPIUint16 givenNumber(const InstanceObject& instance, std::string_view property);

} // namespace cimhost
