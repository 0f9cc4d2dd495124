#include "classes/physical/serial_form.h"

#include "text/text.h"

#include <cstring>

namespace merolt::physical {

namespace {

constexpr std::string_view oemPrefix = "11S";
constexpr std::size_t oemLength = 22;
constexpr std::size_t partNumberLength = 7;
constexpr std::size_t shortSerialStart = oemPrefix.size() + partNumberLength;

bool isOemForm(std::string_view text) {
    return text.size() == oemLength && text.substr(0, oemPrefix.size()) == oemPrefix;
}

} // namespace

bool isIBMSerialNumber(char* text) {
    trimString(text);
    return isOemForm(text);
}

const char* getDisplaySerialNumber(const char* text) {
    static FixedText<256> shown;
    shown.assign(text);
    trimString(shown.data());
    return isOemForm(shown.view()) ? shown.text() + shortSerialStart : shown.text();
}

FixedText<8> oemPartNumber(std::string_view serialNumber) {
    FixedText<8> text;
    text.assign(serialNumber.substr(oemPrefix.size(), partNumberLength));
    return text;
}

} // namespace merolt::physical
