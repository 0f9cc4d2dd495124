#include "cimhost/provider/provider_library.h"

#include "cimhost/broker/request_limit.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/broker/thread_registry.h"

#include <dlfcn.h>

#include <cstddef>
#include <exception>
#include <mutex>
#include <string>
#include <utility>

namespace cimhost {
namespace {

// A management interface of one kind: its factory, and what the factory made when it was first needed.
template <typename Interface>
struct Slot {
    using Factory = Interface* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
    const char* kind;
    Factory factory = nullptr;
    Interface* made = nullptr;
};

std::string messageOf(const CMPIStatus& status) {
    const StringObject* message = StringObject::from(status.msg);
    return message ? std::string(message->text()) : std::string();
}

// CMPI knows more codes than CIM does; to a client those are failures.
std::optional<CimError> errorOf(const CMPIStatus& status) {
    if (status.rc == CMPI_RC_OK) return std::nullopt;
    std::string message = messageOf(status);
    if (status.rc <= CMPI_RC_ERR_METHOD_NOT_FOUND) return CimError{status.rc, std::move(message)};
    if (message.empty()) message = "the provider failed with status " + std::to_string(static_cast<int>(status.rc));
    return CimError{CMPI_RC_ERR_FAILED, std::move(message)};
}

CimError tooLarge() {
    return {CMPI_RC_ERR_FAILED, "the objects of the answer take more than " + std::to_string(mostRequestMebibytes) +
                                    " MiB: ask for less at a time; or the management library tells wrong numbers"};
}

std::string reasonOf(const CimError& error) {
    return error.description.empty() ? "status " + std::to_string(static_cast<int>(error.code)) : error.description;
}

// Runs the provider's code. A C++ exception that leaves it becomes a failed call.
template <typename Call>
std::optional<CimError> guarded(Call&& call) {
    try {
        return errorOf(call());
    } catch (const std::exception& failure) {
        return CimError{CMPI_RC_ERR_FAILED, std::string("the provider failed: ") + failure.what()};
    } catch (...) {
        return CimError{CMPI_RC_ERR_FAILED, "the provider failed with an unknown exception"};
    }
}

ContextObject* makeContext(Arena& arena, const CallContext& call) {
    ContextObject* context = ContextObject::make(arena);
    context->addNumber(CMPIInvocationFlags, call.flags);
    context->addText(CMPIPrincipal, call.principal);
    if (!call.nameSpace.empty()) context->addText(CMPIInitNameSpace, call.nameSpace);
    if (!call.acceptLanguage.empty()) context->addText(CMPIAcceptLanguage, call.acceptLanguage);
    return context;
}

ContextObject* makeContext(Arena& arena, const CallContext& call, const AssociationFilter& filter) {
    ContextObject* context = makeContext(arena, call);
    if (!filter.role.empty()) context->addText(CMPIRole, filter.role);
    return context;
}

ContextObject* makeContext(Arena& arena, const FilterCall& call) {
    CallContext context;
    context.principal = call.owner;
    return makeContext(arena, context);
}

// An array of texts that ends in a null pointer; null for all properties.
const char** propertyArray(Arena& arena, const PropertyList& properties) {
    if (!properties) return nullptr;
    const auto names = arena.allocateArray<const char*>(properties->size() + 1);
    std::size_t place = 0;
    for (const std::string& name : *properties) {
        names[place++] = arena.copyText(name).data();
    }
    names[place] = nullptr;
    return names;
}

const char* textOrNull(const std::string& text) noexcept { return text.empty() ? nullptr : text.c_str(); }

} // namespace

struct ProviderLibrary::Interfaces {
    Interfaces(std::string libraryFile, std::string providerName, Broker& owner)
        : file(std::move(libraryFile)), name(std::move(providerName)), broker(owner) {}

    std::string file;
    std::string name;
    Broker& broker;
    void* handle = nullptr;
    std::mutex mutex;
    bool isShutDown = false;
    bool lacksThread = false;
    Slot<CMPIInstanceMI> instance{"Instance"};
    Slot<CMPIAssociationMI> association{"Association"};
    Slot<CMPIMethodMI> method{"Method"};
    Slot<CMPIIndicationMI> indication{"Indication"};

