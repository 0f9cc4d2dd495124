// Encodes the objects of an answer while the provider delivers them.
#pragma once

#include "cimhost/broker/object_sink.h"
#include "cimhost/service/call.h"

#include <cstddef>
#include <utility>

namespace cimhost {

/// Encodes each object at once, except for the first ones, which are kept. If no more come, they are encoded after the
/// provider has returned and has released its lock for other requests.
template <typename Encode>
class AnswerSink final : public ObjectSink {
public:
    /// The call outlives this.
    /// @param function appends an instance or a path to the document of the call
    AnswerSink(const Call& ofAnswer, Encode function)
        : call(ofAnswer), encode(std::move(function)), kept(ofAnswer.scope.arena()),
          sizeBefore(ofAnswer.scope.arena().size()) {}

    void deliver(const InstanceObject& instance) override { take(instance); }
    void deliver(const ObjectPathObject& path) override { take(path); }

    /// Called after the last object.
    void finish() {
        if (!isPassing) passKept();
    }

private:
    // Bytes of the objects that are kept, together with all that the provider makes meanwhile.
    static constexpr std::size_t mostKept = std::size_t{64} << 10;

    template <typename Object>
    void take(const Object& object) {
        if (isPassing) return pass(object);
        kept.deliver(object);
        if (call.scope.arena().size() > sizeBefore + mostKept) passKept();
    }

    void passKept() {
        isPassing = true;
        for (const InstanceObject* instance : kept.instances)
            pass(*instance);
        for (const ObjectPathObject* path : kept.paths)
            pass(*path);
    }

    template <typename Object>
    void pass(const Object& object) {
        encode(object);
        call.pieces.objectDone();
    }

    const Call& call;
    Encode encode;
    ObjectCollector kept;
    const std::size_t sizeBefore;
    bool isPassing = false;
};

/// Calls ask with a sink, and encodes the objects that the sink is given.
template <typename Encode, typename Ask>
void answerWith(const Call& call, Encode encode, Ask ask) {
    AnswerSink<Encode> sink(call, std::move(encode));
    ask(sink);
    sink.finish();
}

} // namespace cimhost
