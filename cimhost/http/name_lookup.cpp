#include "cimhost/http/name_lookup.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

namespace cimhost::http {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

constexpr std::size_t mostThreads = 64;

struct Lookup {
    std::string host;
    std::string port;
    std::weak_ptr<void> wanted;
    std::shared_ptr<Mailbox> box;
    LookupDone done;
};

void answer(const Lookup& lookup, error_code error, Places places) {
    lookup.box->post([done = lookup.done, error, places = std::move(places)] { done(error, places); });
}

void run(const Lookup& lookup) {
    asio::io_context unused;
    asio::ip::tcp::resolver resolver(unused);
    error_code error;
    Places places = resolver.resolve(lookup.host, lookup.port, error);
    answer(lookup, error, std::move(places));
}

// Shared with its threads. Nobody waits for them: one that hangs may outlive everything else.
class Lookups : public std::enable_shared_from_this<Lookups> {
public:
    void add(Lookup lookup) {
        const std::lock_guard lock(mutex);
        waiting.push_back(std::move(lookup));
        if (names.size() >= mostThreads) return;
        if (std::optional<Lookup> next = take()) start(std::move(*next));
    }

private:
    // The next lookup whose name is not being looked up; from now on its name is. Called with the lock, as is start().
    std::optional<Lookup> take() {
        waiting.remove_if([](const Lookup& lookup) { return lookup.wanted.expired(); });
        const auto place = std::find_if(waiting.begin(), waiting.end(),
                                        [&](const Lookup& lookup) { return names.count(lookup.host) == 0; });
        if (place == waiting.end()) return std::nullopt;
        Lookup next = std::move(*place);
        waiting.erase(place);
        names.insert(next.host);
        return next;
    }

    void start(Lookup first) {
        try {
            std::thread([self = shared_from_this(), first] { self->work(first); }).detach();
        } catch (const std::system_error&) {
            names.erase(first.host);
            answer(first, asio::error::no_memory, {});
        }
    }

    void work(Lookup lookup) {
        while (true) {
            run(lookup);
            const std::lock_guard lock(mutex);
            names.erase(lookup.host);
            std::optional<Lookup> next = take();
            if (!next) return;
            lookup = std::move(*next);
        }
    }

    std::mutex mutex;
    std::list<Lookup> waiting;
    std::set<std::string> names; // that are being looked up, each by a thread
};

} // namespace

void lookUp(const std::string& host, const std::string& port, std::weak_ptr<void> wanted, std::shared_ptr<Mailbox> box,
            LookupDone done) {
    error_code error;
    const asio::ip::address address = asio::ip::make_address(host, error);
    if (error) {
        static const std::shared_ptr<Lookups> lookups = std::make_shared<Lookups>();
        return lookups->add({host, port, std::move(wanted), std::move(box), std::move(done)});
    }
    const asio::ip::tcp::endpoint place(address, static_cast<std::uint16_t>(std::stoi(port)));
    box->post([done = std::move(done), places = Places::create(place, host, port)] { done({}, places); });
}

} // namespace cimhost::http
