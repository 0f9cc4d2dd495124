// Values as a CIM-XML request carries them: texts with the type the client gave, not yet held against any class.
#pragma once

#include "cmpidt.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cimxml {

// Many texts in one block. A firmware image travels as one element per byte: while every text is a number from 0 to 255
// as one writes it, the list takes a byte for each.
class TextList {
public:
    /// False, and nothing is changed, if the entries would then take more than that many bytes.
    bool append(std::string_view text, std::size_t mostBytes = SIZE_MAX);
    bool appendNull(std::size_t mostBytes = SIZE_MAX);

    [[nodiscard]] std::size_t size() const noexcept { return numbers.size() + ends.size(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    [[nodiscard]] bool isNull(std::size_t index) const { return numbers.empty() && (ends[index] & nullFlag) != 0; }
    /// Empty for a null entry. The view lives as long as the list is not appended to.
    [[nodiscard]] std::string_view operator[](std::size_t index) const;

    /// Bytes that the entries take.
    [[nodiscard]] std::size_t heldBytes() const noexcept {
        return numbers.size() + bytes.size() + ends.size() * sizeof(ends[0]);
    }

private:
    static constexpr std::uint32_t nullFlag = 0x80000000U;

    /// Bytes that the entries take when the numbers are spelt out.
    [[nodiscard]] std::size_t spelledOutBytes() const noexcept;
    void spellOutNumbers();
    bool appendEntry(std::string_view text, std::uint32_t flag, std::size_t mostBytes);

    // One of the two forms is empty.
    std::vector<std::uint8_t> numbers;
    std::size_t digits = 0; // of all numbers
    std::string bytes;
    std::vector<std::uint32_t> ends; // of each text in bytes, with the flag for null
};

struct ObjectPath;

enum class KeyType { text, boolean, numeric, reference };

struct KeyBinding {
    std::string name; // empty where the client left it out, which CIM-XML allows for a class with one key
    KeyType type = KeyType::text;
    std::string text;
    CMPIType declaredType = CMPI_null;     // the TYPE attribute, where the client gave one
    std::shared_ptr<ObjectPath> reference; // set for KeyType::reference only
};

// A class or an instance, named as far as the client named it: host and namespace may be empty.
struct ObjectPath {
    std::string host;
    std::string nameSpace;
    std::string className;
    bool namesInstance = false; // an instance of a class without keys has none either
    std::vector<KeyBinding> keys;
};

struct Value {
    CMPIType type = CMPI_null; // without the array flag; CMPI_null where the message gives none
    bool isArray = false;
    bool isNull = true;
    TextList texts;                     // one for a scalar
    std::vector<ObjectPath> references; // in place of texts where the type is CMPI_ref
};

struct Property {
    std::string name;
    Value value;
};

struct Instance {
    std::string className;
    std::vector<Property> properties;
};

struct NamedInstance {
    std::optional<ObjectPath> path;
    Instance instance;
};

} // namespace cimhost::cimxml
