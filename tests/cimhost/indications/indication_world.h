// The classes of the product, a provider that remembers what it is told of filters, and a server's indications over
// them.
#pragma once

#include "cimhost/indications/indication_server.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace cimhost::testing_support {

class FakeFilters final : public IndicationCalls {
public:
    std::optional<CimError> authorizeFilter(RequestScope&, const FilterCall& call) override {
        return note("authorize", call);
    }
    std::optional<CimError> mustPoll(RequestScope&, const FilterCall& call) override { return note("mustPoll", call); }
    std::optional<CimError> activateFilter(RequestScope&, const FilterCall& call, bool isFirst) override {
        return note(isFirst ? "activate first" : "activate", call);
    }
    std::optional<CimError> deactivateFilter(RequestScope&, const FilterCall& call, bool isLast) override {
        return note(isLast ? "deactivate last" : "deactivate", call);
    }
    std::optional<CimError> enableIndications(RequestScope&) override {
        calls.emplace_back("enable");
        return std::nullopt;
    }

    /// "activate first FROM path-class"
    std::vector<std::string> calls;
    std::optional<CimError> refusal; ///< what the next authorizeFilter says

private:
    std::optional<CimError> note(const std::string& name, const FilterCall& call) {
        calls.push_back(name + " " + call.className + " " + std::string(call.classPath.className()));
        return name == "authorize" ? std::exchange(refusal, std::nullopt) : std::nullopt;
    }
};

using Properties = std::vector<std::pair<std::string, std::string>>;

class World {
public:
    explicit World(std::filesystem::path stateFile = {}, DeliveryOptions delivery = {});
    ~World();

    /// The path's text; throws CimFailure. A list is given, and shown, with commas between its entries.
    std::string create(const std::string& className, const Properties& properties);
    std::string filter(const std::string& name, const std::string& query,
                       const std::string& nameSpace = "root/merolt_cmpi");
    std::string destination(const std::string& name, const std::string& url, const std::string& persistence = "2");
    std::string subscribe(const std::string& filterPath, const std::string& handlerPath,
                          const std::string& state = "2");
    void remove(const std::string& path);
    std::vector<std::string> names(const std::string& className);
    std::string property(const std::string& path, const std::string& name);
    /// Delivers an alert as the provider does, from an arena of its own.
    CMPIrc deliver(const std::string& className, const Properties& properties = {},
                   const std::string& nameSpace = "root/merolt_cmpi");
    /// The status of what an operation throws; 0 if it does not.
    static CMPIrc statusOf(const std::function<void()>& operation);
    std::vector<std::string> messages();

private:
    // Deliveries log to their last moment.
    std::mutex mutex;
    std::vector<std::string> logged;

public:
    ClassRepository repository;
    Registration registration;
    std::unique_ptr<Broker> broker;
    FakeFilters filters;
    std::unique_ptr<IndicationServer> server;

private:
    cimxml::Instance instance(const std::string& className, const Properties& properties,
                              const std::string& nameSpace) const;
};

} // namespace cimhost::testing_support
