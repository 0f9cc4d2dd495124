// Where the management library's alarms arrive. The library's thread must not wait and must not touch what requests
// read, so alarms are kept in order until the polling thread, which is attached to the server, handles them.
#pragma once

#include "platform/platform.h"

#include <cstdint>
#include <string>
#include <vector>

namespace merolt {

/// As the library told it.
struct Alarm {
    std::uint32_t deviceNumber;
    std::uint32_t type;
    std::uint32_t parameter;
    std::string text;
};

/// Everything that arrived since the last call, oldest first.
std::vector<Alarm> takeAlarms();

/// Ends the polling thread's wait when an alarm arrives.
platform::Wakeup& alarmArrival();

} // namespace merolt

/// The alarm callback, called on a thread of the management library: logs the alarm, writes it to standard output and
/// keeps it, if the provider runs.
/// @return 0
extern "C" int OSSGenerateHostNotificationAlarm(std::uint32_t deviceNumber, std::uint32_t coreAlarmType,
                                                std::uint32_t rsltParam, const char* stringParameter);
