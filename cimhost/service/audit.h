// What was changed through the server, by whom and from where: one line for each change, and for whoever was not let.
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
    std::size_t refusals = 10;              // told in full in each span
    std::chrono::milliseconds span{10'000}; // the others of a span are counted, and the count told at its end
};

class AuditLog {
public:
    /// Takes one line, without its end; called by one thread at a time.
    using Sink = std::function<void(std::string_view line)>;

    struct Change {
        std::string_view client; ///< "127.0.0.1:40218"
        std::string_view user;   ///< empty: nobody in particular
        std::string_view operation;
        std::string_view object;
        std::string_view result; ///< "ok", "ReturnValue 2", "CIM_ERR_FAILED"
    };

    explicit AuditLog(Sink sink, AuditOptions options = {});
    /// Tells what was counted and not told.
    ~AuditLog();
    AuditLog(const AuditLog&) = delete;
    AuditLog& operator=(const AuditLog&) = delete;

    /// A line of at most 3 KiB, without control characters, whatever a client called things:
    /// `audit: client=127.0.0.1:40218 user=anna operation=DeleteInstance object="T.Id=\"a\"" result=ok`. A value stands
    /// in quotes, with \" and \\ as escapes, unless it is made of plain characters.
    void changed(const Change& change);

    /// The same for a change that the caller may not make, at a bounded rate.
    void refused(const Change& change);

    /// A name and a password that do not belong together, at a bounded rate.
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
