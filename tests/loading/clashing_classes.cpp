#include "clashing_classes.h"

int clashes = 0;

CmpiString::CmpiString(const char*) { ++clashes; }
CmpiString::CmpiString(const CmpiString&) { ++clashes; }
CmpiString::~CmpiString() { ++clashes; }
const char* CmpiString::charPtr() const {
    ++clashes;
    return "";
}

CmpiStatus::CmpiStatus(CMPIrc, const char*) { ++clashes; }
const char* CmpiStatus::msg() const {
    ++clashes;
    return nullptr;
}

CmpiObjectPath::CmpiObjectPath(const char*, const char*) { ++clashes; }
unsigned char CmpiObjectPath::classPathIsA(const char*) const {
    ++clashes;
    return 0;
}

CmpiBaseMI::~CmpiBaseMI() { ++clashes; }
CMPIStatus CmpiBaseMI::driveBaseCleanup(void*, const CMPIContext*, CMPIBoolean) {
    ++clashes;
    return {CMPI_RC_OK, nullptr};
}
int CmpiBaseMI::isUnloadable() const {
    ++clashes;
    return 0;
}

Merolt_CNA_Provider::~Merolt_CNA_Provider() { ++clashes; }
int Merolt_CNA_Provider::isUnloadable() const {
    ++clashes;
    return 0;
}

namespace merolt {

void debugLog(const char*, ...) { ++clashes; }
void errorLog(const char*, ...) { ++clashes; }
bool equalsIgnoringCase(const char*, const char*) {
    ++clashes;
    return false;
}

} // namespace merolt

int OSSGenerateHostNotificationAlarm(unsigned, unsigned, unsigned, const char*) {
    ++clashes;
    return 0;
}
