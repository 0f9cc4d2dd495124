// The outermost layer of the provider's functions that a CIM server calls: servers may be written in C, and an
// exception that leaves a function of a table would end them. A thread that a server cancels finishes its call first.
#pragma once

#include "log/log.h"
#include "platform/threads.h"

#include "cmpidt.h"

#include <cxxabi.h>
#include <exception>

namespace merolt {

/// A function of an interface's table around the driver of the wrapper classes, which passes on every exception but a
/// status. The client sees a failed request; memory or whatever else was short may be there again for the next.
template <auto Driver>
struct Guarded;

template <class... Arguments, CMPIStatus (*Driver)(Arguments...)>
struct Guarded<Driver> {
    static CMPIStatus call(Arguments... arguments) {
        const platform::CancellationDelay delay;
        try {
            return Driver(arguments...);
        } catch (const abi::__forced_unwind&) {
            throw; // the server ends its thread
        } catch (const std::exception& failure) {
            ERROR_LOG("Merolt_CNA_Provider: a request failed: %s", failure.what());
        } catch (...) {
            ERROR_LOG("Merolt_CNA_Provider: a request failed with an unknown exception");
        }
        return {CMPI_RC_ERR_FAILED, nullptr};
    }
};

} // namespace merolt
