// The filters, destinations and subscriptions of the interop namespace: judged when they are made, told to the
// provider, remembered over a restart.
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
    std::string systemName;          ///< SystemName where a client gives none
    std::filesystem::path stateFile; ///< empty: nothing is remembered
    std::size_t mostOfEach = 1024;   ///< filters, destinations, subscriptions
    std::size_t mostOfUser = 128;    ///< of each, for one user; who makes some without a name is one user too
};

/// Operations throw CimFailure. Safe to use from several threads, each with a scope.
class Subscriptions {
public:
    /// Everything given outlives this. The classes lie in the interop namespace of the repository.
    Subscriptions(Broker& broker, const Registration& registration, IndicationCalls& provider, Router& router,
                  SubscriptionOptions options, LogSink log);
    ~Subscriptions();
    Subscriptions(const Subscriptions&) = delete;
    Subscriptions& operator=(const Subscriptions&) = delete;

    /// The classes that are kept here, as the repository declares them.
    [[nodiscard]] std::vector<const ClassDeclaration*> classes() const;

    /// Takes up what the state file holds and tells the provider. A filter that the provider does not take any more is
    /// reported and stays. Throws std::runtime_error naming file and place for a file that is damaged.
    void restore();

    /// The path of what was made. CIM_ERR_ALREADY_EXISTS, CIM_ERR_INVALID_PARAMETER, CIM_ERR_INVALID_QUERY,
    /// CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, CIM_ERR_NOT_SUPPORTED where no provider serves the class,
    /// CIM_ERR_ACCESS_DENIED or another status where the provider refuses, CIM_ERR_FAILED if it cannot be remembered.
    const ObjectPathObject& create(RequestScope& scope, const InstanceObject& given, const std::string& owner);

    /// CIM_ERR_NOT_FOUND; CIM_ERR_FAILED for what a subscription refers to.
    void remove(RequestScope& scope, const ObjectPathObject& path, const std::string& owner);

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

    std::mutex changing;       // one change at a time, with the provider's part and the file's
    mutable std::mutex access; // to the objects, for moments only; taken after `changing`
    Objects objects;
    std::string lastState; // of the file, as it was read or written
};

} // namespace cimhost
