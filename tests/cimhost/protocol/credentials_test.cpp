#include "temporary_file.h"

#include "cimhost/http/credentials.h"
#include "cimhost/http/password_hash.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(Credentials, AWrongPasswordIsNeitherAcceptedNorRemembered) {
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

TEST(Credentials, AFileThatOthersCanOpenIsRefused) {
    const TemporaryFile file(annaLine);
    for (const unsigned mode : {0640U, 0620U, 0660U, 0604U, 0602U, 0644U, 0610U}) {
        std::filesystem::permissions(file.path, static_cast<std::filesystem::perms>(mode));
        EXPECT_NE(loadError(file).find("chmod 600"), std::string::npos) << std::oct << mode << ": " << loadError(file);
    }
    for (const unsigned mode : {0600U, 0400U}) {
        std::filesystem::permissions(file.path, static_cast<std::filesystem::perms>(mode));
        EXPECT_EQ(loadError(file), "") << std::oct << mode;
    }
}

TEST(Credentials, APipeIsRefusedAndNotWaitedFor) {
    const TemporaryFile file;
    std::filesystem::remove(file.path);
    ASSERT_EQ(::mkfifo(file.path.c_str(), 0600), 0);
    EXPECT_EQ(loadError(file), file.path.string() + ": no regular file");
}

// Of these methods, a hash is guessed in a day.
TEST(Credentials, AWeakHashIsRefused) {
    for (const std::string weak : {"abiQ6Ep3EYTHc", "_J9..abcd5WNy9VUCfAY", "$1$abc$OGyl6dDvZCDiGmIVbeuCq/"}) {
        const TemporaryFile file("anna:" + weak + "\n");
        EXPECT_NE(loadError(file).find(":1: the hash is of a method that is guessed too fast"), std::string::npos)
            << weak << ": " << loadError(file);
    }
}

TEST(Credentials, ANewHashIsAcceptedAndNeverTheSame) {
    const std::string first = newHash("secret");
    const std::string second = newHash("secret");
    EXPECT_NE(first, second);
    const TemporaryFile file("anna:" + first + "\nbert:" + second + "\n");
    Credentials credentials = Credentials::load(file.path);
    EXPECT_EQ(credentials.verify(annaSecret), "anna");
    EXPECT_FALSE(credentials.verify(annaWrong));
    EXPECT_THROW(newHash(std::string(513, 'x')), std::runtime_error);
}

TEST(Credentials, AfterReadingAgainOnlyTheNewUsersAreLetIn) {
    const TemporaryFile file(annaLine);
    Credentials credentials = Credentials::load(file.path);
    ASSERT_EQ(credentials.verify(annaSecret), "anna");
    const TemporaryFile others("nobody:" + newHash("secret") + "\n");
    EXPECT_EQ(credentials.reload(others.path), 1U);
    EXPECT_FALSE(credentials.recall(annaSecret));
    EXPECT_FALSE(credentials.verify(annaSecret));
    EXPECT_EQ(credentials.verify(nobodySecret), "nobody");
    const TemporaryFile none("# all gone\n");
    EXPECT_EQ(credentials.reload(none.path), 0U);
    EXPECT_FALSE(credentials.recall(nobodySecret));
    EXPECT_FALSE(credentials.verify(nobodySecret));
}

TEST(Credentials, ABrokenFileLeavesTheUsersOfBefore) {
    const TemporaryFile file(annaLine);
    Credentials credentials = Credentials::load(file.path);
    const TemporaryFile broken(annaLine + "bert\n");
    EXPECT_THROW(credentials.reload(broken.path), std::runtime_error);
    EXPECT_THROW(credentials.reload("/nonexistent"), std::runtime_error);
    EXPECT_EQ(credentials.verify(annaSecret), "anna");
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
