#include "cimhost/http/login_gate.h"

#include <algorithm>
#include <functional>

namespace cimhost::http {

namespace {

constexpr std::size_t lanes = 16;
constexpr std::chrono::seconds longestWait{60};
constexpr unsigned mostDoublings = 6; // of a second, until the longest wait is reached
constexpr std::chrono::minutes forgiven{10};

} // namespace

LoginGate::Key LoginGate::keyOf(const Source& source, std::string_view user) {
    return {source, std::hash<std::string_view>{}(user) % lanes};
}

std::optional<std::chrono::seconds> LoginGate::wait(const Source& source, std::string_view user,
                                                    Clock::time_point now) const {
    const auto known = records.find(keyOf(source, user));
    if (known == records.end() || known->second.blockedUntil <= now) return std::nullopt;
    return std::chrono::ceil<std::chrono::seconds>(known->second.blockedUntil - now);
}

void LoginGate::failed(const Source& source, std::string_view user, Clock::time_point now) {
    const Key key = keyOf(source, user);
    if (records.size() >= mostRecords && records.find(key) == records.end()) forgetOldest();
    Record& record = records[key];
    if (now - record.last > forgiven) record.failures = 0;
    record.last = now;
    ++record.failures;
    if (record.failures < freeGuesses) return;
    const unsigned doublings = std::min(record.failures - freeGuesses, mostDoublings);
    record.blockedUntil = now + std::min(std::chrono::seconds(1 << doublings), longestWait);
}

void LoginGate::succeeded(const Source& source, std::string_view user) { records.erase(keyOf(source, user)); }

void LoginGate::forgetOldest() {
    records.erase(std::min_element(records.begin(), records.end(), [](const auto& left, const auto& right) {
        return left.second.last < right.second.last;
    }));
}

} // namespace cimhost::http
