#include "classes/server/registered_profiles.h"

#include "classes/record_list.h"
#include "classes/system_name.h"
#include "log/log.h"

#include <iterator>
#include <string>

namespace merolt::server {

std::int32_t g_fcProfileCount = 0;
FCProfileEntry* g_fcProfileList = nullptr;
std::int32_t g_fcSubProfileCount = 0;
FCProfileEntry* g_fcSubProfileList = nullptr;

namespace {

RecordList<FCProfileEntry> profileRecords(g_fcProfileCount, g_fcProfileList);
RecordList<FCProfileEntry> subProfileRecords(g_fcSubProfileCount, g_fcSubProfileList);

struct Profile {
    const char* instanceIDPrefix; ///< the host's name follows
    const char* description;
    const char* registeredName;
    const char* registeredVersion;
    std::uint16_t registeredOrganization;
};

// clang-format off
// The spelling of the fourth prefix belongs to the key.
constexpr Profile profiles[] = {
    {"Merolt_FCHBAProfile_",                   "SMI-S FC HBA Profile",         "FC HBA",          "1.1.0", 11},
    {"Merolt_ServerProfile_",                  "SMI-S Server Profile",         "Server",          "1.1.0", 11},
    {"Merolt_HostDiscoveredResourcesProfile_", "SMI-S HDR Profile",            "HDR",             "1.1.0", 11},
    {"Merolt_SofwareUpdateProfile_",           "DMTF Software Update Profile", "Software Update", "1.0.0", 2},
};

constexpr Profile subProfiles[] = {
    {"Merolt_FCInitiatorPortsSubProfile_", "SMI-S FC Initiator Ports SubProfile", "FC Initiator Ports", "1.1.0", 11},
    {"Merolt_IndicationsSubProfile_",      "SMI-S Indications SubProfile",        "Indication",         "1.1.0", 11},
};
// clang-format on

template <std::size_t N>
void writeTable(const Profile (&table)[N], RecordList<FCProfileEntry>& records, FCProfileEntry*& list) {
    records.make(static_cast<std::int32_t>(N));
    for (std::size_t index = 0; index < N; ++index) {
        const Profile& profile = table[index];
        FCProfileEntry& entry = list[index];
        entry.instanceID.format("%s%s", profile.instanceIDPrefix, gSystemName);
        entry.description.assign(profile.description);
        entry.registeredName.assign(profile.registeredName);
        entry.registeredVersion.assign(profile.registeredVersion);
        entry.registeredOrganization = profile.registeredOrganization;
        entry.valid = 1;
    }
}

} // namespace

void buildRegisteredProfileList() {
    DEBUG_LOG("Entering buildRegisteredProfileList");
    writeTable(profiles, profileRecords, g_fcProfileList);
    DEBUG_LOG("Exiting  buildRegisteredProfileList\n");
}

void clearRegisteredProfileList() { profileRecords.clear(); }

void buildRegisteredSubProfileList() {
    DEBUG_LOG("Entering buildRegisteredSubProfileList");
    writeTable(subProfiles, subProfileRecords, g_fcSubProfileList);
    DEBUG_LOG("Exiting  buildRegisteredSubProfileList\n");
}

void clearRegisteredSubProfileList() { subProfileRecords.clear(); }

} // namespace merolt::server
