#include "broker_fixture.h"

#include <utility>

namespace {

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride);
Qualifier Abstract : boolean = false, Scope(class), Flavor(Restricted);
Qualifier EmbeddedInstance : string = null, Scope(property);

[Abstract] class Test_Base { [Key] string Name; uint16 Level; };

class Test_Thing : Test_Base {
    boolean Flag; char16 Letter; string Text; datetime When;
    uint8 U8; uint16 U16; uint32 U32; uint64 U64; sint8 S8; sint16 S16; sint32 S32; sint64 S64;
    real32 R32; real64 R64;
    Test_Thing REF Other;
    [EmbeddedInstance("Test_Thing")] string Inner;
    boolean Flags[]; char16 Letters[]; string Texts[]; datetime Times[];
    uint8 U8s[]; uint16 U16s[]; uint32 U32s[]; uint64 U64s[]; sint8 S8s[]; sint16 S16s[]; sint32 S32s[]; sint64 S64s[];
    real32 R32s[]; real64 R64s[];
    [EmbeddedInstance("Test_Thing")] string Inners[];
};

class Test_Keys {
    [Key] string Text; [Key] boolean Flag; [Key] uint32 U32; [Key] uint64 U64; [Key] sint8 S8; [Key] datetime When;
    [Key] Test_Thing REF Thing; string Other;
};

class Test_Standard { uint16 Level = 7; string Words[] = {"a", NULL}; datetime When = "00000001000000.000000:000"; };
)";

} // namespace

std::string textOf(const CMPIString* string) {
    if (!string) return "(none)";
    return string->ft->getCharPtr(string, nullptr);
}

BrokerTest::BrokerTest() {
    classes.loadText("root/test", mof);
    start();
}

BrokerTest::~BrokerTest() = default;

void BrokerTest::start(cimhost::BrokerOptions options) {
    scope.reset();
    options.log = [this](cimhost::LogLevel, std::string_view text) {
        const std::lock_guard lock(logMutex);
        logged.emplace_back(text);
    };
    broker = std::make_unique<cimhost::Broker>(classes, std::move(options));
    cmpi = broker->table();
    scope.emplace(*broker);
}

std::vector<std::string> BrokerTest::messages() {
    const std::lock_guard lock(logMutex);
    return logged;
}

CMPIObjectPath* BrokerTest::path(const char* className, const char* nameSpace) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    CMPIObjectPath* made = cmpi->eft->newObjectPath(cmpi, nameSpace, className, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    return made;
}

CMPIInstance* BrokerTest::instance(const char* className, const char* nameSpace) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    CMPIInstance* made = cmpi->eft->newInstance(cmpi, path(className, nameSpace), &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    return made;
}

CMPIString* BrokerTest::string(const char* text) { return cmpi->eft->newString(cmpi, text, nullptr); }

CMPIArray* BrokerTest::array(CMPICount size, CMPIType type) { return cmpi->eft->newArray(cmpi, size, type, nullptr); }

CMPIDateTime* BrokerTest::dateTime(const char* text) { return cmpi->eft->newDateTimeFromChars(cmpi, text, nullptr); }

CMPIArgs* BrokerTest::arguments() { return cmpi->eft->newArgs(cmpi, nullptr); }

CMPIrc BrokerTest::set(const CMPIInstance* object, const char* name, const void* variable, CMPIType type) {
    return object->ft->setProperty(object, name, at(variable), type).rc;
}

CMPIData BrokerTest::get(const CMPIInstance* object, const char* name, CMPIrc expected) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    const CMPIData data = object->ft->getProperty(object, name, &status);
    EXPECT_EQ(status.rc, expected) << name;
    return data;
}

CMPIrc BrokerTest::set(CMPIObjectPath* object, const char* name, const void* variable, CMPIType type) {
    return object->ft->addKey(object, name, at(variable), type).rc;
}

CMPIData BrokerTest::get(const CMPIObjectPath* object, const char* name, CMPIrc expected) {
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    const CMPIData data = object->ft->getKey(object, name, &status);
    EXPECT_EQ(status.rc, expected) << name;
    return data;
}
