#include "cimhost/broker/broker.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>

#include "cimhost/broker/table_support.h"
#include "cimhost/broker/thread_registry.h"

namespace cimhost {
namespace {

constexpr std::size_t mostDroppedProperties = 1000;

CimError notSupportedError() { return {CMPI_RC_ERR_NOT_SUPPORTED, ""}; }

// All brokers, each of which counts the calls that name no broker. A process has one broker for each provider.
struct LiveBrokers {
    std::mutex mutex;
    std::vector<Broker*> all;
};

// Never destroyed: a provider's thread may outlive everything else.
LiveBrokers& liveBrokers() {
    static auto& only = *std::make_unique<LiveBrokers>().release();
    return only;
}

} // namespace

// What a provider has prepared for a thread of its own. The context and all objects of the thread lie in one arena.
struct Broker::ThreadContext {
    Arena memory;
    ContextObject* context = nullptr;
    ThreadBinding binding;
    bool isAttached = false;
    std::thread::id thread;
};

UpCalls::Elements UpCalls::enumerateInstanceNames(ObjectMaker, const ObjectPathObject&) { return notSupportedError(); }
UpCalls::Elements UpCalls::enumerateInstances(ObjectMaker, const ObjectPathObject&, const PropertyList&) {
    return notSupportedError();
}
UpCalls::Elements UpCalls::getInstance(ObjectMaker, const ObjectPathObject&, const PropertyList&) {
    return notSupportedError();
}
UpCalls::Elements UpCalls::associators(ObjectMaker, const ObjectPathObject&, const AssociationFilter&,
                                       const PropertyList&) {
    return notSupportedError();
}
UpCalls::Elements UpCalls::associatorNames(ObjectMaker, const ObjectPathObject&, const AssociationFilter&) {
    return notSupportedError();
}
UpCalls::Elements UpCalls::references(ObjectMaker, const ObjectPathObject&, const AssociationFilter&,
                                      const PropertyList&) {
    return notSupportedError();
}
UpCalls::Elements UpCalls::referenceNames(ObjectMaker, const ObjectPathObject&, const AssociationFilter&) {
    return notSupportedError();
}
UpCalls::Elements UpCalls::invokeMethod(ObjectMaker, const ObjectPathObject&, std::string_view, const ArgsObject&,
                                        ArgsObject&) {
    return notSupportedError();
}

Broker::Broker(const ClassRepository& repository, BrokerOptions options)
    : tables{this, tablePointer(tables::broker), tablePointer(tables::encapsulation), tablePointer(tables::extension),
             tablePointer(tables::memory)},
      classes(repository), settings(std::move(options)), calls(settings.upCalls ? settings.upCalls : &notSupported) {
    LiveBrokers& live = liveBrokers();
    const std::lock_guard lock(live.mutex);
    live.all.push_back(this);
}

Broker::~Broker() {
    LiveBrokers& live = liveBrokers();
    const std::lock_guard lock(live.mutex);
    std::erase(live.all, this);
    // A thread that never detached must not go on making objects in memory that is gone. Only the binding of the
    // calling thread can be undone here. Other threads have ended, since the broker outlives its users.
    for (const auto& [context, prepared] : contexts) {
        if (prepared->isAttached && prepared->thread == std::this_thread::get_id()) unbindThread(prepared->binding);
    }
}

Broker* Broker::from(const CMPIBroker* broker) noexcept {
    // Wrapper libraries keep a copy of the struct, so the address tells nothing.
    return broker && broker->hdl && broker->bft == &tables::broker ? static_cast<Broker*>(broker->hdl) : nullptr;
}

void Broker::log(LogLevel level, std::string_view text) const {
    if (settings.log) settings.log(level, text);
}

CMPIrc Broker::deliver(std::string_view nameSpace, const InstanceObject& indication) {
    ++delivered;
    if (!settings.indicationSink) return CMPI_RC_ERR_FAILED;
    try {
        return settings.indicationSink(nameSpace, indication);
    } catch (const std::exception& failure) {
        log(LogLevel::error, std::string("an indication was not delivered: ") + failure.what());
    } catch (...) {
        log(LogLevel::error, "an indication was not delivered");
    }
    return CMPI_RC_ERR_FAILED;
}

std::vector<std::string> Broker::droppedProperties() const {
    const std::lock_guard lock(mutex);
    std::vector<std::string> names(dropped.begin(), dropped.end());
    std::sort(names.begin(), names.end());
    return names;
}

void Broker::noteDroppedProperty(const ClassDeclaration& declaration, std::string_view property) {
    std::string name = declaration.name() + ".";
    name += property;
    {
        const std::lock_guard lock(mutex);
        if (dropped.size() >= mostDroppedProperties || !dropped.insert(name).second) return;
    }
    log(LogLevel::warning, "property dropped: the class does not declare " + name);
}

void Broker::noteFatalUnattachedCall(std::string_view function) {
    if (fatalUnattached++ != 0) return;
    log(LogLevel::warning, std::string(function) + " was called in a thread that is not attached; other servers may " +
                               "not survive that");
}

void Broker::noteUnownedCall(std::string_view function) {
    LiveBrokers& live = liveBrokers();
    const std::lock_guard lock(live.mutex);
    for (Broker* broker : live.all) {
        broker->noteFatalUnattachedCall(function);
    }
}

std::size_t Broker::preparedContexts() const {
    const std::lock_guard lock(mutex);
    return contexts.size();
}

std::size_t Broker::runningThreads() const { return countRunningThreads(*this); }

CMPIContext* Broker::prepareContext(const ContextObject& parent) {
    auto prepared = std::make_unique<ThreadContext>();
    prepared->context = ContextObject::make(prepared->memory);
    for (const NamedData& entry : parent.entries()) {
        const bool isNull = (entry.data.state & CMPI_nullValue) != 0;
        prepared->context->add(entry.name, isNull ? nullptr : &entry.data.value, entry.data.type);
    }
    CMPIContext* const context = prepared->context;
    const std::lock_guard lock(mutex);
    contexts.emplace(context, std::move(prepared));
    return context;
}

CMPIrc Broker::attachContext(const CMPIContext* context) {
    std::unique_lock lock(mutex);
    const auto place = contexts.find(context);
    if (place == contexts.end()) return CMPI_RC_ERR_INVALID_HANDLE;
    ThreadContext& prepared = *place->second;
    if (prepared.isAttached) {
        lock.unlock();
        log(LogLevel::warning, "attachThread with a context that is attached already");
        return CMPI_RC_ERR_FAILED;
    }
    prepared.isAttached = true;
    prepared.thread = std::this_thread::get_id();
    prepared.binding = {&prepared.memory, this, nullptr};
    bindThread(prepared.binding);
    return CMPI_RC_OK;
}

CMPIrc Broker::detachContext(const CMPIContext* context) {
    std::unique_lock lock(mutex);
    const auto place = contexts.find(context);
    if (place == contexts.end()) return CMPI_RC_ERR_INVALID_HANDLE;
    if (place->second->isAttached && place->second->thread != std::this_thread::get_id()) {
        lock.unlock();
        log(LogLevel::warning, "detachThread in another thread than the one that was attached");
        return CMPI_RC_ERR_FAILED;
    }
    // The thread may have made much. It is freed without the lock, so that other threads are not held up.
    const std::unique_ptr<ThreadContext> ended = std::move(place->second);
    contexts.erase(place);
    lock.unlock();
    if (ended->isAttached) unbindThread(ended->binding);
    return CMPI_RC_OK;
}

} // namespace cimhost
