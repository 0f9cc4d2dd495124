#include "tavik/host/lldp_client.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "tavik/host/descriptor.h"

namespace tavik::host {

namespace {

// What is used of liblldpctl, declared here: neither the library nor its header need be there when this is built. The
// number in its name (.so.4) promises these.
struct Connection;
struct Atom;
struct Iterator;
using Transfer = ssize_t (*)(Connection*, const std::uint8_t* data, std::size_t length, void* user);

enum Key : int {
    KeyInterfaceName = 1000,
    KeyPortNeighbours = 1200,
    KeyPortId = 1204,
    KeyPortDescription = 1205,
    KeyChassisId = 1802,
    KeyChassisName = 1803,
};

constexpr ssize_t errorEndOfFile = -502;
constexpr ssize_t errorCallback = -902;

struct Library {
    const char* (*transport)() = nullptr;
    Connection* (*open)(const char* socket, Transfer send, Transfer receive, void* user) = nullptr;
    int (*release)(Connection*) = nullptr;
    int (*lastError)(Connection*) = nullptr;
    Atom* (*interfaces)(Connection*) = nullptr;
    Atom* (*port)(Atom* interface) = nullptr;
    Atom* (*get)(Atom*, Key) = nullptr;
    const char* (*text)(Atom*, Key) = nullptr;
    Iterator* (*begin)(Atom*) = nullptr;
    Iterator* (*next)(Atom*, Iterator*) = nullptr;
    Atom* (*value)(Atom*, Iterator*) = nullptr;
    void (*drop)(Atom*) = nullptr;
};

template <typename Function>
bool find(void* handle, const char* name, Function& function) {
    void* const symbol = ::dlsym(handle, name);
    static_assert(sizeof symbol == sizeof function);
    std::memcpy(&function, &symbol, sizeof symbol);
    return symbol != nullptr;
}

Attribute<Library> loadLibrary(const char* name) {
    void* const handle = ::dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) return Absence{"no " + std::string(name)};
    Library library;
    const bool isWhole =
        find(handle, "lldpctl_get_default_transport", library.transport) &&
        find(handle, "lldpctl_new_name", library.open) && find(handle, "lldpctl_release", library.release) &&
        find(handle, "lldpctl_last_error", library.lastError) &&
        find(handle, "lldpctl_get_interfaces", library.interfaces) && find(handle, "lldpctl_get_port", library.port) &&
        find(handle, "lldpctl_atom_get", library.get) && find(handle, "lldpctl_atom_get_str", library.text) &&
        find(handle, "lldpctl_atom_iter", library.begin) && find(handle, "lldpctl_atom_iter_next", library.next) &&
        find(handle, "lldpctl_atom_iter_value", library.value) && find(handle, "lldpctl_atom_dec_ref", library.drop);
    ::dlclose(handle);
    if (!isWhole) return Absence{std::string(name) + " lacks a call"};
    return library;
}

/** The daemon's socket. The library's own calls would wait for it without end, so it gets these. */
class Wire {
public:
    Wire(const char* path, std::chrono::milliseconds limit)
        : end_(std::chrono::steady_clock::now() + limit),
          socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::size_t size = path == nullptr ? sizeof address.sun_path : std::strlen(path);
        if (size >= sizeof address.sun_path) {
            error_ = ENAMETOOLONG;
            return;
        }
        std::memcpy(static_cast<char*>(address.sun_path), path, size);
        // A socket of this family connects at once or not at all.
        if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) error_ = errno;
    }

    /** 0, or why the last step failed. */
    int error() const { return error_; }

    static ssize_t send(Connection*, const std::uint8_t* data, std::size_t length, void* wire) {
        auto& self = *static_cast<Wire*>(wire);
        return self.transfer(POLLOUT, [&] { return ::send(self.socket_.get(), data, length, MSG_NOSIGNAL); });
    }

    /** The library's type says const for both directions. */
    static ssize_t receive(Connection*, const std::uint8_t* data, std::size_t length, void* wire) {
        auto& self = *static_cast<Wire*>(wire);
        auto* const buffer = const_cast<std::uint8_t*>(data);
        const auto size = self.transfer(POLLIN, [&] { return ::recv(self.socket_.get(), buffer, length, 0); });
        if (size == 0) self.error_ = ECONNRESET;
        return size == 0 ? errorEndOfFile : size;
    }

