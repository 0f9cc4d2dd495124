// The objects behind the CMPI tables, as the server sees them. Each begins with the two words that a provider knows: a
// handle and a table of functions. Each object lies in an arena (of a request, an attached thread or a clone), ends
// with it, and is never copied by value. An object owns what it holds: a value is copied when it is put in, and again
// when it is read. Within one arena a copy is cheap: what cannot change is shared, and the rest is shared until one
// side changes.
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

/// A list that grows in an arena; all calls of one list are given the same arena.
class NamedDataList {
public:
    [[nodiscard]] std::span<const NamedData> items() const noexcept { return {first, count}; }
    /// Null if there is none of that name.
    [[nodiscard]] const NamedData* find(std::string_view name) const noexcept;
    /// Replaces the value of that name, or adds one. The data must lie in the arena. A new name is copied there.
    void set(Arena& arena, std::string_view name, const CMPIData& data);
    /// The same for a name that ends in NUL and outlives the list.
    void setNamed(Arena& arena, std::string_view lastingName, const CMPIData& data);
    /// set() for a value as table functions are given it.
    /// @return 0, or the error of takeValue()
    CMPIrc take(Arena& arena, std::string_view name, const CMPIValue* value, CMPIType type);
    /// A copy of the list in another arena.
    [[nodiscard]] NamedDataList copyTo(Arena& target) const;
    /// A copy of the list in the same arena. A change of one of the two does not change the other.
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
    /// Null unless the object was made by these tables and is not broken. The same holds for the other classes.
    static const StringObject* from(const CMPIString* object) noexcept;

    [[nodiscard]] std::string_view text() const noexcept { return {static_cast<const char*>(hdl), length}; }
    StringObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    std::uint32_t length;
};

/// Elements of one type. Numbers lie in memory as in an array of C.
class ArrayObject : public CMPIArray {
public:
    /// An array whose elements are all null. Null if there are no arrays of that type.
    /// @param elementType without CMPI_ARRAY
    static ArrayObject* make(Arena& arena, CMPICount size, CMPIType elementType);
    static const ArrayObject* from(const CMPIArray* object) noexcept;

    [[nodiscard]] CMPICount size() const noexcept { return count; }
    /// The type with which the array was made. Elements of CMPI_chars are read as CMPI_string.
    [[nodiscard]] CMPIType elementType() const noexcept { return type; }
    /// The index must be below size(). A null element has CMPI_nullValue in its state.
    [[nodiscard]] CMPIData element(CMPICount index) const noexcept;
    /// Sets an element; the type CMPI_null makes it null.
    /// @return 0; 12 for an index beyond the end, 13 for another type, 60 for a broken object
    CMPIrc setElement(CMPICount index, const CMPIValue* value, CMPIType valueType);
    /// Stores data of exactly the element's type (CMPI_string for CMPI_chars), or null.
    void store(CMPICount index, const CMPIData& data) noexcept;
    /// The bytes of the elements if they are numbers. Those of a null element are 0.
    [[nodiscard]] const unsigned char* bytes() const noexcept { return values; }
    /// In the same arena, numbers are copied only once one of the two arrays changes.
    ArrayObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    mutable bool sharesValues; // with copies of this array
    CMPIType type;
    std::uint8_t elementSize;
    CMPICount count;
    unsigned char* values;
    unsigned char* present; // one bit for each element, 0 for null

private:
    [[nodiscard]] bool isPresent(CMPICount index) const noexcept { return (present[index / 8] >> index % 8 & 1) != 0; }
    void makeValuesOwn();
    /// The bytes of `values` and `present` together.
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
    /// A time in microseconds since 1970-01-01 00:00 UTC, or the length of an interval in microseconds. Null if 25
    /// characters cannot express it.
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

/// The path of an instance: host, namespace, class and keys.
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
    /// Adds a key or replaces its value. Keys that the class lacks are stored, too.
    /// @return 0; 1 for a null value; 61 for an array, an embedded object, or a type other than the class declares for
    ///         that key; 60 for a broken object
    CMPIrc addKey(std::string_view name, const CMPIValue* value, CMPIType type);
    CMPIrc addKey(std::string_view name, const CMPIData& data);

    /// A copy, which later changes of this path do not change.
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

/// An instance. If its class is known, its properties stand in slots, one for each property of the class.
class InstanceObject : public CMPIInstance {
public:
    static const InstanceObject* from(const CMPIInstance* object) noexcept;
    static InstanceObject* from(CMPIInstance* object) noexcept;

    /// Null if the repository does not know the class. Then all properties are free ones.
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
    /// The properties of an instance whose class is unknown, in the order in which they were set.
    [[nodiscard]] std::span<const NamedData> freeProperties() const noexcept { return extra.items(); }
    /// False for a property that setPropertyFilter() has left out.
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

    /// Sets a property. One that the class lacks is dropped, with a warning in the log. Types chars and string both fit
    /// a string property.
    /// @return 0, also for a dropped property; 61 for a type other than the class declares; 60 for a broken object
    CMPIrc setProperty(std::string_view name, const CMPIValue* value, CMPIType type);
    CMPIrc setProperty(std::string_view name, const CMPIData& data);
    /// Keeps the listed properties and the keys; drops all others that are set now or later.
    /// @param properties ends in a null pointer; null keeps everything
    /// @param keys ends in a null pointer; may be null
    void setPropertyFilter(const char* const* properties, const char* const* keys);

