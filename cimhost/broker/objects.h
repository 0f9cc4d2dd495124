// The objects behind the CMPI tables as the server sees them: each begins with the two words that a provider knows.
// They lie in arenas (that of a request, an attached thread or a clone), are never copied by value, and go with their
// arena. What one object holds is its own: values are copied in, and copied again for whoever asks. Within one arena a
// copy is cheap: what cannot change is shared, and the rest until one side changes it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cimhost/broker/arena.h"
#include "cimhost/model/cim_error.h"
#include "cimhost/model/class_declaration.h"
#include "cmpift.h"

namespace cimhost {

class Broker;

/// A value with its name: a key binding, an argument, a context entry, a property that no class declares.
struct NamedData {
    std::string_view name; ///< ends in NUL
    CMPIData data;
};

/// A list that grows in an arena, always the same one.
class NamedDataList {
public:
    [[nodiscard]] std::span<const NamedData> items() const noexcept { return {first, count}; }
    /// Null if there is none of that name.
    [[nodiscard]] const NamedData* find(std::string_view name) const noexcept;
    /// Replaces the value of that name or adds one. The data lies in the arena; a new name is copied there.
    void set(Arena& arena, std::string_view name, const CMPIData& data);
    /// The same for a name that ends in NUL and outlives the list.
    void setNamed(Arena& arena, std::string_view lastingName, const CMPIData& data);
    /// set() for a value as a table function is given it. 0, or what takeValue() refuses it with.
    CMPIrc take(Arena& arena, std::string_view name, const CMPIValue* value, CMPIType type);
    /// A list of its own in another arena.
    [[nodiscard]] NamedDataList copyTo(Arena& target) const;
    /// A list in the same arena; what changes in one of the two, the other does not see.
    [[nodiscard]] NamedDataList share() const noexcept;

private:
    NamedData* first = nullptr;
    std::uint32_t count = 0;
    mutable std::uint32_t capacity = 0; // 0 for shared items: they are copied before the first change
};

/// A text. `hdl` is the text itself, ends in NUL, and never changes.
class StringObject : public CMPIString {
public:
    static StringObject* make(Arena& arena, std::string_view text);
    /// Null unless the object is one of ours and whole; likewise in the other classes.
    static const StringObject* from(const CMPIString* object) noexcept;

    [[nodiscard]] std::string_view text() const noexcept { return {static_cast<const char*>(hdl), length}; }
    StringObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    std::uint32_t length;
};

/// Elements of one type. Numbers lie as densely as in C.
class ArrayObject : public CMPIArray {
public:
    /// elementType as the maker said it (without CMPI_ARRAY). All elements are null. Null if the type has no arrays.
    static ArrayObject* make(Arena& arena, CMPICount size, CMPIType elementType);
    static const ArrayObject* from(const CMPIArray* object) noexcept;

    [[nodiscard]] CMPICount size() const noexcept { return count; }
    /// CMPI_chars if it was made so; elements then read as CMPI_string.
    [[nodiscard]] CMPIType elementType() const noexcept { return type; }
    /// index < size(). A null element has CMPI_nullValue in its state.
    [[nodiscard]] CMPIData element(CMPICount index) const noexcept;
    /// 0, 12 beyond the end, 13 for another type, 60 for a broken object. CMPI_null as the type makes a null element.
    CMPIrc setElement(CMPICount index, const CMPIValue* value, CMPIType valueType);
    /// Stores data of exactly the element's type (string for chars), or null.
    void store(CMPICount index, const CMPIData& data) noexcept;
    /// The bytes of the elements where they are numbers; null elements read as 0.
    [[nodiscard]] const unsigned char* bytes() const noexcept { return values; }
    /// Numbers are copied only when one of the two is written to, if both lie in one arena.
    ArrayObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    mutable bool sharesValues; // with copies of itself
    CMPIType type;
    std::uint8_t elementSize;
    CMPICount count;
    unsigned char* values;
    unsigned char* present; // one bit an element, 0 for null

private:
    [[nodiscard]] bool isPresent(CMPICount index) const noexcept { return (present[index / 8] >> index % 8 & 1) != 0; }
    void makeValuesOwn();
    /// Of values and presence together.
    [[nodiscard]] static std::size_t contentBytes(CMPICount size, std::size_t elementBytes) noexcept {
        return size * elementBytes + (std::size_t{size} + 7) / 8;
    }
};

/// A point in time or an interval, in CIM's 25 characters.
class DateTimeObject : public CMPIDateTime {
public:
    static constexpr std::size_t textLength = 25;

