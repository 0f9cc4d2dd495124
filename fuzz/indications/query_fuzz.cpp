// The text of an indication filter: read, held against a class, and asked about an indication of it.

#include "cimhost/broker/broker.h"
#include "cimhost/indications/query.h"
#include "cimhost/model/class_repository.h"

#include <cstddef>
#include <cstdint>

namespace {

using namespace cimhost;

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
class T_Alert { [Key] string Id; uint16 Severity; sint64 Number; real64 Ratio; boolean Loud; datetime Time;
                char16 Letter; string Words[]; };
)";

struct World {
    World() { repository.loadText("root/ns", mof); }

    ClassRepository repository;
    Broker broker{repository};
};

CMPIData number(CMPIUint16 value) {
    CMPIData data{};
    data.type = CMPI_uint16;
    data.value.uint16 = value;
    return data;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    static World world;
    try {
        const Query query = Query::parse({reinterpret_cast<const char*>(bytes), count});
        const ClassDeclaration& alert = *world.repository.find("root/ns", "T_Alert");
        query.checkAgainst(alert);
        RequestScope scope(world.broker);
        InstanceObject& instance = *scope.make().instance(*scope.make().path("root/ns", "T_Alert"));
        static_cast<void>(query.selects(instance));
        instance.setProperty("Severity", number(3));
        static_cast<void>(query.selects(instance));
    } catch (const QueryError&) { // NOLINT(bugprone-empty-catch): what a bad query ends with
    }
    return 0;
}
