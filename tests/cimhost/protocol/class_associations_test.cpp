// What declarations alone say of associations.
#include "cimhost/service/class_associations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace cimhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier Override : string = null, Scope(property, reference, method), Flavor(Restricted);
class T_Element { [Key] string Id; };
class T_System : T_Element { };
class T_Host : T_System { };
class T_Device : T_Element { };
class T_Port : T_Device { };
class T_Other { [Key] string Id; };
[Association] class T_Part { [Key] T_System ref Group; [Key] T_Device ref Part; };
[Association] class T_HostPort : T_Part { [Key, Override("Group")] T_Host ref Group; [Key, Override("Part")] T_Port ref Part; };
[Association] class T_Inherits : T_HostPort { string Note; };
[Association] class T_Peer { [Key] T_Device ref One; [Key] T_Device ref Two; };
)";

class ClassAssociations : public testing::Test {
protected:
    ClassAssociations() { repository.loadText("root/ns", mof); }

    std::vector<std::string> references(const std::string& source, const AssociationFilter& filter = {}) {
        return namesOf(referenceClasses(repository, *repository.find("root/ns", source), filter));
    }
    std::vector<std::string> associators(const std::string& source, const AssociationFilter& filter = {}) {
        return namesOf(associatorClasses(repository, *repository.find("root/ns", source), filter));
    }

    ClassRepository repository;

private:
    static std::vector<std::string> namesOf(const std::vector<const ClassDeclaration*>& classes) {
        std::vector<std::string> names;
        for (const ClassDeclaration* declaration : classes)
            names.push_back(declaration->name());
        return names;
    }
};

TEST_F(ClassAssociations, AReferenceToAnAncestorHoldsTheClassToo) {
    EXPECT_THAT(references("T_Host"), ElementsAre("T_Part", "T_HostPort", "T_Inherits"));
    EXPECT_THAT(associators("T_Host"), ElementsAre("T_Device", "T_Port"));
}

TEST_F(ClassAssociations, AReferenceToASubclassDoesNotHoldTheClass) {
    EXPECT_THAT(references("T_System"), ElementsAre("T_Part"));
    EXPECT_THAT(references("T_Element"), IsEmpty());
}

TEST_F(ClassAssociations, AnAssociationFilterTakesSubclassesAlong) {
    EXPECT_THAT(references("T_Port", {"T_HostPort", "", "", ""}), ElementsAre("T_HostPort", "T_Inherits"));
    EXPECT_THAT(associators("T_Port", {"T_Peer", "", "", ""}), ElementsAre("T_Device"));
}

TEST_F(ClassAssociations, AResultClassTakesSubclassesAlong) {
    EXPECT_THAT(associators("T_Host", {"", "T_Port", "", ""}), ElementsAre("T_Port"));
    EXPECT_THAT(associators("T_Host", {"", "t_device", "", ""}), ElementsAre("T_Device", "T_Port"));
    EXPECT_THAT(associators("T_Host", {"", "T_Other", "", ""}), IsEmpty());
}

TEST_F(ClassAssociations, RolesNameTheEnds) {
    EXPECT_THAT(references("T_Port", {"", "", "ONE", ""}), ElementsAre("T_Peer"));
    EXPECT_THAT(references("T_Host", {"", "", "Part", ""}), IsEmpty());
    EXPECT_THAT(associators("T_Port", {"", "", "", "group"}), ElementsAre("T_System", "T_Host"));
    EXPECT_THAT(associators("T_Port", {"", "", "One", "One"}), IsEmpty());
}

} // namespace
} // namespace cimhost
