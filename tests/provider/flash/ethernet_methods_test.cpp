// The four methods of the Ethernet side's installation service, as a client and the log see them.
#include "method_test.h"

#include "flash/flash_update.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

constexpr const char* service = "Merolt_NIC_SoftwareInstallationService";
constexpr const char* controller = "Merolt_NIC_PortController";
constexpr CMPICount largest = 0x1000000;
const std::string prefix = "Merolt_NIC_SoftwareInstallationService: ";

class EthernetMethodTest : public MethodTest {
protected:
    void SetUp() override {
        MethodTest::SetUp();
        setPath("Target", controller, "CNA0001");
        tavikLibrary.onUpdateFlash = [this](std::uint32_t adapterId, const void* image) {
            writtenAdapter = adapterId;
            written.assign(static_cast<const char*>(image), bytesToKeep);
            return libraryStatus;
        };
    }

    void expectRefusal(const char* method, const std::vector<std::string>& lines) {
        EXPECT_EQ(invoke(service, method), returned(2));
        EXPECT_TRUE(inOrder(takeLogLines(), lines));
        EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateFlash"), 0U);
        expectNextRequestWorks();
    }

    /// Every method tests its target alike.
    void expectTargetChecks(const char* method, const std::string& exception) {
        setPath("Target", "Merolt_FCHBA_PortController", "CNA0001");
        expectRefusal(method, {exception + "5 (null)"});
        setReference("Target", scope->make().path(implementationNamespace, controller));
        expectRefusal(method, {prefix + "Error getting Name key invokeMethod", exception + "4 (null)"});
        setPathWithNumber("Target", controller);
        expectRefusal(method, {prefix + "Invalid key type in invokeMethod", exception + "4 (null)"});
        setText("Target", "a text");
        expectRefusal(method, {exception + "13 (null)"});
        arguments.set("Target", CMPI_ref, CMPIValue{});
        expectRefusal(method, {exception + "4 (null)"});
    }

    std::size_t bytesToKeep = 5;
    std::uint32_t writtenAdapter = 0;
    std::string written;
    std::uint32_t libraryStatus = 0;
};

TEST_F(EthernetMethodTest, AnUnknownMethodGivesOne) {
    EXPECT_EQ(invoke(service, "InstallFromNowhere"), returned(1));
    EXPECT_TRUE(inOrder(takeLogLines(), {"Merolt_NIC_SoftwareInstallationService invokeMethod was called", "",
                                         "Exiting  Merolt_CNA_Provider invokeMethod"}));
}

/// While it lives, no file of this process grows beyond that size.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : signalBefore(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit tight{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before);
        signal(SIGXFSZ, signalBefore);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    sighandler_t signalBefore;
    rlimit before{};
};

class EthernetURITest : public EthernetMethodTest {
protected:
    static constexpr const char* method = "InstallFromURI";
    const std::string exception = "Merolt_NIC_Provider INSTALL_FROM_URI exception: ";

    void SetUp() override {
        EthernetMethodTest::SetUp();
        writeFile("image.bin", "image");
        image = std::filesystem::absolute("image.bin").string();
        localCopy = std::filesystem::absolute("flash.bin").string();
        bytesToKeep = localCopy.size();
        setText("URI", image);
    }

    static mode_t rightsOf(const char* file) {
        struct stat status {};
        stat(file, &status);
        return status.st_mode & 07777;
    }

    /// Makes a directory whose path has that many characters and moves there. @return the path.
    static std::string enterDirectoryOf(std::size_t size) {
        const std::string before = std::filesystem::current_path().string();
        const std::filesystem::path deep = before + '/' + std::string(size - before.size() - 1, 'd');
        std::filesystem::create_directory(deep);
        std::filesystem::current_path(deep);
        return deep.string();
    }

    std::string image;
    std::string localCopy;
};

TEST_F(EthernetURITest, HandsTheLibraryTheNameOfACopyThatStaysBehind) {
    const unsigned long slept = services.sleptHere();
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(writtenAdapter, 7U);
    EXPECT_EQ(written, localCopy);
    EXPECT_EQ(readFile("flash.bin"), "image");
    EXPECT_EQ(services.sleptHere(), slept) << "this side does not wait";
    EXPECT_TRUE(inOrder(takeLogLines(),
                        {"Merolt_NIC_SoftwareInstallationService invokeMethod was called",
                         prefix + "NIC_PortController.DeviceID = CNA0001", prefix + "URI=" + image + ".  File exists.",
                         prefix + "flashFileName = " + image, prefix + "imageSize = 5, localFile= " + localCopy,
                         prefix + "UpdateCNAFlashImage returns 0"}));
}

