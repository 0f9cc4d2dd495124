// The provider's one diagnostic log: a text file, two writers, and the flags that callers test.
#pragma once

namespace merolt {

/// Callers of debugLog test this. True until the constructor reads the configuration, so that a load always leaves a
/// trace.
extern bool gDebugLog;
/// Callers of errorLog test this.
extern bool gErrorLog;

/// Path of the current log, and of the one that it replaced.
extern char gLogFileName[272];
extern char gPrevLogFileName[272];
/// The install location with a separator at its end; empty where there is none.
extern char gInstallDirectory[272];

/// Finds the log's place: below the install location if the system names one, else in the working directory.
void initializeLogging();

/// Append one line: time, a blank, the message (cut at 511 characters). Neither looks at a flag. A log of 1 MiB is
/// moved to the previous name first. Failures are silent: a log that cannot be written stops nothing. In a folder that
/// others may write to no link is followed. Control characters in what stands in for a conversion are written as \n,
/// \x1B and the like, so that no key makes a line of its own; newlines behind the last conversion are the caller's and
/// stay.
void debugLog(const char* format, ...) __attribute__((format(printf, 1, 2)));
void errorLog(const char* format, ...) __attribute__((format(printf, 1, 2)));

} // namespace merolt

// The flag is tested at the call, so that arguments cost nothing while the log is off.
#define DEBUG_LOG(...)                                                                                                 \
    do {                                                                                                               \
        if (merolt::gDebugLog) merolt::debugLog(__VA_ARGS__);                                                          \
    } while (false)
#define ERROR_LOG(...)                                                                                                 \
    do {                                                                                                               \
        if (merolt::gErrorLog) merolt::errorLog(__VA_ARGS__);                                                          \
    } while (false)
