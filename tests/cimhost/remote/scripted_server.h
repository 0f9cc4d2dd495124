// A server that does to its clients whatever a test likes.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace cimhost::testing_support {

/// Sends all of it; false once the client is gone.
bool sendAll(int socket, std::string_view text);

/// Reads one request, head and body; empty if the client goes before.
std::string readRequest(int socket);

/// An HTTP answer with a length.
std::string httpAnswer(const std::string& status, const std::string& contentType, const std::string& body);

/// A script that answers each request with that text, and remembers nothing.
std::function<void(int)> answering(std::string text);

class ScriptedServer {
public:
    /// Runs the script with each connection, on a thread of its own; the connection is closed when it returns. A script
    /// that waits for the client ends when this object goes.
    explicit ScriptedServer(std::function<void(int socket)> script);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// "http://127.0.0.1:PORT"
    [[nodiscard]] std::string url(const std::string& scheme = "http") const;

private:
    void accept();

    const std::function<void(int)> script;
    int listening = -1;
    unsigned port = 0;
    std::atomic<bool> isOver = false;
    std::vector<int> sockets;
    std::vector<std::thread> connections; // of the accepting thread, until it has ended
    std::thread acceptor;
};

} // namespace cimhost::testing_support
