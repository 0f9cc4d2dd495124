#include "associations/storage/walks.h"

#include <cstring>

namespace merolt::association {

const char* KeyCut::prefixOf(const char* key) {
    if (const char* end = std::strchr(key, '_')) cut.assign({key, static_cast<std::size_t>(end - key)});
    return cut.text();
}

const char* KeyCut::suffixOf(const char* key) {
    if (const char* start = std::strrchr(key, '_')) cut.assign(start + 1);
    return cut.text();
}

bool hasUnderscore(const char* key) { return std::strchr(key, '_') != nullptr; }

} // namespace merolt::association
