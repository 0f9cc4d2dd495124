// The pulled enumerations of DSP0200 1.4: an Open operation collects everything, and the answers to it and to the Pull
// operations behind it hand it out.
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

/// The answer to an Open operation, with as many elements as its client takes at once. The others open a session.
class PulledAnswer final : public ObjectSink {
public:
    /// Judges namespace and parameters that all Open operations have, in the order in which DSP0200 lists their errors,
    /// but for the filter. Throws CimFailure, as everything here does.
    PulledAnswer(const Call& behind, PulledKind pulled);

    /// To be called once the class is known to be there.
    void refuseFilter() const;

    /// Which properties instances show: all unless told otherwise.
    void show(Selection wanted) { selection = std::move(wanted); }

    // Each is one more element.
    void deliver(const InstanceObject& instance) override;
    void deliver(const ObjectPathObject& path) override;

    /// To be called behind the last one.
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
