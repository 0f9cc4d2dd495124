// Passwords that wait to be verified. The addresses take turns: each has one of its passwords verified, then the next
// address has one.
#pragma once

#include "cimhost/http/room.h"

#include <deque>
#include <list>
#include <map>
#include <utility>

namespace cimhost::http {

template <class Job>
class GuessQueue {
public:
    void push(const Source& source, Job job) {
        std::deque<Job>& jobs = waiting[source];
        if (jobs.empty()) turns.push_back(source);
        jobs.push_back(std::move(job));
    }

    [[nodiscard]] bool empty() const { return turns.empty(); }

    /// Takes the next one. The queue must not be empty.
    Job pop() {
        const Source source = turns.front();
        turns.pop_front();
        const auto found = waiting.find(source);
        Job job = std::move(found->second.front());
        found->second.pop_front();
        if (found->second.empty()) {
            waiting.erase(found);
        } else {
            turns.push_back(source);
        }
        return job;
    }

private:
    std::map<Source, std::deque<Job>> waiting;
    std::list<Source> turns; // each source that has a job, once
};

} // namespace cimhost::http
