// A provider behind the C tables: how a server's calls reach it, what comes back, and when it is cleaned up.

#include "CmpiAssociationMI.h"
#include "CmpiIndicationMI.h"
#include "CmpiInstanceMI.h"
#include "CmpiMethodMI.h"
#include "CmpiPropertyMI.h"
#include "CmpiProviderBase.h"
#include "wrapper_test.h"

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

/// What a test lets the provider do in every operation.
using Behaviour = std::function<CmpiStatus()>;

/// Serves all five interfaces; notes what it was called with.
class FullProvider : public CmpiInstanceMI,
                     public CmpiAssociationMI,
                     public CmpiMethodMI,
                     public CmpiPropertyMI,
                     public CmpiIndicationMI {
public:
    FullProvider(const CmpiBroker& server, const CmpiContext& context)
        : CmpiBaseMI(server, context), CmpiInstanceMI(server, context), CmpiAssociationMI(server, context),
          CmpiMethodMI(server, context), CmpiPropertyMI(server, context), CmpiIndicationMI(server, context) {}

    std::string seen;
    Behaviour behaviour = [] { return CmpiStatus(CMPI_RC_OK); };

    CmpiStatus enumInstanceNames(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p) override {
        return note(c, r, p, "enumInstanceNames");
    }
    CmpiStatus enumInstances(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char** l) override {
        return note(c, r, p, "enumInstances " + list(l));
    }
    CmpiStatus getInstance(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char** l) override {
        return note(c, r, p, "getInstance " + list(l));
    }
    CmpiStatus createInstance(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p,
                              const CmpiInstance& i) override {
        return note(c, r, p, "createInstance " + name(i));
    }
    CmpiStatus setInstance(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const CmpiInstance& i,
                           const char** l) override {
        return note(c, r, p, "setInstance " + name(i) + " " + list(l));
    }
    CmpiStatus deleteInstance(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p) override {
        return note(c, r, p, "deleteInstance");
    }
    CmpiStatus execQuery(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* query,
                         const char* language) override {
        return note(c, r, p, std::string("execQuery ") + query + " " + language);
    }
    CmpiStatus associators(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* a, const char* t,
                           const char* o, const char* x, const char** l) override {
        return note(c, r, p, std::string("associators ") + a + t + o + x + " " + list(l));
    }
    CmpiStatus associatorNames(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* a,
                               const char* t, const char* o, const char* x) override {
        return note(c, r, p, std::string("associatorNames ") + a + t + o + x);
    }
    CmpiStatus references(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* t, const char* o,
                          const char** l) override {
        return note(c, r, p, std::string("references ") + t + o + " " + list(l));
    }
    CmpiStatus referenceNames(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* t,
                              const char* o) override {
        return note(c, r, p, std::string("referenceNames ") + t + o);
    }
    CmpiStatus invokeMethod(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* method,
                            const CmpiArgs& in, CmpiArgs& out) override {
        out.setArg("Out", in.getArg("In"));
        return note(c, r, p, std::string("invokeMethod ") + method);
    }
    CmpiStatus setProperty(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* n,
                           const CmpiData& d) override {
        return note(c, r, p, std::string("setProperty ") + n + " " + std::to_string(d.getUint16()));
    }
    CmpiStatus getProperty(const CmpiContext& c, CmpiResult& r, const CmpiObjectPath& p, const char* n) override {
        return note(c, r, p, std::string("getProperty ") + n);
    }
    CmpiStatus authorizeFilter(const CmpiContext& c, const CmpiSelectExp& f, const char* cls, const CmpiObjectPath& p,
                               const char* user) override {
        return noteFilter(c, f, p, std::string("authorizeFilter ") + cls + " " + user);
    }
    CmpiStatus mustPoll(const CmpiContext& c, const CmpiSelectExp& f, const char* cls,
                        const CmpiObjectPath& p) override {
        return noteFilter(c, f, p, std::string("mustPoll ") + cls);
    }
    CmpiStatus activateFilter(const CmpiContext& c, const CmpiSelectExp& f, const char* cls, const CmpiObjectPath& p,
                              CmpiBoolean first) override {
        return noteFilter(c, f, p, std::string("activateFilter ") + cls + " " + std::to_string(first));
    }
    CmpiStatus deActivateFilter(const CmpiContext& c, const CmpiSelectExp& f, const char* cls, const CmpiObjectPath& p,
                                CmpiBoolean last) override {
        return noteFilter(c, f, p, std::string("deActivateFilter ") + cls + " " + std::to_string(last));
    }
    CmpiStatus enableIndications(const CmpiContext& c) override { return note(c, "enableIndications"); }
    CmpiStatus disableIndications(const CmpiContext& c) override { return note(c, "disableIndications"); }

private:
    CmpiStatus note(const CmpiContext& context, const std::string& what) {
        seen = what + (context.isNull() ? " without context" : "");
        return behaviour();
    }
    CmpiStatus note(const CmpiContext& context, CmpiResult& result, const CmpiObjectPath& path,
                    const std::string& what) {
        result.returnDone();
        return note(context, what + " on " + path.getClassName().charPtr());
    }
    CmpiStatus noteFilter(const CmpiContext& context, const CmpiSelectExp& filter, const CmpiObjectPath& path,
                          const std::string& what) {
        return note(context,
                    what + (filter.isNull() ? " without filter" : "") + " on " + path.getClassName().charPtr());
    }
    static std::string list(const char** properties) { return properties ? properties[0] : "all"; }
    static std::string name(const CmpiInstance& instance) { return instance.getObjectPath().getNameSpace().charPtr(); }
};

