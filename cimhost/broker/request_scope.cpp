#include "cimhost/broker/request_scope.h"

#include "cimhost/broker/table_support.h"

namespace cimhost {
namespace {

thread_local ThreadBinding* innermost = nullptr;

} // namespace

ThreadBinding* currentBinding() noexcept { return innermost; }

void bindThread(ThreadBinding& binding) noexcept {
    binding.previous = innermost;
    innermost = &binding;
}

void unbindThread(const ThreadBinding& binding) noexcept {
    for (ThreadBinding** link = &innermost; *link; link = &(*link)->previous) {
        if (*link != &binding) continue;
        *link = binding.previous;
        return;
    }
}

Arena& workArena() noexcept {
    // Objects of a thread without a binding live as long as the thread.
    thread_local Arena unbound;
    return innermost ? *innermost->arena : unbound;
}

RequestScope::RequestScope(Broker& broker) noexcept : binding{&memory, &broker, nullptr} { bindThread(binding); }

RequestScope::~RequestScope() { unbindThread(binding); }

} // namespace cimhost
