// Standard output, kept clean: what a provider prints goes to standard error, what the command answers does not.
#pragma once

#include <memory>
#include <string_view>

namespace cimhost::cli {

class CleanOutput {
public:
    /// From now on whatever the process prints to standard output appears on standard error.
    CleanOutput();
    /// Standard output is back.
    ~CleanOutput();
    CleanOutput(const CleanOutput&) = delete;
    CleanOutput& operator=(const CleanOutput&) = delete;

    /// Writes to the real standard output; a reader who has gone is not an error.
    void write(std::string_view text) const;

private:
    int realOutput;
};

} // namespace cimhost::cli
