// The foreign server's own teeth: providers that do what some server would not forgive, each of them caught.
#include "objects.h"
#include "server.h"
#include "violations.h"

#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

namespace {

using cimhost::ContextObject;
using cimhost::ObjectPathObject;
using cimhost::RequestScope;
using cimhost::ResultCollector;
using cimhost::ResultKind;
using foreign_server::Server;
using foreign_server::takeViolations;

using Violations = std::vector<std::string>;

constexpr const char* nameSpace = "root/test";
constexpr const char* className = "Test_Thing";

/// A provider that does what a test tells it. Its broker is kept as providers do.
struct MiniProvider {
    struct Request {
        const CMPIContext* context;
        const CMPIResult* result;
        const CMPIObjectPath* path;
        const char** properties;
    };

    static inline const CMPIBroker* broker = nullptr;
    static inline std::function<CMPIStatus(const Request&)> serve;

    static CMPIStatus enumerate(CMPIInstanceMI*, const CMPIContext* context, const CMPIResult* result,
                                const CMPIObjectPath* path, const char** properties) {
        return serve({context, result, path, properties});
    }

    static CMPIInstanceMI* create(const CMPIBroker* given, const CMPIContext*, CMPIStatus*) {
        broker = given;
        static CMPIInstanceMIFT table = {200,     200,     "mini",  nullptr, nullptr, enumerate,
                                         nullptr, nullptr, nullptr, nullptr, nullptr};
        static CMPIInstanceMI interface = {nullptr, &table};
        return &interface;
    }

    static CMPIString* newString(const char* text) { return broker->eft->newString(broker, text, nullptr); }
    static CMPIObjectPath* newPath() { return broker->eft->newObjectPath(broker, nameSpace, className, nullptr); }
    static CMPIInstance* newInstance() { return broker->eft->newInstance(broker, newPath(), nullptr); }
    static CMPIStatus setText(CMPIInstance* instance, const char* name, CMPIString* text) {
        CMPIValue value{};
        value.string = text;
        return instance->ft->setProperty(instance, name, &value, CMPI_string);
    }
};

class ForeignServerTest : public testing::Test {
protected:
    using Request = MiniProvider::Request;

    ForeignServerTest() {
        classes.loadText(nameSpace, R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
class Test_Thing { [Key] string Name; uint16 Size; string Text; string Texts[]; };
)");
        takeViolations();
        host = std::make_unique<cimhost::Broker>(classes, hostOptions());
        server = std::make_unique<Server>(foreign_server::Host{host->table(), [this](const CMPIContext*& context) {
                                                                   auto scope = std::make_shared<RequestScope>(*host);
                                                                   context = ContextObject::make(scope->arena());
                                                                   return std::shared_ptr<void>(std::move(scope));
                                                               }});
        RequestScope scope(*host);
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        interface = server->offer(MiniProvider::create, &status);
    }

    cimhost::BrokerOptions hostOptions() {
        cimhost::BrokerOptions options;
        options.indicationSink = [this](std::string_view, const cimhost::InstanceObject&) {
            ++delivered;
            return CMPI_RC_OK;
        };
        return options;
    }

    /// One request, in which the provider does that.
    CMPIStatus ask(std::function<CMPIStatus(const Request&)> provider, const char** properties = nullptr) {
        MiniProvider::serve = std::move(provider);
        RequestScope scope(*host);
        ResultCollector collector(scope, ResultKind::instances);
        ObjectPathObject* path = scope.make().path(nameSpace, className);
        for (const char* name : {"Name", "Additional"}) {
            CMPIValue value{};
            value.uint32 = 5;
            path->setClassName("");
            path->addKey(name, &value, CMPI_uint32);
            path->setClassName(className);
        }
        const CMPIStatus status = interface->ft->enumerateInstances(interface, ContextObject::make(scope.arena()),
                                                                    &collector, path, properties);
        texts.clear();
        for (const cimhost::InstanceObject* instance : collector.instances) {
            const CMPIData* text = instance->value("Text");
            texts.emplace_back(text ? cimhost::StringObject::from(text->value.string)->text() : "none");
        }
        message = status.msg ? status.msg->ft->getCharPtr(status.msg, nullptr) : "";
        return status;
    }

    void does(const std::function<void(const Request&)>& act) {
        ask([&](const Request& request) {
            act(request);
            return CMPIStatus{CMPI_RC_OK, nullptr};
        });
    }

    static constexpr CMPIStatus ok = {CMPI_RC_OK, nullptr};