    /// Null if the text is not legal: 25 characters "yyyymmddhhmmss.mmmmmmsutc" or "ddddddddhhmmss.mmmmmm:000".
    static DateTimeObject* make(Arena& arena, std::string_view text);
    /// Microseconds since 1970-01-01 00:00 UTC, or an interval's length. Null beyond what 25 characters can say.
    static DateTimeObject* make(Arena& arena, std::uint64_t microseconds, bool isInterval);
    static const DateTimeObject* from(const CMPIDateTime* object) noexcept;

    [[nodiscard]] std::string_view text() const noexcept { return {characters, textLength}; }
    [[nodiscard]] std::uint64_t microseconds() const noexcept { return value; }
    [[nodiscard]] bool isInterval() const noexcept { return characters[21] == ':'; }
    DateTimeObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    char characters[textLength + 1];
    std::uint64_t value;
};

/// Where an instance is to be found: host, namespace, class and keys.
class ObjectPathObject : public CMPIObjectPath {
public:
    static const ObjectPathObject* from(const CMPIObjectPath* object) noexcept;
    static ObjectPathObject* from(CMPIObjectPath* object) noexcept;

    [[nodiscard]] std::string_view host() const noexcept { return hostText; }
    [[nodiscard]] std::string_view nameSpace() const noexcept { return nameSpaceText; }
    [[nodiscard]] std::string_view className() const noexcept { return classText; }
    /// Null if the repository does not know the class in the path's namespace.
    [[nodiscard]] const ClassDeclaration* declaration() const noexcept { return declared; }
    /// In the order in which they were added. Types: string, boolean, sint64, uint64, real32, real64, char16, ref.
    /// An integer is sint64 unless it is too large for that.
    [[nodiscard]] std::span<const NamedData> keys() const noexcept { return keyBindings.items(); }
    /// Null if there is no such key.
    [[nodiscard]] const NamedData* key(std::string_view name) const noexcept { return keyBindings.find(name); }

    void setHost(std::string_view host);
    void setNameSpace(std::string_view nameSpace);
    void setClassName(std::string_view className);
    /// Namespace and class at once.
    void setLocation(std::string_view nameSpace, std::string_view className);
    /// Adds a key or replaces its value. 0; 1 for a null value; 61 for an array, an embedded object or a type other
    /// than the class declares for that key; 60 for a broken object. Keys that the class lacks are stored as well.
    CMPIrc addKey(std::string_view name, const CMPIValue* value, CMPIType type);
    CMPIrc addKey(std::string_view name, const CMPIData& data);

    /// A copy that later changes of this path do not reach.
    ObjectPathObject* copyTo(Arena& target) const;
    /// `//host/root/ns:Class.Key="text",Other=1`, without the parts that are empty.
    void appendText(std::string& out) const;

    ObjectPathObject(Broker& broker, Arena& arena);

    Broker* broker;
    Arena* arena;
    bool ownsArena = false;
    const ClassDeclaration* declared = nullptr;
    std::string_view hostText;
    std::string_view nameSpaceText;
    std::string_view classText;
    NamedDataList keyBindings;

private:
    void lookUpClass() noexcept;
};

/// An instance. Properties of a known class stand in slots, one for each property that the class has.
class InstanceObject : public CMPIInstance {
public:
    static const InstanceObject* from(const CMPIInstance* object) noexcept;
    static InstanceObject* from(CMPIInstance* object) noexcept;

    /// Null for a class that the repository does not know; then every property is a free one.
    [[nodiscard]] const ClassDeclaration* declaration() const noexcept { return origin->declared; }
    [[nodiscard]] std::string_view className() const noexcept { return origin->classText; }
    [[nodiscard]] std::string_view nameSpace() const noexcept { return origin->nameSpaceText; }

