// Binds an arena to the calling thread: all objects that the thread makes through the CMPI tables lie in it.
#pragma once

#include "cimhost/broker/arena.h"
#include "cimhost/broker/objects.h"

namespace cimhost {

class Broker;

/// What is bound to a thread. Bindings can be nested.
struct ThreadBinding {
    Arena* arena = nullptr;
    Broker* broker = nullptr;
    ThreadBinding* previous = nullptr;
};

/// The innermost binding of the calling thread, or null.
ThreadBinding* currentBinding() noexcept;

/// One request. As long as it lives, the objects that the calling thread makes lie in its arena, and they end with it.
/// The thread that made it destroys it; nested scopes in reverse order.
class RequestScope {
public:
    explicit RequestScope(Broker& broker) noexcept;
    ~RequestScope();
    RequestScope(const RequestScope&) = delete;
    RequestScope& operator=(const RequestScope&) = delete;

    /// The broker of this request's calls.
    [[nodiscard]] Broker& broker() const noexcept { return *binding.broker; }
    [[nodiscard]] Arena& arena() noexcept { return memory; }
    /// Makes objects that end with the request.
    [[nodiscard]] ObjectMaker make() noexcept { return {*binding.broker, memory}; }

private:
    Arena memory;
    ThreadBinding binding;
};

} // namespace cimhost
