// The pulled enumerations of DSP0200 1.4: an Open operation collects all elements. Its answer and the answers to the
// Pull operations after it hand them out.
#pragma once

#include "cimhost/broker/object_sink.h"
#include "cimhost/service/call.h"
#include "cimhost/service/pull_sessions.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace cimhost {

/// The answer to an Open operation. It takes as many elements as the client wants at once; the others go to a session.
class PulledAnswer final : public ObjectSink {
public:
    /// Checks the namespace, and the parameters that all Open operations have but for the filter, in the order in which
    /// DSP0200 lists their errors. Throws CimFailure, as everything here does.
    PulledAnswer(const Call& behind, PulledKind pulled);

    /// Throws if the request has a filter. Called once the class is known to exist.
    void refuseFilter() const;

    /// Sets which properties instances show. Without it they show all.
    void show(Selection wanted) { selection = std::move(wanted); }

    // Each adds one element.
    void deliver(const InstanceObject& instance) override;
    void deliver(const ObjectPathObject& path) override;

    /// Ends the answer. Called after the last element.
    void end();

private:
    void endElement(std::size_t begin);

    const Call& call;
    const PulledKind kind;
    const std::string host;
    Selection selection;
    std::chrono::seconds timeout{};
    std::uint32_t most = 0;
    std::size_t start = 0; // of the elements, in the answer
    std::unique_ptr<PullSession> session;
};

/// Each appends what stands inside IMETHODRESPONSE. Throws CimFailure.
void openEnumerateInstances(const Call& call);
void openEnumerateInstancePaths(const Call& call);
void pullInstancesWithPath(const Call& call);
void pullInstancePaths(const Call& call);
void closeEnumeration(const Call& call);

} // namespace cimhost
