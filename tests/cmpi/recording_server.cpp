#include "recording_server.h"

#include <algorithm>
#include <iterator>

namespace {

RecordingServer* current = nullptr;

std::string copyOf(const char* text) { return text ? text : "(null)"; }

} // namespace

RecordedCall::RecordedCall(const PlainCall& call)
    : pointers(call), name(copyOf(call.name)),
      text(copyOf(call.type == CMPI_chars ? reinterpret_cast<const char*>(call.value) : call.text)) {
    if (call.type != CMPI_chars && call.value) value = *call.value;
    if (!call.keys) return;
    keys.emplace();
    for (const char** key = call.keys; *key; ++key)
        keys->emplace_back(*key);
}

RecordingServer::RecordingServer() {
    current = this;
    plainBrokerReset();
    plainBrokerFillUp();
    plainBroker.absentRc = CMPI_RC_ERR_NO_SUCH_PROPERTY;
    plainBroker.before = [](const PlainCall* call) {
        current->calls.emplace_back(*call);
        const auto failure = current->failures.find(call->function);
        return failure == current->failures.end() ? CMPIStatus{CMPI_RC_OK, nullptr} : failure->second;
    };
    plainScopeBegin();
}

RecordingServer::~RecordingServer() {
    plainScopeEnd();
    plainBrokerReset();
    current = nullptr;
}

void RecordingServer::failWith(const std::string& function, CMPIrc rc, const char* message) {
    failures[function] = {rc, message ? plainString(message) : nullptr};
}

std::vector<RecordedCall> RecordingServer::callsOf(const std::string& function) const {
    std::vector<RecordedCall> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [&](const RecordedCall& call) { return call.pointers.function == function; });
    return found;
}

RecordedCall RecordingServer::lastCallOf(const std::string& function) const {
    const std::vector<RecordedCall> found = callsOf(function);
    return found.at(found.size() - 1);
}

std::vector<std::string> RecordingServer::functions() const {
    std::vector<std::string> found;
    for (const RecordedCall& call : calls)
        found.emplace_back(call.pointers.function);
    return found;
}

CMPIData dataOf(CMPIType type, CMPIValue value, CMPIValueState state) { return {type, state, value}; }