private:
    template <typename Call>
    ssize_t transfer(short event, Call call) {
        while (error_ == 0) {
            const auto size = call();
            if (size >= 0) return size;
            if (errno == EINTR) continue;
            error_ = errno == EAGAIN ? await(event) : errno;
        }
        return errorCallback;
    }

    int await(short event) const {
        using std::chrono::milliseconds;
        const auto left = std::chrono::ceil<milliseconds>(end_ - std::chrono::steady_clock::now());
        if (left <= milliseconds(0)) return ETIMEDOUT;
        pollfd wait{socket_.get(), event, 0};
        const int ready = ::poll(&wait, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno != EINTR) return errno;
        return ready == 0 ? ETIMEDOUT : 0;
    }

    const std::chrono::steady_clock::time_point end_;
    const Descriptor socket_;
    int error_ = 0;
};

class Question {
public:
    Question(const Library& library, Wire& wire)
        : library_(library), wire_(wire),
          connection_(library.open(library.transport(), Wire::send, Wire::receive, &wire), library.release) {}

    Attribute<NeighboursOfPorts> ask() const {
        if (!connection_) return Absence{"no connection to lldpd"};
        const auto interfaces = held(library_.interfaces(connection_.get()));
        if (!interfaces) return failure();
        NeighboursOfPorts all;
        forEach(interfaces.get(), mostPorts, [&](Atom* interface) {
            auto name = text(interface, KeyInterfaceName);
            if (wire_.error() == 0) all[std::move(name)] = neighboursOf(interface);
        });
        if (wire_.error() != 0) return failure();
        return all;
    }

private:
    static constexpr std::size_t mostPorts = 4096;
    static constexpr std::size_t mostNeighbours = 64;

    using Held = std::unique_ptr<Atom, void (*)(Atom*)>;

    Held held(Atom* atom) const { return {atom, library_.drop}; }

    Absence failure() const {
        if (wire_.error() != 0) return {"lldpd: " + std::generic_category().message(wire_.error())};
        return {"lldpd: error " + std::to_string(library_.lastError(connection_.get())) + " of its library"};
    }

    std::string text(Atom* atom, Key key) const {
        const char* const found = library_.text(atom, key);
        return found == nullptr ? std::string() : neighbourText(found);
    }

    template <typename Take>
    void forEach(Atom* list, std::size_t most, Take take) const {
        std::size_t count = 0;
        for (Iterator* place = library_.begin(list); place != nullptr && count < most; ++count) {
            if (const auto one = held(library_.value(list, place))) take(one.get());
            place = library_.next(list, place);
        }
    }

    std::vector<Neighbour> neighboursOf(Atom* interface) const {
        std::vector<Neighbour> found;
        const auto port = held(library_.port(interface));
        const auto list = held(port ? library_.get(port.get(), KeyPortNeighbours) : nullptr);
        if (!list) return found;
        forEach(list.get(), mostNeighbours, [&](Atom* one) {
            found.push_back({text(one, KeyChassisName), text(one, KeyPortId), text(one, KeyPortDescription),
                             text(one, KeyChassisId)});
        });
        return found;
    }

    const Library& library_;
    const Wire& wire_;
    const std::unique_ptr<Connection, int (*)(Connection*)> connection_;
};

} // namespace

Attribute<NeighboursOfPorts> askLldpDaemon(const char* library, std::chrono::milliseconds limit) {
    const auto loaded = loadLibrary(library);
    if (!loaded) return loaded.absence();
    Wire wire(loaded->transport(), limit);
    if (wire.error() != 0) return Absence{"lldpd: " + std::generic_category().message(wire.error())};
    return Question(*loaded, wire).ask();
}

Attribute<std::vector<Neighbour>> LldpNeighbours::of(const std::string& interface, Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    if (now >= until_) {
        told_ = askLldpDaemon(library_.c_str(), limit_);
        until_ = now + (told_ ? keptFor : pauseAfterFailure);
    }
    if (!told_) return told_.absence();
    const auto found = told_->find(interface);
    if (found == told_->end() || found->second.empty()) return Absence{"lldpd knows none"};
    return found->second;
}

} // namespace tavik::host
