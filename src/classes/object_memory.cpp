#include "classes/object_memory.h"

#include <atomic>

namespace merolt {

namespace {

std::atomic<const CMPIBroker*> server = nullptr; // null where there is nothing to give back

bool isWhole(const CMPIBrokerMemFT* table) {
    return table && table->mark && table->release && table->cmpiFree && table->freeInstance && table->freeObjectPath;
}

} // namespace

void useMemoryOf(const CMPIBroker* broker) { server = isWhole(broker->mft) ? broker : nullptr; }

ObjectMemory::ObjectMemory() {
    if (const CMPIBroker* broker = server) mark = broker->mft->mark(broker, nullptr);
}

void ObjectMemory::giveBack() const {
    const CMPIBroker* broker = server;
    if (broker && mark) broker->mft->release(broker, mark);
}

} // namespace merolt
