// The format of flash images, and how the library takes one out of memory whose end it does not know.
#include "tavik/flash_image.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavik {

namespace {

FlashImage sample() {
    FlashImage image;
    image.cardModel = "MC1020";
    image.version = {2, 2, 3};
    image.releaseDate = {2013, 4, 30};
    image.optionRom = {"3.40", {{8, 1, 0}}, {{6, 2}}, {{4, 2, 0}}};
    image.payload = Bytes(9000, 0x5A);
    return image;
}

Bytes bytesOf(const FlashImage& image) { return std::get<Bytes>(encodeFlashImage(image)); }

template <typename Value>
Status statusOf(const std::variant<Value, FlashFault>& outcome) {
    const auto* fault = std::get_if<FlashFault>(&outcome);
    return fault ? fault->status : statusOk;
}

/** Memory that ends where its last byte does: the page behind it cannot be read. */
class EndOfMemory {
public:
    explicit EndOfMemory(const Bytes& bytes)
        : size_((bytes.size() + 4095) / 4096 * 4096 + 4096),
          start_(static_cast<std::uint8_t*>(
              mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          bytes_(start_ + size_ - 4096 - bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), bytes_);
        mprotect(start_ + size_ - 4096, 4096, PROT_NONE);
    }
    ~EndOfMemory() { munmap(start_, size_); }
    EndOfMemory(const EndOfMemory&) = delete;
    EndOfMemory& operator=(const EndOfMemory&) = delete;

    const void* bytes() const { return bytes_; }

private:
    std::size_t size_;
    std::uint8_t* start_;
    std::uint8_t* bytes_;
};

Bytes textBytes(const std::string& text) { return Bytes(text.c_str(), text.c_str() + text.size() + 1); }

class FlashImageFileTest : public ::testing::Test {
protected:
    FlashImageFileTest() : file_(::testing::TempDir() + "flash_image_" + std::to_string(getpid())) {}
    ~FlashImageFileTest() override { std::filesystem::remove(file_); }

    void write(const Bytes& bytes) {
        std::ofstream(file_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    std::string file_;
};

TEST(FlashImage, ReadsBackAsItWasMade) {
    const auto bytes = bytesOf(sample());
    EXPECT_EQ(bytes.size(), flashHeaderSize + 9000);
    EXPECT_EQ(std::get<FlashImage>(decodeFlashImage(bytes)), sample());
    FlashImage least;
    EXPECT_EQ(std::get<FlashImage>(decodeFlashImage(bytesOf(least))), least);
}

TEST(FlashImage, IsLaidOutAsDocumented) {
    const auto bytes = bytesOf(sample());
    const Bytes head(bytes.begin(), bytes.begin() + 16);
    EXPECT_EQ(head, (Bytes{0x89, 'M', 'L', 'T', 'F', '\r', '\n', 0x1A, 1, 0, 128, 0, 0x28, 0x23, 0, 0}));
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 24), "MC1020");
    const Bytes versions(bytes.begin() + 56, bytes.begin() + 72);
    EXPECT_EQ(versions, (Bytes{2, 2, 3, 30, 4, 0xDD, 7, 7, 8, 1, 0, 6, 2, 4, 2, 0}));
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 72), "3.40");
}

TEST(FlashImage, CutAnywhereIsNotTaken) {
    const auto bytes = bytesOf(sample());
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_NE(statusOf(decodeFlashImage({bytes.data(), length})), statusOk) << length;
    EXPECT_EQ(statusOf(decodeFlashImage({bytes.data(), 0})), statusNotAnImage);
    EXPECT_EQ(statusOf(decodeFlashImage({bytes.data(), 100})), statusDamagedImage);
}

TEST(FlashImage, WithAnyByteChangedIsNotTaken) {
    FlashImage small = sample();
    small.payload.resize(20);
    const auto good = bytesOf(small);
    for (std::size_t place = 0; place < good.size(); ++place) {
        auto bytes = good;
        bytes[place] ^= 0x10;
        EXPECT_EQ(statusOf(decodeFlashImage(bytes)), place < flashMagic.size() ? statusNotAnImage : statusDamagedImage)
            << place;
    }
}

TEST(FlashImage, WithBytesBehindItIsNotTaken) {
    auto bytes = bytesOf(sample());
    bytes.push_back(0);
    EXPECT_EQ(std::get<FlashFault>(decodeFlashImage(bytes)),
              (FlashFault{statusDamagedImage, "the image is longer than its header says"}));
}

TEST(FlashImage, WithFieldsThatMakeNoSenseIsNotMade) {
    const auto refused = [](auto change) {
        FlashImage image = sample();
        change(image);
        return statusOf(encodeFlashImage(image)) != statusOk;
    };
    EXPECT_TRUE(refused([](auto& image) { image.cardModel = std::string(32, 'x'); }));
    EXPECT_TRUE(refused([](auto& image) { image.version[1] = 100; }));
    EXPECT_TRUE(refused([](auto& image) { image.releaseDate.month = 13; }));
    EXPECT_TRUE(refused([](auto& image) { image.optionRom.biosVersion = std::string("a\0b", 3); }));
    EXPECT_TRUE(refused([](auto& image) { image.payload.resize(flashImageLimit - flashHeaderSize + 1); }));
    EXPECT_FALSE(refused([](auto& image) { image.payload.resize(flashImageLimit - flashHeaderSize); }));
}

