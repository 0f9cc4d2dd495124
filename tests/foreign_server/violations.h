// What a provider did that some server of the field would not forgive.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace foreign_server {

/// Writes down a breach of the tables' rules. @param function the slot in which it came to light, or the act itself.
void violate(std::string_view function, std::string_view breach);

/// The breaches since the last call, each once, in the order of their first appearance: "slot: breach (3 times)".
std::vector<std::string> takeViolations();

} // namespace foreign_server