    template <typename Interface>
    [[nodiscard]] std::string factoryName(const Slot<Interface>& slot) const {
        return name + "_Create_" + slot.kind + "MI";
    }

    template <typename Interface>
    void findFactory(Slot<Interface>& slot) {
        slot.factory = reinterpret_cast<typename Slot<Interface>::Factory>(dlsym(handle, factoryName(slot).c_str()));
    }

    // Null with the reason in error. The factory runs in a scope of its own: what it is given is gone when it returns.
    template <typename Interface>
    Interface* need(Slot<Interface>& slot, std::optional<CimError>& error) {
        const std::lock_guard lock(mutex);
        if (isShutDown) {
            error = CimError{CMPI_RC_ERR_FAILED, "the provider " + name + " has been shut down"};
        } else if (!slot.factory) {
            error = CimError{CMPI_RC_ERR_NOT_SUPPORTED, "the provider " + name + " lacks " + factoryName(slot)};
        } else if (!slot.made) {
            make(slot, error);
        }
        // A provider may be content without: what it answers then would be taken for all there is.
        if (!error && lacksThread) {
            error = CimError{CMPI_RC_ERR_FAILED, "the system has no thread for the provider " + name};
        }
        return error ? nullptr : slot.made;
    }

    template <typename Interface>
    void make(Slot<Interface>& slot, std::optional<CimError>& error) {
        RequestScope scope(broker);
        const ContextObject* context = ContextObject::make(scope.arena());
        Interface* made = nullptr;
        const std::size_t missingBefore = countMissingThreads();
        error = guarded([&] {
            CMPIStatus status{};
            made = slot.factory(broker.table(), context, &status);
            return status;
        });
        if (countMissingThreads() != missingBefore) lacksThread = true;
        if (!error && (!made || !made->ft)) error = CimError{CMPI_RC_ERR_FAILED, "it gave no interface"};
        if (!error) {
            slot.made = made;
            return;
        }
        error = CimError{CMPI_RC_ERR_FAILED, factoryName(slot) + " failed: " + reasonOf(*error)};
    }

    // Calls one function of an interface; arguments are what follows the context.
    template <typename Interface, typename Table, typename Function, typename... Arguments>
    std::optional<CimError> callTable(Slot<Interface>& slot, Function Table::*function, const ContextObject* context,
                                      Arguments... arguments) {
        std::optional<CimError> error;
        Interface* interface = need(slot, error);
        if (!interface) return error;
        const Function called = interface->ft->*function;
        if (!called) return CimError{CMPI_RC_ERR_NOT_SUPPORTED, ""};
        return guarded([&] { return called(interface, context, arguments...); });
    }

    // The same for functions that answer into a result.
    template <typename Interface, typename Table, typename Function, typename... Arguments>
    Outcome call(RequestScope& scope, ResultKind kind, ObjectSink* sink, Slot<Interface>& slot,
                 Function Table::*function, const ContextObject* context, Arguments... arguments) {
        ResultCollector result(scope, kind, sink);
        const CMPIResult* target = &result;
        Outcome outcome;
        outcome.error = callTable(slot, function, context, target, arguments...);
        if (result.failure()) std::rethrow_exception(result.failure());
        // Whatever the provider made of it: not all of the answer is there.
        if (isFull(scope.arena())) outcome.error = tooLarge();
        outcome.instances = std::move(result.instances);
        outcome.paths = std::move(result.paths);
        if (!result.data.empty()) outcome.returnValue = result.data.front();
        return outcome;
    }

