// A host on which a test sees many refreshes in little time.
#pragma once

#include "fake_services.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <thread>

/// Time flies, and sleeping takes a millisecond.
class FastServices : public FakeServices {
public:
    std::time_t now() override { return ++seconds; }
    void sleepMilliseconds(unsigned) override { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

private:
    std::atomic<std::time_t> seconds = 1700000000;
};
