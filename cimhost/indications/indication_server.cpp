#include "cimhost/indications/indication_server.h"

#include <cstdlib>

namespace cimhost {

ServerFacts IndicationServer::factsOf(const IndicationOptions& options) {
    ServerFacts facts;
    facts.interopNamespace = options.subscriptions.interopNamespace;
    facts.systemName = options.subscriptions.systemName;
    facts.mostOfEach = options.subscriptions.mostOfEach;
    facts.asksForUser = options.asksForUser;
    facts.remembersSubscriptions = !options.subscriptions.stateFile.empty();
    return facts;
}

std::filesystem::path defaultStateFile() {
    const std::filesystem::path name = std::filesystem::path("cimhost") / "subscriptions.json";
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state && *state == '/') return std::filesystem::path(state) / name;
    const char* home = std::getenv("HOME");
    if (home && *home == '/') return std::filesystem::path(home) / ".local" / "state" / name;
    return {};
}

} // namespace cimhost