    template <typename Interface>
    void cleanUp(Slot<Interface>& slot) {
        if (!slot.made) return;
        RequestScope scope(broker);
        const ContextObject* context = ContextObject::make(scope.arena());
        const auto error = guarded([&] {
            const auto cleanup = slot.made->ft->cleanup;
            return cleanup ? cleanup(slot.made, context, 1) : CMPIStatus{};
        });
        if (error) {
            broker.log(LogLevel::warning, name + ": clean-up of " + slot.kind + "MI failed: " + reasonOf(*error));
        }
        slot.made = nullptr;
    }
};

ProviderLibrary::ProviderLibrary(const std::filesystem::path& file, std::string providerName, Broker& broker)
    // A name alone would have the loader search its own folders.
    : interfaces(
          std::make_unique<Interfaces>(std::filesystem::absolute(file).string(), std::move(providerName), broker)) {
    Interfaces& made = *interfaces;
    // As production servers load providers: with all symbols resolved, and visible to libraries that come later.
    made.handle = dlopen(made.file.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (!made.handle) {
        const char* reason = dlerror();
        throw ProviderLoadError("cannot load the provider library \"" + made.file +
                                "\": " + (reason ? reason : "unknown reason"));
    }
    made.findFactory(made.instance);
    made.findFactory(made.association);
    made.findFactory(made.method);
    made.findFactory(made.indication);
    if (made.instance.factory || made.association.factory || made.method.factory || made.indication.factory) return;
    throw ProviderLoadError("the provider library \"" + made.file + "\" has none of the factories of \"" + made.name +
                            "\": " + made.factoryName(made.instance) +
                            " or the like for Association, Method, Indication");
}

ProviderLibrary::~ProviderLibrary() { shutdown(); }

Outcome ProviderLibrary::enumerateInstanceNames(RequestScope& scope, const CallContext& context,
                                                const ObjectPathObject& classPath) {
    return interfaces->call(scope, ResultKind::paths, context.sink, interfaces->instance,
                            &CMPIInstanceMIFT::enumerateInstanceNames, makeContext(scope.arena(), context), &classPath);
}

Outcome ProviderLibrary::enumerateInstances(RequestScope& scope, const CallContext& context,
                                            const ObjectPathObject& classPath, const PropertyList& properties) {
    return interfaces->call(scope, ResultKind::instances, context.sink, interfaces->instance,
                            &CMPIInstanceMIFT::enumerateInstances, makeContext(scope.arena(), context), &classPath,
                            propertyArray(scope.arena(), properties));
}

Outcome ProviderLibrary::getInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                     const PropertyList& properties) {
    return interfaces->call(scope, ResultKind::instances, context.sink, interfaces->instance,
                            &CMPIInstanceMIFT::getInstance, makeContext(scope.arena(), context), &path,
                            propertyArray(scope.arena(), properties));
}

Outcome ProviderLibrary::createInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                        const InstanceObject& instance) {
    return interfaces->call(scope, ResultKind::paths, context.sink, interfaces->instance,
                            &CMPIInstanceMIFT::createInstance, makeContext(scope.arena(), context), &path, &instance);
}

Outcome ProviderLibrary::modifyInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                        const InstanceObject& instance, const PropertyList& properties) {
    return interfaces->call(scope, ResultKind::nothing, nullptr, interfaces->instance,
                            &CMPIInstanceMIFT::modifyInstance, makeContext(scope.arena(), context), &path, &instance,
                            propertyArray(scope.arena(), properties));
}

Outcome ProviderLibrary::deleteInstance(RequestScope& scope, const CallContext& context, const ObjectPathObject& path) {
    return interfaces->call(scope, ResultKind::nothing, nullptr, interfaces->instance,
                            &CMPIInstanceMIFT::deleteInstance, makeContext(scope.arena(), context), &path);
}

Outcome ProviderLibrary::associators(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                     const AssociationFilter& filter, const PropertyList& properties) {
    return interfaces->call(scope, ResultKind::instances, context.sink, interfaces->association,
                            &CMPIAssociationMIFT::associators, makeContext(scope.arena(), context, filter), &source,
                            textOrNull(filter.associationClass), textOrNull(filter.resultClass),
                            textOrNull(filter.role), textOrNull(filter.resultRole),
                            propertyArray(scope.arena(), properties));
}

