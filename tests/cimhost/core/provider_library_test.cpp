// Provider libraries from elsewhere: how they are loaded, called and cleaned up, and what becomes of their failures.
#include "broker_fixture.h"

#include <dlfcn.h>

#include <atomic>
#include <thread>

#include "cimhost/provider/provider_library.h"
#include "tests/becomes_true.h"

using namespace cimhost;

namespace {

class ProviderLibraryTest : public BrokerTest {
protected:
    ProviderLibraryTest() { takeEvents(); }

    void load(const char* providerName, const char* file = TEST_PROVIDER) {
        library.emplace(file, providerName, *broker);
    }

    // Calls a function of the test provider that is none of the CMPI's.
    template <typename Function>
    static Function* exported(const char* name) {
        void* handle = dlopen(TEST_PROVIDER, RTLD_NOW);
        return reinterpret_cast<Function*>(dlsym(handle, name));
    }
    static std::string takeEvents() { return exported<const char*()>("takeEvents")(); }

    const ObjectPathObject& classPath() { return *scope->make().path("root/test", "Test_Thing"); }
    const ObjectPathObject& named(const char* name) {
        ObjectPathObject* made = scope->make().path("root/test", "Test_Thing");
        set(made, "Name", name, CMPI_chars);
        return *made;
    }
    const InstanceObject& instanceNamed(const char* name) {
        InstanceObject* made = scope->make().instance(classPath());
        set(made, "Name", name, CMPI_chars);
        return *made;
    }
    std::string textIn(const Outcome& outcome, const char* property = "Text") {
        EXPECT_TRUE(outcome.ok()) << outcome.error->description;
        if (outcome.instances.size() != 1) return "not one instance";
        return textOf(get(outcome.instances.front(), property).value.string);
    }
    static std::string pathsIn(const Outcome& outcome) {
        EXPECT_TRUE(outcome.ok()) << outcome.error->description;
        std::string all;
        for (const ObjectPathObject* found : outcome.paths) {
            found->appendText(all);
            all += '\n';
        }
        return all;
    }
    static std::string errorText(const std::optional<CimError>& error) {
        return error ? std::to_string(error->code) + " " + error->description : "none";
    }
    static std::string errorIn(const Outcome& outcome) { return errorText(outcome.error); }
    FilterCall filterCall() {
        return {*SelectExpObject::make(scope->arena(), "SELECT", "WQL"), baseClass, classPath(), owner};
    }
    std::string loadError(const char* providerName, const std::string& file) {
        try {
            ProviderLibrary refused(file, providerName, *broker);
        } catch (const ProviderLoadError& error) {
            return error.what();
        }
        return "loaded";
    }

    const std::string baseClass = "Test_Base";
    const std::string owner = "guest";
    std::optional<ProviderLibrary> library;
    const CallContext context{.principal = "guest", .nameSpace = "root/test", .flags = 6, .acceptLanguage = "de"};
    const CallContext plain{.principal = "guest", .nameSpace = {}, .flags = 0, .acceptLanguage = {}};
};

} // namespace

TEST_F(ProviderLibraryTest, NamesAreEnumerated) {
    load("Whole");
    EXPECT_EQ(pathsIn(library->enumerateInstanceNames(*scope, context, classPath())),
              "root/test:Test_Thing.Name=\"one\"\nroot/test:Test_Thing.Name=\"two\"\n");
}

TEST_F(ProviderLibraryTest, TheContextSaysWhoAsksForWhat) {
    load("Whole");
    const PropertyList two = std::vector<std::string>{"Name", "Text"};
    const PropertyList none = std::vector<std::string>{};
    EXPECT_EQ(textIn(library->enumerateInstances(*scope, context, classPath(), two)),
              "6 guest root/test de - +Name +Text");
    EXPECT_EQ(textIn(library->enumerateInstances(*scope, context, classPath(), none)), "6 guest root/test de -");
    EXPECT_EQ(textIn(library->enumerateInstances(*scope, plain, classPath(), std::nullopt)), "0 guest - - - all");
}

TEST_F(ProviderLibraryTest, InstancesAreReadMadeChangedAndDeleted) {
    load("Whole");
    EXPECT_EQ(textIn(library->getInstance(*scope, context, named("x"), std::nullopt)), "found");
    EXPECT_EQ(pathsIn(library->createInstance(*scope, context, classPath(), instanceNamed("new"))),
              "root/test:Test_Thing.Name=\"new\"\n");
    takeEvents();
    EXPECT_TRUE(library->modifyInstance(*scope, context, named("x"), instanceNamed("x"), PropertyList{{"Text"}}).ok());
    EXPECT_TRUE(library->deleteInstance(*scope, context, named("x")).ok());
    EXPECT_EQ(takeEvents(), "modify +Text delete x ");
}