/// All interface structs of one provider, as its factories hand them out.
struct Interfaces {
    explicit Interfaces(CmpiBaseMI* provider)
        : instance{provider, nullptr}, association{provider, nullptr}, method{provider, nullptr},
          property{provider, nullptr}, indication{provider, nullptr} {}

    CMPIInstanceMI instance;
    CMPIAssociationMI association;
    CMPIMethodMI method;
    CMPIPropertyMI property;
    CMPIIndicationMI indication;
};

class DriverTest : public WrapperTest {
protected:
    DriverTest() : full(CmpiBroker(&plainBroker.broker), CmpiContext(nullptr)), mi(&full) {
        const CMPIValue zero = {};
        in->ft->addArg(in, "In", &zero, CMPI_uint16);
    }

    /// Every driver with the arguments that a server would give.
    std::vector<std::function<CMPIStatus()>> drivers(Interfaces& of) {
        return {
            [&] { return CmpiInstanceMI::driveEnumInstanceNames(&of.instance, context, result, path); },
            [&] { return CmpiInstanceMI::driveEnumInstances(&of.instance, context, result, path, nullptr); },
            [&] { return CmpiInstanceMI::driveGetInstance(&of.instance, context, result, path, properties); },
            [&] { return CmpiInstanceMI::driveCreateInstance(&of.instance, context, result, path, instance); },
            [&] { return CmpiInstanceMI::driveSetInstance(&of.instance, context, result, path, instance, properties); },
            [&] { return CmpiInstanceMI::driveDeleteInstance(&of.instance, context, result, path); },
            [&] { return CmpiInstanceMI::driveExecQuery(&of.instance, context, result, path, "SELECT", "WQL"); },
            [&] {
                return CmpiAssociationMI::driveAssociators(&of.association, context, result, path, "a", "t", "o", "x",
                                                           properties);
            },
            [&] {
                return CmpiAssociationMI::driveAssociatorNames(&of.association, context, result, path, "a", "t", "o",
                                                               "x");
            },
            [&] {
                return CmpiAssociationMI::driveReferences(&of.association, context, result, path, "t", "o", nullptr);
            },
            [&] { return CmpiAssociationMI::driveReferenceNames(&of.association, context, result, path, "t", "o"); },
            [&] { return CmpiMethodMI::driveInvokeMethod(&of.method, context, result, path, "Install", in, out); },
            [&] { return CmpiPropertyMI::driveSetProperty(&of.property, context, result, path, "Speed", seven()); },
            [&] { return CmpiPropertyMI::driveGetProperty(&of.property, context, result, path, "Speed"); },
            [&] {
                return CmpiIndicationMI::driveAuthorizeFilter(&of.indication, context, &filter, "Alert", path, "root");
            },
            [&] { return CmpiIndicationMI::driveMustPoll(&of.indication, context, &filter, "Alert", path); },
            [&] { return CmpiIndicationMI::driveActivateFilter(&of.indication, context, &filter, "Alert", path, 1); },
            [&] { return CmpiIndicationMI::driveDeActivateFilter(&of.indication, context, &filter, "Alert", path, 0); },
            [&] { return CmpiIndicationMI::driveEnableIndications(&of.indication, context); },
            [&] { return CmpiIndicationMI::driveDisableIndications(&of.indication, context); },
        };
    }

