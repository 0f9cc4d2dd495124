#include "classes/ethernet/software_identity.h"

#include "classes/instance.h"
#include "classes/physical/serial_form.h"
#include "log/log.h"
#include "text/text.h"

#include <cstdlib>
#include <cstring>

namespace merolt::ethernet {

namespace {

const char* keys[] = {"InstanceID", nullptr};

struct SoftwareType {
    int type;
    CMPIUint16 classification;
    const char* nameOfOem; ///< takes the serial number
    const char* name;      ///< likewise
    const char* description;
    const char* (*version)(const TAVIK_CardProperties& card);
};

constexpr SoftwareType softwareTypes[] = {
    {nicNetworkDriver, 2, "IBM CNA Adapter %s Driver", "Merolt CNA Adapter %s Driver", "The CNA Networking Driver",
     [](const TAVIK_CardProperties& card) -> const char* { return card.driverVersion; }},
    {nicFlashFirmware, 10, "IBM CNA Adapter %s Flash Firmware", "Merolt CNA Adapter %s Flash Firmware",
     "CNA Flash includes boot code, ASIC and MPI Firmware",
     [](const TAVIK_CardProperties& card) -> const char* { return card.flashVersion; }},
};

const char* instanceID(int type, const CNACard* card) {
    static FixedText<256> text;
    text.format("%d_%s", type, card->properties.serialNumber);
    return text.text();
}

/// Each card's driver, then its firmware.
void forEachSoftware(const ElementVisitor& visitor) {
    for (CNACard* card = g_CNAList; card; card = card->next) {
        for (const SoftwareType& type : softwareTypes) {
            if (!visitor({.card = card, .softwareType = type.type})) return;
        }
    }
}

// The type in front of the first underscore is taken as it is: with another number than the two the card still answers,
// with an instance that lacks what depends on the type.
std::optional<Element> findSoftware(const char* key) {
    const char* underscore = std::strchr(key, '_');
    const int type = underscore ? std::atoi(key) : 0;
    const char* serialNumber = underscore ? underscore + 1 : "";
    for (CNACard* card = g_CNAList; card; card = card->next) {
        if (equalsIgnoringCase(serialNumber, card->properties.serialNumber))
            return Element{.card = card, .softwareType = type};
    }
    return std::nullopt;
}

const EthernetClass descriptor = {
    .key = "InstanceID",
    .forEachElement = forEachSoftware,
    .keyText = [](const Element& element) { return instanceID(element.softwareType, element.card); },
    .makePath = pathOf<makePath_SoftwareIdentity>,
    .makeInstance = instanceOf<makeInstance_SoftwareIdentity>,
    .texts = {.token = "Merolt_NIC_SoftwareIdentity", .keyType = "{F}: Error invalid key data type({n})"},
    .find = findSoftware,
};

const SoftwareType* findType(int type) {
    for (const SoftwareType& known : softwareTypes) {
        if (known.type == type) return &known;
    }
    return nullptr;
}

void setTypeProperties(CmpiInstance& instance, const SoftwareType& type, bool isOem,
                       const TAVIK_CardProperties& cardTexts) {
    FixedText<320> name;
    name.format(isOem ? type.nameOfOem : type.name, physical::getDisplaySerialNumber(cardTexts.serialNumber));
    instance.setProperty("Classifications", CmpiData(uint16Array({type.classification})));
    instance.setProperty("Name", CmpiData(name.text()));
    instance.setProperty("Description", CmpiData(type.description));
    instance.setProperty("VersionString", CmpiData(type.version(cardTexts)));
}

} // namespace

CmpiObjectPath makePath_SoftwareIdentity(const char* className, const char* nameSpace, int type, CNACard* card) {
    DEBUG_LOG("Merolt_NIC_SoftwareIdentity makePath was called\n");
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(instanceID(type, card)));
    return path;
}

CmpiInstance makeInstance_SoftwareIdentity(const char* className, const char* nameSpace, const char** properties,
                                           int type, CNACard* card) {
    DEBUG_LOG("Merolt_NIC_SoftwareIdentity makeInstance was called\n.");
    TAVIK_CardProperties& cardTexts = card->properties;
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("InstanceID", CmpiData(instanceID(type, card)));
    instance.setProperty("Manufacturer", CmpiData(physical::meroltManufacturer));
    instance.setProperty("VersionString", CmpiData(cardTexts.defaultSoftwareVersion));
    // Trims the card's serial number in place: from here on keys show it trimmed.
    const bool isOem = physical::isIBMSerialNumber(cardTexts.serialNumber);
    instance.setProperty("Manufacturer", CmpiData(isOem ? physical::oemManufacturer : cardTexts.manufacturer));
    if (const SoftwareType* known = findType(type)) setTypeProperties(instance, *known, isOem, cardTexts);
    instance.setProperty("IdentityInfoType", CmpiData(stringArray({"SoftwareID", "SoftwareStatus"})));
    instance.setProperty("IdentityInfoValue", CmpiData(stringArray({cardTexts.modelName, "2"})));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(SoftwareIdentity, descriptor)

} // namespace merolt::ethernet
