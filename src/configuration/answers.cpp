#include "configuration/answers.h"

#include "log/log.h"
#include "platform/platform.h"
#include "text/text.h"

#include <string>

namespace merolt {

Answers gAnswers = Answers::asContract;

void readAnswers() {
    const std::string setting = platform::services().setting("Answers");
    const std::string_view value = trimmed(setting);
    gAnswers = value == "corrected" ? Answers::corrected : Answers::asContract;
    if (gAnswers == Answers::corrected) {
        DEBUG_LOG("Config: %s=%s", "Answers", "corrected");
    } else if (!value.empty() && value != "contract") {
        ERROR_LOG("%s: Answers=%s is not known; contract and corrected are. "
                  "Answers are as by contract.",
                  platform::settingsFile, setting.c_str());
    }
}

} // namespace merolt
