// How people see a provider's objects: their labels, their places in the tree, the columns of their tables. A file
// beside the class definitions says so; its head describes the lines.
#pragma once

#include "cimhost/cli/object_tree.h"
#include "cimhost/model/class_repository.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::cli {

/// A property with words of ours: the title of its column, or what stands in front of its value in a label.
struct ShownProperty {
    std::string words;
    std::string property;
    std::string otherwise; ///< another property, shown where that one has no value; or empty
};

/// The one of the two that the instance shows. It need not have a value.
const std::string& propertyToShow(const InstanceObject& instance, const ShownProperty& shown);

/// One line that stands for an object.
struct Label {
    std::string className;
    std::string word; ///< "card"
    std::vector<ShownProperty> parts;
};

struct Columns {
    std::string className;
    std::vector<ShownProperty> columns;
};

/// What a class's numbers are counted in, where it is not what the definition of the property says.
struct ShownUnit {
    std::string className;
    std::string property;
    std::string unit; ///< as PUnit writes it
};

/// Words for a 0 that means "unknown", unless another property has one of these values.
struct ShownZero {
    std::string className;
    std::string property;
    std::string words; ///< shown in its place
    std::string otherProperty;
    std::vector<std::string> values; ///< with which 0 is the number
};

struct Presentation {
    std::vector<Label> labels;
    std::vector<Columns> tables;
    std::vector<ShownUnit> units;
    std::vector<ShownZero> zeros;
    TreePlan tree;
    std::vector<std::string> alarming; ///< values that make a line of the tree red

    /// Null if the file has none for exactly this class.
    [[nodiscard]] const Label* labelOf(std::string_view className) const;
    [[nodiscard]] const Columns* columnsOf(std::string_view className) const;
    /// Empty if the file has none for exactly this class.
    [[nodiscard]] std::string_view unitOf(std::string_view className, std::string_view property) const;
    /// Null if the file has none for exactly this class.
    [[nodiscard]] const ShownZero* zeroOf(std::string_view className, std::string_view property) const;
};

/// Reads a file of presentation. Throws std::runtime_error with file, line and error: a line of no known form,
/// a class, property or association that the namespace lacks, an association that does not lead from the one to the
/// other.
Presentation readPresentation(const std::filesystem::path& file, const ClassRepository& repository,
                              std::string_view nameSpace);

} // namespace cimhost::cli