    /// The value of declaration()->properties()[position], or null if it was never set. A property set to NULL has
    /// CMPI_nullValue in its state and the declared type.
    [[nodiscard]] const CMPIData* valueAt(std::size_t position) const noexcept {
        return slots[position].type == CMPI_null ? nullptr : &slots[position];
    }
    /// The value of a property, declared or free; null if it was never set.
    [[nodiscard]] const CMPIData* value(std::string_view name) const noexcept;
    /// Properties of an instance whose class is unknown, in the order of their setting.
    [[nodiscard]] std::span<const NamedData> freeProperties() const noexcept { return extra.items(); }
    /// False for a property that setPropertyFilter() left out.
    [[nodiscard]] bool isWanted(std::size_t position) const noexcept {
        return !wanted || (wanted[position / 64] >> (position % 64) & 1) != 0;
    }

    /// Calls visit(std::string_view name, const PropertyDeclaration* declarationOrNull, const CMPIData& data) for every
    /// property that was set (to a value or to NULL), in the class's order.
    template <typename Visitor>
    void forEachSetProperty(Visitor&& visit) const {
        if (const ClassDeclaration* type = declaration()) {
            for (std::size_t position = 0; position < type->properties().size(); ++position) {
                const PropertyDeclaration& property = type->properties()[position];
                if (const CMPIData* data = valueAt(position)) visit(std::string_view(property.name), &property, *data);
            }
        }
        for (const NamedData& property : freeProperties()) {
            visit(property.name, static_cast<const PropertyDeclaration*>(nullptr), property.data);
        }
    }

    /// 0 (also for a property that the class lacks: dropped with a warning in the log), 61 for a type other than the
    /// class says, 60 for a broken object. Chars and string both fit a string property.
    CMPIrc setProperty(std::string_view name, const CMPIValue* value, CMPIType type);
    CMPIrc setProperty(std::string_view name, const CMPIData& data);
    /// Keeps the listed properties and the keys, and drops what else is set now or later. Both lists end in a null
    /// pointer; properties null keeps everything, keys may be null.
    void setPropertyFilter(const char* const* properties, const char* const* keys);

    /// The path: the keys are the instance's key properties; where one is not set, the key of the path that the
    /// instance was made with. Lies in the target arena.
    [[nodiscard]] ObjectPathObject* path(Arena& target) const;
    /// Takes over namespace, host and keys; the class must stay the same: 0, or 1 if it is another one.
    CMPIrc setPath(const ObjectPathObject& path);

    /// A copy that later changes of this instance do not reach.
    InstanceObject* copyTo(Arena& target) const;

    /// path lies in the arena and is the instance's alone.
    InstanceObject(Broker& broker, Arena& arena, const ObjectPathObject& path);

    Broker* broker;
    Arena* arena;
    bool ownsArena = false;
    mutable bool slotsShared = false;
    const ObjectPathObject* origin; // what the instance was made with; its own copy, which never changes
    CMPIData* slots = nullptr;
    std::uint64_t* wanted = nullptr;    // a bit for each slot, null without a filter
    const char** wantedNames = nullptr; // the same for free properties
    NamedDataList extra;

private:
    InstanceObject* shareInOwnArena() const;
    void ownSlots();
    void filterSlots(const ClassDeclaration& declared, const char* const* properties, const char* const* keys);
    void filterFreeProperties(const char* const* properties, const char* const* keys);
};

/// Arguments of a method, in or out.
class ArgsObject : public CMPIArgs {
public:
    static ArgsObject* make(Arena& arena);
    static const ArgsObject* from(const CMPIArgs* object) noexcept;

    [[nodiscard]] std::span<const NamedData> arguments() const noexcept { return list.items(); }
    [[nodiscard]] const NamedData* argument(std::string_view name) const noexcept { return list.find(name); }
    /// Adds an argument or replaces its value. 0, or 60 for a broken object, 61 for a type that no argument can have.
    CMPIrc add(std::string_view name, const CMPIValue* value, CMPIType type) {
        return list.take(*arena, name, value, type);
    }
    CMPIrc add(std::string_view name, const CMPIData& data);
    ArgsObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    NamedDataList list;
};

/// What surrounds a call: entries by name. One that was prepared for a thread lies in an arena of its own.
class ContextObject : public CMPIContext {
public:
    static ContextObject* make(Arena& arena);
    static const ContextObject* from(const CMPIContext* object) noexcept;

