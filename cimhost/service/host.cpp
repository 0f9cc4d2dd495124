#include "cimhost/service/host.h"

#include <stdexcept>

namespace cimhost {

namespace {

constexpr std::string_view interopNames[] = {"interop", "root/interop", "root/PG_InterOp"};

void requireFile(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) throw std::runtime_error(file.string() + ": no such file");
}

// Clients look for the interop namespace under several names. Each of these leads to it.
ClassRepository withInteropNames(ClassRepository repository, const HostOptions& options) {
    for (const std::string_view name : interopNames)
        repository.addAlias(name, options.interopNamespace);
    return repository;
}

} // namespace

ClassRepository loadClasses(const HostOptions& options) {
    const std::filesystem::path classes = options.mofDirectory / "merolt.mof";
    const std::filesystem::path interop = options.mofDirectory / "interop.mof";
    requireFile(classes);
    ClassRepository repository;
    repository.loadFile(options.nameSpace, classes);
    repository.addNamespace(options.interopNamespace);
    if (std::filesystem::exists(interop)) repository.loadFile(options.interopNamespace, interop);
    return repository;
}

Registration loadRegistration(const HostOptions& options, const ClassRepository& repository) {
    const std::filesystem::path file = options.mofDirectory / "cimhost.registration";
    if (!std::filesystem::exists(file)) return Registration::ofPrefix("Merolt", repository);
    return Registration::load(file, repository, {options.nameSpace, options.interopNamespace});
}

Host::Host(HostOptions options)
    : settings(std::move(options)), repository(withInteropNames(loadClasses(settings), settings)),
      registration(loadRegistration(settings, repository)) {
    requireFile(settings.provider);
    cmpiBroker = std::make_unique<Broker>(repository, settings.broker);
    library = std::make_unique<ProviderLibrary>(settings.provider, settings.providerName, *cmpiBroker);
    routed = std::make_unique<RoutedCalls>(*library);
    served = std::make_unique<Operations>(repository, registration, *routed);
    served->arrayArguments = settings.arrayArguments;
    served->associationCalls = settings.associationCalls;
}

Host::~Host() = default;

void Host::serveOwn(ProviderCalls& objects, const std::vector<const ClassDeclaration*>& classes) {
    for (const ClassDeclaration* declaration : classes) {
        registration.add(*declaration, ProviderKind::instance);
        if (declaration->isAssociation()) registration.add(*declaration, ProviderKind::association);
    }
    routed->routeTo(objects, classes);
}

void Host::warmUp() {
    for (const ClassDeclaration* declaration : repository.classes(settings.nameSpace)) {
        if (!registration.serves(*declaration, ProviderKind::instance)) continue;
        RequestScope scope(*cmpiBroker);
        served->enumerateInstanceNames(scope, {}, *declaration);
        return;
    }
}

void Host::shutdown() { library->shutdown(); }

} // namespace cimhost
