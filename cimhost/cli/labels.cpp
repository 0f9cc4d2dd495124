#include "cimhost/cli/labels.h"

#include "cimhost/cli/values_text.h"
#include "cimhost/model/printable.h"

#include <string_view>

namespace cimhost::cli {

namespace {

std::string lastKey(const InstanceObject& instance) {
    Arena arena;
    const ObjectPathObject& path = *instance.path(arena);
    return path.keys().empty() ? std::string() : plainText(path.keys().back().data);
}

std::string chosenLabel(const Label& label, const InstanceObject& instance, const Presentation& presentation) {
    std::string text = label.word;
    std::string_view separator = " ";
    for (const ShownProperty& part : label.parts) {
        const std::string value = shortText(instance, propertyToShow(instance, part), presentation);
        if (value.empty()) continue;
        text.append(separator).append(part.words).append(value);
        separator = ", ";
    }
    return text;
}

} // namespace

std::string labelOf(const InstanceObject& instance, const Presentation& presentation) {
    if (const Label* chosen = presentation.labelOf(instance.className()))
        return chosenLabel(*chosen, instance, presentation);
    return printable(std::string(instance.className()).append(" ").append(lastKey(instance)));
}

} // namespace cimhost::cli
