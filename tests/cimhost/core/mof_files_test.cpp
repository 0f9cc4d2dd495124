// MOF from files: includes, what cannot be read, and the classes that the server is delivered with.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "cimhost/model/class_repository.h"

using namespace cimhost;
namespace fs = std::filesystem;

namespace {

class MofFiles : public testing::Test {
protected:
    MofFiles() {
        std::string pattern = (fs::temp_directory_path() / "mof-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
    }
    ~MofFiles() override { fs::remove_all(folder); }

    fs::path write(const std::string& name, const std::string& text) const {
        fs::create_directories((folder / name).parent_path());
        std::ofstream(folder / name) << text;
        return folder / name;
    }

    // The message of a load with the folder's name taken out.
    std::string messageOf(const fs::path& file) {
        try {
            repository.loadFile("root/test", file);
        } catch (const MofError& error) {
            std::string message = error.what();
            for (std::size_t place; (place = message.find(folder.string() + "/")) != std::string::npos;) {
                message.erase(place, folder.string().size() + 1);
            }
            return message;
        }
        return "read";
    }

    fs::path folder;
    ClassRepository repository;
};

} // namespace

TEST_F(MofFiles, AnIncludedFileIsReadBesideTheIncludingOne) {
    write("sub/b.mof", "#pragma include (\"c.mof\")\nclass B : C {};");
    write("sub/c.mof", "class C {};");
    const fs::path a = write("a.mof", "#pragma include (\"sub/b.mof\")\nclass A : B {};");
    EXPECT_EQ(messageOf(a), "read");
    EXPECT_TRUE(repository.find("root/test", "A")->isA("C"));
}

TEST_F(MofFiles, AnErrorInAnIncludedFileNamesThatFile) {
    write("b.mof", "\n class");
    const fs::path a = write("a.mof", "#pragma include (\"b.mof\")");
    EXPECT_EQ(messageOf(a), "b.mof:2:7: expected a class name, found the end of the file");
}

TEST_F(MofFiles, ANamespacePragmaEndsWithItsFile) {
    write("b.mof", "#pragma namespace (\"root/two\")\nclass B {};");
    const fs::path a = write("a.mof", "#pragma include (\"b.mof\")\nclass A {};");
    EXPECT_EQ(messageOf(a), "read");
    EXPECT_NE(repository.find("root/two", "B"), nullptr);
    EXPECT_NE(repository.find("root/test", "A"), nullptr);
}

TEST_F(MofFiles, SeveralFilesOfOneLoadMayReferToEachOther) {
    const fs::path files[] = {write("a.mof", "class A { B REF Other; };"), write("b.mof", "class B {};")};
    repository.loadFiles("root/test", files);
    EXPECT_EQ(repository.classes("root/test").size(), 2U);
}

TEST_F(MofFiles, AFileThatCannotBeReadIsNamed) {
    EXPECT_EQ(messageOf(folder / "missing.mof"), "missing.mof:1:1: cannot be read: No such file or directory");
    fs::create_directory(folder / "folder.mof");
    EXPECT_EQ(messageOf(folder / "folder.mof"), "folder.mof:1:1: cannot be read: not a regular file");
    EXPECT_EQ(messageOf(write("a.mof", "\n#pragma include (\"missing.mof\")")),
              "a.mof:2:18: the included file \"missing.mof\" cannot be read");
    fs::resize_file(write("large.mof", ""), (16U << 20) + 1);
    EXPECT_EQ(messageOf(folder / "large.mof"), "large.mof:1:1: file is too large");
}

TEST_F(MofFiles, FilesThatIncludeEachOtherWithoutEndAreRefused) {
    const fs::path a = write("a.mof", "#pragma include (\"b.mof\")");
    write("b.mof", "#pragma include (\"a.mof\")");
    EXPECT_EQ(messageOf(a), "b.mof:1:18: files include each other more than 16 deep");
}

TEST_F(MofFiles, FilesThatIncludeTooManyOthersAreRefused) {
    for (int depth = 0; depth < 13; ++depth) {
        const std::string next = "#pragma include (\"" + std::to_string(depth + 1) + ".mof\")\n";
        write(std::to_string(depth) + ".mof", next + next);
    }
    write("13.mof", "");
    EXPECT_NE(messageOf(folder / "0.mof").find(": more than 4096 files in one load"), std::string::npos);
}

TEST_F(MofFiles, TheDeliveredClassesAreRead) {
    ASSERT_EQ(messageOf(fs::path(MEROLT_MOF_DIRECTORY) / "merolt.mof"), "read");
    const ClassDeclaration* port = repository.find("root/test", "merolt_fchba_fcport");
    ASSERT_NE(port, nullptr);
    EXPECT_TRUE(port->isA("CIM_ManagedElement"));
    EXPECT_EQ(port->keys().size(), 4U);
}