TEST_F(EthernetURITest, NoListIsRebuilt) {
    tavikLibrary.nic("eth1").card.flashVersion = "09.09.09";
    tavikLibrary.clearCalls();
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(tavikLibrary.calls(), std::vector<std::string>{"TAVIK_UpdateFlash"});
}

TEST_F(EthernetURITest, TheNextUpdateOverwritesTheCopyAndMayStartFromIt) {
    EXPECT_EQ(invoke(service, method), returned(0));
    writeFile("image.bin", "other bytes");
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(readFile("flash.bin"), "other bytes");
    setText("URI", "file://" + localCopy);
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(readFile("flash.bin"), "other bytes");
}

TEST_F(EthernetURITest, SchemesAndLetterCases) {
    for (const char* scheme : {"file://", "FILE://", "fIlE://"}) {
        setText("URI", scheme + image);
        EXPECT_EQ(invoke(service, method), returned(0)) << scheme;
    }
    EXPECT_TRUE(inOrder(takeLogLines(), {prefix +
                                         "Detected the leading 'file://' tag.  After removing the tag, "
                                         "flashFileName=" +
                                         image}));
    tavikLibrary.clearCalls();
    std::filesystem::create_symlink("/nowhere/at/all", "dangling");
    for (const char* uri :
         {"http://192.0.2.1/image", "HTTPS://192.0.2.1/image", "ftp://192.0.2.1/image", "file:/x", "", "dangling"}) {
        setText("URI", uri);
        expectRefusal(method,
                      {prefix + "Error: Invalid or unsupported URI!", exception + "4 Invalid or unsupported URI!"});
    }
}

TEST_F(EthernetURITest, AnImageOf16MiBPassesAndOneByteMoreDoesNot) {
    setText("URI", fileOf("largest.bin", largest));
    EXPECT_EQ(invoke(service, method), returned(0));
    tavikLibrary.clearCalls();
    setText("URI", fileOf("too_large.bin", largest + 1));
    expectRefusal(method, {prefix + "imageSize = 16777217, localFile= " + localCopy,
                           prefix + "Image did not pass the size check", exception + "4 (null)"});
}

TEST_F(EthernetURITest, AFileAboveTheLimitIsNotCopiedAndItsSizeIsTold) {
    writeFile("flash.bin", "an earlier image");
    setText("URI", fileOf("huge.bin", std::uintmax_t{1} << 40));
    expectRefusal(method, {prefix + "imageSize = 1099511627776, localFile= " + localCopy,
                           prefix + "Image did not pass the size check", exception + "4 (null)"});
    EXPECT_EQ(readFile("flash.bin"), "an earlier image");
}

TEST_F(EthernetURITest, AnEndlessFileLeavesNoPartOfACopy) {
    // Regular by its looks, of no size, and half a terabyte to read.
    setText("URI", "/proc/self/pagemap");
    expectRefusal(method, {prefix + "Image did not pass the size check"});
    EXPECT_FALSE(std::filesystem::exists("flash.bin"));
}

TEST_F(EthernetURITest, AFileReplacedByAPipeIsNotWaitedFor) {
    services.afterFileCheck = [] {
        std::filesystem::remove("image.bin");
        mkfifo("image.bin", 0600);
    };
    expectRefusal(method, {prefix + "imageSize = 0, localFile= " + localCopy});
}

TEST_F(EthernetURITest, ANewlineInTheURIMakesNoLineOfItsOwn) {
    setText("URI", "no\nSun Nov 22 00:00:00 2026 forged\x1b[2J");
    expectRefusal(method, {prefix + "Error: Invalid or unsupported URI!"});
    writeFile("a\nb", "image");
    setText("URI", "a\nb");
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_TRUE(inOrder(takeLogLines(), {prefix + "URI=a\\nb.  File exists.", prefix + "flashFileName = a\\nb"}));
}

TEST_F(EthernetURITest, EmptyFilesAndFoldersDoNotPassTheSizeCheck) {
    std::filesystem::create_directory("folder");
    for (const std::string& uri : {fileOf("empty.bin", 0), std::string("folder"), std::string("/dev/null")}) {
        setText("URI", uri);
        expectRefusal(method, {prefix + "imageSize = 0, localFile= " + localCopy,
                               prefix + "Image did not pass the size check", exception + "4 (null)"});
    }
}

TEST_F(EthernetURITest, AFileThatGoesBetweenTheChecksDoesNotPassTheSizeCheck) {
    services.afterFileCheck = [] { std::filesystem::remove("image.bin"); };
    expectRefusal(method, {prefix + "URI=" + image + ".  File exists.", prefix + "Image did not pass the size check"});
}

