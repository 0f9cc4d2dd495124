#include "cimhost/cli/password_input.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iostream>
#include <poll.h>
#include <stdexcept>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

namespace cimhost::cli {

namespace {

constexpr std::size_t longestLine = 4096;
// Signals that would end the process and leave the terminal without echo are held back until the terminal is as it was.
class QuietTerminal {
public:
    QuietTerminal() {
        sigset_t held;
        sigemptyset(&held);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&held, number);
        pthread_sigmask(SIG_BLOCK, &held, &maskBefore);
        signals = ::signalfd(-1, &held, SFD_CLOEXEC);
        if (::tcgetattr(STDIN_FILENO, &shown) != 0) return;
        termios quiet = shown;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~QuietTerminal() {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
        std::cerr << '\n';
        ::close(signals);
        pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    }
    QuietTerminal(const QuietTerminal&) = delete;
    QuietTerminal& operator=(const QuietTerminal&) = delete;

    /// Throws std::runtime_error if a signal comes first; it does its work when this object goes.
    void waitForInput() const {
        std::array<pollfd, 2> watched = {pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{signals, POLLIN, 0}};
        while (::poll(watched.data(), watched.size(), -1) < 0 && errno == EINTR) {
        }
        if (watched[1].revents != 0) throw std::runtime_error("interrupted");
    }

private:
    termios shown{};
    sigset_t maskBefore{};
    int signals = -1;
};

template <class Wait>
std::string readLine(Wait wait) {
    std::string line;
    for (char byte = 0;;) {
        wait();
        const ssize_t got = ::read(STDIN_FILENO, &byte, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw std::runtime_error("standard input cannot be read");
        if (got == 0 && line.empty()) throw std::runtime_error("there is no password on standard input");
        if (got == 0 || byte == '\n') return line;
        if (line.size() == longestLine) throw std::runtime_error("the password is too long");
        line += byte;
    }
}

std::string ask(const std::string& question) {
    // Quiet before it asks: what is typed too early is neither shown nor lost.
    const QuietTerminal quiet;
    std::cerr << question << std::flush;
    return readLine([&quiet] { quiet.waitForInput(); });
}

} // namespace

std::string askForPassword(const std::string& user) {
    if (::isatty(STDIN_FILENO) == 0) return readLine([] {});
    std::string password = askForKnownPassword(user);
    if (ask("once more: ") != password) throw std::runtime_error("the two passwords differ");
    return password;
}

std::string askForKnownPassword(const std::string& user) {
    if (::isatty(STDIN_FILENO) == 0) return readLine([] {});
    return ask("password for " + user + ": ");
}

} // namespace cimhost::cli
