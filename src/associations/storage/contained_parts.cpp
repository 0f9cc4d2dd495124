#include "associations/storage/contained_parts.h"

#include "associations/storage/text_index.h"
#include "associations/storage/walks.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::association {

using physical::g_physicalConnectorCount;
using physical::g_physicalConnectorList;
using physical::g_physicalPackageCount;
using physical::g_physicalPackageList;
using physical::g_physicalPortCount;
using physical::g_physicalPortList;

namespace {

CardToken cardOfConnector(const char* tag) {
    char moduleSerial[256] = {};
    CardToken card;
    std::uint32_t portNumber = 0;
    physical::parsePhysicalConnectorTag(tag, moduleSerial, card.data(), &portNumber);
    return card;
}

CardToken cardOfJack(const char* tag) {
    CardToken card;
    std::uint32_t portNumber = 0;
    physical::parsePhysicalPortTag(tag, card.data(), &portNumber);
    return card;
}

} // namespace

constexpr PartList connectorsInCards = {
    .logName = "PHYSICALCONNECTOR",
    .count = &g_physicalConnectorCount,
    .tag = [](int index) { return g_physicalConnectorList[index].tag.text(); },
    .cardOf = cardOfConnector,
};

constexpr PartList jacksInCards = {
    .logName = "PHYSICALPORT",
    .count = &g_physicalPortCount,
    .tag = [](int index) { return g_physicalPortList[index].tag.text(); },
    .cardOf = cardOfJack,
};

namespace {

/// The same with a line for each step of each comparison.
void pairContainedWithLog(const PartList& parts, Enumeration enumeration, const PairVisitor& visit) {
    matchingRecords(g_physicalPackageCount, *parts.count, visit, [&](int package, int part) {
        const char* packageSerial = g_physicalPackageList[package].serialNumber.text();
        const CardToken serialNumber = parts.cardOf(parts.tag(part));
        // The number in the first line is the package's.
        if (enumeration == Enumeration::instances)
            DEBUG_LOG("%s_Tag(%d) = %s", parts.logName, package, parts.tag(part));
        DEBUG_LOG("serialNumber = %s", serialNumber.text());
        DEBUG_LOG("PHYSICALPACKAGE_SerialNumber(%d) = %s", package, packageSerial);
        return equalsIgnoringCase(packageSerial, serialNumber.text());
    });
}

} // namespace

void pairContained(const PartList& parts, Enumeration enumeration, const PairVisitor& visit) {
    if (gDebugLog) return pairContainedWithLog(parts, enumeration, visit);
    TextIndex cards;
    for (int part = 0; part < *parts.count; ++part)
        cards.add(part, parts.cardOf(parts.tag(part)).view());
    for (int package = 0; package < g_physicalPackageCount; ++package) {
        const auto visitPair = [&](int part) { return visit({{.index = package}, {.index = part}}); };
        if (!cards.forEach(g_physicalPackageList[package].serialNumber.view(), visitPair)) return;
    }
}

void findCardOfPart(const PartList& parts, const Source& source, const ObjectVisitor& visit) {
    const CardToken serialNumber = parts.cardOf(source.text(0));
    matchingRecords(g_physicalPackageCount, visit, [&](int package) {
        return equalsIgnoringCase(g_physicalPackageList[package].serialNumber.text(), serialNumber.text());
    });
}

void findPartsOfCard(const PartList& parts, const Source& source, const ObjectVisitor& visit) {
    matchingRecords(*parts.count, visit,
                    [&](int part) { return source.equals(0, parts.cardOf(parts.tag(part)).text()); });
}

} // namespace merolt::association
