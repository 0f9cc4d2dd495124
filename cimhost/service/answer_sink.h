// What becomes of the objects of an answer as the provider delivers them.
#pragma once

#include "cimhost/broker/object_sink.h"
#include "cimhost/service/call.h"

#include <cstddef>
#include <utility>

namespace cimhost {

/// Encodes one object after the other, at once. Only the first ones are kept meanwhile: if there are no more, they are
/// encoded when the provider has returned and lets others in again.
template <typename Encode>
class AnswerSink final : public ObjectSink {
public:
    /// encode appends an instance or a path to the document of the call, which outlives this.
    AnswerSink(const Call& ofAnswer, Encode function)
        : call(ofAnswer), encode(std::move(function)), kept(ofAnswer.scope.arena()),
          sizeBefore(ofAnswer.scope.arena().size()) {}

    void deliver(const InstanceObject& instance) override { take(instance); }
    void deliver(const ObjectPathObject& path) override { take(path); }

    /// When the last object has been delivered.
    void finish() {
        if (!isPassing) passKept();
    }

private:
    // Of the objects that are kept, with whatever else the provider makes.
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

/// Asks for objects with the sink, and encodes them.
template <typename Encode, typename Ask>
void answerWith(const Call& call, Encode encode, Ask ask) {
    AnswerSink<Encode> sink(call, std::move(encode));
    ask(sink);
    sink.finish();
}

} // namespace cimhost
