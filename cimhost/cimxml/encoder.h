// CIM-XML out: instances, paths and errors as DSP0201 elements, appended to one buffer.
#pragma once

#include "cimhost/broker/objects.h"
#include "cimhost/byte_buffer.h"
#include "cimhost/model/cim_error.h"
#include "cimhost/model/class_declaration.h"
#include "cimhost/model/class_repository.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cimhost::cimxml {

/// What never changes about a property on the wire, rendered once.
struct PropertyTags {
    std::string opening;    ///< `<PROPERTY NAME="Speed" TYPE="uint64"`, still open for attributes
    std::string toValue;    ///< opening, and on to where the value begins: `<PROPERTY ...><VALUE>`
    std::string_view close; ///< from the value's end to the property's: `</VALUE></PROPERTY>`
    std::string_view empty; ///< from opening to the end of one without a value: `></PROPERTY>`; empty: left out
    std::string origin;     ///< ` CLASSORIGIN="CIM_LogicalPort"`
};

struct KeyTags {
    std::size_t position; ///< in the class's properties
    std::string toValue;  ///< `<KEYBINDING NAME="Id"><KEYVALUE VALUETYPE="string">`
};

struct ClassTags {
    std::string instance; ///< `<INSTANCE CLASSNAME="CIM_FCPort">`
    std::string name;     ///< `<INSTANCENAME CLASSNAME="CIM_FCPort">`
    std::vector<PropertyTags> properties;
    std::vector<KeyTags> keys; ///< empty if one of them is a reference
};

/// The tags of all classes of a repository. Only read once it is made, by as many threads as like.
class TagTable {
public:
    explicit TagTable(const ClassRepository& repository);

    [[nodiscard]] const ClassTags& of(const ClassDeclaration& declaration) const { return tags.at(&declaration); }

private:
    std::unordered_map<const ClassDeclaration*, ClassTags> tags;
};

struct InstanceOptions {
    bool includeClassOrigin = false;
    /// By position in the properties of the instance's class; null selects all.
    const std::vector<bool>* selected = nullptr;
};

/// Where something is that does not say so itself.
struct Place {
    std::string_view host;
    std::string_view nameSpace;
};

class Encoder {
public:
    /// Appends to out, which outlives the encoder, as does the table.
    Encoder(ByteBuffer& out, const TagTable& table) : document(out), tagTable(table) {}

    [[nodiscard]] ByteBuffer& buffer() noexcept { return document; }
    void raw(std::string_view text) { document.append(text); }

    /// From now on paths call the namespace by the other name. Both texts outlive the encoder.
    void showNamespaceAs(std::string_view nameSpace, std::string_view name) {
        renamed = nameSpace;
        shown = name;
    }

    /// <INSTANCE> with every selected property of its class; one that was never set goes without a value.
    void instance(const InstanceObject& instance, const InstanceOptions& options);

    /// <INSTANCENAME>
    void instanceName(const ObjectPathObject& path);
    /// The same of the instance's own path.
    void instanceName(const InstanceObject& instance);

    /// <INSTANCEPATH>, <LOCALINSTANCEPATH> or <INSTANCENAME>: as much as the path knows.
    void fullestPath(const ObjectPathObject& path);

    /// <INSTANCEPATH>. What the path itself says of host and namespace goes before the place.
    void instancePath(const ObjectPathObject& path, const Place& place);
    /// The same of the instance's own path.
    void instancePath(const InstanceObject& instance, const Place& place);

    /// <CLASSPATH>
    void classPath(const ClassDeclaration& declaration, std::string_view host);

    /// <LOCALNAMESPACEPATH>
    void localNamespacePath(std::string_view nameSpace);

    /// <VALUE>, <VALUE.ARRAY>, <VALUE.REFERENCE> or <VALUE.REFARRAY>; nothing for null.
    void value(const CMPIData& data);

    /// <ERROR>
    void error(const CimError& error);

private:
    void property(const PropertyTags& tags, const CMPIData* data, bool includeClassOrigin);
    void freeProperty(std::string_view name, const CMPIData& data);
    void content(const CMPIData& data);
    void embedded(const InstanceObject& inner);
    void array(const ArrayObject& array);
    void keyBinding(const NamedData& key);
    void namespacePath(std::string_view host, std::string_view nameSpace);

    ByteBuffer& document;
    const TagTable& tagTable;
    std::string_view renamed; // empty: none
    std::string_view shown;
};

/// Appends ` NAME="text"`, escaped.
void appendAttribute(ByteBuffer& out, std::string_view name, std::string_view text);

} // namespace cimhost::cimxml
