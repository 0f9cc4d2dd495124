// The plain server with every slot for which the wrapper classes have calls. Writes each call down with its arguments,
// and fails where told.
#pragma once

#include "plain_broker/plain_broker.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

/// A call of a table's function.
struct RecordedCall {
    explicit RecordedCall(const PlainCall& call);

    PlainCall pointers; ///< to be compared alone: what they point to may be gone
    std::string name;
    std::string text;     ///< the call's text, or that of a value of chars; "(null)" if it is missing
    CMPIValue value = {}; ///< one that is not of chars
    std::optional<std::vector<std::string>> keys;
};

/// There is one at a time. Its objects live as long as it does.
class RecordingServer {
public:
    RecordingServer();
    ~RecordingServer();
    RecordingServer(const RecordingServer&) = delete;
    RecordingServer& operator=(const RecordingServer&) = delete;

    /// Every call of that table function ends with this code from now on, and with a message if one is given.
    void failWith(const std::string& function, CMPIrc rc, const char* message = nullptr);

    /// Calls of a table function, the oldest first.
    std::vector<RecordedCall> callsOf(const std::string& function) const;
    RecordedCall lastCallOf(const std::string& function) const;
    int count(const std::string& function) const { return static_cast<int>(callsOf(function).size()); }

    /// The names of all that was called.
    std::vector<std::string> functions() const;

    std::vector<RecordedCall> calls;

private:
    std::map<std::string, CMPIStatus> failures;
};

/// A CMPIData as servers make them.
CMPIData dataOf(CMPIType type, CMPIValue value = {}, CMPIValueState state = CMPI_goodValue);
