#include "cimhost/cli/local_round.h"

#include "cimhost/cli/local_source.h"
#include "cimhost/cli/output_stream.h"
#include "cimhost/cli/own_location.h"

namespace cimhost::cli {

std::string askHere(const HostOptions& options, const ServerQuestion& question) {
    useOwnInstallLocation();
    const CleanOutput output(options.broker.log);
    Host host(options);
    LocalSource source(host.operations(), host.broker());
    const ServerAnswer answer = question(source);
    output.write(answer.text);
    host.shutdown();
    return answer.failure;
}

} // namespace cimhost::cli
