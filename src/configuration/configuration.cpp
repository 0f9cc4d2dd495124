#include "configuration/configuration.h"

#include "log/log.h"
#include "platform/files.h"
#include "text/text.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <limits>

namespace merolt {

bool gTAVIKLog = false;
char gInteropNamespace[256];
char gCIMOMNameVersion[256];
char gCIMSchemaVersion[272];

namespace {

constexpr std::size_t lineSize = 256;

struct Flags {
    int errorLog = 0;
    int debugLog = 0;
    int tavikLog = 0;
};

/// One key of the file and where its value goes: a number, or a text.
struct Setting {
    const char* key;
    int Flags::*flag;
    char* text;
    std::size_t textSize;
    bool trimmed;
};

// In the order in which they are tried on each line: the first key found takes the line.
constexpr Setting settings[] = {
    {"ErrorLog", &Flags::errorLog, nullptr, 0, false},
    {"DebugLog", &Flags::debugLog, nullptr, 0, false},
    {"TAVIKLog", &Flags::tavikLog, nullptr, 0, false},
    {"InteropNamespace", nullptr, gInteropNamespace, sizeof(gInteropNamespace), true},
    {"CIMOMNameVersion", nullptr, gCIMOMNameVersion, sizeof(gCIMOMNameVersion), false},
    {"CIMSchemaVersion", nullptr, gCIMSchemaVersion, sizeof(gCIMSchemaVersion), false},
};

void setDefaults() {
    gDebugLog = false;
    gErrorLog = false;
    gTAVIKLog = false;
    std::strcpy(gInteropNamespace, "root/PG_InterOp");
    std::strcpy(gCIMOMNameVersion, "Pegasus CIM Server");
    std::strcpy(gCIMSchemaVersion, "Unknown Version");
}

void store(const Setting& setting, const char* value, Flags& flags) {
    if (setting.flag) {
        flags.*setting.flag = std::atoi(value);
        return;
    }
    std::snprintf(setting.text, setting.textSize, "%s", value);
    if (setting.trimmed) trimString(setting.text);
}

void parseLine(char* line, Flags& flags) {
    trimString(line);
    if (line[0] == '#') return;
    for (const Setting& setting : settings) {
        if (!std::strstr(line, setting.key)) continue;
        const char* equalsSign = std::strrchr(line, '=');
        if (equalsSign) store(setting, equalsSign + 1, flags);
        return;
    }
}

/// Passes each line of fewer than 256 characters to the parser. A last line without a line end does not count.
void parseLines(std::istream& file, Flags& flags) {
    char line[lineSize];
    for (;;) {
        file.getline(line, sizeof(line));
        if (file.eof() || file.bad()) return;
        if (file.fail()) {
            file.clear();
            file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
            continue;
        }
        parseLine(line, flags);
    }
}

void parseFile(std::istream& file) {
    Flags flags;
    parseLines(file, flags);
    gErrorLog = flags.errorLog > 0;
    gDebugLog = flags.debugLog > 0;
    gTAVIKLog = flags.tavikLog > 0;
}

void logSettings(const char* fileName) {
    DEBUG_LOG("***** Merolt_CNA_Provider constructor was called *****");
    DEBUG_LOG("PropertiesFileName=%s", fileName);
    DEBUG_LOG("Config: %s=%d", "DebugLog", gDebugLog ? 1 : 0);
    DEBUG_LOG("Config: %s=%d", "ErrorLog", gErrorLog ? 1 : 0);
    if (gTAVIKLog) DEBUG_LOG("Config: %s=%d", "TAVIKLog", 1);
    DEBUG_LOG("Config: %s=%s", "InteropNamespace", gInteropNamespace);
    DEBUG_LOG("Config: %s=%s", "CIMOMNameVersion", gCIMOMNameVersion);
    DEBUG_LOG("Config: %s=%s", "CIMSchemaVersion", gCIMSchemaVersion);
}

} // namespace

void readConfiguration() {
    setDefaults();
    char fileName[sizeof(gInstallDirectory) + 32];
    std::snprintf(fileName, sizeof(fileName), "%s%s", gInstallDirectory, "meroltcna.properties");
    platform::RegularFileStream file(fileName);
    if (file.isOpen()) parseFile(file);
    logSettings(fileName);
}

} // namespace merolt
