#include "cimhost/cli/server_round.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iostream>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

namespace cimhost::cli {

namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

struct Failure {
    std::string server;
    std::optional<CimError> status;
    std::string reason;
    ExitStatus exitStatus = cannotStart;
};

struct Hint {
    CMPIrc status;
    std::string_view text;
};

// What to try where a server answers so.
constexpr Hint hints[] = {
    {CMPI_RC_ERR_ACCESS_DENIED, "; --user names somebody who may"},
    {CMPI_RC_ERR_INVALID_NAMESPACE, "; --namespace says where the server has the adapters"},
    {CMPI_RC_ERR_INVALID_CLASS, "; where the server has no provider of the adapters register it there, or --namespace "
                                "says where it has one"},
    {CMPI_RC_ERR_NOT_SUPPORTED, "; the server may have no provider for it"},
};

std::string_view hintFor(CMPIrc status) {
    const auto* hint = std::find_if(std::begin(hints), std::end(hints),
                                    [status](const Hint& candidate) { return candidate.status == status; });
    return hint == std::end(hints) ? std::string_view() : hint->text;
}

class Round {
public:
    Round(const ServerOptions& serverOptions, const MessageOptions& messageOptions, DeclaredClasses& classes,
          const ServerQuestion& toAsk)
        : options(serverOptions), messages(messageOptions), declared(classes), question(toAsk),
          servers(serversOf(options)), identity(identityOf(options.identity, servers)) {}

    ExitStatus run() {
        {
            Progress progress(messages, [this] {
                return std::to_string(answered) + " of " + std::to_string(servers.size()) + " servers have answered";
            });
            shownProgress = &progress;
            askAll();
        }
        for (const Failure& failure : failures)
            sayServerError(messages, failure.server, failure.status ? &*failure.status : nullptr, failure.reason);
        return status();
    }

private:
    // An exception on a thread would end the process: each question catches its own.
    void askAll() {
        std::vector<std::thread> threads;
        const std::size_t count = std::min(options.parallel, servers.size());
        for (std::size_t number = 1; number < count; ++number) {
            try {
                threads.emplace_back([this] { work(); });
            } catch (const std::system_error&) {
                break; // fewer do it too
            }
        }
        work();
        for (std::thread& thread : threads)
            thread.join();
    }

    void work() {
        for (std::size_t number = next++; number < servers.size(); number = next++)
            ask(servers[number]);
    }

    void ask(const remote::Server& server) {
        const Clock::time_point begin = Clock::now();
        Failure failure{server.name, std::nullopt, {}, cannotStart};
        try {
            remote::Connection connection(server, identity, options.timeout());
            RemoteSource source(connection, declared);
            const ServerAnswer answer = question(source);
            print(server, answer.text, Clock::now() - begin);
            failure.reason = answer.failure;
            failure.exitStatus = methodFailed;
        } catch (const CimFailure& error) {
            failure.status = error.error();
            failure.reason = std::string(error.what()).append(hintFor(error.error().code));
            failure.exitStatus = cimError;
        } catch (const std::exception& error) {
            failure.reason = error.what();
        }
        ++answered;
        if (failure.reason.empty() && !failure.status) return;
        const std::lock_guard lock(mutex);
        failures.push_back(std::move(failure));
    }

    void print(const remote::Server& server, const std::string& text, Clock::duration taken) {
        const std::string whole = messages.json ? jsonLine(server, text, taken) : withHeading(server, text);
        const std::lock_guard lock(mutex);
        shownProgress->clear();
        std::cout << whole << std::flush;
    }

    // Each but the first is parted from what stands above.
    std::string withHeading(const remote::Server& server, const std::string& text) {
        if (servers.size() == 1) return text;
        const std::string heading = coloured(layoutOf(STDOUT_FILENO), Colour::bold, server.name) + "\n";
        return (hasPrinted.exchange(true) ? "\n" : "") + heading + text;
    }

    static std::string jsonLine(const remote::Server& server, const std::string& text, Clock::duration taken) {
        Json line;
        line["server"] = server.name;
        line["seconds"] =
            static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(taken).count()) / 1000;
        line["answer"] = Json::parse(text);
        return line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    }

    [[nodiscard]] ExitStatus status() const {
        if (failures.empty()) return ok;
        if (failures.size() < servers.size()) return someFailed;
        const ExitStatus first = failures.front().exitStatus;
        const bool isSame = std::all_of(failures.begin(), failures.end(),
                                        [first](const Failure& failure) { return failure.exitStatus == first; });
        return isSame ? first : cannotStart;
    }

    const ServerOptions& options;
    const MessageOptions& messages;
    DeclaredClasses& declared;
    const ServerQuestion& question;
    const std::vector<remote::Server> servers;
    const remote::Identity identity;
    Progress* shownProgress = nullptr;
    std::atomic<std::size_t> next = 0;
    std::atomic<std::size_t> answered = 0;
    std::atomic<bool> hasPrinted = false;
    std::mutex mutex; // of the output and the failures
    std::vector<Failure> failures;
};

} // namespace

ExitStatus askServers(const ServerOptions& options, const MessageOptions& messages, DeclaredClasses& declared,
                      const ServerQuestion& question) {
    return Round(options, messages, declared, question).run();
}

} // namespace cimhost::cli
