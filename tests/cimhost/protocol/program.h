// The program cimhost, started as people start it.
#pragma once

#include "temporary_file.h"

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

namespace cimhost::testing_support {

/// In a child, before it becomes the program: takes the signals as they are by default. A test that was started behind
/// nohup or with "&" ignores some of them, and what is ignored stays so over an exec.
void takeSignalsByDefault();

/// A program that runs beside the test; killed at the end if it still does.
class Process {
public:
    explicit Process(std::vector<std::string> command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// One line of its output, without its end.
    std::string readLine();
    /// What is left of its output up to its end.
    std::string readAll();
    void signal(int number);
    pid_t pid() const { return id; }
    /// Its exit status; -1 if a signal ended it.
    int wait();
    /// What it has written to standard error so far.
    std::string errors();
    /// Waits up to a minute until the text stands there.
    bool hasError(const std::string& text);

private:
    TemporaryFile errorFile;
    pid_t id = -1;
    int stream = -1;
};

struct Ended {
    int status;
    std::string output;
    std::string errors;
};

/// Runs a command to its end; status 127 if there is none of that name.
Ended run(std::vector<std::string> command);

/// Runs cimhost to its end.
Ended cimhost(std::vector<std::string> arguments);

/// What a person sees who runs cimhost at a terminal of that width, standard error among it; lines end in "\n".
/// @param environment more of it, as NAME=VALUE.
Ended cimhostAtTerminal(std::vector<std::string> arguments, unsigned short width,
                        const std::vector<std::string>& environment = {});

/// Waits until a `cimhost serve` serves. @return its URL; empty if it ended before.
std::string urlOf(Process& server);

std::size_t lineCount(const std::string& text);

} // namespace cimhost::testing_support