    cimhost::ClassRepository classes;
    std::unique_ptr<cimhost::Broker> host;
    std::unique_ptr<Server> server;
    CMPIInstanceMI* interface = nullptr;
    std::vector<std::string> texts;
    std::string message;
    int delivered = 0;
};

// With AddressSanitizer the memory of a dead object cannot even be read.
#ifdef FOREIGN_SERVER_WITH_ASAN
#define EXPECT_CAUGHT(statement, breach) EXPECT_DEATH(statement, "use-after-poison")
#else
#define EXPECT_CAUGHT(statement, breach)                                                                               \
    statement;                                                                                                         \
    EXPECT_EQ(takeViolations(), Violations{breach})
#endif

TEST_F(ForeignServerTest, HonestProviderIsServedWithoutABreach) {
    const CMPIStatus status = ask([](const Request& request) {
        CMPIInstance* instance = MiniProvider::newInstance();
        MiniProvider::setText(instance, "Text", MiniProvider::newString("a text"));
        request.result->ft->returnInstance(request.result, instance);
        request.result->ft->returnDone(request.result);
        return CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, MiniProvider::newString("the reason")};
    });
    EXPECT_EQ(status.rc, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(message, "the reason");
    EXPECT_EQ(texts, std::vector<std::string>{"a text"});
    EXPECT_EQ(takeViolations(), Violations());
}

TEST_F(ForeignServerTest, ReleasedStringIsDead) {
    does([](const Request&) {
        CMPIString* text = MiniProvider::newString("gone");
        text->ft->release(text);
        EXPECT_CAUGHT(text->ft->getCharPtr(text, nullptr),
                      "string.getCharPtr: use after the end of what it belongs to");
    });
}

TEST_F(ForeignServerTest, ReleasedStringAsAValueIsABreach) {
    does([](const Request&) {
        CMPIInstance* instance = MiniProvider::newInstance();
        CMPIString* text = MiniProvider::newString("gone");
        text->ft->release(text);
        EXPECT_EQ(MiniProvider::setText(instance, "Text", text).rc, CMPI_RC_ERR_INVALID_HANDLE);
    });
    EXPECT_EQ(takeViolations(), Violations{"CMPIInstance.setProperty: use of a string after its release"});
}

TEST_F(ForeignServerTest, TextDiesWithItsString) {
    does([](const Request&) {
        CMPIString* text = MiniProvider::newString("gone");
        const char* characters = text->ft->getCharPtr(text, nullptr);
        EXPECT_STREQ(characters, "gone");
        text->ft->release(text);
#ifdef FOREIGN_SERVER_WITH_ASAN
        EXPECT_DEATH(static_cast<void>(std::string(characters)), "use-after-poison");
#else
        EXPECT_STREQ(characters, "\xDB\xDB\xDB\xDB");
#endif
    });
}

TEST_F(ForeignServerTest, SecondReleaseIsABreach) {
    does([](const Request&) {
        CMPIString* text = MiniProvider::newString("gone");
        const CMPIStringFT table = *text->ft;
        EXPECT_EQ(table.release(text).rc, CMPI_RC_OK);
        EXPECT_EQ(table.release(text).rc, CMPI_RC_ERR_INVALID_HANDLE);
    });
    EXPECT_EQ(takeViolations(), Violations{"CMPIString.release: use of a string after its release"});
}

TEST_F(ForeignServerTest, PathThatIsKeptBeyondItsRequestIsABreach) {
    CMPIObjectPath* own = nullptr;
    const CMPIObjectPath* requests = nullptr;
    does([&](const Request& request) {
        own = MiniProvider::newPath();
        requests = request.path;
    });
    does([&](const Request&) {
        for (const CMPIObjectPath* path : {static_cast<const CMPIObjectPath*>(own), requests})
            EXPECT_EQ(MiniProvider::broker->eft->newInstance(MiniProvider::broker, path, nullptr), nullptr);
    });
    EXPECT_EQ(takeViolations(), Violations{"newInstance: use of an object path after its request's end (2 times)"});
    EXPECT_CAUGHT(own->ft->getClassName(own, nullptr), "path.getClassName: use after the end of what it belongs to");
}

TEST_F(ForeignServerTest, TextsAndListsOfACallDieWithIt) {
    const char* kept = nullptr;
    const char* properties[] = {"Name", nullptr};
    ask(
        [&](const Request& request) {
            kept = request.properties[0];
            EXPECT_STREQ(kept, "Name");
            return ok;
        },
        properties);
#ifndef FOREIGN_SERVER_WITH_ASAN
    EXPECT_STREQ(kept, "\xDB\xDB\xDB\xDB");
#else
    EXPECT_DEATH(static_cast<void>(std::string(kept)), "use-after-poison");
#endif
}

TEST_F(ForeignServerTest, NullWhereNoneMayBeIsABreach) {
    does([](const Request& request) {
        CMPIInstance* instance = MiniProvider::newInstance();
        const CMPIUint16 size = 1;
        const auto* value = reinterpret_cast<const CMPIValue*>(&size);
        EXPECT_EQ(instance->ft->setProperty(instance, nullptr, value, CMPI_uint16).rc, CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(instance->ft->setProperty(nullptr, "Size", value, CMPI_uint16).rc, CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_EQ(MiniProvider::broker->eft->newObjectPath(MiniProvider::broker, nullptr, className, nullptr), nullptr);
        EXPECT_EQ(request.result->ft->returnInstance(request.result, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    });
    EXPECT_EQ(takeViolations(),
              (Violations{"CMPIInstance.setProperty: null for the name", "CMPIInstance.setProperty: a null instance",
                          "newObjectPath: null for the namespace", "CMPIResult.returnInstance: a null instance"}));
}

TEST_F(ForeignServerTest, BrokerCopiedByValueIsABreach) {
    does([](const Request& request) {
        const CMPIBroker copy = *MiniProvider::broker;
        EXPECT_EQ(copy.eft->newString(&copy, "text", nullptr), nullptr);
        EXPECT_EQ(copy.bft->prepareAttachThread(&copy, request.context), nullptr);
    });
    EXPECT_EQ(takeViolations(), (Violations{"newString: the broker is not the one that was handed out",
                                            "prepareAttachThread: the broker is not the one that was handed out"}));
}

TEST_F(ForeignServerTest, ObjectsOfAnotherServerAndOfAnotherKindAreBreaches) {
    does([this](const Request& request) {
        RequestScope scope(*host);
        const CMPIObjectPath* foreign = scope.make().path(nameSpace, className);
        EXPECT_EQ(MiniProvider::broker->eft->newInstance(MiniProvider::broker, foreign, nullptr), nullptr);
        const auto* wrong = reinterpret_cast<const CMPIInstance*>(request.path);
        EXPECT_EQ(request.result->ft->returnInstance(request.result, wrong).rc, CMPI_RC_ERR_INVALID_HANDLE);
    });
    EXPECT_EQ(takeViolations(), (Violations{"newInstance: the object path is not one of this server's",
                                            "CMPIResult.returnInstance: an object path for an instance"}));
}

TEST_F(ForeignServerTest, ThreadThatIsNotAttachedMakesNothing) {
    std::thread([] {
        MiniProvider::newString("text");
        MiniProvider::newPath();
        MiniProvider::broker->xft->newThread([](void*) -> void* { return nullptr; }, nullptr, 0);
    }).join();
    EXPECT_EQ(takeViolations(), (Violations{"newString: made an object on a thread that is not attached",
                                            "newObjectPath: made an object on a thread that is not attached",
                                            "newThread: called on a thread that is not attached"}));
}

/// What a provider's thread is given.
struct ThreadTask {
    CMPIContext* context;
    std::function<void(CMPIContext*)> work;

    static void* run(void* argument) {
        const auto* task = static_cast<ThreadTask*>(argument);
        task->work(task->context);
        return nullptr;
    }
};

class ForeignThreadTest : public ForeignServerTest {
protected:
    void runThread(std::function<void(CMPIContext*)> work) {
        ThreadTask task{nullptr, std::move(work)};
        does([&](const Request& request) {
            const CMPIBroker* broker = MiniProvider::broker;
            task.context = broker->bft->prepareAttachThread(broker, request.context);
            EXPECT_NE(broker->xft->newThread(ThreadTask::run, &task, 0), nullptr);
            EXPECT_EQ(broker->xft->joinThread, nullptr);
        });
        server->waitForThreads();
    }

    static CMPIrc attach(CMPIContext* context) {
        return MiniProvider::broker->bft->attachThread(MiniProvider::broker, context).rc;
    }
    static CMPIrc detach(CMPIContext* context) {
        return MiniProvider::broker->bft->detachThread(MiniProvider::broker, context).rc;
    }
};

TEST_F(ForeignThreadTest, DetachingEndsTheContextAndWhatTheThreadMade) {
    CMPIObjectPath* path = nullptr;
    CMPIContext* detached = nullptr;
    runThread([&](CMPIContext* context) {
        EXPECT_EQ(attach(context), CMPI_RC_OK);
        path = MiniProvider::newPath();
        EXPECT_EQ(server->runningThreads(), 1U);
        EXPECT_EQ(detach(context), CMPI_RC_OK);
        detached = context;
    });
    EXPECT_EQ(takeViolations(), Violations());
    EXPECT_EQ(server->preparedContexts(), 0U);
    does([&](const Request&) {
        EXPECT_EQ(MiniProvider::broker->eft->newInstance(MiniProvider::broker, path, nullptr), nullptr);
        EXPECT_EQ(attach(detached), CMPI_RC_ERR_INVALID_HANDLE);
    });
    EXPECT_EQ(takeViolations(), (Violations{"newInstance: use of an object path after its thread was detached",
                                            "attachThread: use of a context after its thread was detached"}));
}

TEST_F(ForeignThreadTest, ContextServesOneThreadOnceAndIsGivenBackByIt) {
    runThread([](CMPIContext* context) {
        EXPECT_EQ(attach(context), CMPI_RC_OK);
        EXPECT_NE(attach(context), CMPI_RC_OK);
    });
    EXPECT_EQ(takeViolations(), (Violations{"attachThread: the context is attached already",
                                            "newThread: the thread ended without detaching itself"}));
    does([](const Request& request) {
        EXPECT_NE(attach(const_cast<CMPIContext*>(request.context)), CMPI_RC_OK);
        EXPECT_NE(detach(const_cast<CMPIContext*>(request.context)), CMPI_RC_OK);
    });
    EXPECT_EQ(takeViolations(), (Violations{"attachThread: the context was not prepared",
                                            "detachThread: the context is not this thread's"}));
}

TEST_F(ForeignServerTest, UnusedContextCanBeReleasedAndTheRequestsOwnStays) {
    const std::size_t before = foreign_server::ignoredReleases();
    does([&](const Request& request) {
        CMPIContext* context = MiniProvider::broker->bft->prepareAttachThread(MiniProvider::broker, request.context);
        EXPECT_EQ(server->preparedContexts(), 1U);
        EXPECT_EQ(context->ft->release(context).rc, CMPI_RC_OK);
        EXPECT_EQ(server->preparedContexts(), 0U);
        auto* own = const_cast<CMPIContext*>(request.context);
        EXPECT_EQ(own->ft->release(own).rc, CMPI_RC_OK);
        EXPECT_GT(own->ft->getEntryCount(own, nullptr), 0U);
    });
    EXPECT_EQ(foreign_server::ignoredReleases(), before + 1);
    EXPECT_EQ(takeViolations(), Violations());
}

TEST_F(ForeignServerTest, CloneOutlivesItsRequestUntilItIsReleased) {
    CMPIObjectPath* clone = nullptr;
    does([&](const Request& request) { clone = request.path->ft->clone(request.path, nullptr); });
    does([&](const Request&) { EXPECT_EQ(clone->ft->getKeyCount(clone, nullptr), 2U); });
    EXPECT_EQ(takeViolations(), Violations());
    server.reset();
    EXPECT_EQ(takeViolations(), Violations{"clone: a clone was never released"});
}

TEST_F(ForeignServerTest, BrokerDiesWithItsServer) {
    server.reset();
    EXPECT_EQ(MiniProvider::newString("text"), nullptr);
    EXPECT_EQ(takeViolations(), Violations{"broker.newString: use after the end of what it belongs to"});
}

TEST_F(ForeignServerTest, PropertyOfAnotherTypeThanTheClasssIsABreachWhenItIsReturned) {
    does([](const Request& request) {
        CMPIInstance* instance = MiniProvider::newInstance();
        const CMPIUint32 size = 1;
        EXPECT_EQ(
            instance->ft->setProperty(instance, "Size", reinterpret_cast<const CMPIValue*>(&size), CMPI_uint32).rc,
            CMPI_RC_OK);
        request.result->ft->returnInstance(request.result, instance);
        request.result->ft->returnDone(request.result);
        request.result->ft->returnInstance(request.result, MiniProvider::newInstance());
    });
    EXPECT_EQ(takeViolations(), (Violations{"CMPIResult.returnInstance: returned behind returnDone",
                                            "the answer: property Test_Thing.Size is refused with 61"}));
}

TEST_F(ForeignServerTest, ArrayKeepsThePointersToItsStrings) {
    does([](const Request&) {
        const CMPIBroker* broker = MiniProvider::broker;
        CMPIArray* array = broker->eft->newArray(broker, 1, CMPI_string, nullptr);
        CMPIValue value{};
        value.string = MiniProvider::newString("element");
        EXPECT_EQ(array->ft->setElementAt(array, 0, &value, CMPI_string).rc, CMPI_RC_OK);
        EXPECT_EQ(array->ft->getElementAt(array, 0, nullptr).value.string, value.string);
        value.string->ft->release(value.string);
        CMPIInstance* instance = MiniProvider::newInstance();
        CMPIValue list{};
        list.array = array;
        EXPECT_NE(instance->ft->setProperty(instance, "Texts", &list, CMPI_stringA).rc, CMPI_RC_OK);
    });
    EXPECT_EQ(takeViolations(), Violations{"CMPIInstance.setProperty: use of a string after its release"});
}

TEST_F(ForeignServerTest, MessageOfAStatusMustBeAlive) {
    ask([](const Request&) {
        CMPIString* text = MiniProvider::newString("gone");
        text->ft->release(text);
        return CMPIStatus{CMPI_RC_ERR_FAILED, text};
    });
    EXPECT_EQ(message, "");
    EXPECT_EQ(takeViolations(), Violations{"the message of a status: use of a string after its release"});
}

TEST_F(ForeignServerTest, NothingIsDeliveredWithoutASubscription) {
    const auto deliver = [](const Request& request) {
        const CMPIBroker* broker = MiniProvider::broker;
        return broker->bft->deliverIndication(broker, request.context, nameSpace, MiniProvider::newInstance());
    };
    EXPECT_EQ(ask(deliver).rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(delivered, 0);
    server->subscriptions = 1;
    EXPECT_EQ(ask(deliver).rc, CMPI_RC_OK);
    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(takeViolations(), Violations());
}

TEST_F(ForeignServerTest, DiffersFromCimhostWhereTheTablesAllowIt) {
    does([this](const Request& request) {
        const CMPIBroker& broker = *MiniProvider::broker;
        EXPECT_EQ(broker.hdl, nullptr);
        EXPECT_EQ(broker.mft, nullptr);
        EXPECT_EQ(broker.bft->brokerVersion, 0U);
        EXPECT_EQ(request.path->ft->ftVersion, 1);
        EXPECT_NE(MiniProvider::broker, host->table());
        CMPIStatus status = {CMPI_RC_ERROR, nullptr};
        EXPECT_EQ(request.path->ft->getHostname(request.path, &status), nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_ERROR) << "a status is left alone when all is well";
        CMPIString* name = nullptr;
        const CMPIData key = request.path->ft->getKeyAt(request.path, 0, &name, nullptr);
        EXPECT_STREQ(name->ft->getCharPtr(name, nullptr), "Additional");
        EXPECT_EQ(key.state, CMPI_goodValue);
        const CMPIData missing = request.path->ft->getKey(request.path, "Missing", &status);
        EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(missing.state, CMPI_notFound);
        CMPIInstance* instance = MiniProvider::newInstance();
        instance->ft->getProperty(instance, "Text", &status);
        EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
        CMPIString* none = MiniProvider::newString(nullptr);
        ASSERT_NE(none, nullptr);
        EXPECT_EQ(none->ft->getCharPtr(none, nullptr), nullptr);
    });
    EXPECT_EQ(takeViolations(), Violations());
}

TEST_F(ForeignServerTest, TablesEndWithTheFirstLevel) {
    does([](const Request& request) {
        const CMPIBrokerEncFT* makers = MiniProvider::broker->eft;
        const CMPIResultFT* result = request.result->ft;
        const CMPIInstance* instance = MiniProvider::newInstance();
#ifdef FOREIGN_SERVER_WITH_ASAN
        EXPECT_DEATH(static_cast<void>(makers->newCMPIError == nullptr ? std::abort() : std::abort()),
                     "heap-buffer-overflow");
        EXPECT_DEATH(static_cast<void>(result->returnError == nullptr ? std::abort() : std::abort()),
                     "heap-buffer-overflow");
        EXPECT_DEATH(static_cast<void>(instance->ft->setPropertyWithOrigin == nullptr ? std::abort() : std::abort()),
                     "heap-buffer-overflow");
#else
        EXPECT_EQ(makers->newCMPIError, nullptr);
        EXPECT_EQ(result->returnError, nullptr);
        EXPECT_EQ(instance->ft->setPropertyWithOrigin, nullptr);
#endif
    });
}

} // namespace
