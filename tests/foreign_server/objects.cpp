#include "objects.h"

#include "violations.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <unordered_map>

namespace foreign_server {

namespace {

const char* const kindNames[] = {"string",    "array",   "date",   "object path",      "instance",
                                 "arguments", "context", "result", "select expression"};

std::string nameOf(Kind kind) { return kindNames[static_cast<std::size_t>(kind)]; }

std::string withArticle(Kind kind) {
    const std::string name = nameOf(kind);
    return (std::string("aio").find(name.front()) == std::string::npos ? "a " : "an ") + name;
}

/// What is known of an address; the last owner if it was used anew.
struct Entry {
    std::unique_ptr<Object> living;
    Kind kind = Kind::string;
    const char* end = nullptr; ///< of what is gone
};

struct Shard {
    std::mutex mutex;
    std::unordered_map<const void*, Entry> entries;
};

using Shards = std::array<Shard, 16>;

// Never destroyed: a provider's thread may outlive everything else.
Shard& shardOf(const void* handle) {
    static auto& shards = *std::make_unique<Shards>().release();
    return shards[reinterpret_cast<std::uintptr_t>(handle) / 64 % shards.size()];
}

std::atomic<std::size_t> clones = 0;
std::atomic<std::size_t> releasesOfOwn = 0;
std::atomic<std::uintptr_t> lastNumber = 0;

/// No pointer: the word is the server's, and who follows it faults.
void* opaqueWord() { return reinterpret_cast<void*>((std::uintptr_t{0xF0E1} << 48) | ++lastNumber); }

thread_local std::vector<Scope*> attachments;

// What a thread makes that is not attached goes with nothing.
Scope& strayScope() {
    static auto& only = *std::make_unique<Scope>("the process's end").release();
    return only;
}

std::mutex strayMutex;

} // namespace

void adopt(std::unique_ptr<Object> object, Ownership ownership, Scope* scope) {
    auto* handle = static_cast<Handle*>(allocateShown(sizeof(Handle)));
    *handle = {opaqueWord(), tableOf(object->kind)};
    object->handle = handle;
    object->ownership = ownership;
    if (ownership == Ownership::provider) ++clones;
    if (scope == &strayScope()) {
        const std::lock_guard guard(strayMutex);
        scope->handles.push_back(handle);
    } else if (scope) {
        scope->handles.push_back(handle);
    }
    Shard& shard = shardOf(handle);
    const std::lock_guard guard(shard.mutex);
    Entry& entry = shard.entries[handle];
    entry.kind = object->kind;
    entry.end = nullptr;
    entry.living = std::move(object);
}

Scope* scopeFor(const char* function) {
    if (Scope* scope = Scope::current()) return scope;
    violate(function, "made an object on a thread that is not attached");
    return &strayScope();
}

Object* findObject(const void* handle, Kind kind, const char* function) {
    if (!handle) {
        violate(function, "a null " + nameOf(kind));
        return nullptr;
    }
    Shard& shard = shardOf(handle);
    const std::lock_guard guard(shard.mutex);
    const auto found = shard.entries.find(handle);
    if (found == shard.entries.end()) {
        violate(function, "the " + nameOf(kind) + " is not one of this server's");
        return nullptr;
    }
    const Entry& entry = found->second;
    if (!entry.living) {
        violate(function, "use of " + withArticle(entry.kind) + " after " + entry.end);
        return nullptr;
    }
    if (entry.kind != kind) {
        violate(function, withArticle(entry.kind) + " for " + withArticle(kind));
        return nullptr;
    }
    return entry.living.get();
}

void kill(const void* handle, const char* end) {
    std::unique_ptr<Object> dead;
    {
        Shard& shard = shardOf(handle);
        const std::lock_guard guard(shard.mutex);
        const auto found = shard.entries.find(handle);
        if (found == shard.entries.end() || !found->second.living) return;
        dead = std::move(found->second.living);
        found->second.end = end;
    }
    if (dead->ownership == Ownership::provider) --clones;
    Handle* words = dead->handle;
    fillDead(words, sizeof(Handle));
    words->ft = deadTableOf(dead->kind);
    bury(words, sizeof(Handle));
}

CMPIrc release(const void* handle, Kind kind, const char* function) {
    const Object* object = findObject(handle, kind, function);
    if (!object) return CMPI_RC_ERR_INVALID_HANDLE;
    if (object->ownership == Ownership::server) {
        ++releasesOfOwn;
    } else {
        kill(handle, "its release");
    }
    return CMPI_RC_OK;
}

std::size_t livingClones() { return clones; }

std::size_t ignoredReleases() { return releasesOfOwn; }

Scope::~Scope() {
    leave();
    for (const void* handle : handles)
        kill(handle, end);
}

void Scope::enter() { attachments.push_back(this); }

void Scope::leave() noexcept {
    const auto place = std::find(attachments.begin(), attachments.end(), this);
    if (place != attachments.end()) attachments.erase(place);
}

Scope* Scope::current() noexcept { return attachments.empty() ? nullptr : attachments.back(); }

} // namespace foreign_server
