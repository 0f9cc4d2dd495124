// A filter, destination or subscription as the server keeps it: the instance, and what it means.
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

/// An instance, and what it means. It does not change once it is kept.
struct KeptObject {
    KeptKind kind = KeptKind::filter;
    Arena arena;
    InstanceObject* instance = nullptr;
    const ObjectPathObject* path = nullptr;
    std::string key;
    Owner owner;

    // Of a filter.
    std::shared_ptr<const Query> query;
    std::string sourceNamespace;
    // Of a destination.
    http::Url url;
    // Of a subscription: others that are kept.
    const KeptObject* filter = nullptr;
    const KeptObject* destination = nullptr;

    /// True if it is not kept over a restart of the server: a destination with PersistenceType 3, and its
    /// subscriptions.
    [[nodiscard]] bool isTransient() const;
    /// True for a subscription whose SubscriptionState is 2, enabled.
    [[nodiscard]] bool isActive() const;
    [[nodiscard]] bool refersTo(const KeptObject& other) const { return filter == &other || destination == &other; }
};

/// The value of a property; null if it has none.
const CMPIData* givenValue(const InstanceObject& instance, std::string_view property);
/// The value of a property as text; empty if it has none.
std::string givenText(const InstanceObject& instance, std::string_view property);
/// The value of a property of type uint16; 0 if it has none.
CMPIUint16 givenNumber(const InstanceObject& instance, std::string_view property);

} // namespace cimhost
