// The qualifiers that the MOF texts of these tests use, in one line: a text's own lines are counted from 2.
#pragma once

#include <string>
#include <string_view>

inline std::string withQualifiers(std::string_view text) {
    std::string all =
        "Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);"
        "Qualifier Abstract : boolean = false, Scope(class, association, indication), Flavor(Restricted);"
        "Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride);"
        "Qualifier Indication : boolean = false, Scope(class, indication), Flavor(DisableOverride);"
        "Qualifier Override : string = null, Scope(property, reference, method), Flavor(Restricted);"
        "Qualifier Description : string = null, Scope(any), Flavor(Translatable);"
        "Qualifier In : boolean = true, Scope(parameter), Flavor(DisableOverride);"
        "Qualifier Out : boolean = false, Scope(parameter), Flavor(DisableOverride);"
        "Qualifier EmbeddedInstance : string = null, Scope(property);"
        "Qualifier ValueMap : string[] = null, Scope(property);\n";
    all += text;
    return all;
}
