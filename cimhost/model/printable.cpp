#include "cimhost/model/printable.h"

#include <cstddef>

namespace cimhost {

std::string printable(std::string_view text) {
    std::string clean(text);
    for (std::size_t position = 0; position < clean.size(); ++position) {
        const auto byte = static_cast<unsigned char>(clean[position]);
        // The second range is U+0080 to U+009F, which some terminals obey as well.
        const bool isUpperControl =
            byte == 0xC2 && position + 1 < clean.size() && static_cast<unsigned char>(clean[position + 1]) < 0xA0;
        if (byte < 0x20 || byte == 0x7F) clean[position] = ' ';
        if (isUpperControl) clean.replace(position, 2, "  ");
    }
    return clean;
}

} // namespace cimhost
