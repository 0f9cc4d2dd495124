// What the memory of a transceiver module tells, in physical units, whatever family of modules it comes from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace optics {

/// Limits that a module has for one quantity, in the unit of the monitor that they belong to. They are in order:
/// lowAlarm <= lowWarning < highWarning <= highAlarm.
struct Thresholds {
    double highAlarm;
    double lowAlarm;
    double highWarning;
    double lowWarning;

    bool operator==(const Thresholds&) const = default;
};

/// What the module itself says of one quantity. Some modules keep a flag until it is read.
struct Flags {
    bool highAlarm = false;
    bool lowAlarm = false;
    bool highWarning = false;
    bool lowWarning = false;

    bool any() const { return highAlarm || lowAlarm || highWarning || lowWarning; }
    bool operator==(const Flags&) const = default;
};

/// One quantity. The name of a variable of this type names the unit of its numbers. Every number is finite.
struct Monitor {
    std::optional<double> reading;
    std::optional<Thresholds> thresholds;
    std::optional<Flags> flags; ///< absent where the module declares to have none
};

/// One optical lane; an SFP module has one.
struct Lane {
    Monitor biasMilliamperes;
    Monitor transmitPowerMilliwatts;
    Monitor receivePowerMilliwatts;
    std::optional<bool> receiveLoss; ///< the module says that no light arrives
    std::optional<bool> transmitFault;
    std::optional<bool> transmitDisabled;
};

/// A text of at most 16 characters without the blanks that fill its field. What is not printable ASCII reads '?'.
class ShortText {
public:
    ShortText() = default;
    /// @param field bytes of the module's memory; those behind the 16th are left out. A zero ends the text.
    ShortText(const std::uint8_t* field, std::size_t size);

    std::string_view view() const { return {characters_.data(), length_}; }
    bool empty() const { return length_ == 0; }

private:
    std::array<char, 16> characters_{};
    std::uint8_t length_ = 0;
};

/// What stands in the way of a module's numbers. Where one of these holds, the numbers in question are absent.
enum class Finding : std::uint8_t {
    NoMemory,                 ///< nothing was delivered, or zeros only
    OnesOnly,                 ///< every byte is FFh, as of a bus on which nobody answers
    MemoryTooShort,           ///< the serial ID does not fit in what was delivered
    UnknownFamily,            ///< the identifier names no family whose memory this library knows
    BaseChecksumWrong,        ///< kind, wavelength and rate are not told
    ExtendedChecksumWrong,    ///< diagnostics are not told: nobody knows how they are calibrated
    DiagnosticsChecksumWrong, ///< thresholds and external calibration are not told
    NoDiagnostics,            ///< the module declares to have none
    DiagnosticsMissing,       ///< it declares diagnostics and delivers none
    AddressChangeRequired,    ///< its diagnostics stand where they cannot be read without changing its state
    CalibrationNotTold,       ///< it declares no calibration, or both
    CalibrationUnusable,      ///< a constant is no number, or a slope is zero: what it calibrates is not told
    NotReady,                 ///< it says itself that its readings are not valid yet
    ReadingOutOfRange,        ///< a calibrated number lies outside what the standard has for it
    ThresholdsDisordered,     ///< limits that contradict each other are not told
    Count
};

/// A set of findings.
class Findings {
public:
    void add(Finding finding) { bits_ |= bit(finding); }
    bool has(Finding finding) const { return (bits_ & bit(finding)) != 0; }
    bool empty() const { return bits_ == 0; }
    bool operator==(const Findings&) const = default;

private:
    static std::uint32_t bit(Finding finding) { return 1U << static_cast<unsigned>(finding); }
    std::uint32_t bits_ = 0;
};

/// A word for programs, such as "baseChecksumWrong", and a sentence for people.
std::string_view wordOf(Finding finding);
std::string_view sentenceOf(Finding finding);

/// Whether something is wrong with what the module tells; not for what it merely does not have, or not yet.
bool isDoubtful(Finding finding);

enum class Family : std::uint8_t { Unknown, Sff8472, Sff8636, Cmis };
enum class Calibration : std::uint8_t { Unknown, Internal, External };
enum class ReceivePowerKind : std::uint8_t { Unknown, Average, ModulationAmplitude };

struct Identity {
    std::uint8_t identifier = 0;   ///< SFF-8024 table 4-1
    std::string_view formFactor;   ///< "SFP", "QSFP28"; empty for a reserved identifier
    std::string_view connector;    ///< SFF-8024 table 4-3: "LC"; empty for a reserved code
    std::string_view standard;     ///< "10GBASE-SR"; empty where the module names none that is known here
    std::string_view mediumLength; ///< of Fibre Channel: "short distance"; empty if not told
    bool copper = false;           ///< a cable or a twisted pair port: no light, no wavelength
    ShortText vendor, partNumber, revision, serialNumber, dateCode;
    std::array<std::uint8_t, 3> vendorOui{};
    std::optional<double> wavelengthNanometres;
    std::optional<std::uint32_t> bitRateMegabaud;      ///< nominal signalling rate
    std::optional<std::uint32_t> fibreChannelGigabits; ///< fastest of those that are declared: 1, 2, 4, 8, 16, 32
};

/// Eight lanes are the most that is told: bank 0 of a CMIS module.
constexpr std::size_t mostLanes = 8;

/// Everything that a module's memory tells. It holds no reference into that memory.
struct Module {
    Family family = Family::Unknown;
    Identity identity;
    Findings findings;
    Calibration calibration = Calibration::Unknown;
    ReceivePowerKind receivePowerKind = ReceivePowerKind::Unknown;
    Monitor temperatureCelsius;
    Monitor supplyVolts;
    std::array<Lane, mostLanes> lanes;
    std::size_t laneCount = 0; ///< lanes that are told; zero without diagnostics
};

} // namespace optics
