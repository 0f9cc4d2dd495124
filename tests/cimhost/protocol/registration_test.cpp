#include "fake_provider.h"
#include "temporary_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace cimhost {
namespace {

using testing_support::FakeHost;
using testing_support::TemporaryFile;

TEST(RegistrationTest, LinesNameClassesKindsAndNamespaces) {
    FakeHost host;
    const TemporaryFile file(
        "# comment\n\n  T_FibrePort: instance method # behind\nT_EtherPort:association; namespaces=root/ns\n");
    const Registration registration = Registration::load(file.path, host.repository, {"root/ns", "root/io"});
    const ClassDeclaration& fibre = *host.repository.find("root/ns", "T_FibrePort");
    const ClassDeclaration& ether = *host.repository.find("root/ns", "T_EtherPort");
    EXPECT_TRUE(registration.serves(fibre, ProviderKind::instance));
    EXPECT_TRUE(registration.serves(fibre, ProviderKind::method));
    EXPECT_FALSE(registration.serves(fibre, ProviderKind::association));
    EXPECT_TRUE(registration.serves(ether, ProviderKind::association));
    EXPECT_FALSE(registration.serves(ether, ProviderKind::instance));
}

TEST(RegistrationTest, TheInteropNamespaceIsFoundUnderItsNameHere) {
    FakeHost host;
    const TemporaryFile file("T_FibrePort: instance; namespaces=root/ns,root/PG_InterOp\n");
    const Registration registration = Registration::load(file.path, host.repository, {"root/ns", "root/io"});
    EXPECT_TRUE(registration.serves(*host.repository.find("root/ns", "T_FibrePort"), ProviderKind::instance));
    EXPECT_TRUE(registration.serves(*host.repository.find("root/io", "T_FibrePort"), ProviderKind::instance));
    EXPECT_FALSE(registration.serves(*host.repository.find("root/io", "T_EtherPort"), ProviderKind::instance));
}

TEST(RegistrationTest, AClassCanHaveMethodsThatRunAlone) {
    FakeHost host;
    const TemporaryFile file("T_FibrePort: method; alone=flash update ; namespaces=root/io\nT_EtherPort: method\n");
    const Registration registration = Registration::load(file.path, host.repository, {"root/ns", "root/io"});
    EXPECT_EQ(registration.aloneAs(*host.repository.find("root/io", "T_FibrePort")), "flash update");
    EXPECT_EQ(registration.aloneAs(*host.repository.find("root/ns", "T_FibrePort")), "");
    EXPECT_EQ(registration.aloneAs(*host.repository.find("root/ns", "T_EtherPort")), "");
}

TEST(RegistrationTest, ABadLineIsNamed) {
    FakeHost host;
    for (const char* line :
         {"T_FibrePort", "T_None: instance", "T_FibrePort: instances", "T_FibrePort: instance; namespaces=root/other",
          "T_FibrePort: instance; colour=red", "T_FibrePort: instance; alone="}) {
        const TemporaryFile file(std::string("# first\n") + line + "\n");
        try {
            Registration::load(file.path, host.repository, {"root/ns", "root/io"});
            ADD_FAILURE() << line;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith(file.path.string() + ":2: "));
        }
    }
}

TEST(RegistrationTest, WithoutAFileConcreteClassesOfThePrefixAreServed) {
    FakeHost host;
    const Registration registration = Registration::ofPrefix("t_", host.repository);
    EXPECT_TRUE(registration.serves(*host.repository.find("root/ns", "T_Counter"), ProviderKind::instance));
    EXPECT_FALSE(registration.serves(*host.repository.find("root/ns", "T_Port"), ProviderKind::instance));
}

} // namespace
} // namespace cimhost