// The next ones fail on a server without root's rights if the copy takes over the source's.
TEST_F(EthernetURITest, TheCopyIsOfTheServersUserAloneWhateverTheRightsOfTheSource) {
    for (const mode_t rights : {0444U, 0400U, 06755U, 0666U}) {
        chmod(image.c_str(), rights);
        EXPECT_EQ(invoke(service, method), returned(0)) << std::oct << rights;
        EXPECT_EQ(rightsOf("flash.bin"), 0600U) << std::oct << rights;
    }
    EXPECT_EQ(rightsOf("image.bin"), 0666U);
}

TEST_F(EthernetURITest, ACopyThatCannotBeWrittenIsReplaced) {
    writeFile("flash.bin", "a longer image of an earlier update");
    chmod("flash.bin", 0444);
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(readFile("flash.bin"), "image");
    EXPECT_EQ(rightsOf("flash.bin"), 0600U);
}

TEST_F(EthernetURITest, ALinkInThePlaceOfTheCopyIsReplacedAndItsOtherEndStays) {
    writeFile("precious", "precious");
    std::filesystem::create_symlink("precious", "flash.bin");
    EXPECT_EQ(invoke(service, method), returned(0));
    std::filesystem::remove("flash.bin");
    std::filesystem::create_hard_link("precious", "flash.bin");
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(readFile("precious"), "precious");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status("flash.bin")));
    EXPECT_EQ(readFile("flash.bin"), "image");
}

TEST_F(EthernetURITest, AFolderInThePlaceOfTheCopyFailsTheUpdateAndStays) {
    std::filesystem::create_directory("flash.bin");
    expectRefusal(method, {prefix + "imageSize = 0, localFile= " + localCopy});
    EXPECT_TRUE(std::filesystem::is_directory("flash.bin"));
}

