// Memory that callers give back through TAVIK_FreeMem: owns it until then and knows its own from foreign pointers.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tavik/status.h"

namespace tavik {

class HandOuts {
public:
    /** A copy of the text that ends in NUL. */
    char* text(const std::string& text);

    /** A copy of the records, or null if there are none. */
    template <typename Record>
    Record* array(const std::vector<Record>& records) {
        if (records.empty()) return nullptr;
        auto copy = std::make_shared<std::vector<Record>>(records);
        auto* first = copy->data();
        keep(first, std::move(copy));
        return first;
    }

    /** Hands the address out; what it stands in lives until it is given back. */
    void keep(const void* address, std::shared_ptr<void> owner);

    /** @return statusInvalidArgument if the address was never handed out or has been given back already. */
    Status giveBack(const void* address);

    std::size_t count();

private:
    std::mutex mutex_;
    std::map<const void*, std::shared_ptr<void>> owners_;
};

} // namespace tavik
