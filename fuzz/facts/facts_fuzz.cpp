// Facts as a management library may answer: bytes of any kind.
#include "inventory/fact_reader.h"
#include "inventory/fact_table.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const merolt::FactValues& values : merolt::decodeFacts({data, size})) {
        const std::size_t count = values.texts.size() + values.numbers.size();
        const bool isList = values.row->count == merolt::FactCount::list;
        if (count == 0 || count > (isList ? merolt::mostFactValues : 1)) std::abort();
        if (!values.texts.empty() && !values.numbers.empty()) std::abort();
        for (const std::string& text : values.texts) {
            if (text.empty() || text.size() > merolt::longestFact) std::abort();
        }
    }
    return 0;
}
