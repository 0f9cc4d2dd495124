// Any text as the file of remembered subscriptions: it is refused with its name and the place, or gives instances whose
// own text gives the same again.
#include "cimhost/broker/broker.h"
#include "cimhost/broker/request_scope.h"
#include "cimhost/indications/state_file.h"
#include "cimhost/service/request_values.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using namespace cimhost;

constexpr const char* nameSpace = "root/interop";
constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
class T_Filter { [Key] string Name; string Query; boolean IsOn; datetime Since; uint16 Kind; sint64 Offset; real64 Ratio;
                 char16 Letter; string Words[]; };
class T_Destination { [Key] string Name; string Destination; };
[Association] class T_Subscription { [Key] T_Filter ref Filter; [Key] T_Destination ref Handler; uint8 State; };
)";

struct World {
    World() { repository.loadText(nameSpace, mof); }

    ClassRepository repository;
    Broker broker{repository};
};

void require(bool condition) {
    if (!condition) std::abort();
}

/// What a server keeps of the text, written again; nothing if it refuses the text.
std::string kept(World& world, std::string_view text) {
    RequestScope scope(world.broker);
    std::vector<OwnedInstance> instances;
    try {
        readState("state.json", text, world.repository, nameSpace,
                  [&](const cimxml::Instance& instance, const Owner& owner) {
                      const ObjectPathObject& path = *scope.make().path(nameSpace, instance.className);
                      instances.push_back({&makeInstance(scope, path, instance), owner});
                  });
    } catch (const std::runtime_error& refused) {
        const std::string reason = refused.what();
        require(reason.rfind("state.json: ", 0) == 0 && reason.find('\n') == std::string::npos);
        return {};
    }
    return stateText(instances);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static World world;
    const std::string text = kept(world, {reinterpret_cast<const char*>(data), size});
    if (!text.empty()) require(kept(world, text) == text);
    return 0;
}
