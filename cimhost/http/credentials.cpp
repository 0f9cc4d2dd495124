#include "cimhost/http/credentials.h"

#include "cimhost/http/password_hash.h"
#include "cimhost/model/names.h"
#include "cimhost/storage/private_file.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <sstream>
#include <stdexcept>
#include <utility>

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

bool equalInConstantTime(std::string_view left, std::string_view right) {
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

constexpr std::size_t longestFile = std::size_t{1} << 20;

} // namespace

Credentials::Credentials() {
    if (RAND_bytes(digestKey.data(), static_cast<int>(digestKey.size())) != 1) {
        throw std::runtime_error("no random numbers for the authentication");
    }
}

Credentials::Credentials(Credentials&& other) noexcept
    : digestKey(other.digestKey), hashes(std::move(other.hashes)), decoyHash(std::move(other.decoyHash)) {}

Credentials Credentials::load(const std::filesystem::path& file) {
    Credentials credentials = read(file);
    if (credentials.hashes.empty()) throw std::runtime_error(file.string() + ": names no user");
    return credentials;
}

Credentials Credentials::read(const std::filesystem::path& file) {
    std::istringstream lines(readPrivateFile(file, longestFile));
    Credentials credentials;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.empty() || line.front() == '#') continue;
        try {
            credentials.addLine(line);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    return credentials;
}

std::size_t Credentials::reload(const std::filesystem::path& file) {
    Credentials fresh = read(file);
    const std::size_t count = fresh.hashes.size();
    const std::lock_guard lock(mutex);
    hashes.swap(fresh.hashes);
    decoyHash.swap(fresh.decoyHash);
    remembered.clear();
    return count;
}

void Credentials::addLine(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon == 0) throw std::runtime_error("a line reads user:hash");
    const std::string hash(line.substr(colon + 1));
    if (const std::string_view flaw = flawOfHash(hash); !flaw.empty()) {
        throw std::runtime_error(std::string(flaw) + "; make one with: cimhost user add");
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
    const std::lock_guard lock(mutex);
    const auto known = remembered.find(claimed->user);
    if (known == remembered.end()) return std::nullopt;
    if (CRYPTO_memcmp(known->second.data(), digest.data(), digest.size()) != 0) return std::nullopt;
    return claimed->user;
}

std::optional<std::string> Credentials::hashOfUser(const std::string& user) const {
    const std::lock_guard lock(mutex);
    const auto known = hashes.find(user);
    return known == hashes.end() ? std::nullopt : std::optional(known->second);
}

std::string Credentials::decoy() const {
    const std::lock_guard lock(mutex);
    return decoyHash;
}

std::optional<std::string> Credentials::verify(std::string_view authorization) {
    const std::optional<UserAndPassword> claimed = parseBasic(authorization);
    if (!claimed) return std::nullopt;
    const std::optional<std::string> known = hashOfUser(claimed->user);
    const std::string expected = known ? *known : decoy();
    const std::string given = hashWith(claimed->password, expected);
    if (!equalInConstantTime(given, expected) || !known) return std::nullopt;
    const std::lock_guard lock(mutex);
    // The file may have been read again in the meantime.
    const auto still = hashes.find(claimed->user);
    if (still == hashes.end() || still->second != expected) return std::nullopt;
    remembered[claimed->user] = digestOf(authorization);
    return claimed->user;
}

} // namespace cimhost::http
