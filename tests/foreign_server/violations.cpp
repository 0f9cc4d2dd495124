#include "violations.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace foreign_server {

namespace {

struct Violation {
    std::string text;
    unsigned times;
};

std::mutex mutex;
std::vector<Violation> violations;

} // namespace

void violate(std::string_view function, std::string_view breach) {
    std::string text(function);
    text += ": ";
    text += breach;
    const std::lock_guard guard(mutex);
    const auto known = std::find_if(violations.begin(), violations.end(),
                                    [&](const Violation& violation) { return violation.text == text; });
    if (known == violations.end()) {
        violations.push_back({std::move(text), 1});
    } else {
        ++known->times;
    }
}

std::vector<std::string> takeViolations() {
    std::vector<Violation> taken;
    {
        const std::lock_guard guard(mutex);
        taken = std::exchange(violations, {});
    }
    std::vector<std::string> texts;
    for (const Violation& violation : taken) {
        const std::string times = violation.times > 1 ? " (" + std::to_string(violation.times) + " times)" : "";
        texts.push_back(violation.text + times);
    }
    return texts;
}

} // namespace foreign_server
