#include "cimhost/service/pages.h"

#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace cimhost {

namespace {

std::size_t wholePages(std::size_t bytes) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

} // namespace

Pages::Pages(std::string_view text) {
    if (text.empty()) return;
    const std::size_t size = wholePages(text.size());
    void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    std::memcpy(memory, text.data(), text.size());
    start = static_cast<char*>(memory);
    used = text.size();
    taken = size;
}

Pages::~Pages() {
    if (start) ::munmap(start, taken);
}

} // namespace cimhost
