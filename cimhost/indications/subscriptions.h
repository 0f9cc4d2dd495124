// The filters, destinations and subscriptions of the interop namespace: judged when they are made, told to the
// provider, remembered over a restart.
#pragma once

#include "cimhost/cimxml/values.h"
#include "cimhost/indications/indication_calls.h"
#include "cimhost/indications/query.h"
#include "cimhost/indications/router.h"
#include "cimhost/indications/state_file.h"
#include "cimhost/service/registration.h"

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <set>
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
    enum class Kind { filter, destination, subscription };

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

private:
    struct Object;
    using Objects = std::vector<std::unique_ptr<Object>>;

    std::unique_ptr<Object> make(const InstanceObject& given);
    void requireRoom(const Object& made, const std::string& owner) const;
    void completeElement(InstanceObject& instance) const;
    void takeSourceNamespaces(InstanceObject& filter) const;
    void completeFilter(Object& object) const;
    void completeDestination(Object& object) const;
    void completeSubscription(Object& object) const;
    const Object& referenced(const InstanceObject& subscription, std::string_view role, Kind kind) const;
    const Object* find(std::string_view key) const;
    static InstanceObject& forClient(RequestScope& scope, const Object& object);
    [[nodiscard]] std::size_t countOf(Kind kind) const;
    const ClassDeclaration& servedClass(const Object& filter) const;
    template <typename Call>
    void tellProvider(RequestScope& scope, const Object& subscription, const std::string& owner, Call call) const;
    void activate(RequestScope& scope, const Object& subscription, const std::string& owner);
    void deactivate(RequestScope& scope, const Object& subscription, const std::string& owner);
    void insert(std::unique_ptr<Object> object);
    std::unique_ptr<Object> take(const Object& object);
    void refreshRoutes();
    void restoreObject(const cimxml::Instance& remembered, const Owner& owner);
    void save();
    void log(LogLevel level, const std::string& text) const;

    Broker& broker;
    const Registration& registered;
    IndicationCalls& calls;
    Router& router;
    const SubscriptionOptions settings;
    const LogSink logSink;

    std::mutex changing;       // one change at a time, with the provider's part and the file's
    mutable std::mutex access; // to the objects, for moments only; taken after `changing`
    Objects objects;
    std::set<const Object*> activated;              // what the provider has been told of
    std::map<std::string, std::size_t> activations; // by class path
    bool isEnabled = false;                         // the provider was told, once for all
    std::string lastState;                          // of the file, as it was read or written
};

} // namespace cimhost