TEST(FlashImage, IsOfADayThatTheCalendarHas) {
    const auto isTaken = [](std::uint16_t year, std::uint8_t month, std::uint8_t day) {
        FlashImage image = sample();
        image.releaseDate = {year, month, day};
        return statusOf(encodeFlashImage(image)) == statusOk;
    };
    EXPECT_TRUE(isTaken(1970, 1, 1));
    EXPECT_TRUE(isTaken(9999, 12, 31));
    EXPECT_FALSE(isTaken(1969, 12, 31));
    EXPECT_FALSE(isTaken(10000, 1, 1));
    constexpr std::array<std::uint8_t, 12> lastDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (std::uint8_t month = 1; month <= 12; ++month) {
        EXPECT_TRUE(isTaken(2013, month, lastDays[month - 1])) << int(month);
        EXPECT_FALSE(isTaken(2013, month, static_cast<std::uint8_t>(lastDays[month - 1] + 1))) << int(month);
        EXPECT_FALSE(isTaken(2013, month, 0)) << int(month);
    }
    EXPECT_TRUE(isTaken(2012, 2, 29));
    EXPECT_TRUE(isTaken(2000, 2, 29));
    EXPECT_FALSE(isTaken(2100, 2, 29));
}

TEST(FlashImageInMemory, IsTakenUpToTheLastByteThatCanBeRead) {
    const EndOfMemory memory(bytesOf(sample()));
    EXPECT_EQ(std::get<FlashImage>(readFlashImage(memory.bytes())), sample());
}

TEST(FlashImageInMemory, ThatEndsBeforeItsHeaderSaysIsDamaged) {
    auto bytes = bytesOf(sample());
    for (const std::size_t length : {bytes.size() - 1, std::size_t{5000}, flashHeaderSize, std::size_t{50}}) {
        bytes.resize(length);
        EXPECT_EQ(statusOf(readFlashImage(EndOfMemory(bytes).bytes())), statusDamagedImage) << length;
    }
}

TEST(FlashImageInMemory, ThatIsTooShortForItsMarkIsDamagedOrNone) {
    for (const Bytes& bytes : {Bytes{0}, Bytes{'x', 'y'}, Bytes{0x89, 'x'}})
        EXPECT_EQ(statusOf(readFlashImage(EndOfMemory(bytes).bytes())), statusNotAnImage);
    for (const Bytes& bytes : {Bytes{0x89}, Bytes{0x89, 'M', 'L', 'T'}})
        EXPECT_EQ(statusOf(readFlashImage(EndOfMemory(bytes).bytes())), statusDamagedImage);
}

TEST(FlashImageInMemory, ThatCannotBeReadAtAllIsNone) {
    EXPECT_EQ(statusOf(readFlashImage(reinterpret_cast<const void*>(8))), statusNotAnImage);
}

TEST(FlashImageInMemory, WithoutAnEndToItsPathIsNone) {
    EXPECT_EQ(statusOf(readFlashImage(EndOfMemory({'/', 'x', 'y'}).bytes())), statusNotAnImage);
    EXPECT_EQ(statusOf(readFlashImage(Bytes(8192, '/').data())), statusNotAnImage);
}

TEST_F(FlashImageFileTest, IsFoundByTheAbsolutePathInMemory) {
    write(bytesOf(sample()));
    const EndOfMemory memory(textBytes(file_));
    EXPECT_EQ(std::get<FlashImage>(readFlashImage(memory.bytes())), sample());
}

TEST_F(FlashImageFileTest, ThatIsNoFileCannotBeRead) {
    const auto status = [](const std::string& name) { return statusOf(readFlashImageFile(name)); };
    EXPECT_EQ(status(file_), statusUnreadableFile);
    EXPECT_EQ(status("/"), statusUnreadableFile);
    EXPECT_EQ(status("/dev/zero"), statusUnreadableFile);
    EXPECT_EQ(std::get<FlashFault>(readFlashImageFile(file_)).reason, file_ + ": No such file or directory");
}

TEST_F(FlashImageFileTest, ThatIsNoFileIsNotOpened) {
    ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, file_.c_str(), IN_OPEN), 0);
    inotify_event event{};
    EXPECT_EQ(std::get<FlashFault>(readFlashImageFile(file_)).reason, file_ + ": not a regular file");
    EXPECT_LT(read(watch, &event, sizeof event), 0);
    EXPECT_EQ(errno, EAGAIN);
    close(watch);
}

TEST_F(FlashImageFileTest, IsJudgedLikeAnImageInMemory) {
    auto bytes = bytesOf(sample());
    bytes.pop_back();
    write(bytes);
    EXPECT_EQ(std::get<FlashFault>(readFlashImageFile(file_)),
              (FlashFault{statusDamagedImage, file_ + ": the image is shorter than its header says"}));
    write({});
    EXPECT_EQ(statusOf(readFlashImageFile(file_)), statusNotAnImage);
    std::filesystem::resize_file(file_, flashImageLimit + 1);
    EXPECT_EQ(statusOf(readFlashImageFile(file_)), statusDamagedImage);
}

} // namespace

} // namespace tavik
