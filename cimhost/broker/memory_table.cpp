// The CMPIBrokerMemFT table: with it a provider gives back memory before its call ends.

#include "cimhost/broker/table_support.h"

#include <cstdlib>
#include <cstring>

namespace cimhost {
namespace {

// The place in a thread's arena at which mark() was called. It lies at that place itself.
struct Mark {
    Arena* arena;
    Arena::Place place;
};

CMPIGcStat* mark(const CMPIBroker* /*broker*/, CMPIStatus* status) noexcept {
    Arena& arena = workArena();
    const Arena::Place place = arena.place();
    setStatus(status, CMPI_RC_OK);
    return arena.make<Mark>(Mark{&arena, place});
}

// Gives back all objects that the calling thread has made since the mark. Objects that it has returned belong to the
// server and stay.
CMPIStatus release(const CMPIBroker* /*broker*/, const CMPIGcStat* stat) noexcept {
    const auto* const marked = static_cast<const Mark*>(stat);
    if (!marked || marked->arena != &workArena()) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    const Arena::Place place = marked->place;
    workArena().rewind(place);
    return statusOf(CMPI_RC_OK);
}

void* allocate(const CMPIBroker* /*broker*/, std::size_t bytes) noexcept { return std::malloc(bytes); }

void* allocateZeros(const CMPIBroker* /*broker*/, std::size_t count, std::size_t bytes) noexcept {
    return std::calloc(count, bytes);
}

void* reallocate(const CMPIBroker* /*broker*/, void* memory, std::size_t bytes) noexcept {
    return std::realloc(memory, bytes);
}

char* copyText(const CMPIBroker* /*broker*/, const char* text) noexcept { return text ? ::strdup(text) : nullptr; }

void deallocate(const CMPIBroker* /*broker*/, void* memory) noexcept { std::free(memory); }

template <typename Object>
void freeObject(const CMPIBroker* /*broker*/, Object* object) noexcept {
    if (object && object->ft) object->ft->release(object);
}

} // namespace

const CMPIBrokerMemFT tables::memory = {
    CMPICurrentVersion,
    mark,
    release,
    allocate,
    allocateZeros,
    reallocate,
    copyText,
    deallocate,
    freeObject<CMPIInstance>,
    freeObject<CMPIObjectPath>,
    freeObject<CMPIArgs>,
    freeObject<CMPIString>,
    freeObject<CMPIArray>,
    freeObject<CMPIDateTime>,
    freeObject<CMPISelectExp>,
};

} // namespace cimhost
