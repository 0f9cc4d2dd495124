// How CIM names compare: without regard to the case of ASCII letters, and namespaces also without regard to leading and
// trailing slashes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace cimhost {

bool equalNames(std::string_view left, std::string_view right) noexcept;

/// Equal for names that equalNames() calls equal.
std::uint32_t hashName(std::string_view name) noexcept;

/// A letter or underscore (or any byte of a UTF-8 sequence), then those and digits; not empty.
bool isLegalName(std::string_view name) noexcept;

/// The namespace without leading and trailing slashes; a view into the argument.
std::string_view trimNamespace(std::string_view nameSpace) noexcept;

/// Finds a position by name without allocating: an open hash over names that somebody else keeps.
class NameIndex {
public:
    static constexpr std::size_t notFound = static_cast<std::size_t>(-1);

    /// Adds a name that is not yet in the index. The text must outlive the index.
    void add(std::string_view name, std::size_t position);

    /// The position that was given for the name, or notFound.
    [[nodiscard]] std::size_t find(std::string_view name) const noexcept;

private:
    struct Entry {
        std::string_view name;
        std::size_t position = notFound;
        std::uint32_t hash = 0;
    };

    void insert(const Entry& entry) noexcept;

    std::vector<Entry> entries; // a power of two, at most half full
    std::size_t count = 0;
};

} // namespace cimhost
