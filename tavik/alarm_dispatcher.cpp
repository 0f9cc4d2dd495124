#include "tavik/alarm_dispatcher.h"

#include <algorithm>
#include <utility>

#include "tavik/log.h"

namespace tavik {

namespace {

constexpr std::uint32_t portStateChanged = 0;

} // namespace

AlarmDispatcher::AlarmDispatcher() : thread_([this] { run(); }) { threadId_ = thread_.get_id(); }

AlarmDispatcher::~AlarmDispatcher() { stop(); }

void AlarmDispatcher::push(Alarm alarm) {
    const std::lock_guard lock(mutex_);
    if (stopping_ || callbacks_.empty()) return;
    if (queue_.size() >= longestQueue) {
        queue_.pop_front();
        if (!std::exchange(overflowed_, true)) report("alarms come faster than they are taken, the oldest are dropped");
    }
    queue_.push_back(std::move(alarm));
    wake_.notify_one();
}

void AlarmDispatcher::add(TAVIK_AlarmCallback callback) {
    const std::lock_guard lock(mutex_);
    if (std::find(callbacks_.begin(), callbacks_.end(), callback) == callbacks_.end()) callbacks_.push_back(callback);
}

Status AlarmDispatcher::remove(TAVIK_AlarmCallback callback) {
    std::unique_lock lock(mutex_);
    const auto found = std::find(callbacks_.begin(), callbacks_.end(), callback);
    if (found == callbacks_.end()) return statusInvalidArgument;
    callbacks_.erase(found);
    if (isOwnThread()) return statusOk;
    delivered_.wait(lock, [this, before = deliveries_] { return !delivering_ || deliveries_ != before; });
    return statusOk;
}

bool AlarmDispatcher::isOwnThread() const { return std::this_thread::get_id() == threadId_; }

void AlarmDispatcher::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        queue_.clear();
        wake_.notify_one();
    }
    if (thread_.joinable()) thread_.join();
}

void AlarmDispatcher::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
        if (stopping_) return;
        deliver(lock);
    }
}

void AlarmDispatcher::deliver(std::unique_lock<std::mutex>& lock) {
    const auto alarm = std::move(queue_.front());
    queue_.pop_front();
    if (queue_.empty()) overflowed_ = false;
    const auto callbacks = callbacks_;
    for (const auto callback : callbacks) {
        // An earlier callback may have removed this one.
        if (std::find(callbacks_.begin(), callbacks_.end(), callback) == callbacks_.end()) continue;
        delivering_ = true;
        lock.unlock();
        log("alarm: device " + std::to_string(alarm.deviceNumber) + ": " + alarm.text);
        callback(alarm.deviceNumber, portStateChanged, 0, alarm.text.c_str());
        lock.lock();
        delivering_ = false;
        ++deliveries_;
        delivered_.notify_all();
    }
}

} // namespace tavik
