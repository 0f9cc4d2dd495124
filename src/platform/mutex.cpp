#include "platform/mutex.h"

#include "platform/platform.h"

#include <cerrno>
#include <new>
#include <system_error>

namespace merolt::platform {

std::unique_ptr<Mutex> makeMutex(int& error) {
    error = services().mutexAvailable();
    if (error != 0) return nullptr;
    try {
        return std::make_unique<Mutex>();
    } catch (const std::system_error& failure) {
        error = failure.code().value();
    } catch (const std::bad_alloc&) {
        error = ENOMEM;
    }
    return nullptr;
}

} // namespace merolt::platform
