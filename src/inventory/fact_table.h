// All facts that the provider knows: how the optional calls name them, and which property of which class shows them.
#pragma once

#include "inventory/fact_row.h"

#include <cstddef>
#include <iterator>
#include <string_view>

namespace merolt {

namespace fact_table {

constexpr unsigned ethernet = FactOfEthernetPort | FactOfNetworkPort;
constexpr unsigned ports = FactOfFCPort | ethernet;
constexpr unsigned fabric = FactOfFCPort;
constexpr unsigned functions = ports | FactOfStorageController | FactOfNicController;
constexpr unsigned statistics = FactOfFCPortStatistics;
constexpr auto one = FactCount::one;
constexpr auto list = FactCount::list;
constexpr auto text = TavikFactText;
constexpr auto number = TavikFactNumber;
constexpr auto truth = TavikFactTruth;
constexpr auto adapter = TavikFactsOfAdapter;
constexpr auto link = TavikFactsOfLink;
constexpr auto counters = TavikFactsOfCounters;
constexpr auto relations = TavikFactsOfRelations;
constexpr auto speed = "bit / second";

/// In the order in which an instance gets them.
inline constexpr FactRow rows[] = {
    // clang-format off
    {"interfaceName",            "InterfaceName",            text,   one,  nullptr, adapter,  ports},
    {"pciAddress",               "PCIAddress",               text,   one,  nullptr, adapter,  functions},
    {"pciSlot",                  "PCISlot",                  text,   one,  nullptr, adapter,  functions},
    {"numaNode",                 "NUMANode",                 number, one,  nullptr, adapter,  functions},
    {"adapterMaker",             "AdapterMaker",             text,   one,  nullptr, adapter,  functions},
    {"driverName",               "DriverName",               text,   one,  nullptr, adapter,  functions},
    {"pcieLanes",                "PCIeLanes",                number, one,  nullptr, link,     functions},
    {"maxPcieLanes",             "MaxPCIeLanes",             number, one,  nullptr, link,     functions},
    {"pcieLaneSpeed",            "PCIeLaneSpeed",            number, one,  speed,   link,     functions},
    {"maxPcieLaneSpeed",         "MaxPCIeLaneSpeed",         number, one,  speed,   link,     functions},
    {"linkSpeed",                "LinkSpeed",                number, one,  speed,   link,     ports},
    {"maxLinkSpeed",             "MaxLinkSpeed",             number, one,  speed,   link,     ports},
    {"supportedLinkSpeeds",      "SupportedLinkSpeeds",      number, list, speed,   link,     ports},
    {"autoNegotiation",          "AutoNegotiation",          truth,  one,  nullptr, link,     ethernet},
    {"duplexMode",               "DuplexMode",               text,   one,  nullptr, link,     ethernet},
    {"activeFecModes",           "ActiveFECModes",           text,   list, nullptr, link,     ethernet},
    {"configuredFecModes",       "ConfiguredFECModes",       text,   list, nullptr, link,     ethernet},
    {"pauseAutoNegotiation",     "PauseAutoNegotiation",     truth,  one,  nullptr, link,     ethernet},
    {"receivePause",             "ReceivePause",             truth,  one,  nullptr, link,     ethernet},
    {"transmitPause",            "TransmitPause",            truth,  one,  nullptr, link,     ethernet},
    {"fabricPortId",             "FabricPortID",             text,   one,  nullptr, link,     fabric},
    {"fabricName",               "FabricName",               text,   one,  nullptr, link,     fabric},
    {"symbolicName",             "SymbolicName",             text,   one,  nullptr, link,     fabric},
    {"totalReceivedBytes",       "TotalReceivedBytes",       number, one,  "byte",  counters, ethernet},
    {"totalTransmittedBytes",    "TotalTransmittedBytes",    number, one,  "byte",  counters, ethernet},
    {"totalReceivedPackets",     "TotalReceivedPackets",     number, one,  nullptr, counters, ethernet},
    {"totalTransmittedPackets",  "TotalTransmittedPackets",  number, one,  nullptr, counters, ethernet},
    {"totalReceiveErrors",       "TotalReceiveErrors",       number, one,  nullptr, counters, ethernet},
    {"totalTransmitErrors",      "TotalTransmitErrors",      number, one,  nullptr, counters, ethernet},
    {"totalReceiveDrops",        "TotalReceiveDrops",        number, one,  nullptr, counters, ethernet},
    {"totalTransmitDrops",       "TotalTransmitDrops",       number, one,  nullptr, counters, ethernet},
    {"totalReceivedFrames",      "TotalReceivedFrames",      number, one,  nullptr, counters, statistics},
    {"totalTransmittedFrames",   "TotalTransmittedFrames",   number, one,  nullptr, counters, statistics},
    {"totalReceivedWords",       "TotalReceivedWords",       number, one,  nullptr, counters, statistics},
    {"totalTransmittedWords",    "TotalTransmittedWords",    number, one,  nullptr, counters, statistics},
    {"totalInputRequests",       "TotalInputRequests",       number, one,  nullptr, counters, statistics},
    {"totalOutputRequests",      "TotalOutputRequests",      number, one,  nullptr, counters, statistics},
    {"totalControlRequests",     "TotalControlRequests",     number, one,  nullptr, counters, statistics},
    {"totalInputMegabytes",      "TotalInputMegabytes",      number, one,  nullptr, counters, statistics},
    {"totalOutputMegabytes",     "TotalOutputMegabytes",     number, one,  nullptr, counters, statistics},
    {"totalLips",                "TotalLIPs",                number, one,  nullptr, counters, statistics},
    {"totalNos",                 "TotalNOS",                 number, one,  nullptr, counters, statistics},
    {"totalLinkFailures",        "TotalLinkFailures",        number, one,  nullptr, counters, statistics},
    {"totalSyncLosses",          "TotalSyncLosses",          number, one,  nullptr, counters, statistics},
    {"totalSignalLosses",        "TotalSignalLosses",        number, one,  nullptr, counters, statistics},
    {"totalProtocolErrors",      "TotalProtocolErrors",      number, one,  nullptr, counters, statistics},
    {"totalInvalidWords",        "TotalInvalidWords",        number, one,  nullptr, counters, statistics},
    {"totalCrcErrors",           "TotalCRCErrors",           number, one,  nullptr, counters, statistics},
    {"totalErrorFrames",         "TotalErrorFrames",         number, one,  nullptr, counters, statistics},
    {"totalDumpedFrames",        "TotalDumpedFrames",        number, one,  nullptr, counters, statistics},
    {"virtualFunctions",         "VirtualFunctions",         text,   list, nullptr, relations, ethernet},
    {"virtualFunctionOf",        "VirtualFunctionOf",        text,   one,  nullptr, relations, ethernet},
    {"usedBy",                   "UsedBy",                   text,   list, nullptr, relations, ethernet},
    {"lldpNeighbors",            "LLDPNeighbors",            text,   list, nullptr, relations, ethernet},
    {"remotePorts",              "RemotePorts",              text,   list, nullptr, relations, fabric},
    {"logicalUnits",             "LogicalUnits",             text,   list, nullptr, relations, fabric},
    // clang-format on
};

} // namespace fact_table

/// The place of a name in the table; behind its end for one that no row has. For constants: GCC compares no address
/// with null at compile time under UndefinedBehaviorSanitizer.
constexpr std::size_t placeOfFact(std::string_view name) {
    std::size_t place = 0;
    while (place < std::size(fact_table::rows) && fact_table::rows[place].name != name)
        ++place;
    return place;
}

/// Null for a name that no row has.
constexpr const FactRow* findFact(std::string_view name) {
    const std::size_t place = placeOfFact(name);
    return place < std::size(fact_table::rows) ? &fact_table::rows[place] : nullptr;
}

} // namespace merolt
