#include "tavik/source_choice.h"

#include <utility>

#include "tavik/fleet/fleet_source.h"
#include "tavik/host/host_source.h"

namespace tavik {

std::variant<std::unique_ptr<Source>, FleetError> makeSource(const std::string& choice) {
    auto understood = understandSource(choice);
    if (auto* error = std::get_if<FleetError>(&understood)) return std::move(*error);
    auto& name = std::get<SourceName>(understood);
    if (name.recording) return makeRecordingSource(*name.recording);
    if (name.fleet) return std::make_unique<fleet::FleetSource>(std::move(*name.fleet));
    return makeHostSource();
}

} // namespace tavik
