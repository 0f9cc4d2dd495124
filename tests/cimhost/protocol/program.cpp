#include "program.h"

#include "../../becomes_true.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cimhost::testing_support {

void takeSignalsByDefault() {
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE})
        ::signal(number, SIG_DFL);
}

Process::Process(std::vector<std::string> command) {
    std::array<int, 2> output{};
    if (::pipe2(output.data(), O_CLOEXEC) != 0) return;
    id = ::fork();
    if (id == 0) {
        takeSignalsByDefault();
        ::dup2(output[1], STDOUT_FILENO);
        const int errors = ::open(errorFile.path.c_str(), O_WRONLY | O_TRUNC);
        ::dup2(errors, STDERR_FILENO);
        std::vector<char*> arguments;
        for (std::string& word : command)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        ::execvp(arguments.front(), arguments.data());
        ::_exit(127);
    }
    ::close(output[1]);
    stream = output[0];
}

Process::~Process() {
    if (id > 0) {
        ::kill(id, SIGKILL);
        ::waitpid(id, nullptr, 0);
    }
    ::close(stream);
}

std::string Process::readLine() {
    std::string line;
    for (char byte = 0; ::read(stream, &byte, 1) == 1 && byte != '\n';)
        line += byte;
    return line;
}

std::string Process::readAll() {
    std::string text;
    std::array<char, 65536> bytes;
    for (ssize_t count = 0; (count = ::read(stream, bytes.data(), bytes.size())) > 0;) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
}

void Process::signal(int number) { ::kill(id, number); }

int Process::wait() {
    int status = 0;
    ::waitpid(id, &status, 0);
    id = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string Process::errors() {
    std::ifstream file(errorFile.path);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Process::hasError(const std::string& text) {
    return tests::becomesTrue([&] { return errors().find(text) != std::string::npos; });
}

Ended run(std::vector<std::string> command) {
    Process process(std::move(command));
    Ended ended;
    ended.output = process.readAll();
    ended.status = process.wait();
    ended.errors = process.errors();
    return ended;
}

Ended cimhost(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), PROGRAM);
    return run(std::move(arguments));
}

Ended cimhostAtTerminal(std::vector<std::string> arguments, unsigned short width,
                        const std::vector<std::string>& environment) {
    std::vector<char*> words = {const_cast<char*>(PROGRAM)};
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    const winsize size{50, width, 0, 0};
    int terminal = -1;
    const pid_t id = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (id == 0) {
        takeSignalsByDefault();
        ::setenv("TERM", "xterm", 1);
        ::unsetenv("NO_COLOR");
        for (const std::string& variable : environment)
            ::putenv(::strdup(variable.c_str()));
        ::execv(PROGRAM, words.data());
        ::_exit(127);
    }
    Ended ended{};
    std::array<char, 65536> bytes;
    for (ssize_t count = 0; (count = ::read(terminal, bytes.data(), bytes.size())) > 0;)
        ended.output.append(bytes.data(), static_cast<std::size_t>(count));
    int status = 0;
    ::waitpid(id, &status, 0);
    ::close(terminal);
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::erase(ended.output, '\r');
    return ended;
}

std::string urlOf(Process& server) {
    for (std::string line = server.readLine(); !line.empty(); line = server.readLine()) {
        const std::size_t begin = line.find("http://");
        if (line.find("cimhost: listening on") != std::string::npos && begin != std::string::npos) {
            return line.substr(begin, line.find(',') - begin);
        }
    }
    return "";
}

std::size_t lineCount(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

} // namespace cimhost::testing_support