Outcome ProviderLibrary::associatorNames(RequestScope& scope, const CallContext& context,
                                         const ObjectPathObject& source, const AssociationFilter& filter) {
    return interfaces->call(scope, ResultKind::paths, context.sink, interfaces->association,
                            &CMPIAssociationMIFT::associatorNames, makeContext(scope.arena(), context, filter), &source,
                            textOrNull(filter.associationClass), textOrNull(filter.resultClass),
                            textOrNull(filter.role), textOrNull(filter.resultRole));
}

Outcome ProviderLibrary::references(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                    const AssociationFilter& filter, const PropertyList& properties) {
    return interfaces->call(scope, ResultKind::instances, context.sink, interfaces->association,
                            &CMPIAssociationMIFT::references, makeContext(scope.arena(), context, filter), &source,
                            textOrNull(filter.associationClass), textOrNull(filter.role),
                            propertyArray(scope.arena(), properties));
}

Outcome ProviderLibrary::referenceNames(RequestScope& scope, const CallContext& context, const ObjectPathObject& source,
                                        const AssociationFilter& filter) {
    return interfaces->call(scope, ResultKind::paths, context.sink, interfaces->association,
                            &CMPIAssociationMIFT::referenceNames, makeContext(scope.arena(), context, filter), &source,
                            textOrNull(filter.associationClass), textOrNull(filter.role));
}

Outcome ProviderLibrary::invokeMethod(RequestScope& scope, const CallContext& context, const ObjectPathObject& path,
                                      const std::string& method, const ArgsObject& in) {
    ArgsObject* out = scope.make().arguments();
    Outcome outcome =
        interfaces->call(scope, ResultKind::data, nullptr, interfaces->method, &CMPIMethodMIFT::invokeMethod,
                         makeContext(scope.arena(), context), &path, method.c_str(), &in, out);
    outcome.outArguments = out;
    return outcome;
}

std::optional<CimError> ProviderLibrary::authorizeFilter(RequestScope& scope, const FilterCall& call) {
    return interfaces->callTable(interfaces->indication, &CMPIIndicationMIFT::authorizeFilter,
                                 makeContext(scope.arena(), call), &call.query, call.className.c_str(), &call.classPath,
                                 call.owner.c_str());
}

std::optional<CimError> ProviderLibrary::mustPoll(RequestScope& scope, const FilterCall& call) {
    return interfaces->callTable(interfaces->indication, &CMPIIndicationMIFT::mustPoll,
                                 makeContext(scope.arena(), call), &call.query, call.className.c_str(),
                                 &call.classPath);
}

std::optional<CimError> ProviderLibrary::activateFilter(RequestScope& scope, const FilterCall& call, bool isFirst) {
    return interfaces->callTable(interfaces->indication, &CMPIIndicationMIFT::activateFilter,
                                 makeContext(scope.arena(), call), &call.query, call.className.c_str(), &call.classPath,
                                 static_cast<CMPIBoolean>(isFirst));
}

std::optional<CimError> ProviderLibrary::deactivateFilter(RequestScope& scope, const FilterCall& call, bool isLast) {
    return interfaces->callTable(interfaces->indication, &CMPIIndicationMIFT::deActivateFilter,
                                 makeContext(scope.arena(), call), &call.query, call.className.c_str(), &call.classPath,
                                 static_cast<CMPIBoolean>(isLast));
}

std::optional<CimError> ProviderLibrary::enableIndications(RequestScope& scope) {
    return interfaces->callTable(interfaces->indication, &CMPIIndicationMIFT::enableIndications,
                                 makeContext(scope.arena(), CallContext()));
}

void ProviderLibrary::shutdown() {
    Interfaces& all = *interfaces;
    {
        const std::lock_guard lock(all.mutex);
        if (all.isShutDown) return;
        all.isShutDown = true;
    }
    all.cleanUp(all.instance);
    all.cleanUp(all.association);
    all.cleanUp(all.method);
    all.cleanUp(all.indication);
    const std::size_t running = all.broker.runningThreads();
    if (running == 0) return;
    all.broker.log(LogLevel::warning,
                   all.name + ": " + std::to_string(running) + " threads of the provider still run after its clean-up");
}

} // namespace cimhost
