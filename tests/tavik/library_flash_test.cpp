// Flash updates through the exported calls: a fleet shows the image's versions, or stays as it was.
#include <cstring>
#include <sys/file.h>

#include "library_fixture.h"

#include "tavik/flash_image.h"
#include "tavik/fleet/writer_lock.h"

namespace tavik::test {

namespace {

const std::string twoPorts = R"({"cards": [
    {"modelName": "MC1020", "adapterId": 100, "ports": [
        {"storage": {"multiBootVersion": "V:1.00.00,D:01012000,A:Y,T:M", "optionRom": {"firmware": "7.2.4"}},
         "ethernet": {"flashVersion": "01.00.00"}},
        {"storage": {"optionRom": {"firmware": "7.2.4"}}, "ethernet": {"flashVersion": "01.00.00"}}]},
    {"modelName": "OTHER", "adapterId": 200, "ports": [{"storage": {}, "ethernet": {}}]}]})";

Bytes image() {
    FlashImage image;
    image.cardModel = "MC1020";
    image.version = {2, 2, 3};
    image.optionRom.firmware = {8, 1, 0};
    image.optionRom.biosVersion = "3.40";
    image.payload = Bytes(5000, 0x77);
    return std::get<Bytes>(encodeFlashImage(image));
}

class LibraryFlashTest : public LibraryTest {
protected:
    std::string imageFile(const Bytes& bytes) {
        const auto file = folder_ / "image.bin";
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return file;
    }

    std::string fleetText() const {
        std::ostringstream text;
        text << std::ifstream(file_).rdbuf();
        return text.str();
    }

    std::string flashVersion() {
        library.UpdateBackupAdapterList();
        library.SwapBackupToMainAdapterList();
        const auto& nic = port()->protocols->first->next->nic;
        return nic.card.flashVersion;
    }

    std::string multiBootVersion() {
        char* text = nullptr;
        std::uint32_t length = 0;
        if (library.GetMBIVersionString(device(), &text, &length) != 0) return "none";
        const std::string version(text, length);
        library.FreeMem(text);
        return version;
    }
};

TEST_F(LibraryFlashTest, TakesTheBytesOfAnImageAndShowsItsVersionsAfterTheNextUpdateOfTheTrees) {
    start(twoPorts);
    ASSERT_EQ(library.UpdateFlash(100, image().data(), 0), statusOk);
    EXPECT_EQ(library.DidConfigChange(), 1U);
    EXPECT_EQ(flashVersion(), "02.02.03");
}

TEST_F(LibraryFlashTest, AProcessThatLocksTheFolderDoesNotDelayIt) {
    start(twoPorts);
    const int folder = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(folder, LOCK_SH), 0);
    EXPECT_EQ(library.UpdateFlash(100, image().data(), 0), statusOk);
    close(folder);
}

TEST_F(LibraryFlashTest, TellsThatSomebodyElseIsChangingTheFleetInsteadOfWaitingForEver) {
    start(twoPorts);
    const StandardError errors(folder_ / "errors");
    const fleet::WriterLock other(file_);
    EXPECT_EQ(library.UpdateFlash(100, image().data(), 0), statusBusy);
    EXPECT_EQ(errors.count("flash update refused: " + file_.string() + ": somebody else is changing it"), 1);
    EXPECT_EQ(fleetText(), twoPorts);
}

TEST_F(LibraryFlashTest, FilesLeftByAKilledUpdateAreGoneAfterTheNextStart) {
    std::ofstream(folder_ / "fleet.json.unfinished") << R"({"cards": [)";
    start(twoPorts);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "fleet.json.unfinished"));
}

TEST_F(LibraryFlashTest, TakesTheAbsolutePathOfAnImageInTheSamePlace) {
    start(twoPorts);
    ASSERT_EQ(library.UpdateFlash(100, imageFile(image()).c_str(), 0), statusOk);
    EXPECT_EQ(flashVersion(), "02.02.03");
}

TEST_F(LibraryFlashTest, OfAStorageFunctionShowsAtOnceInTheRecordsOfTheWholeCard) {
    start(twoPorts);
    ASSERT_EQ(library.doOptionROMUpdate(device(), imageFile(image()).c_str(), 0), statusOk);
    auto* second = &port()->next->protocols->first->storage.device;
    for (const auto* record : {device(), second}) {
        EXPECT_EQ(+record->firmwareVersion[0], 8);
        EXPECT_EQ(+record->optionRomFlags, 1);
        EXPECT_STREQ(record->optionRomBiosVersion, "3.40");
    }
    EXPECT_EQ(multiBootVersion(), "V:2.02.03,D:01012000,A:Y,T:M");
    auto* other = &library.GetAdapterList()->first->next->phyPorts->first->protocols->first->storage.device;
    EXPECT_EQ(+other->optionRomFlags, 0);
}

TEST_F(LibraryFlashTest, OfAStorageFunctionThatComesBeforeASwapShowsBehindItToo) {
    start(twoPorts);
    ASSERT_EQ(library.UpdateBackupAdapterList(), statusOk);
    ASSERT_EQ(library.doOptionROMUpdate(device(), imageFile(image()).c_str(), 0), statusOk);
    EXPECT_EQ(+device()->firmwareVersion[0], 8);
    ASSERT_EQ(library.SwapBackupToMainAdapterList(), statusOk);
    for (const auto* record : {device(), &port()->next->protocols->first->storage.device}) {
        EXPECT_EQ(+record->firmwareVersion[0], 8);
        EXPECT_STREQ(record->optionRomBiosVersion, "3.40");
    }
}

