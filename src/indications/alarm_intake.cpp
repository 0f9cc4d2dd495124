#include "indications/alarm_intake.h"

#include "inventory/library_text.h"
#include "inventory/poll_thread_context.h"
#include "log/log.h"
#include "platform/lasting.h"

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

namespace merolt {

namespace {

std::mutex alarmsMutex;
// The library's thread may bring one while the process ends.
constinit platform::Lasting<std::vector<Alarm>> keptAlarms;

void keep(Alarm alarm) {
    {
        const std::lock_guard guard(alarmsMutex);
        keptAlarms.value.push_back(std::move(alarm));
    }
    alarmArrival().notify();
}

} // namespace

std::vector<Alarm> takeAlarms() {
    const std::lock_guard guard(alarmsMutex);
    return std::exchange(keptAlarms.value, {});
}

platform::Wakeup& alarmArrival() {
    static platform::Lasting<platform::Wakeup> arrival;
    return arrival.value;
}

} // namespace merolt

extern "C" int OSSGenerateHostNotificationAlarm(std::uint32_t deviceNumber, std::uint32_t coreAlarmType,
                                                std::uint32_t rsltParam, const char* stringParameter) try {
    const int alarmType = static_cast<int>(coreAlarmType);
    const std::string copy(merolt::libraryText(stringParameter ? stringParameter : ""));
    const char* text = copy.c_str();
    DEBUG_LOG("Alarm generated: Device Number: %u; coreAlarmType: %d, stringParameter: %s", deviceNumber, alarmType,
              text);
    // Flushed per line: the server may be killed before its buffers are written.
    std::printf("Alarm generated: Device Number: %u; coreAlarmType: %d, stringParameter: %s\n", deviceNumber, alarmType,
                text);
    std::fflush(stdout);
    if (!g_Merolt_CNA_Provider) {
        DEBUG_LOG("OSSGenerateHostNotificationAlarm: ***** g_Merolt_CNA_Provider is NULL");
        return 0;
    }
    DEBUG_LOG("OSSGenerateHostNotificationAlarm: Calling m_generateIndication: Device Number: %u; coreAlarmType: %d, "
              "stringParameter: %s",
              deviceNumber, alarmType, text);
    merolt::keep({deviceNumber, coreAlarmType, rsltParam, copy});
    return 0;
} catch (...) {
    // Out of memory: nothing may propagate into the library.
    DEBUG_LOG("Exception generated when calling m_generateIndication");
    return 0;
}
