// Whatever a server may answer goes all the way: decoded in pieces, and its objects made into those of the broker, over
// a small class set. Which pieces it comes in must not matter.

#include "cimhost/broker/broker.h"
#include "cimhost/cimxml/response.h"
#include "cimhost/remote/received_objects.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

namespace {

using namespace cimhost;

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
class Merolt_FCHBA_FCPort {
    [Key] string SystemCreationClassName; [Key] string SystemName; [Key] string CreationClassName; [Key] string DeviceID;
    uint64 Speed; uint16 OperationalStatus[]; datetime Time; boolean Enabled; real32 Ratio; char16 Letter;
};
[Association] class T_Link { [Key] Merolt_FCHBA_FCPort ref Left; [Key] Merolt_FCHBA_FCPort ref Right; };
class T_Counter { [Key] uint32 Number; };
)";

struct World {
    World() { repository.loadText("root/merolt_cmpi", mof); }

    ClassRepository repository;
    Broker broker{repository};
};

struct Read {
    std::variant<cimxml::Response, cimxml::ProtocolError> end;
    std::size_t objects = 0;
};

Read read(World& world, std::string_view document, const cimxml::Asked& asked, std::size_t pieceSize) {
    Read result;
    RequestScope scope(world.broker);
    const remote::ReceivedObjects objects(scope, "root/merolt_cmpi");
    cimxml::ResponseReader reader(asked, [&](cimxml::ReturnedObject object) {
        ++result.objects;
        try {
            if (auto* instance = std::get_if<cimxml::NamedInstance>(&object)) objects.instance(*instance, nullptr);
            if (auto* path = std::get_if<cimxml::ObjectPath>(&object)) objects.path(std::move(*path));
        } catch (const remote::ReceivedObjectError&) {
            // Told to the person who asked.
        }
    });
    for (; document.size() > pieceSize; document.remove_prefix(pieceSize))
        reader.read(document.substr(0, pieceSize));
    reader.read(document);
    result.end = reader.finish();
    if (auto* response = std::get_if<cimxml::Response>(&result.end)) {
        for (cimxml::Response::OutParameter& out : response->outParameters) {
            try {
                objects.value(out.value, CMPI_null);
            } catch (const remote::ReceivedObjectError&) {
                // As above.
            }
        }
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    static World world;
    const std::string_view document(reinterpret_cast<const char*>(bytes), count);
    const bool isMethod = document.find("<METHODRESPONSE") != std::string_view::npos;
    const cimxml::Asked asked = {"1", isMethod ? cimxml::Request::Kind::extrinsic : cimxml::Request::Kind::intrinsic,
                                 isMethod ? "InstallFromURI" : "EnumerateInstances"};
    const Read whole = read(world, document, asked, 1U << 20);
    const Read pieces = read(world, document, asked, 1 + count % 97);
    if (whole.end.index() != pieces.end.index()) std::abort();
    if (whole.end.index() == 0 && whole.objects != pieces.objects) std::abort();
    return 0;
}
