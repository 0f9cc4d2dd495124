#include "tavik/hand_outs.h"

#include <algorithm>
#include <utility>

namespace tavik {

char* HandOuts::text(const std::string& text) {
    // An array of exactly this size, so that a read behind the end is seen by whoever watches memory.
    const std::shared_ptr<char[]> copy(std::make_unique<char[]>(text.size() + 1));
    std::copy(text.begin(), text.end(), copy.get());
    keep(copy.get(), copy);
    return copy.get();
}

void HandOuts::keep(const void* address, std::shared_ptr<void> owner) {
    const std::lock_guard lock(mutex_);
    owners_[address] = std::move(owner);
}

Status HandOuts::giveBack(const void* address) {
    const std::lock_guard lock(mutex_);
    return owners_.erase(address) == 1 ? statusOk : statusInvalidArgument;
}

std::size_t HandOuts::count() {
    const std::lock_guard lock(mutex_);
    return owners_.size();
}

} // namespace tavik
