// The second reading of meroltcna.properties, by the Ethernet side: other keys, other rules.
#pragma once

#include <cstdint>

namespace merolt {

/// Reads whitespace-separated key=value items of the file in the working directory. An item must not hold blanks; a
/// last item without a line end behind it has no effect.
class Merolt_NIC_Properties {
public:
    /// The one object, made and read on the first call, which comes from the polling thread.
    static Merolt_NIC_Properties& instance();

    virtual ~Merolt_NIC_Properties() = default;

    void reload();

    std::uint8_t debugLogEnabled = 0;
    std::uint8_t errorLogEnabled = 0;
    /// Seconds between two checks of the adapters; 0 or less: every pass of the polling loop.
    std::int32_t linkStatusPollIntervalSeconds = 180;
    /// Where the registered profiles live, and where the elements that conform to them do.
    char interopNamespace[256] = "root/PG_InterOp";
    char implementationNamespace[256] = "root/merolt_cmpi";

private:
    void parseItem(const char* item);
};

} // namespace merolt
