// Where the library gets its adapters from: a fleet file, the host itself or a recording of a host.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tavik/model.h"
#include "tavik/status.h"

namespace tavik {

/** What went wrong, ready to be shown: names the place and what was expected there. */
struct FleetError {
    std::string message;

    bool operator==(const FleetError&) const = default;
};

using FleetOrError = std::variant<Fleet, FleetError>;

/** The answer to a query: the value counts only if the status is statusOk. */
template <typename Value>
struct Answer {
    Answer(Value answered) : value(std::move(answered)) {}

    /** @param reason not statusOk. */
    static Answer failure(Status reason) { return Answer(reason, Failed()); }

    bool ok() const { return status == statusOk; }

    Status status = statusOk;
    Value value{};

private:
    struct Failed {};
    Answer(Status reason, Failed) : status(reason) {}
};

/** A storage port changed its state. */
struct Alarm {
    std::uint16_t deviceNumber = 0;
    std::string text; ///< readable description of the change

    bool operator==(const Alarm&) const = default;
};

/** Takes an alarm and returns at once: the library delivers it later on a thread of its own. Callable from any
 *  thread, with or without locks of the source held. */
using AlarmSink = std::function<void(Alarm)>;

/** All members can be called from several threads at once. Queries speak of the hardware as it is now, not of the
 *  fleet that was loaded last; a function that has gone since answers statusNoSuchDevice. */
class Source {
public:
    virtual ~Source() = default;

    /** Reads the whole set of adapters. Slow. */
    virtual FleetOrError load() = 0;

    /** True if adapters changed since the last reset (or since the source was made). */
    virtual bool changed() = 0;
    /** Takes up what the last question saw; what comes between the two is told by the next question. */
    virtual void resetChanged() = 0;

    /** From here on, state changes of storage ports go to the sink. Called once, before everything else. The sink may
     *  be used until the destructor of the source returns, which ends the threads of the source. */
    virtual void watch(AlarmSink sink) = 0;

    // By handle of a storage function.
    virtual Answer<PortProperty> portProperty(std::uint32_t handle) = 0;
    virtual Answer<Bytes> vpd(std::uint32_t handle) = 0;
    virtual Answer<std::string> uuid(std::uint32_t handle) = 0;
    virtual Answer<Statistics> refreshStatistics(std::uint32_t handle) = 0;
    virtual Answer<Transceiver> storageTransceiver(std::uint32_t handle) = 0;
    virtual Answer<std::string> multiBootVersion(std::uint32_t handle) = 0;
    /** @param groups TavikFactGroup bits: others need not be found out. */
    virtual Answer<Facts> storageFacts(std::uint32_t handle, std::uint32_t groups) = 0;

    // By device name of an Ethernet function.
    virtual Answer<Link> link(std::string_view deviceName) = 0;
    virtual Answer<IPConfiguration> ipConfiguration(std::string_view deviceName) = 0;
    virtual Answer<std::vector<FCoELinkage>> fcoeLinkage(std::string_view deviceName) = 0;
    virtual Answer<Transceiver> nicTransceiver(std::string_view deviceName) = 0;
    virtual Answer<Facts> nicFacts(std::string_view deviceName, std::uint32_t groups) = 0;

    // Numbers can go over to another card while the caller still knows the old one. The serial number is that of the
    // card that the caller means, or nothing if it was never shown one with this number; no other card is written.

    /** @param image the name of a file or the bytes of an image: the caller does not tell which, nor its length. */
    virtual Status updateFlash(std::uint32_t adapterId, const std::optional<std::string>& serialNumber,
                               const void* image) = 0;
    virtual Status updateOptionRom(std::uint32_t handle, const std::optional<std::string>& serialNumber,
                                   std::string_view fileName) = 0;
};

} // namespace tavik
