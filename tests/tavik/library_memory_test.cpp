#include "library_fixture.h"
#include "tavik/status.h"

#if defined(__SANITIZE_ADDRESS__)
#define TAVIK_WATCHES_MEMORY 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAVIK_WATCHES_MEMORY 1
#endif
#endif

#ifdef TAVIK_WATCHES_MEMORY
#include <sanitizer/asan_interface.h>
#endif

namespace tavik {

namespace {

const std::string fleet = R"({"cards": [{"ports": [{
    "storage": {"uuid": "u-1"},
    "ethernet": {"ip": {"ipv6": ["2001:db8::1"], "secondList": ["192.0.2.1"], "thirdList": ["192.0.2.2"]},
                 "fcoeLinkage": [{}]}}]}]})";

class LibraryMemory : public test::LibraryTest {
protected:
    char* uuid() {
        char* text = nullptr;
        std::uint32_t size = 0;
        EXPECT_EQ(library.GetUUIDFromI2CVPD(device(), &text, &size), 0U);
        return text;
    }
};

/** True where it cannot be seen, so that it is asked in all builds and answered in those that watch memory. */
[[maybe_unused]] bool isReleased([[maybe_unused]] const void* memory) {
#ifdef TAVIK_WATCHES_MEMORY
    return __asan_address_is_poisoned(memory) != 0;
#else
    return true;
#endif
}

TEST_F(LibraryMemory, GivingBackNothingIsFine) { EXPECT_EQ(library.FreeMem(nullptr), 0U); }

TEST_F(LibraryMemory, AddressBlocksTakeTheirListsWithThem) {
    start(fleet);
    TAVIK_IPProperties* ip = nullptr;
    ASSERT_EQ(library.GetIPProperties("eth0", &ip), 0U);
    const void* const lists[] = {ip->firstList, ip->secondList, ip->thirdList};
    for (const void* list : lists) {
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(library.FreeMem(const_cast<void*>(list)), statusInvalidArgument) << "a list is no block of its own";
    }
    EXPECT_EQ(+ip->firstList[0].address[15], 1);
    EXPECT_EQ(library.FreeMem(ip), 0U);
    EXPECT_TRUE(isReleased(ip));
    for (const void* list : lists)
        EXPECT_TRUE(isReleased(list));
}

TEST_F(LibraryMemory, ABlockIsGivenBackOnce) {
    start(fleet);
    char* text = uuid();
    EXPECT_EQ(library.FreeMem(text), 0U);
    EXPECT_TRUE(isReleased(text));
    EXPECT_EQ(library.FreeMem(text), statusInvalidArgument);
}

TEST_F(LibraryMemory, ForeignMemoryIsLeftAlone) {
    start(fleet);
    std::string mine = "mine";
    char* text = uuid();
    EXPECT_EQ(library.FreeMem(mine.data()), statusInvalidArgument);
    EXPECT_EQ(library.FreeMem(text + 1), statusInvalidArgument);
    EXPECT_EQ(library.FreeMem(library.GetAdapterList()), statusInvalidArgument);
    EXPECT_EQ(mine, "mine");
    EXPECT_STREQ(text, "u-1");
    EXPECT_EQ(library.FreeMem(text), 0U);
}

TEST_F(LibraryMemory, BlocksOutliveSwapsAndTheEndOfTheLibrary) {
    start(fleet);
    char* text = uuid();
    TAVIK_FCoELinkage* linkage = nullptr;
    std::uint32_t count = 0;
    ASSERT_EQ(library.GetFCoELinkage("eth0", &linkage, &count), 0U);
    library.UpdateBackupAdapterList();
    library.SwapBackupToMainAdapterList();
    library.Uninitialize();
    EXPECT_STREQ(text, "u-1");
    EXPECT_EQ(linkage->wwn[0], 0);
    EXPECT_EQ(library.FreeMem(text), 0U);
    EXPECT_EQ(library.FreeMem(linkage), 0U);
}

TEST_F(LibraryMemory, RecordsOfTheOldTreeAreGoneAfterTheSwap) {
    start(fleet);
    const void* const old = library.GetAdapterList();
    const void* const oldDevice = device();
    library.UpdateBackupAdapterList();
    EXPECT_EQ(library.GetAdapterList(), old);
    library.SwapBackupToMainAdapterList();
    EXPECT_TRUE(isReleased(oldDevice));
}

/** Ends a process in which nothing was reported before; its status is the number of reports. */
[[noreturn]] void giveForeignMemoryBackTwice() {
    const test::LoadedLibrary library;
    const auto file = std::filesystem::path(::testing::TempDir()) / ("tavik_foreign_" + std::to_string(getpid()));
    int mine = 0;
    int reports = 0;
    {
        const test::StandardError error(file);
        library.FreeMem(&mine);
        library.FreeMem(&mine);
        reports = error.count("tavik: TAVIK_FreeMem: memory that is not the library's, ignored\n");
    }
    std::filesystem::remove(file);
    _exit(reports);
}

TEST(ForeignMemoryDeathTest, IsReportedOncePerProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(giveForeignMemoryBackTwice(), ::testing::ExitedWithCode(1), "");
}

} // namespace

} // namespace tavik
