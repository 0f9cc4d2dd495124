// Where the management library's alarms arrive.
#pragma once

#include <cstdint>

/// The alarm callback, called on a thread of the management library: logs the alarm and writes it to standard output.
/// @return 0
extern "C" int OSSGenerateHostNotificationAlarm(std::uint32_t deviceNumber, std::uint32_t coreAlarmType,
                                                std::uint32_t rsltParam, const char* stringParameter);
