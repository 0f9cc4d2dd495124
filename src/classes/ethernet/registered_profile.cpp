#include "classes/ethernet/registered_profile.h"

#include "classes/instance.h"
#include "log/log.h"

namespace merolt::ethernet {

RegisteredProfileEntry* g_RegisteredProfileList = nullptr;

namespace {

const char* keys[] = {"InstanceID", nullptr};

struct Profile {
    std::uint32_t instanceNumber;
    const char* elementName;
    const char* caption;
    const char* registeredName;
    const char* registeredVersion;
    std::uint16_t registeredOrganization;
};

// clang-format off
// Two profiles bear the number 6: both are enumerated, and only the first can be fetched by its key.
constexpr Profile profiles[] = {
    {1, "EthernetPort Profile",          "Merolt NIC EthernetPort Profile",          "Ethernet Port",            "1.0.0",  2},
    {2, "Host LAN Network Port Profile", "Merolt NIC Host LAN Network Port Profile", "Host LAN Network Port",    "1.0.0",  2},
    {3, "IP Interface Profile",          "Merolt NIC IP Interface Profile",          "IP Interface",             "1.0.1",  2},
    {4, "Registered Profile",            "Merolt NIC Registered Profile",            "Merolt_Registered_Profile", "1.1.0", 11},
    {5, "Physical Asset Profile",        "Merolt NIC Physical Asset Profile",        "Merolt_PhysicalAsset",     "1.1.0", 11},
    {6, "Software Inventory Profile",    "Merolt NIC Software Inventory Profile",    "Merolt_SoftwareInventory", "1.1.0", 11},
    {6, "Software Update Profile",       "Merolt NIC Software Update Profile",       "Merolt_SoftwareUpdate",    "1.1.0", 11},
    {7, "Indications Profile",           "Merolt NIC Indications Profile",           "Merolt_Indications",       "1.1.0", 11},
};
// clang-format on

const char* instanceID(const RegisteredProfileEntry* entry) {
    static FixedText<16> text;
    text.format("%u", entry->instanceNumber);
    return text.text();
}

void forEachProfile(const ElementVisitor& visitor) {
    for (const RegisteredProfileEntry* entry = g_RegisteredProfileList; entry; entry = entry->next) {
        if (!visitor({.profile = entry})) return;
    }
}

const EthernetClass descriptor = {
    .key = "InstanceID",
    .forEachElement = forEachProfile,
    .keyText = [](const Element& element) { return instanceID(element.profile); },
    .makePath = pathOf<makePath_RegisteredProfile>,
    .makeInstance = instanceOf<makeInstance_RegisteredProfile>,
    .texts = {.token = "Merolt_NIC_RegisteredProfile",
              .names = {.entry = "Merolt_RegisteredProfile {O} was called\n",
                        .nameSpace = "Merolt_RegisteredProfile: Error getting namespace\n",
                        .className = "Merolt_RegisteredProfile: Error getting ClassName\n"},
              .instances = withoutOperation,
              .getInstance = withoutOperation,
              .key = "{F}: Error getting Name key in {O}\n"},
    .keyErrorLog = KeyErrorLog::debug,
};

} // namespace

void Initialize_RegisteredProfile_List() {
    g_RegisteredProfileList = nullptr;
    RegisteredProfileEntry** link = &g_RegisteredProfileList;
    for (const Profile& profile : profiles) {
        auto* entry = new RegisteredProfileEntry{};
        entry->instanceNumber = profile.instanceNumber;
        entry->elementName.assign(profile.elementName);
        entry->caption.assign(profile.caption);
        entry->registeredName.assign(profile.registeredName);
        entry->registeredVersion.assign(profile.registeredVersion);
        entry->registeredOrganization = profile.registeredOrganization;
        *link = entry;
        link = &entry->next;
    }
}

void Clear_RegisteredProfile_List() {
    DEBUG_LOG("Entering Clear_RegisteredProfile_List()");
    while (g_RegisteredProfileList) {
        RegisteredProfileEntry* next = g_RegisteredProfileList->next;
        delete g_RegisteredProfileList;
        g_RegisteredProfileList = next;
    }
    DEBUG_LOG("Exiting Clear_RegisteredProfile_List()");
}

CmpiObjectPath makePath_RegisteredProfile(const char* className, const char* nameSpace,
                                          const RegisteredProfileEntry* entry) {
    DEBUG_LOG("Merolt_NIC_RegisteredProfile makePath_RegisteredProfile was called\n");
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(instanceID(entry)));
    return path;
}

CmpiInstance makeInstance_RegisteredProfile(const char* className, const char* nameSpace, const char** properties,
                                            const RegisteredProfileEntry* entry) {
    DEBUG_LOG("Merolt_NIC_RegisteredProfile makeInstance_RegisteredProfile was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("InstanceID", CmpiData(instanceID(entry)));
    instance.setProperty("Caption", CmpiData(entry->caption.text()));
    instance.setProperty("Description", CmpiData(entry->caption.text()));
    instance.setProperty("ElementName", CmpiData(entry->elementName.text()));
    instance.setProperty("RegisteredOrganization", CmpiData(CMPIUint16{entry->registeredOrganization}));
    instance.setProperty("RegisteredName", CmpiData(entry->registeredName.text()));
    instance.setProperty("RegisteredVersion", CmpiData(entry->registeredVersion.text()));
    instance.setProperty("AdvertiseTypes", CmpiData(uint16Array({3})));
    instance.setProperty("AdvertiseTypeDescriptions", CmpiData(stringArray({"slp"})));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(RegisteredProfile, descriptor)

} // namespace merolt::ethernet
