#include "cimhost/cli/optics_output.h"

#include "cimhost/cli/commands.h"
#include "cimhost/cli/local_round.h"
#include "cimhost/cli/remote_source.h"
#include "cimhost/cli/server_round.h"

namespace cimhost::cli {

namespace {

std::string answer(ObjectSource& source, const OpticsOptions& options) {
    RequestScope scope(source.broker());
    const monitoring::Snapshot snapshot = monitoring::readModules(
        [&](const char* className) { return source.enumerateInstances(scope, options.nameSpace, className); });
    return options.form == Form::json ? opticsJson(snapshot) : opticsText(snapshot, options.layout);
}

} // namespace

void showOptics(const HostOptions& hostOptions, const OpticsOptions& options) {
    askHere(hostOptions, [&](ObjectSource& source) { return ServerAnswer{answer(source, options), {}}; });
}

ExitStatus showOptics(const HostOptions& hostOptions, const OpticsOptions& options, const ServerOptions& servers,
                      const MessageOptions& messages) {
    DeclaredClasses declared(hostOptions, options.nameSpace);
    return askServers(servers, messages, declared, [&](ObjectSource& source) {
        return ServerAnswer{answer(source, options), {}};
    });
}

} // namespace cimhost::cli
