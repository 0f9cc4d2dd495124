#include "cimhost/cli/commands.h"
#include "cimhost/cli/doctor_output.h"
#include "cimhost/cli/installation.h"
#include "cimhost/cli/local_round.h"
#include "cimhost/cli/remote_source.h"
#include "cimhost/cli/server_round.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace cimhost::cli {

namespace {

struct Examined {
    std::string text;
    DoctorStatus status;
};

DoctorStatus statusOf(const std::vector<doctor::Diagnosis>& found) {
    if (found.empty()) return nothingWrong;
    const auto isFault = [](const doctor::Diagnosis& one) { return one.rule->urgency == doctor::Urgency::fault; };
    return std::any_of(found.begin(), found.end(), isFault) ? someFaults : someWarnings;
}

/// A wrong name would silence nothing, and nobody would see it.
void requireRules(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!doctor::findRule(name)) {
            throw std::runtime_error("there is no rule \"" + name + "\"; see: cimhost doctor --rules");
        }
    }
}

/// A described or recorded machine has no name here.
enum class Names { ofTheHost, untold };

Examined examine(ObjectSource& source, const DoctorOptions& options, Names names) {
    RequestScope scope(source.broker());
    const monitoring::Enumerate enumerate = [&](const char* className) {
        return source.enumerateInstances(scope, options.nameSpace, className);
    };
    std::vector<monitoring::PortCounters> before;
    if (options.intervalSeconds != 0) {
        before = monitoring::readCounters(enumerate);
        std::this_thread::sleep_for(std::chrono::seconds(options.intervalSeconds));
    }
    const monitoring::Snapshot snapshot = monitoring::readSnapshot(enumerate);
    doctor::Look look{snapshot, options.intervalSeconds == 0 ? nullptr : &before, options.intervalSeconds};
    if (names == Names::ofTheHost) look.systemNames = monitoring::readSystemNames(enumerate);
    const auto found = doctor::diagnose(look, options.ignored);
    return {options.form == Form::json ? doctorJson(found) : doctorText(found, options.layout), statusOf(found)};
}

} // namespace

ExitStatus examine(const HostOptions& hostOptions, const DoctorOptions& options) {
    requireRules(options.ignored);
    int status = nothingWrong;
    askHere(hostOptions, [&](ObjectSource& source) {
        Examined examined = examine(source, options, showsThisMachine() ? Names::ofTheHost : Names::untold);
        status = examined.status;
        return ServerAnswer{std::move(examined.text), {}};
    });
    return static_cast<ExitStatus>(status);
}

ExitStatus examine(const HostOptions& hostOptions, const DoctorOptions& options, const ServerOptions& servers,
                   const MessageOptions& messages) {
    requireRules(options.ignored);
    DeclaredClasses declared(hostOptions, options.nameSpace);
    std::atomic<int> worst = nothingWrong;
    const ExitStatus asked = askServers(servers, messages, declared, [&](ObjectSource& source) {
        Examined examined = examine(source, options, Names::ofTheHost);
        for (int known = worst; known < examined.status && !worst.compare_exchange_weak(known, examined.status);) {
        }
        return ServerAnswer{std::move(examined.text), {}};
    });
    return asked == ok ? static_cast<ExitStatus>(worst.load()) : asked;
}

void showRules(const DoctorOptions& options) {
    std::cout << (options.form == Form::json ? rulesJson() : rulesText(options.layout));
}

} // namespace cimhost::cli
