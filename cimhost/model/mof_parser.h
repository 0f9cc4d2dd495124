// Reads the grammar of MOF and hands each declaration to a sink; what the names in it mean is the sink's affair.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cimhost/model/cim_type.h"
#include "cimhost/model/class_repository.h"

namespace cimhost::mof {

/// A constant as it is written.
struct Literal {
    enum class Kind { null, boolean, integer, real, text, character };
    Kind kind = Kind::null;
    std::string text;    ///< true or false; a real's digits; a text's or character's content
    IntegerValue number; ///< of an integer
    SourcePosition position;
};

struct Value {
    bool isArray = false; ///< in braces
    std::vector<Literal> elements;
    SourcePosition position;
};

struct Word {
    std::string text;
    SourcePosition position;
};

struct QualifierUse {
    Word name;
    std::optional<Value> value;
    std::vector<Word> flavors;
};

/// Type, name and array mark, as properties, parameters and qualifier declarations have them.
struct TypedName {
    CMPIType type = CMPI_null; ///< with CMPI_ARRAY
    Word referenceClass;       ///< of a reference
    Word name;
    std::optional<std::uint32_t> arraySize;
};

struct Parameter {
    std::vector<QualifierUse> qualifiers;
    TypedName declared;
};

/// A property, reference or method.
struct Feature {
    std::vector<QualifierUse> qualifiers;
    TypedName declared;
    std::optional<Value> defaultValue;
    bool isMethod = false;
    std::vector<Parameter> parameters;
};

struct Class {
    std::vector<QualifierUse> qualifiers;
    Word name;
    Word superclass; ///< empty text for a root class
    std::vector<Feature> features;
};

struct QualifierType {
    TypedName declared;
    std::optional<Value> defaultValue;
    std::vector<Word> scopes;
    std::vector<Word> flavors;
};

class Sink {
public:
    virtual ~Sink() = default;
    virtual void takePragma(const Word& name, const Word& argument) = 0;
    virtual void takeQualifierType(QualifierType declaration) = 0;
    virtual void takeClass(Class declaration) = 0;
};

/// Throws MofError at the first fault, and whatever the sink throws.
void parse(std::string_view text, const std::string& fileName, Sink& sink);

} // namespace cimhost::mof
