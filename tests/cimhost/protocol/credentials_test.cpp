#include "temporary_file.h"

#include "cimhost/http/credentials.h"

#include <gtest/gtest.h>

namespace cimhost::http {
namespace {

using testing_support::TemporaryFile;

// The password is "secret".
const std::string annaLine = "anna:$5$abcdefgh$gruCpC7VkOTspMQTTSAR8mtlO9Upms.fwqE5y16JVM.\n";

constexpr std::string_view annaSecret = "Basic YW5uYTpzZWNyZXQ=";
constexpr std::string_view annaWrong = "Basic YW5uYTp3cm9uZw==";
constexpr std::string_view nobodySecret = "Basic bm9ib2R5OnNlY3JldA==";

std::string loadError(const TemporaryFile& file) {
    try {
        Credentials::load(file.path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(Credentials, ARightPasswordIsAcceptedAndRemembered) {
    const TemporaryFile file("# users\n\n" + annaLine);
    Credentials credentials = Credentials::load(file.path);
    EXPECT_FALSE(credentials.recall(annaSecret));
    EXPECT_EQ(credentials.verify(annaSecret), "anna");
    EXPECT_EQ(credentials.recall(annaSecret), "anna");
    EXPECT_FALSE(credentials.recall(annaWrong));
}

TEST(Credentials, WhatIsWrongIsNeitherAcceptedNorRemembered) {
    const TemporaryFile file(annaLine);
    Credentials credentials = Credentials::load(file.path);
    for (const std::string_view given :
         {annaWrong, nobodySecret, std::string_view("Basic YW46bmE="), std::string_view("Basic "),
          std::string_view("Basic ===="), std::string_view("Basic YW5u"), std::string_view("Bearer YW5uYTpzZWNyZXQ="),
          std::string_view("Basic YW5uYTpzZWNyZXQ"), std::string_view("")}) {
        EXPECT_FALSE(credentials.verify(given)) << given;
        EXPECT_FALSE(credentials.recall(given)) << given;
    }
}

TEST(Credentials, AFileThatOthersCanReadIsRefused) {
    const TemporaryFile file(annaLine);
    std::filesystem::permissions(file.path, std::filesystem::perms::others_read, std::filesystem::perm_options::add);
    EXPECT_NE(loadError(file).find("chmod 600"), std::string::npos) << loadError(file);
}

TEST(Credentials, ABadLineIsNamed) {
    for (const std::string bad : {"anna", ":hash", "anna:secret", "anna:"}) {
        const TemporaryFile file("# first line\n" + bad + "\n");
        EXPECT_NE(loadError(file).find(file.path.string() + ":2: "), std::string::npos)
            << bad << ": " << loadError(file);
    }
    const TemporaryFile twice(annaLine + annaLine);
    EXPECT_NE(loadError(twice).find(":2: "), std::string::npos) << loadError(twice);
    const TemporaryFile empty("# nobody\n");
    EXPECT_NE(loadError(empty), "");
    EXPECT_THROW(Credentials::load("/nonexistent"), std::runtime_error);
}

} // namespace
} // namespace cimhost::http
