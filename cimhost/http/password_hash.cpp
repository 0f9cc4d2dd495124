#include "cimhost/http/password_hash.h"

#include <algorithm>
#include <crypt.h>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace cimhost::http {

namespace {

// yescrypt, gost-yescrypt, scrypt, bcrypt in its sound forms, SHA-512, SHA-256: the methods of crypt(5) that are
// made to be slow. DES, of which a hash is 13 characters, MD5, SHA-1 and NT are not.
constexpr std::string_view soundMethods[] = {"$y$", "$gy$", "$7$", "$2b$", "$2y$", "$2a$", "$6$", "$5$"};

bool isSound(std::string_view hash) {
    return std::any_of(std::begin(soundMethods), std::end(soundMethods),
                       [hash](std::string_view method) { return hash.substr(0, method.size()) == method; });
}

std::string newSetting(const char* method) {
    const std::unique_ptr<char, decltype(&std::free)> setting(crypt_gensalt_ra(method, 0, nullptr, 0), &std::free);
    return setting ? setting.get() : std::string();
}

} // namespace

std::string hashWith(const std::string& password, const std::string& setting) {
    const auto data = std::make_unique<crypt_data>();
    const char* hash = crypt_r(password.c_str(), setting.c_str(), data.get());
    if (!hash || hash[0] == '*') return {};
    return hash;
}

std::string newHash(const std::string& password) {
    for (const char* method : {"$y$", "$6$"}) {
        const std::string setting = newSetting(method);
        if (setting.empty()) continue;
        if (std::string hash = hashWith(password, setting); !hash.empty()) return hash;
    }
    throw std::runtime_error("crypt(3) does not take this password: 512 bytes are the most");
}

std::string_view flawOfHash(const std::string& hash) {
    if (hash.empty()) return "there is no hash";
    // A setting that is cut short still hashes; only a whole hash is as long as what it gives.
    if (hashWith("", hash).size() != hash.size()) return "the hash is none that crypt(3) knows";
    if (!isSound(hash)) return "the hash is of a method that is guessed too fast";
    return {};
}

} // namespace cimhost::http