    static CMPIData seven() {
        CMPIValue value = {};
        value.uint16 = 7;
        return dataOf(CMPI_uint16, value);
    }

    FullProvider full;
    Interfaces mi;
    CMPIContext* context = plainContext();
    CMPIResult* result = plainResult();
    CMPIObjectPath* path = plainPath("root/test", "Class");
    CMPIInstance* instance = plainInstance(plainPath("instance", "Class"));
    CMPIArgs* in = plainArgs();
    CMPIArgs* out = plainArgs();
    CMPISelectExp filter{};
    const char* list[2] = {"Speed", nullptr};
    const char** properties = list;
};

TEST_F(DriverTest, EverySlotReachesItsOperationWithItsArguments) {
    const std::vector<std::string> expected = {
        "enumInstanceNames on Class",
        "enumInstances all on Class",
        "getInstance Speed on Class",
        "createInstance instance on Class",
        "setInstance instance Speed on Class",
        "deleteInstance on Class",
        "execQuery SELECT WQL on Class",
        "associators atox Speed on Class",
        "associatorNames atox on Class",
        "references to all on Class",
        "referenceNames to on Class",
        "invokeMethod Install on Class",
        "setProperty Speed 7 on Class",
        "getProperty Speed on Class",
        "authorizeFilter Alert root on Class",
        "mustPoll Alert on Class",
        "activateFilter Alert 1 on Class",
        "deActivateFilter Alert 0 on Class",
        "enableIndications",
        "disableIndications",
    };
    std::vector<std::string> seen;
    for (const auto& driver : drivers(mi)) {
        EXPECT_EQ(driver().rc, CMPI_RC_OK);
        seen.push_back(full.seen);
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(DriverTest, OutArgumentsAreTheServersOwn) {
    CmpiMethodMI::driveInvokeMethod(&mi.method, context, result, path, "Install", in, out);
    const ServerArgs given(out);
    ASSERT_EQ(given.getArgCount(), 1u);
    CmpiString name;
    given.getArg(0, &name);
    EXPECT_STREQ(name.charPtr(), "Out");
}

TEST_F(DriverTest, ReturnedStatusIsTheAnswer) {
    CMPIString* message = plainString("no such adapter");
    full.behaviour = [&] { return CmpiStatus(CMPIStatus{CMPI_RC_ERR_NOT_FOUND, message}); };
    for (const auto& driver : drivers(mi)) {
        CMPIStatus answer = driver();
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.msg, message);
    }
}

TEST_F(DriverTest, ThrownStatusIsTheAnswerWithItsMessage) {
    CMPIString* message = plainString("no such adapter");
    full.behaviour = [&]() -> CmpiStatus { throw CmpiStatus(CMPIStatus{CMPI_RC_ERR_NOT_FOUND, message}); };
    for (const auto& driver : drivers(mi)) {
        CMPIStatus answer = driver();
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(answer.msg, message);
    }
}

TEST_F(DriverTest, OtherExceptionsPassThrough) {
    full.behaviour = []() -> CmpiStatus { throw std::runtime_error("broken"); };
    for (const auto& driver : drivers(mi))
        EXPECT_THROW(driver(), std::runtime_error);
    full.behaviour = []() -> CmpiStatus { throw CMPIStatus{CMPI_RC_ERR_FAILED, nullptr}; };
    for (const auto& driver : drivers(mi))
        EXPECT_THROW(driver(), CMPIStatus);
}

TEST_F(DriverTest, DriversDoNotCallReturnDone) {
    CmpiInstanceMI::driveEnumInstanceNames(&mi.instance, context, result, path);
    EXPECT_EQ(server.count("returnDone"), 1) << "the provider's own call is the only one";
}

/// Serves all five interfaces by their defaults.
class DefaultProvider : public CmpiInstanceMI,
                        public CmpiAssociationMI,
                        public CmpiMethodMI,
                        public CmpiPropertyMI,
                        public CmpiIndicationMI {
public:
    explicit DefaultProvider(const CmpiBroker& server)
        : CmpiBaseMI(server, CmpiContext(nullptr)), CmpiInstanceMI(server, CmpiContext(nullptr)),
          CmpiAssociationMI(server, CmpiContext(nullptr)), CmpiMethodMI(server, CmpiContext(nullptr)),
          CmpiPropertyMI(server, CmpiContext(nullptr)), CmpiIndicationMI(server, CmpiContext(nullptr)) {}
};

TEST_F(DriverTest, OperationsThatAreNotOverriddenAreNotSupported) {
    DefaultProvider defaults{CmpiBroker(&plainBroker.broker)};
    Interfaces interfaces(&defaults);
    for (const auto& driver : drivers(interfaces)) {
        CMPIStatus answer = driver();
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(answer.msg, nullptr);
    }
    EXPECT_EQ(server.count("returnDone"), 0);
    EXPECT_EQ(defaults.initialize(CmpiContext(context)).rc(), CMPI_RC_OK);
}

TEST_F(DriverTest, AMissingInterfaceIsNotSupported) {
    Interfaces interfaces(&provider);
    for (const auto& driver : drivers(interfaces))
        EXPECT_EQ(driver().rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

// Clean-up

/// What became of a provider that may be gone.
struct Fate {
    int cleanups = 0;
    bool deleted = false;
    CmpiBroker* brokerAtTheEnd = nullptr;
};

class UnloadableProvider : public CmpiInstanceMI, public CmpiIndicationMI {
public:
    UnloadableProvider(const CmpiBroker& server, Fate& itsFate)
        : CmpiBaseMI(server, CmpiContext(nullptr)), CmpiInstanceMI(server, CmpiContext(nullptr)),
          CmpiIndicationMI(server, CmpiContext(nullptr)), fate(itsFate) {}
    ~UnloadableProvider() override {
        fate.deleted = true;
        fate.brokerAtTheEnd = broker;
    }

    CmpiStatus cleanup(CmpiContext&) override {
        ++fate.cleanups;
        return cleanupAnswer();
    }
    int isUnloadable() const override { return unloadable; }

    Fate& fate;
    Behaviour cleanupAnswer = [] { return CmpiStatus(CMPI_RC_OK); };
    int unloadable = 1;
};

class CleanupTest : public WrapperTest {
protected:
    CleanupTest() {
        anchor.setBaseMI(unloadable);
        unloadable->setProviderBase(&anchor);
        for (int i = 0; i < 4; ++i)
            anchor.incUseCount();
    }

    ~CleanupTest() override {
        if (!fate.deleted) std::unique_ptr<CmpiBaseMI>(unloadable).reset();
    }

    CMPIStatus cleanUp(CMPIBoolean terminating) {
        return CmpiBaseMI::driveBaseCleanup(&mi, plainContext(), terminating);
    }

    std::vector<int> cleanUpFourTimes(CMPIBoolean terminating) {
        std::vector<int> codes;
        for (int i = 0; i < 4; ++i)
            codes.push_back(cleanUp(terminating).rc);
        return codes;
    }

    int usesLeft() {
        anchor.incUseCount();
        return anchor.decUseCount();
    }

    Fate fate;
    CmpiProviderBase anchor;
    UnloadableProvider* unloadable =
        std::make_unique<UnloadableProvider>(CmpiBroker(&plainBroker.broker), fate).release();
    CMPIInstanceMI mi{static_cast<CmpiBaseMI*>(unloadable), nullptr};
};

TEST_F(CleanupTest, IdleServerUnloadsWithTheLastInterface) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(cleanUp(0).rc, CMPI_RC_OK);
        EXPECT_EQ(fate.cleanups, 0);
    }
    EXPECT_EQ(cleanUp(0).rc, CMPI_RC_OK);
    EXPECT_EQ(fate.cleanups, 1);
    EXPECT_TRUE(fate.deleted);
    EXPECT_EQ(anchor.getBaseMI(), nullptr);
}

TEST_F(CleanupTest, IdleServerIsRefusedByCleanup) {
    unloadable->cleanupAnswer = [] { return CmpiStatus(CMPI_RC_DO_NOT_UNLOAD, "busy"); };
    EXPECT_EQ(cleanUp(0).rc, CMPI_RC_OK);
    EXPECT_EQ(cleanUp(0).rc, CMPI_RC_OK);
    EXPECT_EQ(cleanUp(0).rc, CMPI_RC_OK);
    CMPIStatus answer = cleanUp(0);
    EXPECT_EQ(answer.rc, CMPI_RC_DO_NOT_UNLOAD);
    EXPECT_STREQ(CmpiStatus(answer).msg(), "busy");
    EXPECT_FALSE(fate.deleted);
    EXPECT_EQ(usesLeft(), 1);
    EXPECT_EQ(anchor.getBaseMI(), unloadable);
}

TEST_F(CleanupTest, TerminatingServerIsNotDelayedByThatAnswer) {
    unloadable->cleanupAnswer = [] { return CmpiStatus(CMPI_RC_DO_NOT_UNLOAD); };
    EXPECT_EQ(cleanUpFourTimes(1), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_TRUE(fate.deleted);
}

TEST_F(CleanupTest, IdleServerIsRefusedByAProviderThatIsNotUnloadable) {
    unloadable->unloadable = 0;
    EXPECT_EQ(cleanUpFourTimes(0), (std::vector<int>(4, CMPI_RC_ERR_NOT_SUPPORTED)));
    EXPECT_EQ(fate.cleanups, 0);
    EXPECT_FALSE(fate.deleted);
    EXPECT_EQ(usesLeft(), 4);
}

TEST_F(CleanupTest, TerminatingServerDoesNotAskWhetherTheProviderIsUnloadable) {
    unloadable->unloadable = 0;
    EXPECT_EQ(cleanUpFourTimes(1), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_TRUE(fate.deleted);
}

TEST_F(CleanupTest, TerminatingServerIsRefusedByAFailure) {
    unloadable->cleanupAnswer = [] { return CmpiStatus(CMPI_RC_ERR_FAILED, "thread hangs"); };
    cleanUp(1);
    cleanUp(1);
    cleanUp(1);
    CMPIStatus answer = cleanUp(1);
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
    EXPECT_STREQ(CmpiStatus(answer).msg(), "thread hangs");
    EXPECT_FALSE(fate.deleted);
    EXPECT_EQ(usesLeft(), 1);
}

TEST_F(CleanupTest, StatusThrownByCleanupIsTheAnswerAndTheProviderStays) {
    unloadable->cleanupAnswer = []() -> CmpiStatus { throw CmpiStatus(CMPI_RC_ERR_ACCESS_DENIED); };
    EXPECT_EQ(cleanUpFourTimes(0), (std::vector<int>{0, 0, 0, CMPI_RC_ERR_ACCESS_DENIED}));
    EXPECT_FALSE(fate.deleted);
    EXPECT_EQ(usesLeft(), 0);
    EXPECT_EQ(anchor.getBaseMI(), unloadable);
}

TEST_F(CleanupTest, ProviderWithoutAnchorIsLeftAlone) {
    unloadable->setProviderBase(nullptr);
    EXPECT_EQ(cleanUpFourTimes(0), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_FALSE(fate.deleted);
    EXPECT_EQ(unloadable->getProviderBase(), nullptr);
}

TEST_F(CleanupTest, BrokerIsThereUntilTheDestructorEnds) {
    cleanUpFourTimes(0);
    EXPECT_NE(fate.brokerAtTheEnd, nullptr);
}

} // namespace
