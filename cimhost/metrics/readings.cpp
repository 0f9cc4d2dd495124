#include "cimhost/metrics/readings.h"

#include "cimhost/thread.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace cimhost::metrics {

Readings::Readings(Read readAdapters) : read(std::move(readAdapters)) {
    reader = makeThread([this] { readOnDemand(); });
    try {
        watcher = makeThread([this] { watch(); });
    } catch (...) {
        finish();
        throw;
    }
}

Readings::~Readings() { finish(); }

void Readings::tell(const Askers& askers, const SharedReading& reading) {
    for (const Asker& asker : askers)
        asker.give(reading);
}

void Readings::ask(std::chrono::milliseconds patience, Give give) {
    {
        const std::lock_guard lock(mutex);
        const Clock::time_point now = Clock::now();
        const bool isHopeless = isStopping || (isReading && now - begun > patience);
        if (!isHopeless) {
            askers.push_back({now + patience, std::move(give)});
            changed.notify_all();
            return;
        }
    }
    give(nullptr);
}

bool Readings::isAwaited() const {
    const std::lock_guard lock(mutex);
    return !askers.empty();
}

SharedReading Readings::readNow() const noexcept {
    try {
        return read();
    } catch (const std::exception&) {
        return nullptr;
    }
}

// All who asked while the adapters were being read get this reading.
void Readings::readOnDemand() {
    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return isStopping || !askers.empty(); });
        if (isStopping) return;
        isReading = true;
        begun = Clock::now();
        lock.unlock();
        const SharedReading reading = readNow();
        lock.lock();
        isReading = false;
        const Askers served = std::exchange(askers, {});
        lock.unlock();
        tell(served, reading);
        lock.lock();
    }
}

Readings::Askers Readings::takeLate(Clock::time_point now) {
    Askers late;
    for (auto asker = askers.begin(); asker != askers.end();) {
        const auto next = std::next(asker);
        if (asker->until <= now) late.splice(late.end(), askers, asker);
        asker = next;
    }
    return late;
}

void Readings::watch() {
    std::unique_lock lock(mutex);
    while (!isStopping) {
        const auto first = std::min_element(askers.begin(), askers.end(), [](const Asker& left, const Asker& right) {
            return left.until < right.until;
        });
        if (first == askers.end()) {
            changed.wait(lock);
        } else {
            changed.wait_until(lock, Clock::time_point(first->until));
        }
        const Askers late = takeLate(Clock::now());
        lock.unlock();
        tell(late, nullptr);
        lock.lock();
    }
}

void Readings::stop() {
    Askers left;
    {
        const std::lock_guard lock(mutex);
        isStopping = true;
        left = std::exchange(askers, {});
    }
    changed.notify_all();
    tell(left, nullptr);
}

void Readings::finish() {
    stop();
    if (watcher.joinable()) watcher.join();
    if (reader.joinable()) reader.join();
}

} // namespace cimhost::metrics
