// Where the cards of an update are: here, or at a CIM server.
#pragma once

#include "cimhost/cli/remote_source.h"

#include <chrono>
#include <memory>
#include <string>

namespace cimhost::cli {

class UpdatePlace {
public:
    /// The adapters here; the source outlives this.
    explicit UpdatePlace(ObjectSource& here) : local(&here) {}
    /// A server, which is connected to by begin(). What is given by reference outlives this.
    UpdatePlace(remote::Server target, const remote::Identity& who, std::chrono::milliseconds timeout,
                DeclaredClasses& classes)
        : server(std::move(target)), identity(&who), allowed(timeout), declared(&classes) {}

    /// Empty: here.
    [[nodiscard]] const std::string& name() const { return server.name; }
    [[nodiscard]] bool isHere() const { return local != nullptr; }

    /// Its time begins anew. Before the first question.
    void begin() {
        if (isHere()) return;
        remote.reset();
        connection = std::make_unique<remote::Connection>(server, *identity, allowed);
        remote = std::make_unique<RemoteSource>(*connection, *declared);
    }
    [[nodiscard]] ObjectSource& source() { return isHere() ? *local : *remote; }

private:
    ObjectSource* local = nullptr;
    remote::Server server;
    const remote::Identity* identity = nullptr;
    std::chrono::milliseconds allowed{};
    DeclaredClasses* declared = nullptr;
    std::unique_ptr<remote::Connection> connection;
    std::unique_ptr<RemoteSource> remote;
};

} // namespace cimhost::cli
