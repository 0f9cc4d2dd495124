// What was changed through the server, by whom and from where: one line for each change, and for each one refused.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace cimhost {

struct AuditOptions {
    std::size_t refusals = 10;              // so many of each span are told one by one
    std::chrono::milliseconds span{10'000}; // the others are counted, and their count is told at the end of the span
};

class AuditLog {
public:
    /// Takes one line, without a line feed. Called by one thread at a time.
    using Sink = std::function<void(std::string_view line)>;

    struct Change {
        std::string_view client; ///< "127.0.0.1:40218"
        std::string_view user;   ///< empty: without a name
        std::string_view operation;
        std::string_view object;
        std::string_view result; ///< "ok", "ReturnValue 2", "CIM_ERR_FAILED"
    };

    /// Throws std::system_error if the system gives no thread.
    explicit AuditLog(Sink sink, AuditOptions options = {});
    /// Tells the count that is not told yet.
    ~AuditLog();
    AuditLog(const AuditLog&) = delete;
    AuditLog& operator=(const AuditLog&) = delete;

    /// Tells a change in one line:
    /// `audit: client=127.0.0.1:40218 user=anna operation=DeleteInstance object="T.Id=\"a\"" result=ok`. A value that
    /// is not made of plain characters alone stands in quotes, with \" and \\ as escapes. Whatever names a client uses,
    /// the line has at most 3 KiB and no control characters.
    void changed(const Change& change);

    /// Tells in the same form of a change that the caller may not make; only some of them in each span.
    void refused(const Change& change);

    /// Tells of a wrong password; only some of them in each span.
    void refusedLogin(std::string_view client, std::string_view user);

private:
    void tellRefusal(std::string_view line);
    void tellCount();
    void countUntilStopped();

    const Sink sink;
    const AuditOptions options;
    std::mutex mutex; // guards all that follows, and the sink
    std::condition_variable changes;
    std::chrono::steady_clock::time_point spanEnd{};
    std::size_t toldInSpan = 0;
    std::size_t untold = 0;
    bool stopping = false;
    std::thread counter;
};

} // namespace cimhost