    [[nodiscard]] std::span<const NamedData> entries() const noexcept { return list.items(); }
    [[nodiscard]] const NamedData* entry(std::string_view name) const noexcept { return list.find(name); }
    /// Adds an entry or replaces its value. 0, or 60 for a broken object, 61 for a type that no entry can have.
    CMPIrc add(std::string_view name, const CMPIValue* value, CMPIType type) {
        return list.take(*arena, name, value, type);
    }
    void addText(std::string_view name, std::string_view text);
    void addNumber(std::string_view name, CMPIUint32 number);

    Arena* arena;
    NamedDataList list;
};

/// The query of a subscription. It can be read; evaluating it is the server's affair (rc 7).
class SelectExpObject : public CMPISelectExp {
public:
    static SelectExpObject* make(Arena& arena, std::string_view query, std::string_view language);
    static const SelectExpObject* from(const CMPISelectExp* object) noexcept;

    [[nodiscard]] std::string_view query() const noexcept { return queryText; }
    [[nodiscard]] std::string_view language() const noexcept { return languageText; }
    SelectExpObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    std::string_view queryText;
    std::string_view languageText;
};

/// The answer to a call that a provider makes to the server.
class EnumerationObject : public CMPIEnumeration {
public:
    static EnumerationObject* make(Arena& arena, std::span<const CMPIData> elements);
    static const EnumerationObject* from(const CMPIEnumeration* object) noexcept;
    EnumerationObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    const CMPIData* elements;
    CMPICount count;
    mutable CMPICount position;
};

/// The "true" or 17 of a value as CIM-XML writes it; for strings the text itself, for a reference its path's text.
/// Nothing for null, arrays and embedded instances.
void appendValueText(std::string& out, const CMPIData& data);

enum class KeyKind { string, boolean, numeric };

/// Makes objects for the server's own side, in one arena.
class ObjectMaker {
public:
    ObjectMaker(Broker& broker, Arena& arena) noexcept : owner(&broker), target(&arena) {}

    [[nodiscard]] Arena& arena() const noexcept { return *target; }

    [[nodiscard]] ObjectPathObject* path(std::string_view nameSpace, std::string_view className) const;
    [[nodiscard]] ObjectPathObject* copy(const ObjectPathObject& path) const { return path.copyTo(*target); }
    /// Takes the path's namespace, class and keys; sets the properties for which the class has a default.
    [[nodiscard]] InstanceObject* instance(const ObjectPathObject& path) const;
    [[nodiscard]] InstanceObject* copy(const InstanceObject& instance) const { return instance.copyTo(*target); }
    [[nodiscard]] StringObject* string(std::string_view text) const { return StringObject::make(*target, text); }
    [[nodiscard]] ArgsObject* arguments() const { return ArgsObject::make(*target); }

    /// A value of that type (no array) from its CIM-XML text; nothing if the text is none, or out of range.
    [[nodiscard]] std::optional<CMPIData> value(CMPIType type, std::string_view text) const;
    /// An array of that element type; elements without text are null. Nothing if an element's text does not fit.
    [[nodiscard]] std::optional<CMPIData> arrayValue(CMPIType elementType,
                                                     std::span<const std::optional<std::string>> texts) const;
    /// Scalar or array, as MOF declared it.
    [[nodiscard]] std::optional<CMPIData> value(const DeclaredValue& declared) const;
    [[nodiscard]] static CMPIData null(CMPIType type) noexcept;
    [[nodiscard]] static CMPIData value(const ObjectPathObject& path) noexcept;
    [[nodiscard]] static CMPIData value(const InstanceObject& instance) noexcept;

    /// Adds a key as a request spells it, in the type that the class declares for it; a key that the class lacks gets
    /// the kind's own type. Fails with CMPI_RC_ERR_INVALID_PARAMETER if the text does not fit.
    [[nodiscard]] std::optional<CimError> addKey(ObjectPathObject& path, std::string_view name, KeyKind kind,
                                                 std::string_view text) const;

private:
    Broker* owner;
    Arena* target;
};

} // namespace cimhost
