// Where the objects of an answer go as a provider hands them over.
#pragma once

#include "cimhost/broker/objects.h"

#include <vector>

namespace cimhost {

/// Takes one object after the other, on the provider's thread and while the provider waits, most often with its lock
/// held: so it never waits for a client. An object is whole when it is handed over, and lies in memory that may be used
/// again as soon as the call returns; what is to be kept is copied.
///
/// Whoever throws ends the answer: the provider is told that there is no room for more, and what was thrown leaves the
/// operation once the provider has returned.
class ObjectSink {
public:
    virtual ~ObjectSink() = default;

    virtual void deliver(const InstanceObject& instance) = 0;
    virtual void deliver(const ObjectPathObject& path) = 0;
};

/// Keeps them all, in order, as they were at that moment; they live as long as the arena.
class ObjectCollector : public ObjectSink {
public:
    explicit ObjectCollector(Arena& home) : arena(home) {}

    void deliver(const InstanceObject& instance) override {
        instances.push_back(instance.copyTo(arena));
        arena.keepAll();
    }
    void deliver(const ObjectPathObject& path) override {
        paths.push_back(path.copyTo(arena));
        arena.keepAll();
    }

    std::vector<const InstanceObject*> instances;
    std::vector<const ObjectPathObject*> paths;

private:
    Arena& arena;
};

} // namespace cimhost