    /// The path of the instance, in the target arena. Its keys are the instance's key properties. A key property that
    /// is not set is taken from the path with which the instance was made.
    [[nodiscard]] ObjectPathObject* path(Arena& target) const;
    /// Takes namespace, host and keys of the path.
    /// @return 0; 1 if the path has another class
    CMPIrc setPath(const ObjectPathObject& path);

    /// A copy, which later changes of this instance do not change.
    InstanceObject* copyTo(Arena& target) const;

    /// The path must lie in the arena, and nobody else may use it.
    InstanceObject(Broker& broker, Arena& arena, const ObjectPathObject& path);

    Broker* broker;
    Arena* arena;
    bool ownsArena = false;
    mutable bool slotsShared = false;
    const ObjectPathObject* origin; // its own copy of the path it was made with or was given last; never changes
    CMPIData* slots = nullptr;
    std::uint64_t* wanted = nullptr;    // one bit for each slot; null without a filter
    const char** wantedNames = nullptr; // names of free properties, ended by null; null without a filter
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
    /// Adds an argument or replaces its value.
    /// @return 0; 60 for a broken object; 61 for a type that no argument can have
    CMPIrc add(std::string_view name, const CMPIValue* value, CMPIType type) {
        return list.take(*arena, name, value, type);
    }
    CMPIrc add(std::string_view name, const CMPIData& data);
    ArgsObject* copyTo(Arena& target) const;

    Arena* arena;
    bool ownsArena;
    NamedDataList list;
};

/// The context of a call: entries by name. A context that was prepared for a thread lies in an arena of its own.
class ContextObject : public CMPIContext {
public:
    static ContextObject* make(Arena& arena);
    static const ContextObject* from(const CMPIContext* object) noexcept;

    [[nodiscard]] std::span<const NamedData> entries() const noexcept { return list.items(); }
    [[nodiscard]] const NamedData* entry(std::string_view name) const noexcept { return list.find(name); }
    /// Adds an entry or replaces its value.
    /// @return 0; 60 for a broken object; 61 for a type that no entry can have
    CMPIrc add(std::string_view name, const CMPIValue* value, CMPIType type) {
        return list.take(*arena, name, value, type);
    }
    void addText(std::string_view name, std::string_view text);
    void addNumber(std::string_view name, CMPIUint32 number);

    Arena* arena;
    NamedDataList list;
};

/// The query of a subscription. A provider can read it. It cannot have it evaluated (7): the server does that.
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

/// Appends a value as CIM-XML writes it, such as "true" or 17: of a string its text, of a reference the text of its
/// path. Appends nothing for null, arrays and embedded instances.
void appendValueText(std::string& out, const CMPIData& data);

enum class KeyKind { string, boolean, numeric };

/// Makes objects for the server itself, in one arena.
class ObjectMaker {
public:
    ObjectMaker(Broker& broker, Arena& arena) noexcept : owner(&broker), target(&arena) {}

    [[nodiscard]] Arena& arena() const noexcept { return *target; }

    [[nodiscard]] ObjectPathObject* path(std::string_view nameSpace, std::string_view className) const;
    [[nodiscard]] ObjectPathObject* copy(const ObjectPathObject& path) const { return path.copyTo(*target); }
    /// An instance with the path's namespace, class and keys, and with the default values that the class declares.
    [[nodiscard]] InstanceObject* instance(const ObjectPathObject& path) const;
    [[nodiscard]] InstanceObject* copy(const InstanceObject& instance) const { return instance.copyTo(*target); }
    [[nodiscard]] StringObject* string(std::string_view text) const { return StringObject::make(*target, text); }
    [[nodiscard]] ArgsObject* arguments() const { return ArgsObject::make(*target); }

    /// A value of that type, which is no array, from its text in CIM-XML. Nothing if the text is no such value or is
    /// out of range.
    [[nodiscard]] std::optional<CMPIData> value(CMPIType type, std::string_view text) const;
    /// An array of that element type. An element without a text is null. Nothing if one of the texts does not fit.
    [[nodiscard]] std::optional<CMPIData> arrayValue(CMPIType elementType,
                                                     std::span<const std::optional<std::string>> texts) const;
    /// A value, scalar or array, as MOF declares it. Nothing if a text does not fit.
    [[nodiscard]] std::optional<CMPIData> value(const DeclaredValue& declared) const;
    [[nodiscard]] static CMPIData null(CMPIType type) noexcept;
    [[nodiscard]] static CMPIData value(const ObjectPathObject& path) noexcept;
    [[nodiscard]] static CMPIData value(const InstanceObject& instance) noexcept;

    /// Adds a key as a request spells it, in the type that the class declares for it. A key that the class lacks gets
    /// the type of its kind.
    /// @return nothing; CMPI_RC_ERR_INVALID_PARAMETER if the text does not fit
    [[nodiscard]] std::optional<CimError> addKey(ObjectPathObject& path, std::string_view name, KeyKind kind,
                                                 std::string_view text) const;

private:
    Broker* owner;
    Arena* target;
};

} // namespace cimhost
