// The CMPI broker: what a provider is handed as its CIM server. One broker serves one provider library.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include "cimhost/broker/log.h"
#include "cimhost/broker/objects.h"
#include "cimhost/broker/request_scope.h"
#include "cimhost/model/class_repository.h"

namespace cimhost {

/// Properties that a client or a provider asks for; nothing asks for all.
using PropertyList = std::optional<std::vector<std::string>>;

/// The filters of the association operations; empty texts do not filter.
struct AssociationFilter {
    std::string associationClass; ///< "result class" of references
    std::string resultClass;
    std::string role;
    std::string resultRole;
};

/// Takes an indication that a provider delivers: the namespace it named (may be empty) and the indication, which lives
/// until the call returns. Called on the provider's thread. The code goes back to the provider: 0, or 1 if nobody
/// subscribed.
using IndicationSink = std::function<CMPIrc(std::string_view nameSpace, const InstanceObject& indication)>;

/// What a provider asks of the server. Results are to be made with the given maker, which lies in the caller's arena.
/// Every operation answers "not supported" unless it is overridden. Called on the provider's thread.
class UpCalls {
public:
    using Elements = std::variant<std::vector<CMPIData>, CimError>;

    virtual ~UpCalls() = default;
    virtual Elements enumerateInstanceNames(ObjectMaker maker, const ObjectPathObject& classPath);
    virtual Elements enumerateInstances(ObjectMaker maker, const ObjectPathObject& classPath, const PropertyList& list);
    /// One element of type CMPI_instance.
    virtual Elements getInstance(ObjectMaker maker, const ObjectPathObject& path, const PropertyList& list);
    virtual Elements associators(ObjectMaker maker, const ObjectPathObject& source, const AssociationFilter& filter,
                                 const PropertyList& list);
    virtual Elements associatorNames(ObjectMaker maker, const ObjectPathObject& source,
                                     const AssociationFilter& filter);
    virtual Elements references(ObjectMaker maker, const ObjectPathObject& source, const AssociationFilter& filter,
                                const PropertyList& list);
    virtual Elements referenceNames(ObjectMaker maker, const ObjectPathObject& source, const AssociationFilter& filter);
    /// At most one element: the return value.
    virtual Elements invokeMethod(ObjectMaker maker, const ObjectPathObject& path, std::string_view method,
                                  const ArgsObject& in, ArgsObject& out);
};

struct BrokerOptions {
    LogSink log;                   ///< empty: messages are dropped; must not call the broker's tables
    IndicationSink indicationSink; ///< empty: counts, and answers 1 as a server does to which nobody subscribed
    UpCalls* upCalls = nullptr;    ///< null: every up-call answers 7; must outlive the broker
};

class Broker {
public:
    /// The repository is loaded and outlives the broker; so do the broker's users.
    explicit Broker(const ClassRepository& repository, BrokerOptions options = {});
    ~Broker();
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;

    /// What a provider's factories are given; valid as long as the broker.
    [[nodiscard]] const CMPIBroker* table() const noexcept { return &tables; }
    /// Null if that is no broker of ours.
    static Broker* from(const CMPIBroker* broker) noexcept;

    [[nodiscard]] const ClassRepository& repository() const noexcept { return classes; }
    /// What answers the provider's calls to the server; never absent.
    [[nodiscard]] UpCalls& upCalls() const noexcept { return *calls; }
    void log(LogLevel level, std::string_view text) const;
    /// Hands an indication to the sink, also one that nobody takes: counts it. What the sink throws is logged: 1.
    CMPIrc deliver(std::string_view nameSpace, const InstanceObject& indication);

    // What a test or an operator may ask about the provider's manners.

    /// Calls that take a production server down because the thread was not attached: newObjectPath, newInstance,
    /// classPathIsA, newThread, joinThread.
    [[nodiscard]] std::uint64_t fatalUnattachedCalls() const noexcept { return fatalUnattached; }
    /// Other objects made without an attachment: production servers never free them. Here they go with their thread.
    [[nodiscard]] std::uint64_t leakingUnattachedCalls() const noexcept { return leakingUnattached; }
    /// Calls of deliverIndication, whether or not somebody took the indication.
    [[nodiscard]] std::uint64_t deliveredIndications() const noexcept { return delivered; }
    /// "Class.Property" of every property that was set although its class lacks it; each once, at most 1000.
    [[nodiscard]] std::vector<std::string> droppedProperties() const;
    /// Contexts that were prepared for a thread and neither attached nor detached since, and those still attached.
    [[nodiscard]] std::size_t preparedContexts() const;
    /// Threads made through newThread that still run.
    [[nodiscard]] std::size_t runningThreads() const;

    // For the tables.

    /// Remembers the property and warns of it, once each.
    void noteDroppedProperty(const ClassDeclaration& declaration, std::string_view property);
    /// Counts the call, and warns of the first.
    void noteFatalUnattachedCall(std::string_view function);
    /// The same for a call that names no broker, at every broker there is.
    static void noteUnownedCall(std::string_view function);
    void noteLeakingUnattachedCall() noexcept { ++leakingUnattached; }
    /// A context with the parent's entries, which the broker keeps until it is detached.
    CMPIContext* prepareContext(const ContextObject& parent);
    /// Binds the calling thread to a prepared context. 0; 60 for a context that is none; 1 if it is attached already.
    CMPIrc attachContext(const CMPIContext* context);
    /// Ends a context, with everything that its thread made. 0; 60 for a context that is none; 1 in another thread than
    /// the attached one.
    CMPIrc detachContext(const CMPIContext* context);

private:
    struct ThreadContext;

    CMPIBroker tables;
    const ClassRepository& classes;
    BrokerOptions settings;
    UpCalls notSupported;
    UpCalls* calls;
    std::atomic<std::uint64_t> fatalUnattached = 0;
    std::atomic<std::uint64_t> leakingUnattached = 0;
    std::atomic<std::uint64_t> delivered = 0;
    mutable std::mutex mutex;
    std::unordered_set<std::string> dropped;
    std::unordered_map<const CMPIContext*, std::unique_ptr<ThreadContext>> contexts;
};

} // namespace cimhost