TEST_F(ProviderLibraryTest, AssociationsAreAskedWithTheirFilters) {
    load("Whole");
    const AssociationFilter full{"A", "B", "c", "d"};
    EXPECT_EQ(textIn(library->associators(*scope, plain, classPath(), full, PropertyList{{"Name"}})),
              "A B c d (0 guest - - c) +Name");
    EXPECT_EQ(textIn(library->associators(*scope, plain, classPath(), {}, std::nullopt)),
              "- - - - (0 guest - - -) all");
    EXPECT_EQ(pathsIn(library->associatorNames(*scope, plain, classPath(), full)),
              "root/test:Test_Thing.Name=\"A B c d\"\n");
    EXPECT_EQ(textIn(library->references(*scope, plain, classPath(), full, std::nullopt)), "A c all");
}

TEST_F(ProviderLibraryTest, AFunctionThatIsLeftOutIsNotSupported) {
    load("Whole");
    EXPECT_EQ(errorIn(library->referenceNames(*scope, plain, classPath(), {})), "7 ");
}

TEST_F(ProviderLibraryTest, AMethodGivesItsValueAndArguments) {
    load("Whole");
    ArgsObject* in = scope->make().arguments();
    in->add("Text", at("hello"), CMPI_chars);
    const Outcome outcome = library->invokeMethod(*scope, context, classPath(), "Do", *in);
    ASSERT_TRUE(outcome.ok());
    ASSERT_TRUE(outcome.returnValue);
    EXPECT_EQ(outcome.returnValue->type, CMPI_uint32);
    EXPECT_EQ(outcome.returnValue->value.uint32, 5U);
    ASSERT_NE(outcome.outArguments, nullptr);
    EXPECT_EQ(textOf(outcome.outArguments->argument("Echo")->data.value.string), "hello");
    EXPECT_EQ(textOf(outcome.outArguments->argument("Method")->data.value.string), "Do");
    EXPECT_FALSE(library->invokeMethod(*scope, context, classPath(), "Void", *in).returnValue);
}

TEST_F(ProviderLibraryTest, SubscriptionsReachTheProvider) {
    load("Whole");
    EXPECT_FALSE(library->activateFilter(*scope, filterCall(), true));
    EXPECT_FALSE(library->enableIndications(*scope));
    EXPECT_EQ(errorText(library->deactivateFilter(*scope, filterCall(), false)), "2 not yours");
    EXPECT_EQ(takeEvents(), "madeIndication activate(SELECT,Test_Base,Test_Thing,1) enable: 0  - - - "
                            "deactivate(SELECT,Test_Base,Test_Thing,0) ");
}

TEST_F(ProviderLibraryTest, FailuresBecomeCimErrors) {
    load("Whole");
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("missing"), {})), "6 no such thing");
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("silent"), {})), "6 ");
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("handle"), {})),
              "1 the provider failed with status 60");
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("system"), {})), "1 disk is full");
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("kind"), {})), "7 ");
}

TEST_F(ProviderLibraryTest, ObjectsReturnedBeforeAFailureAreKept) {
    load("Whole");
    const Outcome outcome = library->getInstance(*scope, context, named("late"), {});
    EXPECT_EQ(errorIn(outcome), "1 after all");
    EXPECT_EQ(outcome.instances.size(), 1U);
}

TEST_F(ProviderLibraryTest, FactoriesAreCalledWhenFirstNeededAndOnce) {
    load("Whole");
    EXPECT_EQ(takeEvents(), "") << "loading makes nothing";
    library->enumerateInstanceNames(*scope, context, classPath());
    library->getInstance(*scope, context, named("x"), {});
    EXPECT_EQ(takeEvents(), "madeInstance ");
    library->associatorNames(*scope, context, classPath(), {});
    EXPECT_EQ(takeEvents(), "madeAssociation ");
}

TEST_F(ProviderLibraryTest, AMissingFactoryIsNotSupported) {
    load("InstancesOnly");
    EXPECT_TRUE(library->enumerateInstanceNames(*scope, context, classPath()).ok());
    EXPECT_EQ(errorIn(library->associatorNames(*scope, context, classPath(), {})),
              "7 the provider InstancesOnly lacks InstancesOnly_Create_AssociationMI");
    const Outcome outcome = library->invokeMethod(*scope, context, classPath(), "Do", *scope->make().arguments());
    EXPECT_EQ(errorIn(outcome), "7 the provider InstancesOnly lacks InstancesOnly_Create_MethodMI");
    EXPECT_NE(outcome.outArguments, nullptr);
}

TEST_F(ProviderLibraryTest, AFailingFactoryIsTriedAgainAtTheNextRequest) {
    load("Failing");
    EXPECT_EQ(errorIn(library->enumerateInstanceNames(*scope, context, classPath())),
              "1 Failing_Create_InstanceMI failed: no hardware");
    EXPECT_EQ(errorIn(library->enumerateInstanceNames(*scope, context, classPath())),
              "1 Failing_Create_InstanceMI failed: status 2");
    EXPECT_TRUE(library->enumerateInstanceNames(*scope, context, classPath()).ok());
    EXPECT_EQ(takeEvents(), "tried tried tried ");
}

