#include "associations/storage/walks.h"

#include "classes/instance.h"
#include "classes/system_name.h"
#include "text/text.h"

#include <cstring>

namespace merolt::association {

void theObject(const Source&, const ObjectVisitor& visit) { visit({}); }

void hostOfScopedObject(const Source& source, const ObjectVisitor& visit) {
    if (source.equals(0, gSystemName) && source.equals(1, computerSystemClass)) visit({});
}

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
