// Binds an arena to the current thread: everything that the thread makes through the CMPI tables lies in it.
#pragma once

#include "cimhost/broker/arena.h"
#include "cimhost/broker/objects.h"

namespace cimhost {

class Broker;

/// What is bound to a thread; bindings nest.
struct ThreadBinding {
    Arena* arena = nullptr;
    Broker* broker = nullptr;
    ThreadBinding* previous = nullptr;
};

/// The innermost binding of the calling thread, or null.
ThreadBinding* currentBinding() noexcept;

/// One request: from its making to its end the calling thread's objects lie in its arena, and they end with it. To be
/// destroyed by the thread that made it, scopes in reverse order.
class RequestScope {
public:
    explicit RequestScope(Broker& broker) noexcept;
    ~RequestScope();
    RequestScope(const RequestScope&) = delete;
    RequestScope& operator=(const RequestScope&) = delete;

    /// The broker that the calls of this request go through.
    [[nodiscard]] Broker& broker() const noexcept { return *binding.broker; }
    [[nodiscard]] Arena& arena() noexcept { return memory; }
    /// Makes objects that end with the request.
    [[nodiscard]] ObjectMaker make() noexcept { return {*binding.broker, memory}; }

private:
    Arena memory;
    ThreadBinding binding;
};

} // namespace cimhost
