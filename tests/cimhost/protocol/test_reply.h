// The other end of an answer that comes later.
#pragma once

#include "cimhost/http/server.h"

#include <atomic>
#include <functional>
#include <utility>

namespace cimhost::testing_support {

class TestReply final : public http::Reply {
public:
    explicit TestReply(std::function<void(http::Response)> taker) : take(std::move(taker)) {}

    void send(http::Response answer) override {
        if (!isSent.exchange(true)) take(std::move(answer));
    }
    bool isAwaited() const override { return hasClient; }

    std::atomic<bool> hasClient = true;

private:
    std::function<void(http::Response)> take;
    std::atomic<bool> isSent = false;
};

} // namespace cimhost::testing_support
