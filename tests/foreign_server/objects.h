// The server's objects: what a provider sees of one is two words in a block of their own, and everything else is found
// by their address. So an object that is gone, or was never one, is known as such without a look at its memory.
#pragma once

#include "quarantine.h"
#include "values.h"

#include "cmpift.h"

#include <memory>
#include <vector>

namespace foreign_server {

class Scope;

enum class Kind { string, array, dateTime, path, instance, args, context, result, selectExp };

enum class Ownership {
    scope,    ///< ends with its request or thread, or at once when the provider releases it
    server,   ///< a request's own: a release is counted and does nothing
    provider, ///< a clone: lives until it is released, also beyond the request
};

/// What a provider sees.
struct Handle {
    void* hdl;
    void* ft;
};

class Object {
public:
    explicit Object(Kind ofKind) : kind(ofKind) {}
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    const Kind kind;
    Ownership ownership = Ownership::scope;
    Handle* handle = nullptr;
};

template <Kind objectKind, class Struct>
struct ObjectOf : Object {
    static constexpr Kind ownKind = objectKind;
    using CMPI = Struct;

    ObjectOf() : Object(objectKind) {}
    CMPI* shown() const { return reinterpret_cast<CMPI*>(handle); }
};

struct StringObject : ObjectOf<Kind::string, CMPIString> {
    /// Without a text, what newString(NULL) makes.
    StringObject() = default;
    explicit StringObject(std::string_view given) : text(given) {}

    ShownText text;
};

/// Numbers lie side by side. Of texts and other objects only the pointers are kept, as servers do: who releases an
/// element breaks the array.
struct ArrayObject : ObjectOf<Kind::array, CMPIArray> {
    CMPIType elementType = CMPI_null;
    bool mayGrow = false;
    std::vector<unsigned char> numbers;
    std::vector<void*> objects;
    std::vector<bool> isSet;
};

struct DateTimeObject : ObjectOf<Kind::dateTime, CMPIDateTime> {
    DateTimeData data;
};

struct PathObject : ObjectOf<Kind::path, CMPIObjectPath> {
    PathData data;
    /// A path that the test plays itself: every read is passed on to it.
    const CMPIObjectPath* played = nullptr;
};

struct InstanceObject : ObjectOf<Kind::instance, CMPIInstance> {
    InstanceData data;
};

struct ArgsObject : ObjectOf<Kind::args, CMPIArgs> {
    NamedValues values;
    /// Arguments that the test plays itself.
    const CMPIArgs* played = nullptr;
};

struct ContextObject : ObjectOf<Kind::context, CMPIContext> {
    NamedValues entries;
};

struct ResultObject : ObjectOf<Kind::result, CMPIResult> {
    std::vector<Value> returned;
    std::size_t doneCount = 0;
};

struct SelectExpObject : ObjectOf<Kind::selectExp, CMPISelectExp> {
    std::string query;
    std::string language;
};

/// The table of a kind, no larger than its first level promises.
void* tableOf(Kind kind);
/// A table whose every slot writes down a use after the end.
void* deadTableOf(Kind kind);

/// What a request, or a thread's attachment, makes. To be entered and left by one thread.
class Scope {
public:
    /// @param endsBy how its end reads in a violation: "its request's end".
    explicit Scope(const char* endsBy) : end(endsBy) {}
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    void enter();
    void leave() noexcept;
    /// The calling thread's innermost; null for a thread that is not attached.
    static Scope* current() noexcept;

private:
    friend void adopt(std::unique_ptr<Object> object, Ownership ownership, Scope* scope);

    const char* const end;
    std::vector<const void*> handles;
};

/// Gives an object its two words. Without a scope it is the provider's.
void adopt(std::unique_ptr<Object> object, Ownership ownership, Scope* scope);

/// Where an object goes that the calling thread makes in that function. A thread that is not attached breaks the rules.
Scope* scopeFor(const char* function);

/// Makes an object in the calling thread's scope.
template <class Wanted, class... Arguments>
Wanted* make(const char* function, Arguments&&... arguments) {
    auto made = std::make_unique<Wanted>(std::forward<Arguments>(arguments)...);
    Wanted* object = made.get();
    adopt(std::move(made), Ownership::scope, scopeFor(function));
    return object;
}

/// Makes an object that only the provider can end.
template <class Wanted, class... Arguments>
Wanted* makeClone(Arguments&&... arguments) {
    auto made = std::make_unique<Wanted>(std::forward<Arguments>(arguments)...);
    Wanted* object = made.get();
    adopt(std::move(made), Ownership::provider, nullptr);
    return object;
}

/// The object behind a pointer that the provider gave. Null, with the breach written down, if it is null, gone, of
/// another kind, or not of this server.
Object* findObject(const void* handle, Kind kind, const char* function);

template <class Wanted>
Wanted* use(const typename Wanted::CMPI* handle, const char* function) {
    return static_cast<Wanted*>(findObject(handle, Wanted::ownKind, function));
}

/// Ends an object: its memory is dead from here on.
void kill(const void* handle, const char* end);
/// The release slot of every kind.
CMPIrc release(const void* handle, Kind kind, const char* function);

/// Clones that were never released.
std::size_t livingClones();
/// Releases of objects that are the server's own.
std::size_t ignoredReleases();

} // namespace foreign_server
