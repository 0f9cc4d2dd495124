// Everything between a provider library and its callers, put together: class repository, registration, broker, provider
// and operations.
#pragma once

#include "cimhost/provider/provider_library.h"
#include "cimhost/service/operations.h"
#include "cimhost/service/routed_calls.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace cimhost {

struct HostOptions {
    std::filesystem::path mofDirectory; ///< holds merolt.mof; may hold interop.mof and cimhost.registration
    std::filesystem::path provider;     ///< the library
    std::string providerName = "Merolt_CNA_Provider";
    std::string nameSpace = Namespaces().implementation;
    std::string interopNamespace = Namespaces().interop;
    ArrayArguments arrayArguments = ArrayArguments::tagged;
    AssociationCalls associationCalls = AssociationCalls::eachClass;
    BrokerOptions broker;
};

/// Reads the classes of the folder, those of the interop namespace among them. Throws std::runtime_error, which names
/// the file and says what is wrong with it.
ClassRepository loadClasses(const HostOptions& options);

/// Reads which of these classes the provider serves; without the file cimhost.registration, all whose names begin with
/// Merolt. Throws as above.
Registration loadRegistration(const HostOptions& options, const ClassRepository& repository);

class Host {
public:
    /// Reads the classes and loads the library. Throws std::runtime_error, which names the file and says what is wrong.
    explicit Host(HostOptions options);
    ~Host();

    [[nodiscard]] Operations& operations() noexcept { return *served; }
    [[nodiscard]] Broker& broker() noexcept { return *cmpiBroker; }
    [[nodiscard]] ProviderLibrary& provider() noexcept { return *library; }

    /// From now on the server itself answers for these classes, by calls to `objects`, which outlives the host. Called
    /// before the first operation.
    void serveOwn(ProviderCalls& objects, const std::vector<const ClassDeclaration*>& classes);

    /// Calls the provider once, so that it is ready before the first request: its first call builds what it knows.
    /// Throws CimFailure if that call ends with an error.
    void warmUp();

    /// The provider's clean-up. Called while no operation is under way; if it is not called, the destructor does it.
    void shutdown();

private:
    HostOptions settings;
    ClassRepository repository;
    Registration registration;
    std::unique_ptr<Broker> cmpiBroker;
    std::unique_ptr<ProviderLibrary> library;
    std::unique_ptr<RoutedCalls> routed;
    std::unique_ptr<Operations> served;
};

} // namespace cimhost
