// Holds mof/ against what clients rely on: classes, superclasses, keys, properties and their types.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "cimhost/model/class_repository.h"
#include "cimhost/model/mapped_property.h"
#include "cmpidt.h"
#include "tables.h"

namespace merolt::test {

namespace {

constexpr std::string_view adapterNamespace = "root/merolt_cmpi";
const std::filesystem::path mofDirectory = MEROLT_MOF_SOURCE;
const std::filesystem::path tableDirectory = MEROLT_MOF_TABLES;

const std::map<std::string, CMPIType> typesByName = {
    {"boolean", CMPI_boolean}, {"datetime", CMPI_dateTime}, {"real32", CMPI_real32}, {"string", CMPI_string},
    {"uint8", CMPI_uint8},     {"uint16", CMPI_uint16},     {"uint32", CMPI_uint32}, {"uint64", CMPI_uint64},
    {"sint8", CMPI_sint8},     {"sint16", CMPI_sint16},     {"sint32", CMPI_sint32}, {"sint64", CMPI_sint64},
};

/// "uint16[]" and the like as a CMPI type; CMPI_null for a name that no type has.
CMPIType typeNamed(std::string name) {
    const bool isArray = name.ends_with("[]");
    if (isArray) name.resize(name.size() - 2);
    const auto found = typesByName.find(name);
    if (found == typesByName.end()) return CMPI_null;
    return static_cast<CMPIType>(isArray ? found->second | CMPI_ARRAY : found->second);
}

bool isOurs(std::string_view className) { return className.starts_with("Merolt"); }

std::vector<std::string> superclassesOf(const cimhost::ClassDeclaration& declaration) {
    std::vector<std::string> names;
    for (const auto* parent = declaration.superclass(); parent != nullptr; parent = parent->superclass()) {
        names.push_back(parent->name());
    }
    return names;
}

std::set<std::string> keysOf(const cimhost::ClassDeclaration& declaration) {
    std::set<std::string> names;
    for (const std::size_t position : declaration.keys())
        names.insert(declaration.properties()[position].name);
    return names;
}

class ClassDefinitions : public testing::Test {
protected:
    static void SetUpTestSuite() {
        repository = std::make_unique<cimhost::ClassRepository>();
        repository->loadFile(adapterNamespace, mofDirectory / "merolt.mof");
    }
    static void TearDownTestSuite() { repository.reset(); }

    static const cimhost::ClassDeclaration* find(std::string_view className) {
        return repository->find(adapterNamespace, className);
    }
    static auto classes() { return repository->classes(adapterNamespace); }

    static inline std::unique_ptr<cimhost::ClassRepository> repository;
};

} // namespace

TEST_F(ClassDefinitions, HaveTheSuperclassesAndKeysOfTheTable) {
    const auto rows = readTable(tableDirectory / "expected_classes.tsv", 3);
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        const auto* declaration = find(row[0]);
        ASSERT_NE(declaration, nullptr);
        EXPECT_EQ(superclassesOf(*declaration), split(row[1], ' '));
        const auto keys = row[2] == "-" ? std::vector<std::string>() : split(row[2], ' ');
        EXPECT_EQ(keysOf(*declaration), std::set<std::string>(keys.begin(), keys.end()));
    }
}

TEST_F(ClassDefinitions, HaveEveryPublishedPropertyWithItsType) {
    const auto rows = readTable(tableDirectory / "expected_properties.tsv", 4);
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0] + "." + row[1]);
        const auto* declaration = find(row[0]);
        ASSERT_NE(declaration, nullptr);
        const auto* property = declaration->property(row[1]);
        ASSERT_NE(property, nullptr);
        EXPECT_EQ(property->name, row[1]) << "spelled otherwise";
        if (row[2].starts_with("ref ")) {
            EXPECT_TRUE(property->isReference());
            EXPECT_EQ(property->referenceClass, row[2].substr(4));
        } else {
            ASSERT_NE(typeNamed(row[2]), CMPI_null) << "no such type: " << row[2];
            EXPECT_EQ(property->type, typeNamed(row[2]));
        }
        EXPECT_EQ(property->isKey, row[3] == "key");
    }
}

