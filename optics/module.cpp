#include "optics/module.h"

#include <algorithm>

namespace optics {

namespace {

struct FindingText {
    Finding finding;
    std::string_view word;
    std::string_view sentence;
};

// clang-format off
constexpr std::array<FindingText, static_cast<std::size_t>(Finding::Count)> findingTexts{{
    {Finding::NoMemory, "noMemory", "the module's memory is empty"},
    {Finding::OnesOnly, "onesOnly", "the module's memory reads ones only"},
    {Finding::MemoryTooShort, "memoryTooShort", "the module's memory ends before its serial ID does"},
    {Finding::UnknownFamily, "unknownFamily", "the module is of a kind whose memory is not known"},
    {Finding::BaseChecksumWrong, "baseChecksumWrong", "the checksum of the serial ID's base fields is wrong"},
    {Finding::ExtendedChecksumWrong, "extendedChecksumWrong", "the checksum of the serial ID's extended fields is wrong"},
    {Finding::DiagnosticsChecksumWrong, "diagnosticsChecksumWrong", "the checksum of thresholds and calibration is wrong"},
    {Finding::NoDiagnostics, "noDiagnostics", "the module has no diagnostics"},
    {Finding::DiagnosticsMissing, "diagnosticsMissing", "the module declares diagnostics and delivers none"},
    {Finding::AddressChangeRequired, "addressChangeRequired", "the module's diagnostics need a change of its address"},
    {Finding::CalibrationNotTold, "calibrationNotTold", "the module does not tell how it is calibrated"},
    {Finding::CalibrationUnusable, "calibrationUnusable", "the module's calibration constants cannot be used"},
    {Finding::NotReady, "notReady", "the module's readings are not ready yet"},
    {Finding::ReadingOutOfRange, "readingOutOfRange", "a calibrated reading is outside the range that the standard has"},
    {Finding::ThresholdsDisordered, "thresholdsDisordered", "thresholds contradict each other"},
}};
// clang-format on

constexpr bool inOrder() {
    for (std::size_t i = 0; i < findingTexts.size(); ++i)
        if (static_cast<std::size_t>(findingTexts[i].finding) != i) return false;
    return true;
}
static_assert(inOrder());

bool isPrintable(std::uint8_t byte) { return byte >= ' ' && byte <= '~'; }

} // namespace

ShortText::ShortText(const std::uint8_t* field, std::size_t size) {
    const auto limit = std::min(size, characters_.size());
    for (std::size_t at = 0; at < limit && field[at] != 0; ++at)
        characters_[length_++] = isPrintable(field[at]) ? static_cast<char>(field[at]) : '?';
    while (length_ > 0 && characters_[length_ - 1U] == ' ')
        --length_;
}

std::string_view wordOf(Finding finding) { return findingTexts[static_cast<std::size_t>(finding)].word; }

std::string_view sentenceOf(Finding finding) { return findingTexts[static_cast<std::size_t>(finding)].sentence; }

bool isDoubtful(Finding finding) {
    return finding != Finding::NoDiagnostics && finding != Finding::NotReady && finding != Finding::UnknownFamily;
}

} // namespace optics
