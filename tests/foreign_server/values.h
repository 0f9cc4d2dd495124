// Values as the server keeps them: copies that nothing the provider does later can reach.
#pragma once

#include "cmpidt.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace foreign_server {

struct PathData;
struct InstanceData;
struct ArrayData;

/// A date by what it was made of: 25 characters, or microseconds.
struct DateTimeData {
    std::string text; ///< empty if it was made of a number
    CMPIUint64 microseconds = 0;
    bool isInterval = false;
};

/// One value, scalar or array. Texts have one type inside: string.
struct Value {
    CMPIType type = CMPI_null;
    CMPIValueState state = CMPI_goodValue;
    CMPIValue number{};
    std::optional<std::string> text; ///< of a string; without one for a string that has none
    std::shared_ptr<const DateTimeData> date;
    std::shared_ptr<const PathData> path;
    std::shared_ptr<const InstanceData> instance;
    std::shared_ptr<const ArrayData> array;
    /// A reference to a path that the test plays itself.
    const CMPIObjectPath* played = nullptr;

    bool isNull() const { return (state & CMPI_nullValue) != 0; }
};

struct ArrayData {
    CMPIType elementType = CMPI_null;
    std::vector<unsigned char> numbers; ///< side by side, where the elements are numbers
    std::vector<Value> objects;         ///< otherwise
    std::vector<bool> isSet;

    CMPICount size() const { return static_cast<CMPICount>(isSet.size()); }
};

struct NamedValue {
    std::string name;
    Value value;
    /// Set by the provider and not by the request, so that the class's types are its business.
    bool isProviders = true;
};

/// In the order of their setting.
using NamedValues = std::vector<NamedValue>;

struct PathData {
    std::optional<std::string> nameSpace;
    std::optional<std::string> host;
    std::string className;
    NamedValues keys;
};

struct InstanceData {
    PathData path;
    NamedValues properties;
    /// What setPropertyFilter named last. It filters when the server reads the instance, not earlier.
    std::optional<std::vector<std::string>> wanted;
    std::vector<std::string> keys;
};

bool sameName(std::string_view left, std::string_view right);
const NamedValue* find(const NamedValues& values, std::string_view name);
/// Replaces the value of that name or adds one.
void set(NamedValues& values, std::string_view name, Value value, bool isProviders = true);
/// The positions in the order of the names, which is how this server counts keys, properties and arguments.
std::vector<std::size_t> sortedPlaces(const NamedValues& values);

/// Bytes of a number, boolean or character; 0 for other types.
std::size_t numberSize(CMPIType type);
constexpr CMPIType elementOf(CMPIType type) { return static_cast<CMPIType>(type & ~CMPI_ARRAY); }
constexpr bool isArray(CMPIType type) { return (type & CMPI_ARRAY) != 0; }
/// chars and charsptr become string.
CMPIType inwardType(CMPIType type);

/// Takes a value as a table function is given it. @return 0, 60 for an object that is none, 61 for a type that no value
/// has. Objects that are gone are written down as breaches of that function.
CMPIrc take(const CMPIValue* value, CMPIType type, Value& taken, const char* function);

/// The value for a caller of a getter: objects are made anew, in the calling thread's scope.
CMPIData handOut(const Value& value, const char* function);

/// The answer of every getter that finds nothing.
CMPIData absent();

} // namespace foreign_server
