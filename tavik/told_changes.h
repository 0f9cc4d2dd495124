// What a source has told of its changes: the memory behind its questions and resets.
#pragma once

#include <optional>
#include <utility>

namespace tavik {

/** Tells whether a state is another one than at the last reset. A reset takes up what the last question saw, so what
 *  comes between the question and the reset is told by the next question: callers ask and reset in two calls.
 *  Of one thread at a time. */
template <typename State>
class ToldChanges {
public:
    explicit ToldChanges(State start) : atReset_(std::move(start)) {}

    bool isOther(const State& state) const { return state != atReset_; }

    /** A question was answered by this state. */
    void tell(State state) { told_ = std::move(state); }
    /** A question was answered by the state of the last reset. */
    void tellNothing() { told_ = atReset_; }

    /** @return false if nobody has asked since the last reset, so that there is nothing to take up. */
    bool reset() {
        if (!told_) return false;
        atReset_ = std::move(*told_);
        told_.reset();
        return true;
    }

    /** A reset that no question came before takes up everything so far. */
    void resetTo(State state) { atReset_ = std::move(state); }

private:
    State atReset_;
    std::optional<State> told_; ///< by a question since the last reset
};

} // namespace tavik
