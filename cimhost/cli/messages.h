// What the program says besides its answer, on standard error: warnings, errors, and that it still works.
#pragma once

#include "cimhost/broker/log.h"
#include "cimhost/service/cim_failure.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace cimhost::cli {

enum class Verbosity { quiet, usual, verbose };

struct MessageOptions {
    Verbosity verbosity = Verbosity::usual;
    bool json = false; ///< one object a line: {"error": {...}}, {"warning": {...}}
};

/// A line of host or provider: errors always, warnings unless quiet, all of it if verbose.
void say(const MessageOptions& options, LogLevel level, std::string_view text);

/// Why the command failed.
void sayError(const MessageOptions& options, std::string_view reason);
/// The same with the status of CIM (DSP0200, 5.3), in JSON as "code" and "name".
void sayError(const MessageOptions& options, const CimFailure& failure);

/// The same for one of several servers. status is null if the failure is not a CIM error.
void sayServerError(const MessageOptions& options, std::string_view server, const CimError* status,
                    std::string_view reason);

/// After its first second, shows a person at a terminal what the program waits for, until it is destroyed. Shows
/// nothing if standard error is no terminal, or with --quiet or --json.
class Progress {
public:
    Progress(const MessageOptions& options, std::string what);
    /// @param what gives the text; called each second, on any thread
    Progress(const MessageOptions& options, std::function<std::string()> what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Removes the line until the next second: call it before something else is printed.
    void clear();

private:
    void run();

    const std::function<std::string()> what;
    bool isShown = false;
    std::mutex mutex;
    std::condition_variable changed;
    bool isOver = false;
    std::thread thread;
};

} // namespace cimhost::cli