TEST_F(ProviderLibraryTest, AFactoryThatGivesNothingFails) {
    load("Nothing");
    EXPECT_EQ(errorIn(library->enumerateInstanceNames(*scope, context, classPath())),
              "1 Nothing_Create_InstanceMI failed: it gave no interface");
}

TEST_F(ProviderLibraryTest, ExceptionsBecomeFailures) {
    load("Throwing", THROWING_PROVIDER);
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("x"), {})), "1 the provider failed: tree is broken");
    EXPECT_EQ(errorIn(library->enumerateInstanceNames(*scope, context, classPath())),
              "1 the provider failed with an unknown exception");
    library->shutdown();
    EXPECT_EQ(messages(),
              std::vector<std::string>{"Throwing: clean-up of InstanceMI failed: the provider failed: still busy"});
    load("ThrowingFactory", THROWING_PROVIDER);
    EXPECT_EQ(errorIn(library->getInstance(*scope, context, named("x"), {})),
              "1 ThrowingFactory_Create_InstanceMI failed: the provider failed: no tree");
}

TEST_F(ProviderLibraryTest, ALibraryThatCannotBeLoadedIsReportedWithTheReason) {
    const std::string missing = loadError("Whole", "/nowhere/libNothing.so");
    EXPECT_EQ(missing.find("cannot load the provider library \"/nowhere/libNothing.so\": "), 0U) << missing;
    EXPECT_NE(missing.find("No such file"), std::string::npos) << missing;
    const std::string noLibrary = loadError("Whole", __FILE__);
    EXPECT_EQ(noLibrary.find("cannot load the provider library \""), 0U) << noLibrary;
    EXPECT_NE(loadError("Whole", "libc.so.6").find("cannot load"), std::string::npos)
        << "the loader's own folders are not searched";
}

TEST_F(ProviderLibraryTest, ALibraryWithoutFactoriesIsRefused) {
    EXPECT_EQ(loadError("Whole", NO_PROVIDER),
              std::string("the provider library \"") + NO_PROVIDER +
                  "\" has none of the factories of \"Whole\": Whole_Create_InstanceMI or the like for Association, "
                  "Method, Indication");
    EXPECT_NE(loadError("Other", TEST_PROVIDER).find("has none of the factories of \"Other\""), std::string::npos);
}

TEST_F(ProviderLibraryTest, ShutdownCleansUpInterfacesInTheOrderOfServers) {
    load("Whole");
    library->activateFilter(*scope, filterCall(), true);
    library->invokeMethod(*scope, context, classPath(), "Do", *scope->make().arguments());
    library->associatorNames(*scope, context, classPath(), {});
    library->enumerateInstanceNames(*scope, context, classPath());
    takeEvents();
    library->shutdown();
    EXPECT_EQ(takeEvents(), "instance association method indication ") << "all, though one of them fails";
    EXPECT_EQ(messages(), std::vector<std::string>{"Whole: clean-up of AssociationMI failed: not now"});
    library->shutdown();
    library.reset();
    EXPECT_EQ(takeEvents(), "") << "once";
}

TEST_F(ProviderLibraryTest, InterfacesThatWereNeverMadeAreNotCleanedUp) {
    load("Whole");
    library->enumerateInstanceNames(*scope, context, classPath());
    takeEvents();
    library.reset();
    EXPECT_EQ(takeEvents(), "instance ");
}

TEST_F(ProviderLibraryTest, CallsAfterShutdownFail) {
    load("Whole");
    library->shutdown();
    EXPECT_EQ(errorIn(library->enumerateInstanceNames(*scope, context, classPath())),
              "1 the provider Whole has been shut down");
    EXPECT_EQ(takeEvents(), "");
}

TEST_F(ProviderLibraryTest, ThreadsThatOutliveTheCleanUpAreReported) {
    load("Lingering");
    library->enumerateInstanceNames(*scope, context, classPath());
    library->shutdown();
    EXPECT_EQ(messages(),
              std::vector<std::string>{"Lingering: 1 threads of the provider still run after its clean-up"});
    exported<void()>("endThread")();
    EXPECT_TRUE(tests::becomesTrue([&] { return broker->runningThreads() == 0; }));
}

TEST_F(ProviderLibraryTest, SeveralThreadsCallAtOnce) {
    load("Whole");
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                RequestScope request(*broker);
                const ObjectPathObject& asked = *request.make().path("root/test", "Test_Thing");
                const Outcome names = library->enumerateInstanceNames(request, context, asked);
                const Outcome instances = library->enumerateInstances(request, context, asked, std::nullopt);
                if (names.paths.size() == 2 && instances.instances.size() == 1) ++good;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 200);
    EXPECT_EQ(takeEvents(), "madeInstance ");
    EXPECT_EQ(broker->fatalUnattachedCalls(), 0U);
}
