// CIM-XML out: class declarations with their qualifiers, properties and methods.
#pragma once

#include "cimhost/byte_buffer.h"
#include "cimhost/model/class_declaration.h"

#include <functional>
#include <string_view>

namespace cimhost::cimxml {

struct ClassOptions {
    bool localOnly = true; ///< only what the class itself declares
    bool includeQualifiers = true;
    bool includeClassOrigin = false;
    std::function<bool(std::string_view)> wantsProperty; ///< empty: every one
};

/// Appends a <CLASS>.
void appendClass(ByteBuffer& out, const ClassDeclaration& declaration, const ClassOptions& options);

/// Appends a <QUALIFIER.DECLARATION>.
void appendQualifierDeclaration(ByteBuffer& out, const QualifierDeclaration& declaration);

/// Appends a <CLASSNAME>.
void appendClassName(ByteBuffer& out, std::string_view name);

} // namespace cimhost::cimxml
