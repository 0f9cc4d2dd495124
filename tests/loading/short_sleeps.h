// The program's own sleep functions in front of the C library's: the provider sleeps for seconds where it starts and
// stops, and a test that starts it thousands of times has not that much time. A program that includes this exports its
// symbols, so that the provider's shared library calls these. A sleep still gives the processor away, a wait still ends
// early when it is notified, and the steady clock moves on by what was asked for: only the waiting is short.
#pragma once

#include <atomic>
#include <cerrno>
#include <ctime>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace short_sleeps {

constexpr long long nanosecondsPerSecond = 1000000000;
/// Every sleep really takes this long.
constexpr long long briefly = 100000;

/// How far the steady clock is ahead of the kernel's.
inline std::atomic<long long> ahead{0};

inline long long nanosecondsOf(const timespec& time) { return time.tv_sec * nanosecondsPerSecond + time.tv_nsec; }

inline timespec timeOf(long long nanoseconds) {
    return {static_cast<time_t>(nanoseconds / nanosecondsPerSecond),
            static_cast<long>(nanoseconds % nanosecondsPerSecond)};
}

inline long long kernelTime(clockid_t clock) {
    timespec time{};
    syscall(SYS_clock_gettime, clock, &time);
    return nanosecondsOf(time);
}

inline int sleepFor(long long nanoseconds) {
    const timespec brief = timeOf(briefly);
    syscall(SYS_nanosleep, &brief, nullptr);
    if (nanoseconds > 0) ahead += nanoseconds;
    return 0;
}

} // namespace short_sleeps

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const bool isSteady = clock == CLOCK_MONOTONIC;
    *time = short_sleeps::timeOf(short_sleeps::kernelTime(clock) + (isSteady ? short_sleeps::ahead.load() : 0));
    return 0;
}

EXPORTED int nanosleep(const timespec* time, timespec*) {
    return short_sleeps::sleepFor(short_sleeps::nanosecondsOf(*time));
}

EXPORTED int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec*) {
    timespec now{};
    if (flags & TIMER_ABSTIME) clock_gettime(clock, &now);
    return short_sleeps::sleepFor(short_sleeps::nanosecondsOf(*time) - short_sleeps::nanosecondsOf(now));
}

EXPORTED int usleep(useconds_t microseconds) { return short_sleeps::sleepFor(1000LL * microseconds); }

EXPORTED unsigned sleep(unsigned seconds) {
    short_sleeps::sleepFor(short_sleeps::nanosecondsPerSecond * seconds);
    return 0;
}

/// The polling thread's sleep between two passes is a timed wait on the steady clock.
EXPORTED int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                    const timespec* end) {
    const timespec shortEnd = short_sleeps::timeOf(short_sleeps::kernelTime(CLOCK_REALTIME) + short_sleeps::briefly);
    const int answer = pthread_cond_timedwait(condition, mutex, &shortEnd);
    if (answer != ETIMEDOUT) return answer;
    timespec now{};
    clock_gettime(clock, &now);
    const long long left = short_sleeps::nanosecondsOf(*end) - short_sleeps::nanosecondsOf(now);
    if (left > 0) short_sleeps::ahead += left;
    return answer;
}

#undef EXPORTED
