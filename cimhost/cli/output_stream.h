// The streams of a command that loads a provider: what the provider prints must not mix with what the command answers.
#pragma once

#include "cimhost/broker/log.h"

#include <iosfwd>
#include <string_view>

namespace cimhost::cli {

class CleanOutput {
public:
    /// From now on whatever the process prints to standard output appears on standard error, and each line that it
    /// prints to std::cerr is a message of the lowest level: a provider names the files that it reads there, which is
    /// for a server's log and for few people. std::clog goes to standard error as ever.
    /// @param messages takes those lines; it must not print to std::cerr.
    explicit CleanOutput(const LogSink& messages);
    /// Both are back, and a line without an end is told.
    ~CleanOutput();
    CleanOutput(const CleanOutput&) = delete;
    CleanOutput& operator=(const CleanOutput&) = delete;

    /// Writes to the real standard output; a reader who has gone is not an error.
    void write(std::string_view text) const;

private:
    int realOutput;
    std::streambuf* realErrors = nullptr;
};

} // namespace cimhost::cli