/// The text of a qualifier; empty where the property has none.
std::string textOf(const cimhost::PropertyDeclaration& property, std::string_view qualifier) {
    const auto* found = findQualifier(property.qualifiers, qualifier);
    return found ? std::string(found->value.text()) : std::string();
}

// A fact is told apart by its mapping: answers leave it out where the management library has none.
TEST_F(ClassDefinitions, HaveTheFactsOfTheTableAndNoOthers) {
    std::map<std::string, std::set<std::string>> expected;
    for (const auto& row : readTable(tableDirectory / "expected_facts.tsv", 4)) {
        SCOPED_TRACE(row[0] + "." + row[1]);
        const auto* declaration = find(row[0]);
        ASSERT_NE(declaration, nullptr);
        const auto* property = declaration->property(row[1]);
        ASSERT_NE(property, nullptr);
        expected[row[0]].insert(row[1]);
        EXPECT_EQ(property->type, typeNamed(row[2]));
        EXPECT_EQ(textOf(*property, "PUnit"), row[3] == "-" ? "" : row[3]);
        EXPECT_NE(textOf(*property, "Description"), "");
        EXPECT_EQ(declaration->superclass()->property(row[1]), nullptr) << "is the schema's";
    }
    ASSERT_FALSE(expected.empty());
    for (const auto* declaration : classes()) {
        std::set<std::string> mapped;
        for (const auto& property : declaration->properties())
            if (isLeftOutWithoutValue(property)) mapped.insert(property.name);
        EXPECT_EQ(mapped, expected[declaration->name()]) << declaration->name();
    }
}

// The registration is made of the definitions: a class that it lost would answer every request with nothing.
TEST_F(ClassDefinitions, AreRegisteredEachWithTheKindsOfItsDefinition) {
    const auto registered = readRegistration(MEROLT_REGISTRATION);
    std::size_t ours = 0;
    for (const auto* declaration : classes()) {
        if (!isOurs(declaration->name())) continue;
        ++ours;
        const auto found = registered.find(declaration->name());
        ASSERT_NE(found, registered.end()) << declaration->name() << " is not registered";
        const std::set<std::string>& kinds = found->second;
        EXPECT_EQ(kinds.count("instance") == 1, !declaration->isIndication()) << declaration->name();
        EXPECT_EQ(kinds.count("association") == 1, declaration->isAssociation()) << declaration->name();
        EXPECT_EQ(kinds.count("indication") == 1, declaration->isIndication()) << declaration->name();
    }
    EXPECT_EQ(registered.size(), ours);
}

// What the definitions do not tell.
TEST_F(ClassDefinitions, AreRegisteredWithTheMethodsAndNamespacesThatTheProviderHas) {
    std::vector<std::string> withMore;
    for (const std::string& line : readLines(MEROLT_REGISTRATION)) {
        if (line.find("method") != std::string::npos || line.find(';') != std::string::npos) withMore.push_back(line);
    }
    std::sort(withMore.begin(), withMore.end());
    EXPECT_EQ(withMore, (std::vector<std::string>{
                            "Merolt_FCHBA_SoftwareInstallationService: instance method; alone=flash update",
                            "Merolt_NIC_ElementConformsToRegisteredProfile: instance association; "
                            "namespaces=root/merolt_cmpi,root/PG_InterOp",
                            "Merolt_NIC_RegisteredProfile: instance; namespaces=root/merolt_cmpi,root/PG_InterOp",
                            "Merolt_NIC_SoftwareInstallationService: instance method; alone=flash update",
                        }));
}

