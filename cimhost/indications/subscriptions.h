// The filters, destinations and subscriptions of the interop namespace: checks them when they are made, tells the
// provider of them, and keeps them over a restart.
#pragma once

#include "cimhost/cimxml/values.h"
#include "cimhost/indications/filter_activation.h"
#include "cimhost/indications/kept_object.h"
#include "cimhost/indications/kept_object_maker.h"
#include "cimhost/indications/router.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost {

struct SubscriptionOptions {
    std::string interopNamespace = Namespaces().interop;
    std::string systemName;          ///< the SystemName if a client gives none
    std::filesystem::path stateFile; ///< empty: nothing is kept over a restart
    std::size_t mostOfEach = 1024;   ///< the most filters, the most destinations, the most subscriptions
    std::size_t mostOfUser = 128;    ///< the same for one user; all clients without a name are one user
};

/// Operations throw CimFailure. Several threads may call, each with a scope of its own.
class Subscriptions {
public:
    /// Broker, registration, provider and router outlive this. The classes are those of the interop namespace.
    Subscriptions(Broker& broker, const Registration& registration, IndicationCalls& provider, Router& router,
                  SubscriptionOptions options, LogSink log);
    ~Subscriptions();
    Subscriptions(const Subscriptions&) = delete;
    Subscriptions& operator=(const Subscriptions&) = delete;

    /// The classes that are kept here, as the repository declares them.
    [[nodiscard]] std::vector<const ClassDeclaration*> classes() const;

    /// Makes again what the state file holds, and tells the provider. If the provider refuses a filter now, that is
    /// logged, and the subscription stays. Throws std::runtime_error, which names the file and the place, for a file
    /// that cannot be read or is damaged.
    void restore();

    /// Makes a filter, destination or subscription. CIM_ERR_ALREADY_EXISTS, CIM_ERR_INVALID_PARAMETER,
    /// CIM_ERR_INVALID_QUERY and CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED for what the client gives; CIM_ERR_NOT_SUPPORTED
    /// if no provider serves the class of the query; CIM_ERR_ACCESS_DENIED or another status if the provider refuses;
    /// CIM_ERR_FAILED if there are too many of them already, or if the state file cannot be written. After an error
    /// everything is as before.
    /// @param owner the user's name, or empty
    /// @return its path, in the scope
    const ObjectPathObject& create(RequestScope& scope, const InstanceObject& given, const std::string& owner);

    /// Removes one of them. CIM_ERR_NOT_FOUND; CIM_ERR_FAILED if a subscription refers to it, or if the state file
    /// cannot be written.
    /// @param owner the user in whose name the provider is told
    void remove(RequestScope& scope, const ObjectPathObject& path, const std::string& owner);

    // Both return copies in the scope.

    /// CIM_ERR_NOT_FOUND.
    [[nodiscard]] const InstanceObject& get(RequestScope& scope, const ObjectPathObject& path) const;
    [[nodiscard]] std::vector<const InstanceObject*> list(RequestScope& scope, std::string_view className) const;

    /// How many subscriptions there are at this moment.
    [[nodiscard]] std::size_t size() const;

private:
    using Objects = std::vector<std::unique_ptr<KeptObject>>;

    [[nodiscard]] std::unique_ptr<KeptObject> make(const InstanceObject& given) const;
    void requireRoom(const KeptObject& made, const std::string& owner) const;
    [[nodiscard]] const KeptObject* find(std::string_view key) const;
    static InstanceObject& forClient(RequestScope& scope, const KeptObject& object);
    [[nodiscard]] std::size_t countOf(KeptKind kind) const;
    void insert(std::unique_ptr<KeptObject> object);
    std::unique_ptr<KeptObject> take(const KeptObject& object);
    void refreshRoutes();
    void restoreObject(const cimxml::Instance& remembered, const Owner& owner);
    void save();
    void log(LogLevel level, const std::string& text) const;

    Broker& broker;
    Router& router;
    const SubscriptionOptions settings;
    const LogSink logSink;
    const KeptObjectMaker maker;
    FilterActivation filters;

    std::mutex changing;       // held over a whole change, with the calls of the provider and the writing of the file
    mutable std::mutex access; // to the objects; held for moments only, and taken after `changing`
    Objects objects;
    std::string lastState; // the file's text, as it was last read or written
};

} // namespace cimhost
