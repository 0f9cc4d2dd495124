#include "indications/alarm_intake.h"

#include "log/log.h"

#include <cstdio>

extern "C" int OSSGenerateHostNotificationAlarm(std::uint32_t deviceNumber, std::uint32_t coreAlarmType, std::uint32_t,
                                                const char* stringParameter) {
    const int alarmType = static_cast<int>(coreAlarmType);
    const char* text = stringParameter ? stringParameter : "";
    DEBUG_LOG("Alarm generated: Device Number: %u; coreAlarmType: %d, stringParameter: %s", deviceNumber, alarmType,
              text);
    // Flushed per line: the server may be killed before its buffers are written.
    std::printf("Alarm generated: Device Number: %u; coreAlarmType: %d, stringParameter: %s\n", deviceNumber, alarmType,
                text);
    std::fflush(stdout);
    return 0;
}
