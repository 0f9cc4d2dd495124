// A server that loads and unloads the provider for ever: dlopen, all four factories, one enumeration, clean-up,
// dlclose. Ends with 1 if the library stays in the process, or if memory, descriptors or threads grow.
//
// Usage: load_cycles LIBRARY FLEET CYCLES
#include "foreign_server_program.h"
#include "short_sleeps.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// Whether the kernel gives the adapter library notifications of its fleet file. It takes some ten milliseconds to take
/// them back, which is most of a cycle, so that most cycles run as on a host whose notifications are used up.
bool notificationsAreLeft = true;

} // namespace

extern "C" __attribute__((visibility("default"))) int inotify_init1(int flags) noexcept {
    if (notificationsAreLeft) return static_cast<int>(syscall(SYS_inotify_init1, flags));
    errno = EMFILE;
    return -1;
}

namespace {

constexpr int cyclesPerNotification = 10;

/// Allocators and the loader reach their steady state in this time.
constexpr int warmUpCycles = 500;
/// What the process may have gained from there to the end, whatever the number of cycles: one leaked small block per
/// cycle would be more.
constexpr long allowedGrowthKilobytes = 256;

/// Sanitizers keep what was freed.
#ifdef MEROLT_SANITIZED
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

void require(bool condition, const std::string& what) {
    if (!condition) throw std::runtime_error(what);
}

template <class Interface>
Interface* require(Interface* made, const char* kind) {
    require(made != nullptr, std::string("no interface of the kind ") + kind);
    return made;
}

void runCycle(const char* path, CMPIBoolean terminating) {
    ProviderLibrary library(path);
    auto* instance = require(makeInterface<CMPIInstanceMI>(library, "Instance"), "Instance");
    auto* association = require(makeInterface<CMPIAssociationMI>(library, "Association"), "Association");
    auto* method = require(makeInterface<CMPIMethodMI>(library, "Method"), "Method");
    auto* indication = require(makeInterface<CMPIIndicationMI>(library, "Indication"), "Indication");
    require(waitForInstances(instance, "Merolt_FCHBA_FCPort"), "no port of the fleet is shown");
    require(cleanUp(instance, terminating) == CMPI_RC_OK, "clean-up of the instance interface was refused");
    require(cleanUp(association, terminating) == CMPI_RC_OK, "clean-up of the association interface was refused");
    require(cleanUp(method, terminating) == CMPI_RC_OK, "clean-up of the method interface was refused");
    require(cleanUp(indication, terminating) == CMPI_RC_OK, "clean-up of the indication interface was refused");
    library.close();
    require(!library.isLoaded(), "the loader still has the library after dlclose");
}

void run(const char* library, int cycles) {
    const int warmUp = std::min(warmUpCycles, cycles / 2);
    ProcessFacts warm{};
    const long ownThreads = countOwnThreads();
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        notificationsAreLeft = cycle % cyclesPerNotification == 0;
        runCycle(library, static_cast<CMPIBoolean>(cycle % 2));
        if (cycle == 1) require(!isMapped("libMerolt_CNA_Provider"), "the library is still mapped after dlclose");
        if (cycle == warmUp) warm = factsOfProcess();
    }
    require(!isMapped("libMerolt_CNA_Provider"), "the library is still mapped after the last dlclose");
    const ProcessFacts end = factsOfProcess();
    const long threads = threadsAtRest(ownThreads);
    std::printf("%d cycles: resident %ld kB after cycle %d, %ld kB at the end; %ld and %ld descriptors, %ld threads "
                "at the end\n",
                cycles, warm.residentKilobytes, warmUp, end.residentKilobytes, warm.descriptors, end.descriptors,
                threads);
    if (!sanitized) require(end.residentKilobytes - warm.residentKilobytes <= allowedGrowthKilobytes, "memory grows");
    require(end.descriptors == warm.descriptors, "open files grow");
    require(threads <= ownThreads, "threads are left behind");
}

} // namespace

int main(int argc, char** argv) try {
    require(argc == 4, "usage: load_cycles LIBRARY FLEET CYCLES");
    const std::string library = std::filesystem::absolute(argv[1]).string();
    const ServerProgram program(std::filesystem::absolute(argv[2]).c_str());
    run(library.c_str(), std::atoi(argv[3]));
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "load_cycles: %s\n", failure.what());
    return 1;
}
