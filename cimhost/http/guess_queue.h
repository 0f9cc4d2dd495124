// Passwords that wait to be verified: those of one address one after the other, and the addresses in turn.
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

    /// The next in turn. Only where there is one.
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
