#include "cimhost/cimxml/argument.h"

#include "cimhost/model/cim_type.h"

namespace cimhost::cimxml {

void appendArgument(Encoder& encoder, std::string_view element, std::string_view name, const CMPIData& data) {
    encoder.raw("<");
    encoder.raw(element);
    if (!name.empty()) appendAttribute(encoder.buffer(), "NAME", name);
    const CMPIType type = elementOf(data.type);
    appendAttribute(encoder.buffer(), "PARAMTYPE", type == CMPI_ref ? "reference" : typeName(type));
    encoder.raw(">");
    encoder.value(data);
    encoder.raw("</");
    encoder.raw(element);
    encoder.raw(">");
}

} // namespace cimhost::cimxml
