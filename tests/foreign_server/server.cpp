#include "server.h"

#include "dead_tables.h"
#include "interfaces.h"
#include "objects.h"
#include "played.h"
#include "tables.h"

#include <chrono>
#include <utility>

namespace foreign_server {

namespace {

std::atomic<Server*> only = nullptr;

// A thread begins after its maker has gone on.
constexpr std::chrono::milliseconds lateness{1};

} // namespace

/// Servers find their own things behind the words that a provider knows.
struct Server::Block {
    CMPIBroker shown;
    Server* owner;
};

struct Server::Prepared {
    Scope scope{"its thread was detached"};
    ContextObject* context = nullptr;
    bool isAttached = false;
    std::thread::id thread;
};

Server::Server(Host host)
    : home(std::move(host)), reader(home), block(std::make_unique<Block>()), interfaces(std::make_unique<Interfaces>()),
      clonesBefore(livingClones()) {
    block->shown = {nullptr, brokerTable(), encapsulationTable(), extensionTable(), nullptr};
    block->owner = this;
    only = this;
}

Server::~Server() {
    waitForThreads();
    if (livingClones() > clonesBefore) violate("clone", "a clone was never released");
    only = nullptr;
    block->owner = nullptr;
    kill(block->shown);
    // It stays, for whoever still knows it. Never destroyed: that may be a thread that outlives everything else.
    static auto& dead = *std::make_unique<std::vector<std::unique_ptr<Block>>>().release();
    dead.push_back(std::move(block));
}

Server& Server::current() { return *only; }

Server* Server::ifAny() noexcept { return only; }

CMPIBroker* Server::broker() noexcept { return &block->shown; }

void Server::beforeNextRequest(std::function<void(CMPIObjectPath*, CMPIResult*)> watcher) {
    const std::lock_guard guard(mutex);
    nextWatcher = std::move(watcher);
}

void Server::announce(CMPIObjectPath* path, CMPIResult* result) {
    std::function<void(CMPIObjectPath*, CMPIResult*)> watcher;
    {
        const std::lock_guard guard(mutex);
        watcher = std::exchange(nextWatcher, nullptr);
    }
    if (watcher) watcher(path, result);
}

CMPIStatus Server::toProvider(const CMPIStatus& hostStatus, const char* function) {
    const std::optional<std::string> message = reader.text(hostStatus.msg);
    return {hostStatus.rc, message ? make<StringObject>(function, *message)->shown() : nullptr};
}

bool Server::isOwn(const CMPIBroker* asked, const char* function) {
    if (asked == &block->shown) return true;
    violate(function, "the broker is not the one that was handed out");
    return false;
}

CMPIContext* Server::prepare(const ContextObject& parent) {
    auto made = std::make_unique<Prepared>();
    auto context = std::make_unique<ContextObject>();
    context->entries = parent.entries;
    made->context = context.get();
    adopt(std::move(context), Ownership::server, &made->scope);
    CMPIContext* shown = made->context->shown();
    const std::lock_guard guard(mutex);
    prepared.emplace(shown, std::move(made));
    return shown;
}

CMPIrc Server::attach(const CMPIContext* context) {
    constexpr const char* function = "attachThread";
    if (!use<ContextObject>(context, function)) return CMPI_RC_ERR_INVALID_HANDLE;
    const std::lock_guard guard(mutex);
    const auto place = prepared.find(context);
    if (place == prepared.end() || place->second->isAttached) {
        violate(function, place == prepared.end() ? "the context was not prepared" : "the context is attached already");
        return CMPI_RC_ERR_FAILED;
    }
    place->second->isAttached = true;
    place->second->thread = std::this_thread::get_id();
    place->second->scope.enter();
    return CMPI_RC_OK;
}

CMPIrc Server::detach(const CMPIContext* context) {
    constexpr const char* function = "detachThread";
    if (!use<ContextObject>(context, function)) return CMPI_RC_ERR_INVALID_HANDLE;
    std::unique_ptr<Prepared> ended;
    {
        const std::lock_guard guard(mutex);
        const auto place = prepared.find(context);
        if (place == prepared.end() || place->second->thread != std::this_thread::get_id()) {
            violate(function, "the context is not this thread's");
            return CMPI_RC_ERR_FAILED;
        }
        ended = std::move(place->second);
        prepared.erase(place);
    }
    return CMPI_RC_OK;
}

bool Server::giveBack(const CMPIContext* context) {
    std::unique_ptr<Prepared> ended;
    const std::lock_guard guard(mutex);
    const auto place = prepared.find(context);
    if (place == prepared.end() || place->second->isAttached) return false;
    ended = std::move(place->second);
    prepared.erase(place);
    return true;
}

std::size_t Server::preparedContexts() {
    const std::lock_guard guard(mutex);
    return prepared.size();
}

void* Server::startThread(void* (*function)(void*), void* argument) {
    if (!Scope::current()) violate("newThread", "called on a thread that is not attached");
    const std::lock_guard guard(mutex);
    ++running;
    threads.emplace_back([this, function, argument] {
        std::this_thread::sleep_for(lateness);
        function(argument);
        if (Scope::current()) violate("newThread", "the thread ended without detaching itself");
        --running;
    });
    // A number, and no address of anything.
    return reinterpret_cast<void*>(threads.size() * 2 + 1);
}

void Server::waitForThreads() {
    std::vector<std::thread> ended;
    {
        const std::lock_guard guard(mutex);
        ended = std::exchange(threads, {});
    }
    for (std::thread& thread : ended)
        thread.join();
}

bool Server::isA(const PathData& path, const char* className) {
    const std::string nameSpace = path.nameSpace.value_or("");
    const std::string test = nameSpace + ':' + path.className + ':' + className;
    {
        const std::lock_guard guard(mutex);
        const auto known = knownTests.find(test);
        if (known != knownTests.end()) return known->second;
    }
    const CMPIContext* context = nullptr;
    const std::shared_ptr<void> scope = home.enter(context);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIBrokerEncFT& makers = *home.broker->eft;
    const CMPIObjectPath* hostPath =
        makers.newObjectPath(home.broker, nameSpace.c_str(), path.className.c_str(), &status);
    const bool isA = makers.classPathIsA(home.broker, hostPath, className, &status) != 0;
    const std::lock_guard guard(mutex);
    return knownTests[test] = isA;
}

CMPIrc Server::deliver(const char* nameSpace, const InstanceData& indication) {
    if (subscriptions <= 0) return CMPI_RC_ERR_FAILED;
    const CMPIContext* context = nullptr;
    const std::shared_ptr<void> scope = home.enter(context);
    const CMPIInstance* copy = ToHost(home.broker, "deliverIndication").instance(indication);
    return home.broker->bft->deliverIndication(home.broker, context, nameSpace, copy).rc;
}

CMPIStatus releaseContext(CMPIContext* context) {
    constexpr const char* function = "CMPIContext.release";
    if (!use<ContextObject>(context, function)) return answer(CMPI_RC_ERR_INVALID_HANDLE);
    if (Server::current().giveBack(context)) return answer(CMPI_RC_OK);
    return answer(release(context, Kind::context, function));
}

CMPIData readPlayed(const CMPIArgs* args, const char* name, CMPIStatus* status, const char* function) {
    Server& server = Server::current();
    CMPIStatus outcome = {CMPI_RC_OK, nullptr};
    const CMPIData data = args->ft->getArg(args, name, &outcome);
    if (outcome.rc == CMPI_RC_OK) return handOut(server.fromHost().value(data), function);
    if (status) *status = server.toProvider(outcome, function);
    return absent();
}

} // namespace foreign_server