// A class whose properties stand in no table would be one that nobody checks. What an association is to be, the rules
// below say of all of them.
TEST_F(ClassDefinitions, HaveTheirPropertiesInTheTable) {
    std::set<std::string> checked;
    for (const auto& row : readTable(tableDirectory / "expected_properties.tsv", 4))
        checked.insert(row[0]);
    for (const auto* declaration : classes()) {
        if (!isOurs(declaration->name()) || declaration->isAssociation()) continue;
        EXPECT_EQ(checked.count(declaration->name()), 1U) << declaration->name();
    }
}

// Servers ask the provider for those associations alone whose ends an object can be.
TEST_F(ClassDefinitions, NameOurOwnClassesAtTheEndsOfAnAssociation) {
    // The one association with three classes at an end.
    const std::set<std::string> withAnyElement = {"Merolt_NIC_ElementConformsToRegisteredProfile.ManagedElement"};
    for (const auto* declaration : classes()) {
        if (!isOurs(declaration->name()) || !declaration->isAssociation()) continue;
        for (const std::size_t position : declaration->keys()) {
            const auto& role = declaration->properties()[position];
            const std::string name = declaration->name() + "." + role.name;
            if (withAnyElement.count(name)) continue;
            SCOPED_TRACE(name);
            EXPECT_TRUE(isOurs(role.referenceClass)) << "refers to " << role.referenceClass;
            EXPECT_FALSE(role.isPropagated) << "is not redeclared";
            const auto* override = findQualifier(role.qualifiers, "Override");
            ASSERT_NE(override, nullptr);
            EXPECT_EQ(override->value.text(), role.name);
        }
    }
}

TEST_F(ClassDefinitions, ComeFromEveryFileOfTheFolder) {
    const std::string top = readText(mofDirectory / "merolt.mof") + readText(mofDirectory / "interop.mof");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(mofDirectory)) {
        const std::filesystem::path file = std::filesystem::relative(entry.path(), mofDirectory);
        if (file.extension() != ".mof" || file == "merolt.mof" || file == "interop.mof") continue;
        EXPECT_NE(top.find("#pragma include (\"" + file.generic_string() + "\")"), std::string::npos) << file;
    }
}

// A request for a class is also answered by its subclasses: derived from one another, one class of ours would answer
// for the other.
TEST_F(ClassDefinitions, DeriveFromCimClassesOnly) {
    for (const auto* declaration : classes()) {
        for (const std::string& superclass : superclassesOf(*declaration)) {
            EXPECT_FALSE(isOurs(superclass)) << declaration->name() << " derives from " << superclass;
        }
    }
}

TEST_F(ClassDefinitions, TellTheirVersionAndPurpose) {
    for (const auto* declaration : classes()) {
        SCOPED_TRACE(declaration->name());
        const auto* description = findQualifier(declaration->qualifiers(), "Description");
        ASSERT_NE(description, nullptr);
        EXPECT_FALSE(description->value.text().empty());
        EXPECT_FALSE(description->isPropagated);
        if (isOurs(declaration->name())) {
            EXPECT_NE(findQualifier(declaration->qualifiers(), "Version"), nullptr);
        }
    }
}

// A client sees the same properties, and the same values in those that nobody sets, as on a server with the CIM Schema.
TEST_F(ClassDefinitions, HaveEveryMemberAndDefaultOfTheSchema) {
    const auto rows = readTable(tableDirectory / "expected_ancestors.tsv", 4);
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0] + "." + row[1]);
        const auto* declaration = find(row[0]);
        ASSERT_NE(declaration, nullptr);
        if (row[1].ends_with("()")) {
            const auto* method = declaration->method(std::string_view(row[1]).substr(0, row[1].size() - 2));
            ASSERT_NE(method, nullptr);
            EXPECT_EQ(method->returnType, typeNamed(row[2]));
            continue;
        }
        const auto* property = declaration->property(row[1]);
        ASSERT_NE(property, nullptr);
        EXPECT_EQ(property->name, row[1]) << "spelled otherwise";
        EXPECT_EQ(property->type, typeNamed(row[2]));
        EXPECT_EQ(property->defaultValue.isNull ? "-" : property->defaultValue.text(), row[3]);
    }
}

