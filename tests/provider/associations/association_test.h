// Association requests as a CIM server makes them, on paths that a test can read, change and send back.
#pragma once

#include "class_support.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

class RequestHooks;

/// An object path by value. Keys stand in the order of their setting.
struct Path {
    using Value = std::variant<std::string, std::uint32_t, std::vector<Path>>; ///< text, number, one referenced path
    struct Key;

    std::string nameSpace;
    std::string className;
    std::vector<Key> keys;

    /// The text of a key; empty if it is absent or no text.
    std::string operator[](const std::string& name) const;
    /// The path in a reference key; an empty one if there is none.
    Path reference(const std::string& name) const;
    Path with(const std::string& name, Value value) const;
    Path without(const std::string& name) const;
    Path ofClass(const std::string& otherClass) const;
    /// `ns:Class.Key="text",Other=5,Reference=[...]`
    std::string text() const;
};

struct Path::Key {
    std::string name;
    Value value;
};

inline bool operator==(const Path& left, const Path& right) { return left.text() == right.text(); }

/// What a request delivered: a path, with its keys in order, or an instance, with its properties by name.
struct Row {
    std::string nameSpace;
    std::string className;
    std::vector<std::pair<std::string, std::string>> values;

    std::string text() const;
};

using Rows = std::vector<std::string>;

/// The rows as text; a row a line is what failures print.
Rows textsOf(const std::vector<Row>& rows);
Rows textsOf(const std::vector<Path>& paths);
/// The row in which a request delivers that path.
Row rowOf(const Path& path);

struct Reply {
    CMPIrc rc = CMPI_RC_OK;
    std::string message;
    std::vector<Row> rows;
    std::size_t doneCount = 0;

    Rows texts() const { return textsOf(rows); }
};

enum class Operation { associators, associatorNames, references, referenceNames };

inline constexpr std::array allOperations{Operation::associators, Operation::associatorNames, Operation::references,
                                          Operation::referenceNames};

const char* nameOf(Operation operation);

/// The arguments behind the source; what is absent goes as a null pointer.
struct Filters {
    std::optional<std::string> associationClass = std::nullopt; ///< for references: their result class
    std::optional<std::string> resultClass = std::nullopt;
    std::optional<std::string> role = std::nullopt;
    std::optional<std::string> resultRole = std::nullopt;
    std::optional<std::vector<std::string>> properties = std::nullopt;
};

class AssociationTest : public ClassTest {
protected:
    /// Starts the provider with that fleet, both interfaces in place and the logs off.
    void serve(tavik::Fleet fleet);
    /// Both logs on. What was written so far is forgotten.
    void logFromHere();
    /// The messages since the last call; one that ends in a newline left an empty line behind it.
    std::vector<std::string> takeMessages();

    std::vector<Path> names(const std::string& className, const std::string& nameSpace = implementationNamespace);
    Reply instanceNames(const Path& classPath);
    Reply instances(const Path& classPath);
    Reply instance(const Path& path);
    Reply ask(Operation operation, const Path& source, const Filters& filters = {});

    Path classPath(const std::string& className) const { return {implementationNamespace, className, {}}; }
    /// The first object of a class; fails the test if there is none.
    Path first(const std::string& className);

    /// Set while single calls of a request are to fail.
    RequestHooks* requestHooks = nullptr;

private:
    template <class Call>
    Reply request(cimhost::ResultKind kind, const Path& path, Call&& call);
};