TEST_F(EthernetURITest, ACopyThatDoesNotFitLeavesNoPartAndTheSourceAsItWas) {
    setText("URI", fileOf("larger.bin", 100'000));
    {
        const FullDisk disk(50'000);
        EXPECT_EQ(invoke(service, method), returned(2));
    }
    EXPECT_FALSE(std::filesystem::exists("flash.bin"));
    EXPECT_EQ(std::filesystem::file_size("larger.bin"), 100'000U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateFlash"), 0U);
}

TEST_F(EthernetURITest, ACopyThatIsTheSourceStaysWholeWhereThereIsNoRoomForAnother) {
    fileOf("flash.bin", 100'000);
    std::filesystem::create_symlink("flash.bin", "link");
    for (const char* uri : {"flash.bin", "link"}) {
        setText("URI", uri);
        const FullDisk disk(50'000);
        EXPECT_EQ(invoke(service, method), returned(0)) << uri;
        EXPECT_EQ(std::filesystem::file_size("flash.bin"), 100'000U) << uri;
    }
}

TEST_F(EthernetURITest, AWorkingDirectoryOf260CharactersHoldsTheCopy) {
    localCopy = enterDirectoryOf(260) + "/flash.bin";
    bytesToKeep = localCopy.size();
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(written, localCopy);
    EXPECT_EQ(readFile(localCopy), "image");
}

TEST_F(EthernetURITest, AWorkingDirectoryOf261CharactersHoldsNoCopy) {
    enterDirectoryOf(261);
    EXPECT_EQ(invoke(service, method), returned(2));
    EXPECT_FALSE(std::filesystem::exists("flash.bin"));
    EXPECT_TRUE(inOrder(logLines(std::filesystem::absolute("Merolt_CNA_Provider.log").string()),
                        {prefix + "imageSize = 0, localFile= ", prefix + "Image did not pass the size check"}));
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateFlash"), 0U);
}

TEST_F(EthernetURITest, TheDownloadItselfRefusesRemoteSchemes) {
    char localName[merolt::flash::localNameRoom];
    EXPECT_EQ(merolt::flash::downloadFlashFile("http://192.0.2.1/image", localName), 0U);
    EXPECT_EQ(merolt::flash::downloadFlashFile(("FILE://" + image).c_str(), localName), 5U);
    EXPECT_EQ(localName, localCopy);
}

TEST_F(EthernetURITest, MissingArgumentsAndOtherTypesAreRefused) {
    arguments.setNull("URI", CMPI_string);
    expectRefusal(method, {exception + "4 (null)"});
    setPath("URI", controller, "CNA0001");
    expectRefusal(method, {exception + "4 (null)"});
    arguments.set("URI", CMPI_string, CMPIValue{});
    expectRefusal(method, {prefix + "Error: URI argument is NULL!", exception + "4 URI argument is NULL!"});
    setText("URI", image);
    arguments.setNull("Target", CMPI_ref);
    expectRefusal(method, {exception + "4 (null)"});
    expectTargetChecks(method, exception);
}

TEST_F(EthernetURITest, AnUnknownCardIsRefused) {
    setPath("Target", controller, "NOSUCH");
    expectRefusal(method, {prefix + "pCNACard is NULL after FindCNAFromSerialNumber() call", exception + "4 (null)"});
}

TEST_F(EthernetURITest, ThePlainSerialNumberAndThePublishedDeviceIDSelectTheSameCard) {
    for (const char* deviceID : {"CNA0001", "CNA0001_NIC", "cna0001_nic"}) {
        writtenAdapter = 0;
        setPath("Target", "MEROLT_nic_portcontroller", deviceID);
        EXPECT_EQ(invoke(service, "installfromuri"), returned(0));
        EXPECT_EQ(writtenAdapter, 7U) << deviceID;
    }
}

TEST_F(EthernetURITest, AFailingLibraryGivesTwoAndItsStatusInTheErrorLog) {
    libraryStatus = 13;
    EXPECT_EQ(invoke(service, method), returned(2));
    EXPECT_TRUE(inOrder(takeLogLines(), {"Merolt_NIC_Provider update flash error (7): Undefined error = 13",
                                         prefix + "UpdateCNAFlashImage returns 2"}));
}

TEST_F(EthernetURITest, AnArgumentThatTheServerLacksLeavesTheMethodAndFreesBothLocks) {
    arguments.items.erase("URI");
    EXPECT_EQ(invoke(service, method), (MethodAnswer{CMPI_RC_ERR_NO_SUCH_PROPERTY, "URI", {}, 0}));
    expectNextRequestWorks();
}

class ByteStreamTest : public EthernetMethodTest {
protected:
    static constexpr const char* method = "InstallFromByteStream";
    const std::string exception = "Merolt_NIC_Provider INSTALL_FROM_BYTESTREAM exception: ";
};

TEST_F(ByteStreamTest, HandsTheLibraryTheBytesOfABareArray) {
    setBytes("Image", 5, CMPI_ARRAY, "bytes");
    EXPECT_EQ(invoke(service, method), returned(0));
    EXPECT_EQ(writtenAdapter, 7U);
    EXPECT_EQ(written, "bytes");
    EXPECT_EQ(invoke(service, "INSTALLFROMBYTESTREAM"), returned(0));
}

// The library reads such bytes up to a zero, and there is none of the client's.
TEST_F(ByteStreamTest, BytesThatReadAsAPathEndWithTheArray) {
    for (const CMPICount size : {24U, 40U, 56U}) {
        const std::string path = '/' + std::string(size - 1, 'A');
        tavikLibrary.onUpdateFlash = [this](std::uint32_t, const void* image) {
            written = static_cast<const char*>(image);
            return 0U;
        };
        setBytes("Image", size, CMPI_ARRAY, path);
        EXPECT_EQ(invoke(service, method), returned(0));
        EXPECT_EQ(written, path);
    }
}

TEST_F(ByteStreamTest, AnArrayThatTheServerTagsWithItsElementTypeIsRefused) {
    setBytes("Image", 5, CMPI_uint8A, "bytes");
    expectRefusal(method, {exception + "4 (null)"});
}

TEST_F(ByteStreamTest, AnImageOf16MiBPassesAndOneByteMoreDoesNot) {
    setBytes("Image", largest, CMPI_ARRAY, "bytes");
    EXPECT_EQ(invoke(service, method), returned(0));
    tavikLibrary.clearCalls();
    setBytes("Image", largest + 1, CMPI_ARRAY);
    expectRefusal(method, {exception + "4 (null)"});
}

TEST_F(ByteStreamTest, MissingArgumentsEmptyArraysAndOtherElementsAreRefused) {
    setBytes("Image", 0, CMPI_ARRAY);
    expectRefusal(method, {exception + "4 (null)"});
    arguments.setNull("Image", CMPI_ARRAY);
    expectRefusal(method, {exception + "4 (null)"});
    arguments.set("Image", CMPI_ARRAY, CMPIValue{});
    expectRefusal(method, {exception + "4 (null)"});
    CMPIValue numbers{};
    numbers.array = cimhost::ArrayObject::make(scope->arena(), 3, CMPI_uint16);
    arguments.set("Image", CMPI_ARRAY, numbers);
    expectRefusal(method, {exception + "13 (null)"});
    setBytes("Image", 5, CMPI_ARRAY);
    arguments.setNull("Target", CMPI_ref);
    expectRefusal(method, {exception + "4 (null)"});
    setPath("Target", controller, "NOSUCH");
    expectRefusal(method, {exception + "4 (null)"});
    expectTargetChecks(method, exception);
}

TEST_F(ByteStreamTest, AFailingLibraryGivesTwo) {
    libraryStatus = 13;
    setBytes("Image", 5, CMPI_ARRAY);
    EXPECT_EQ(invoke(service, method), returned(2));
    EXPECT_TRUE(inOrder(takeLogLines(), {"Merolt_NIC_Provider update flash error (7): Undefined error = 13"}));
}

class IdentityMethodTest : public EthernetMethodTest {
protected:
    void SetUp() override {
        EthernetMethodTest::SetUp();
        setPath("Source", "Merolt_NIC_SoftwareIdentity", "any");
        arguments.setNull("Collection", CMPI_ref);
    }
};

TEST_F(IdentityMethodTest, InstallingFromAnIdentityFailsWithValidArgumentsToo) {
    const std::string exception = "Merolt_NIC_Provider INSTALL_FROM_SOFTWAREIDENTITY exception: ";
    const char* method = "installFromSoftwareIdentity";
    expectRefusal(method, {exception + "4 (null)"});
    setPath("Target", controller, "NOSUCH");
    expectRefusal(method, {exception + "4 (null)"});
    expectTargetChecks(method, exception);
    arguments.setNull("Target", CMPI_ref);
    expectRefusal(method, {exception + "4 (null)"});
    setPath("Target", controller, "CNA0001");
    setText("Source", "a text");
    expectRefusal(method, {exception + "13 (null)"});
    arguments.setNull("Source", CMPI_ref);
    expectRefusal(method, {exception + "4 (null)"});
}

TEST_F(IdentityMethodTest, CheckingAnIdentityTellsAKnownCardFromAnUnknownOneInTheLog) {
    const std::string exception = "Merolt_NIC_Provider CHECK_SOFTWARE_IDENTITY exception: ";
    const char* method = "checksoftwareidentity";
    expectRefusal(method, {exception + "4 (null)"});
    setPath("Target", controller, "NOSUCH");
    expectRefusal(method, {exception + "13 (null)"});
    expectTargetChecks(method, exception);
    arguments.setNull("Source", CMPI_ref);
    expectRefusal(method, {exception + "4 (null)"});
}

TEST_F(IdentityMethodTest, CheckingAnIdentityWantsEitherTargetOrCollectionAndLooksNothingUpOtherwise) {
    const std::string exception = "Merolt_NIC_Provider CHECK_SOFTWARE_IDENTITY exception: ";
    cimhost::ObjectPathObject* target = setPath("Target", controller, "CNA0001");
    CMPIObjectPathFT counting = *target->ft;
    static int reads = 0;
    reads = 0;
    counting.getKey = [](const CMPIObjectPath*, const char*, CMPIStatus* status) {
        ++reads;
        *status = {CMPI_RC_ERR_NOT_FOUND, nullptr};
        return CMPIData{};
    };
    target->ft = &counting;
    setPath("Collection", controller, "CNA0001");
    expectRefusal("CheckSoftwareIdentity", {exception + "4 (null)"});
    EXPECT_EQ(reads, 0);
    arguments.setNull("Target", CMPI_ref);
    expectRefusal("CheckSoftwareIdentity", {exception + "4 (null)"});
    arguments.setNull("Collection", CMPI_ref);
    expectRefusal("CheckSoftwareIdentity", {exception + "4 (null)"});
}

TEST_F(IdentityMethodTest, AnArgumentThatTheServerLacksLeavesTheMethodAndFreesBothLocks) {
    arguments.items.erase("Collection");
    EXPECT_EQ(invoke(service, "CheckSoftwareIdentity"),
              (MethodAnswer{CMPI_RC_ERR_NO_SUCH_PROPERTY, "Collection", {}, 0}));
    expectNextRequestWorks();
}

TEST_F(EthernetMethodTest, AnUpdateNeedsACardAnImageAndASize) {
    merolt::CNACard card{};
    EXPECT_EQ(merolt::flash::UpdateCNAFlashImage(nullptr, "x", 1), 2U);
    EXPECT_EQ(merolt::flash::UpdateCNAFlashImage(&card, nullptr, 1), 2U);
    EXPECT_EQ(merolt::flash::UpdateCNAFlashImage(&card, "x", 0), 2U);
    EXPECT_EQ(tavikLibrary.callCount("TAVIK_UpdateFlash"), 0U);
}

} // namespace
