// The provider's shared library as a CIM server's loader sees it.
#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

/// The dynamic section and the dynamic symbols of a 64-bit ELF file.
class SharedLibrary {
public:
    explicit SharedLibrary(const char* path) {
        std::ifstream file(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), {});
        if (bytes.size() < sizeof(Elf64_Ehdr) || std::memcmp(bytes.data(), ELFMAG, SELFMAG) != 0)
            throw std::runtime_error(std::string(path) + " is no ELF file");
    }

    /// Names that others can link against, sorted.
    Names exportedNames() const {
        Names names;
        for (const Elf64_Sym& symbol : records<Elf64_Sym>(SHT_DYNSYM)) {
            const bool isLocal = ELF64_ST_BIND(symbol.st_info) == STB_LOCAL;
            if (!isLocal && symbol.st_shndx != SHN_UNDEF) names.push_back(dynamicText(symbol.st_name));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    /// Texts of the dynamic section's entries of that tag.
    Names dynamicTexts(Elf64_Sxword tag) const {
        Names texts;
        for (const Elf64_Dyn& entry : records<Elf64_Dyn>(SHT_DYNAMIC)) {
            if (entry.d_tag == tag) texts.push_back(dynamicText(entry.d_un.d_val));
        }
        return texts;
    }

private:
    template <class Record>
    std::vector<Record> recordsAt(std::size_t offset, std::size_t count) const {
        std::vector<Record> found(count);
        if (offset + count * sizeof(Record) > bytes.size()) throw std::runtime_error("the file is cut short");
        std::memcpy(found.data(), bytes.data() + offset, count * sizeof(Record));
        return found;
    }

    std::vector<Elf64_Shdr> sections() const {
        const Elf64_Ehdr header = recordsAt<Elf64_Ehdr>(0, 1).front();
        return recordsAt<Elf64_Shdr>(header.e_shoff, header.e_shnum);
    }

    Elf64_Shdr section(Elf64_Word type) const {
        for (const Elf64_Shdr& found : sections()) {
            if (found.sh_type == type) return found;
        }
        throw std::runtime_error("a section is missing");
    }

    template <class Record>
    std::vector<Record> records(Elf64_Word type) const {
        const Elf64_Shdr found = section(type);
        return recordsAt<Record>(found.sh_offset, found.sh_size / sizeof(Record));
    }

    std::string dynamicText(std::size_t place) const {
        const Elf64_Shdr texts = sections().at(section(SHT_DYNSYM).sh_link);
        return bytes.data() + texts.sh_offset + place;
    }

    std::vector<char> bytes;
};

class ExportsTest : public testing::Test {
protected:
    const SharedLibrary provider{MEROLT_PROVIDER_LIBRARY};
};

TEST_F(ExportsTest, TheFourFactoriesAndNothingElse) {
    const Names factories = {
        "Merolt_CNA_Provider_Create_AssociationMI",
        "Merolt_CNA_Provider_Create_IndicationMI",
        "Merolt_CNA_Provider_Create_InstanceMI",
        "Merolt_CNA_Provider_Create_MethodMI",
    };
    EXPECT_EQ(provider.exportedNames(), factories);
}

TEST_F(ExportsTest, TheManagementLibraryIsNeededUnderItsSoname) {
    const Names needed = provider.dynamicTexts(DT_NEEDED);
    EXPECT_EQ(std::count(needed.begin(), needed.end(), "libtavik.so.1"), 1);
}

TEST_F(ExportsTest, AnotherManagementLibraryCanBePutInFront) {
    EXPECT_EQ(provider.dynamicTexts(DT_RUNPATH).size(), 1U) << "the build's library is found without installing it";
    EXPECT_EQ(provider.dynamicTexts(DT_RPATH), Names()) << "this one would win over LD_LIBRARY_PATH";
}

} // namespace
