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
    std::filesystem::path mofDirectory; ///< holds merolt.mof, and if it likes interop.mof and cimhost.registration
    std::filesystem::path provider;     ///< the library
    std::string providerName = "Merolt_CNA_Provider";
    std::string nameSpace = Namespaces().implementation;
    std::string interopNamespace = Namespaces().interop;
    ArrayArguments arrayArguments = ArrayArguments::tagged;
    AssociationCalls associationCalls = AssociationCalls::eachClass;
    BrokerOptions broker;
};

/// The classes of the folder, the interop namespace among them. Throws std::runtime_error that names the file and what
/// is wrong.
ClassRepository loadClasses(const HostOptions& options);

/// Which of them the provider serves. Throws as above.
Registration loadRegistration(const HostOptions& options, const ClassRepository& repository);

class Host {
public:
    /// Reads the classes and loads the library. Throws std::runtime_error that names the file and what is wrong.
    explicit Host(HostOptions options);
    ~Host();

    [[nodiscard]] Operations& operations() noexcept { return *served; }
    [[nodiscard]] Broker& broker() noexcept { return *cmpiBroker; }
    [[nodiscard]] ProviderLibrary& provider() noexcept { return *library; }

    /// From now on the server itself answers for these classes. Before the first operation; objects outlives the host.
    void serveOwn(ProviderCalls& objects, const std::vector<const ClassDeclaration*>& classes);

    /// Makes the provider ready now and not at the first request: its first call builds what it knows. An error that
    /// the call ends with is thrown as CimFailure.
    void warmUp();

    /// The provider's clean-up. To be called when no operation is under way; done by the destructor otherwise.
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
