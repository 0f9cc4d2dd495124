#include "cimhost/indications/object_key.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace cimhost {

namespace {

void appendLower(std::string& out, std::string_view text) {
    for (const char character : text)
        out += character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

// Class names compare without regard to case, other keys do not.
void appendKey(std::string& out, const ObjectPathObject& path) {
    appendLower(out, path.className());
    std::vector<const NamedData*> keys;
    for (const NamedData& key : path.keys())
        keys.push_back(&key);
    std::sort(keys.begin(), keys.end(),
              [](const NamedData* left, const NamedData* right) { return left->name < right->name; });
    for (const NamedData* key : keys) {
        out += '\n';
        appendLower(out, key->name);
        out += '=';
        const bool namesClass = key->name.ends_with("ClassName") || key->name.ends_with("classname");
        const auto* reference = key->data.type == CMPI_ref ? ObjectPathObject::from(key->data.value.ref) : nullptr;
        std::string text;
        if (reference) {
            appendKey(text, *reference);
        } else {
            appendValueText(text, key->data);
        }
        if (namesClass) {
            appendLower(out, text);
        } else {
            out += text;
        }
    }
}

} // namespace

std::string keyOf(const ObjectPathObject& path) {
    std::string key;
    appendKey(key, path);
    return key;
}

} // namespace cimhost