TEST_F(LibraryFlashTest, LeavesNothingOfALongerVersion) {
    start(R"({"cards": [{"modelName": "MC1020", "ports": [
        {"storage": {"optionRom": {"biosVersion": "3.39.7 of an earlier image", "efi": "6.2"}}}]}]})");
    ASSERT_EQ(library.doOptionROMUpdate(device(), imageFile(image()).c_str(), 0), statusOk);
    EXPECT_STREQ(device()->optionRomBiosVersion, "3.40");
    EXPECT_EQ(+device()->optionRomFlags, 1);
}

// Numbers that a file leaves to the library move when a card goes.
TEST_F(LibraryFlashTest, OfACardWhoseNumbersAnotherOneHasTakenIsRefusedUntilTheSwap) {
    const auto card = [](const std::string& serialNumber) {
        return R"({"modelName": "MC1020", "serialNumber": ")" + serialNumber +
               R"(", "ports": [{"storage": {}, "ethernet": {}}]})";
    };
    const std::string left = R"({"cards": [)" + card("B") + "]}";
    start(R"({"cards": [)" + card("A") + ", " + card("B") + "]}");
    const auto file = imageFile(image());
    const StandardError log(folder_ / "log");
    replaceFleet(left);
    for (const char* moment : {"whether it was read or not", "after the update of the second tree"}) {
        EXPECT_EQ(library.doOptionROMUpdate(device(), file.c_str(), 0), statusNoSuchDevice) << moment;
        EXPECT_EQ(library.UpdateFlash(1, image().data(), 0), statusNoSuchDevice) << moment;
        EXPECT_EQ(library.UpdateFlash(1, file.c_str(), 0), statusNoSuchDevice) << moment;
        ASSERT_EQ(library.UpdateBackupAdapterList(), statusOk);
    }
    EXPECT_EQ(fleetText(), left);
    EXPECT_EQ(log.count("tavik: flash update refused: the fleet has no such card, or another one in its place\n"), 6);
    ASSERT_EQ(library.SwapBackupToMainAdapterList(), statusOk);
    EXPECT_EQ(library.doOptionROMUpdate(device(), file.c_str(), 0), statusOk);
    EXPECT_EQ(library.UpdateFlash(1, image().data(), 0), statusOk);
}

TEST_F(LibraryFlashTest, ThatIsRefusedWritesOneLineWhateverTheClientNamed) {
    start(twoPorts);
    const StandardError log(folder_ / "log");
    EXPECT_EQ(library.UpdateFlash(100, "/no\ntavik: such\r\x1b[31m\x7f\tf\xC3\xBCr", 0), statusUnreadableFile);
    EXPECT_EQ(log.text(), "tavik: flash update refused: /no\\x0Atavik: such\\x0D\\x1B[31m\\x7F\\x09f\xC3\xBCr: No such "
                          "file or directory\n");
}

TEST_F(LibraryFlashTest, WithAnImageThatDoesNotFitAnswersItsOwnStatusAndChangesNothing) {
    start(twoPorts);
    const StandardError log(folder_ / "log");
    auto truncated = image();
    truncated.resize(1000);
    auto changed = image();
    changed.back() ^= 1;
    EXPECT_EQ(library.doOptionROMUpdate(device(), imageFile(truncated).c_str(), 0), statusDamagedImage);
    EXPECT_EQ(library.UpdateFlash(100, imageFile(changed).c_str(), 0), statusDamagedImage);
    EXPECT_EQ(library.UpdateFlash(100, changed.data(), 0), statusDamagedImage);
    EXPECT_EQ(library.UpdateFlash(100, "some text", 0), statusNotAnImage);
    EXPECT_EQ(library.UpdateFlash(100, folder_.c_str(), 0), statusUnreadableFile);
    EXPECT_EQ(library.UpdateFlash(200, image().data(), 0), statusForeignImage);
    EXPECT_EQ(library.doOptionROMUpdate(device(1), imageFile(image()).c_str(), 0), statusForeignImage);
    EXPECT_EQ(library.doOptionROMUpdate(device(), "no such file", 0), statusUnreadableFile);
    EXPECT_EQ(fleetText(), twoPorts);
    EXPECT_EQ(library.DidConfigChange(), 0U);
    EXPECT_EQ(log.count("tavik: flash update refused: "), 8);
    EXPECT_EQ(log.count("the image is for cards of model \"MC1020\", not \"OTHER\""), 2);
}

TEST_F(LibraryFlashTest, ThatTheFleetSaysFailsAnswersThatStatusAndChangesNothing) {
    const std::string failing = R"({"cards": [{"modelName": "MC1020", "adapterId": 100,
        "ports": [{"storage": {"failures": {"flashUpdate": 17}}, "ethernet": {"failures": {"flashUpdate": 18}}}]}]})";
    start(failing);
    EXPECT_EQ(library.doOptionROMUpdate(device(), imageFile(image()).c_str(), 0), 17U);
    EXPECT_EQ(library.UpdateFlash(100, image().data(), 0), 18U);
    EXPECT_EQ(fleetText(), failing);
}

TEST_F(LibraryFlashTest, OfTheHostItselfIsRefusedAndSaysWhy) {
    setenv("TAVIK_SOURCE", "host", 1);
    library.Initialize(0, 0);
    const StandardError log(folder_ / "log");
    TAVIK_DeviceRecord record{};
    EXPECT_EQ(library.UpdateFlash(1, image().data(), 0), statusReadOnly);
    EXPECT_EQ(library.doOptionROMUpdate(&record, "/tmp/image", 0), statusReadOnly);
    EXPECT_EQ(log.count("tavik: flash update refused: the adapters of the host itself are only read"), 2);
}

} // namespace

} // namespace tavik::test
