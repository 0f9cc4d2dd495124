// The CMPI broker: the CIM server as a provider sees it. One broker serves one provider library.
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

/// The properties that a client or a provider asks for; nothing means all.
using PropertyList = std::optional<std::vector<std::string>>;

/// The filters of the association operations. An empty text does not filter.
struct AssociationFilter {
    std::string associationClass; ///< for references, their result class
    std::string resultClass;
    std::string role;
    std::string resultRole;
};

/// Takes an indication that a provider delivers. Called on the provider's thread. The namespace is the one that the
/// provider named, and may be empty. The indication lives until the call returns. The result goes back to the provider:
/// 0, or 1 if nobody has subscribed.
using IndicationSink = std::function<CMPIrc(std::string_view nameSpace, const InstanceObject& indication)>;

/// The calls that a provider makes to the server. Results are made with the given maker, in the caller's arena. Each
/// operation answers "not supported" unless it is overridden. Called on the provider's thread.
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
    LogSink log;                   ///< must not call the broker's tables; empty: messages are dropped
    IndicationSink indicationSink; ///< empty: indications are counted, and the provider gets 1
    UpCalls* upCalls = nullptr;    ///< outlives the broker; null: every call to the server gets 7, not supported
};

class Broker {
public:
    /// The repository has all its classes by now and outlives the broker. The broker outlives its users.
    explicit Broker(const ClassRepository& repository, BrokerOptions options = {});
    ~Broker();
    Broker(const Broker&) = delete;
    Broker& operator=(const Broker&) = delete;

    /// The struct that a provider's factories are given; valid as long as the broker.
    [[nodiscard]] const CMPIBroker* table() const noexcept { return &tables; }
    /// The broker behind such a struct or a copy of it; null for any other struct.
    static Broker* from(const CMPIBroker* broker) noexcept;

    [[nodiscard]] const ClassRepository& repository() const noexcept { return classes; }
    /// Answers the provider's calls to the server.
    [[nodiscard]] UpCalls& upCalls() const noexcept { return *calls; }
    void log(LogLevel level, std::string_view text) const;
    /// Counts an indication and hands it to the sink.
    /// @return the sink's result; 1 if there is no sink, or if the sink throws, which is logged
    CMPIrc deliver(std::string_view nameSpace, const InstanceObject& indication);

    // For tests and operators: what the provider does that other servers would not bear.

    /// Calls in a thread that is not attached and that would end a production server: newObjectPath, newInstance,
    /// classPathIsA, newThread, joinThread.
    [[nodiscard]] std::uint64_t fatalUnattachedCalls() const noexcept { return fatalUnattached; }
    /// Other objects that were made in a thread that is not attached. Production servers never free them; here they end
    /// with their thread.
    [[nodiscard]] std::uint64_t leakingUnattachedCalls() const noexcept { return leakingUnattached; }
    /// Calls of deliverIndication, whether or not somebody took the indication.
    [[nodiscard]] std::uint64_t deliveredIndications() const noexcept { return delivered; }
    /// "Class.Property" of every property that was set although its class lacks it; each once, at most 1000.
    [[nodiscard]] std::vector<std::string> droppedProperties() const;
    /// Contexts that were prepared for a thread and have not been detached: those that are attached, and those that
    /// never were.
    [[nodiscard]] std::size_t preparedContexts() const;
    /// Threads made through newThread that still run.
    [[nodiscard]] std::size_t runningThreads() const;

    // For the tables.

    /// Remembers the property, and warns of it once.
    void noteDroppedProperty(const ClassDeclaration& declaration, std::string_view property);
    /// Counts the call, and warns of the first one.
    void noteFatalUnattachedCall(std::string_view function);
    /// The same for a call that names no broker; every broker counts it.
    static void noteUnownedCall(std::string_view function);
    void noteLeakingUnattachedCall() noexcept { ++leakingUnattached; }
    /// A context with the parent's entries. The broker keeps it until it is detached.
    CMPIContext* prepareContext(const ContextObject& parent);
    /// Binds the calling thread to a prepared context.
    /// @return 0; 60 if this is no prepared context; 1 if it is attached already
    CMPIrc attachContext(const CMPIContext* context);
    /// Ends a prepared context, with everything that its thread has made.
    /// @return 0; 60 if this is no prepared context; 1 if another thread is attached to it
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
