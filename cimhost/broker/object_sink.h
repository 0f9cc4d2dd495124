// Takes the objects of an answer while a provider hands them over.
#pragma once

#include "cimhost/broker/objects.h"

#include <vector>

namespace cimhost {

/// Takes one object after the other on the provider's thread. The provider waits meanwhile, mostly with its lock held,
/// so a sink never waits for a client. An object is complete when it is handed over. Its memory may be used again as
/// soon as the call returns, so a sink copies what it keeps.
///
/// A sink that throws ends the answer: the provider is told that there is no room for more, and the exception leaves
/// the operation once the provider has returned.
class ObjectSink {
public:
    virtual ~ObjectSink() = default;

    virtual void deliver(const InstanceObject& instance) = 0;
    virtual void deliver(const ObjectPathObject& path) = 0;
};

/// Keeps copies of all objects, in their order. The copies live as long as the arena.
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
