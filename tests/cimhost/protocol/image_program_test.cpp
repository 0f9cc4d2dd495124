// The commands cimhost image make and cimhost image show.
#include "program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing_support::cimhost;
using testing_support::Ended;
using testing_support::lineCount;
using testing_support::TemporaryFile;

const std::vector<std::string> required = {"--model", "MC1020", "--image-version", "2.2.3", "--date", "2013-04-30"};

class ImageProgram : public testing::Test {
protected:
    Ended make(const std::vector<std::string>& more = {}, const std::string& name = "") {
        std::vector<std::string> arguments = {"image", "make", name.empty() ? file.path.string() : name};
        arguments.insert(arguments.end(), required.begin(), required.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        return cimhost(arguments);
    }

    Ended show(const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments = {"image", "show", file.path.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return cimhost(arguments);
    }

    std::string content() const {
        std::ifstream stream(file.path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void setContent(const std::string& bytes) { std::ofstream(file.path, std::ios::binary) << bytes; }

    /// One line that names the file, and status 2.
    void expectRefusal(const Ended& ended, const std::string& message) {
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_EQ(lineCount(ended.errors), 1U) << ended.errors;
        EXPECT_THAT(ended.errors, HasSubstr("cimhost: " + message));
    }

    TemporaryFile file;
};

TEST_F(ImageProgram, ShowsTheImageThatItMade) {
    const TemporaryFile payload("abcde");
    const Ended made = make({"--bios", "3.40", "--firmware", "8.1.0", "--efi", "6.2", "--fcode", "4.2.0", "--payload",
                             payload.path.string()});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.output + made.errors, "");
    EXPECT_EQ(content().size(), 128U + 5U);
    EXPECT_EQ(show().output, "model: MC1020\nversion: 2.2.3\ndate: 2013-04-30\nbios: 3.40\nfirmware: 8.1.0\nefi: 6.2\n"
                             "fcode: 4.2.0\npayloadBytes: 5\n");
    EXPECT_EQ(show({"--json"}).output,
              "{\n  \"model\": \"MC1020\",\n  \"version\": \"2.2.3\",\n  \"date\": \"2013-04-30\",\n"
              "  \"bios\": \"3.40\",\n  \"firmware\": \"8.1.0\",\n  \"efi\": \"6.2\",\n  \"fcode\": \"4.2.0\",\n"
              "  \"payloadBytes\": 5\n}\n");
}

TEST_F(ImageProgram, VersionsThatAreLeftOutAreEmpty) {
    EXPECT_EQ(make().status, 0);
    EXPECT_EQ(show().output, "model: MC1020\nversion: 2.2.3\ndate: 2013-04-30\nbios: \nfirmware: \nefi: \nfcode: \n"
                             "payloadBytes: 0\n");
}

TEST_F(ImageProgram, AFileThatExistsIsWrittenOverOnlyIfAsked) {
    setContent(std::string(100'000, 'x'));
    expectRefusal(make(), file.path.string() + ": exists; --force writes over it");
    EXPECT_EQ(content().size(), 100'000U);
    EXPECT_EQ(make({"--force"}).status, 0);
    EXPECT_EQ(content().size(), 128U);
    EXPECT_EQ(show().status, 0);
}

TEST_F(ImageProgram, OptionsThatMakeNoImageAreNamedAndLeaveTheFileAlone) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
        {{"--firmware", "8.1"}, "--firmware: \"8.1\" is not 3 numbers up to 255 with '.' between them"},
        {{"--firmware", "8.1.256"}, "--firmware: \"8.1.256\" is not 3 numbers"},
        {{"--efi", "6.2.1"}, "--efi: \"6.2.1\" is not 2 numbers"},
        {{"--fcode", "a.b.c"}, "--fcode: \"a.b.c\" is not 3 numbers"},
        {{"--bios", std::string(40, 'b')}, "the BIOS version is not a text of at most 31 printable characters"},
        {{"--payload", "/nonexistent/payload"}, "/nonexistent/payload: cannot be read"},
        {{"--payload", "/"}, "/: cannot be read"},
    };
    setContent("before");
    for (auto [options, message] : rows) {
        SCOPED_TRACE(message);
        options.push_back("--force");
        expectRefusal(make(options), message);
    }
    EXPECT_EQ(content(), "before");
}

TEST_F(ImageProgram, TheRequiredOptionsHaveToMakeSenseToo) {
    const auto with = [this](const std::string& model, const std::string& version, const std::string& date) {
        return cimhost(
            {"image", "make", file.path.string(), "--model", model, "--image-version", version, "--date", date});
    };
    expectRefusal(with("MC1020", "2.2.100", "2013-04-30"), "--image-version: \"2.2.100\" is not 3 numbers up to 99");
    expectRefusal(with("MC1020", "2.2.3", "30.4.2013"), "--date: \"30.4.2013\" is not 3 numbers");
    expectRefusal(with("MC1020", "2.2.3", "2013-13-01"), "--date: \"2013-13-01\" is no date");
    expectRefusal(with("MC1020", "2.2.3", "2013-00-01"), "the release date is none");
    expectRefusal(with(std::string(40, 'm'), "2.2.3", "2013-04-30"), "the card model is not a text");
    const Ended missing = cimhost({"image", "make", file.path.string(), "--model", "MC1020"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.errors, HasSubstr("--image-version is required"));
    EXPECT_EQ(content(), "");
}

TEST_F(ImageProgram, APayloadFillsTheImageUpToItsLimit) {
    const TemporaryFile payload;
    std::filesystem::resize_file(payload.path, (16U << 20) - 128);
    EXPECT_EQ(make({"--payload", payload.path.string()}).status, 0);
    EXPECT_EQ(std::filesystem::file_size(file.path), 16U << 20);
    EXPECT_THAT(show().output, HasSubstr("payloadBytes: 16777088\n"));
    for (const unsigned excess : {1U, 129U}) {
        std::filesystem::resize_file(payload.path, (16U << 20) - 128 + excess);
        const Ended refused = make({"--force", "--payload", payload.path.string()});
        EXPECT_EQ(refused.status, 2);
        EXPECT_THAT(refused.errors, HasSubstr("larger than 16 MiB"));
    }
}

TEST_F(ImageProgram, AFileThatCannotBeWrittenIsNamed) {
    for (const std::string name : {"/nonexistent/image.bin", "/", "/dev/full"}) {
        expectRefusal(make({}, name), name + ": cannot be written");
    }
}

TEST_F(ImageProgram, AFileThatIsNoImageIsRefusedWithTheReason) {
    ASSERT_EQ(make().status, 0);
    const std::string image = content();
    std::string badHeader = image;
    badHeader[30] = 'X';
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"", "this is no flash image"},
        {"some text", "this is no flash image"},
        {image.substr(0, 100), "the image ends within its header"},
        {badHeader, "the header's checksum is wrong"},
        {image + "x", "the image is longer than its header says"},
    };
    for (const auto& [bytes, message] : rows) {
        SCOPED_TRACE(message);
        setContent(bytes);
        const Ended ended = show();
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors, MatchesRegex("cimhost: .*" + message + "\n"));
    }
}

TEST_F(ImageProgram, ADamagedPayloadIsReported) {
    const TemporaryFile payload("abcde");
    ASSERT_EQ(make({"--payload", payload.path.string()}).status, 0);
    const std::string image = content();
    setContent(image.substr(0, image.size() - 1));
    EXPECT_THAT(show().errors, HasSubstr("the image is shorter than its header says"));
    setContent(image.substr(0, image.size() - 1) + "x");
    EXPECT_THAT(show().errors, HasSubstr("the payload's checksum is wrong"));
}

TEST_F(ImageProgram, AFileThatCannotBeReadIsNamed) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"/nonexistent/image.bin", "/nonexistent/image.bin: No such file or directory"},
        {"/", "/: not a regular file"},
        {"/dev/zero", "/dev/zero: not a regular file"},
    };
    for (const auto& [name, message] : rows)
        expectRefusal(cimhost({"image", "show", name}), message);
}

} // namespace
} // namespace cimhost
