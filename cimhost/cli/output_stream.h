// The streams of a command that loads a provider: what the provider prints must not mix with what the command answers.
#pragma once

#include <iosfwd>
#include <memory>
#include <string_view>

namespace cimhost::cli {

class CleanOutput {
public:
    /// From now on whatever the process prints to standard output appears on standard error, and what it prints to
    /// std::cerr nowhere: a provider names the files that it reads there, which is for a server's log and not for
    /// people. std::clog goes to standard error as ever.
    CleanOutput();
    /// Both are back.
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