// With a default of its own, a class would show a value that neither an adapter nor the schema gave.
TEST_F(ClassDefinitions, TakeDefaultsFromTheSchemaOnly) {
    for (const auto* declaration : classes()) {
        if (!isOurs(declaration->name())) continue;
        for (const auto& property : declaration->properties()) {
            const auto* inherited = declaration->superclass()->property(property.name);
            EXPECT_EQ(property.defaultValue.text(), inherited ? inherited->defaultValue.text() : "")
                << declaration->name() << "." << property.name;
        }
    }
}

TEST_F(ClassDefinitions, AllowInstancesOfOurClassesOnly) {
    for (const char* base :
         {"CIM_ManagedElement", "CIM_LogicalDevice", "CIM_Service", "CIM_System", "CIM_Dependency"}) {
        ASSERT_NE(find(base), nullptr) << base;
        EXPECT_TRUE(find(base)->isAbstract()) << base;
    }
    for (const auto* declaration : classes()) {
        if (isOurs(declaration->name())) {
            EXPECT_FALSE(declaration->isAbstract()) << declaration->name();
        }
    }
}

TEST_F(ClassDefinitions, GiveEveryAssociationTwoReferencesAsItsKeys) {
    std::size_t associations = 0;
    for (const auto* declaration : classes()) {
        if (!declaration->isAssociation()) continue;
        SCOPED_TRACE(declaration->name());
        ++associations;
        EXPECT_EQ(declaration->keys().size(), 2U);
        for (const std::size_t position : declaration->keys()) {
            const auto& role = declaration->properties()[position];
            EXPECT_TRUE(role.isReference()) << role.name;
            EXPECT_NE(find(role.referenceClass), nullptr) << role.name << " refers to " << role.referenceClass;
        }
    }
    EXPECT_GE(associations, 30U);
}

TEST_F(ClassDefinitions, NarrowReferencesFromClassToClass) {
    for (const auto* declaration : classes()) {
        if (declaration->superclass() == nullptr) continue;
        for (const auto& role : declaration->properties()) {
            const auto* inherited = declaration->superclass()->property(role.name);
            if (!role.isReference() || inherited == nullptr) continue;
            const auto* target = find(role.referenceClass);
            ASSERT_NE(target, nullptr) << role.referenceClass;
            EXPECT_TRUE(target->isA(inherited->referenceClass))
                << declaration->name() << "." << role.name << ": " << role.referenceClass << " is no "
                << inherited->referenceClass;
        }
    }
}

TEST_F(ClassDefinitions, DeclareTheInstallationMethods) {
    const auto* service = find("CIM_SoftwareInstallationService");
    ASSERT_NE(service, nullptr);
    const auto* method = service->method("InstallFromURI");
    ASSERT_NE(method, nullptr);
    EXPECT_EQ(method->returnType, CMPI_uint32);
    ASSERT_EQ(method->parameters.size(), 5U);

    const auto* job = method->parameter("Job");
    ASSERT_NE(job, nullptr);
    EXPECT_TRUE(job->isReference());
    EXPECT_TRUE(job->isOut);
    EXPECT_FALSE(job->isIn);

    const auto* options = method->parameter("InstallOptions");
    ASSERT_NE(options, nullptr);
    EXPECT_EQ(options->type, static_cast<CMPIType>(CMPI_uint16 | CMPI_ARRAY));
    EXPECT_TRUE(options->isIn);
    EXPECT_FALSE(options->isOut);

    EXPECT_NE(service->method("InstallFromSoftwareIdentity"), nullptr);
    EXPECT_NE(service->method("CheckSoftwareIdentity"), nullptr);
}

} // namespace merolt::test
