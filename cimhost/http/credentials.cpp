#include "cimhost/http/credentials.h"

#include "cimhost/model/names.h"

#include <crypt.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <sys/stat.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace cimhost::http {

namespace {

struct UserAndPassword {
    std::string user;
    std::string password;
};

std::string decodeBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0 || text.size() > 4096) return {};
    std::string bytes(text.size() / 4 * 3, '\0');
    const int length =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    if (length < 0) return {};
    std::size_t padding = 0;
    while (padding < 2 && text[text.size() - 1 - padding] == '=')
        ++padding;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

std::optional<UserAndPassword> parseBasic(std::string_view authorization) {
    constexpr std::string_view scheme = "Basic ";
    if (!equalNames(authorization.substr(0, scheme.size()), scheme)) return std::nullopt;
    const std::string both = decodeBase64(authorization.substr(scheme.size()));
    const std::size_t colon = both.find(':');
    if (colon == std::string::npos || both.find('\0') != std::string::npos) return std::nullopt;
    return UserAndPassword{both.substr(0, colon), both.substr(colon + 1)};
}

// Empty where crypt(3) does not know the setting.
std::string hashOf(const std::string& password, const std::string& setting) {
    const auto data = std::make_unique<crypt_data>();
    const char* hash = crypt_r(password.c_str(), setting.c_str(), data.get());
    if (!hash || hash[0] == '*') return {};
    return hash;
}

bool equalInConstantTime(std::string_view left, std::string_view right) {
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace

Credentials::Credentials() {
    if (RAND_bytes(digestKey.data(), static_cast<int>(digestKey.size())) != 1) {
        throw std::runtime_error("no random numbers for the authentication");
    }
}

Credentials::Credentials(Credentials&& other) noexcept
    : hashes(std::move(other.hashes)), decoyHash(std::move(other.decoyHash)), digestKey(other.digestKey) {}

Credentials Credentials::load(const std::filesystem::path& file) {
    std::ifstream stream(file);
    struct stat status {};
    if (!stream || stat(file.c_str(), &status) != 0) {
        throw std::runtime_error(file.string() + ": " + std::strerror(errno));
    }
    if ((status.st_mode & (S_IROTH | S_IWOTH)) != 0) {
        throw std::runtime_error(file.string() + ": others can read or change it; run: chmod 600 " + file.string());
    }
    Credentials credentials;
    std::size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (line.empty() || line.front() == '#') continue;
        try {
            credentials.addLine(line);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    if (credentials.hashes.empty()) throw std::runtime_error(file.string() + ": names no user");
    return credentials;
}

void Credentials::addLine(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon == 0) throw std::runtime_error("a line reads user:hash");
    const std::string hash(line.substr(colon + 1));
    // A setting that is cut short still hashes; only a whole hash is as long as what it gives.
    if (hash.empty() || hashOf("", hash).size() != hash.size()) {
        throw std::runtime_error("the hash is none that crypt(3) knows; make one with: openssl passwd -6");
    }
    if (!hashes.emplace(line.substr(0, colon), hash).second) throw std::runtime_error("the user is named twice");
    if (decoyHash.empty()) decoyHash = hash;
}

Credentials::Digest Credentials::digestOf(std::string_view authorization) const {
    Digest digest{};
    unsigned int length = 0;
    HMAC(EVP_sha256(), digestKey.data(), static_cast<int>(digestKey.size()),
         reinterpret_cast<const unsigned char*>(authorization.data()), authorization.size(), digest.data(), &length);
    return digest;
}

std::optional<std::string> Credentials::claimedUser(std::string_view authorization) {
    std::optional<UserAndPassword> claimed = parseBasic(authorization);
    if (!claimed) return std::nullopt;
    return std::move(claimed->user);
}

std::optional<std::string> Credentials::recall(std::string_view authorization) const {
    const std::optional<UserAndPassword> claimed = parseBasic(authorization);
    if (!claimed) return std::nullopt;
    const Digest digest = digestOf(authorization);
    const std::lock_guard lock(recallMutex);
    const auto known = remembered.find(claimed->user);
    if (known == remembered.end()) return std::nullopt;
    if (CRYPTO_memcmp(known->second.data(), digest.data(), digest.size()) != 0) return std::nullopt;
    return claimed->user;
}

std::optional<std::string> Credentials::verify(std::string_view authorization) {
    const std::optional<UserAndPassword> claimed = parseBasic(authorization);
    if (!claimed) return std::nullopt;
    const auto known = hashes.find(claimed->user);
    const std::string& expected = known == hashes.end() ? decoyHash : known->second;
    const std::string given = hashOf(claimed->password, expected);
    if (!equalInConstantTime(given, expected) || known == hashes.end()) return std::nullopt;
    const std::lock_guard lock(recallMutex);
    remembered[claimed->user] = digestOf(authorization);
    return claimed->user;
}

} // namespace cimhost::http
