#include "associations/storage/contained_parts.h"

#include "associations/storage/walks.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::association {

using physical::g_physicalPackageCount;
using physical::g_physicalPackageList;

void pairContained(const PartList& parts, Enumeration enumeration, const PairVisitor& visit) {
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
