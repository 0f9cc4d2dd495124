// Threads of the provider's own: prepareAttachThread, attachThread, detachThread, and threads that were never attached.
#include "broker_fixture.h"

#include <atomic>
#include <functional>
#include <thread>

using cimhost::ContextObject;
using cimhost::RequestScope;

namespace {

class Threads : public BrokerTest {
protected:
    Threads() : context(ContextObject::make(scope->arena())) {
        context->addText(CMPIPrincipal, "guest");
        context->add("Nothing", nullptr, CMPI_string);
    }
    CMPIContext* prepare() { return cmpi->bft->prepareAttachThread(cmpi, context); }
    CMPIStatus attach(const CMPIContext* prepared) { return cmpi->bft->attachThread(cmpi, prepared); }
    CMPIStatus detach(const CMPIContext* prepared) { return cmpi->bft->detachThread(cmpi, prepared); }
    static void inThread(const std::function<void()>& work) { std::thread(work).join(); }

    ContextObject* context;
};

} // namespace

TEST_F(Threads, APreparedContextHasTheEntriesOfTheRequest) {
    CMPIContext* prepared = prepare();
    ASSERT_NE(prepared, nullptr);
    EXPECT_EQ(broker->preparedContexts(), 1U);
    scope.reset();
    EXPECT_EQ(textOf(prepared->ft->getEntry(prepared, CMPIPrincipal, nullptr).value.string), "guest");
    EXPECT_EQ(prepared->ft->getEntry(prepared, "Nothing", nullptr).state, CMPI_nullValue);
    EXPECT_RC(detach(prepared), CMPI_RC_OK);
    EXPECT_EQ(broker->preparedContexts(), 0U);
}

TEST_F(Threads, AnAttachedThreadMakesObjectsUntilItDetaches) {
    CMPIContext* prepared = prepare();
    inThread([&] {
        EXPECT_RC(attach(prepared), CMPI_RC_OK);
        CMPIInstance* made = instance();
        set(made, "Name", "of the thread", CMPI_chars);
        EXPECT_EQ(textOf(get(made, "Name").value.string), "of the thread");
        EXPECT_RC(detach(prepared), CMPI_RC_OK);
    });
    EXPECT_EQ(broker->preparedContexts(), 0U);
    EXPECT_EQ(broker->fatalUnattachedCalls(), 0U);
    EXPECT_EQ(broker->leakingUnattachedCalls(), 0U);
}

TEST_F(Threads, DetachingEndsTheContext) {
    CMPIContext* prepared = prepare();
    inThread([&] {
        EXPECT_RC(attach(prepared), CMPI_RC_OK);
        EXPECT_RC(detach(prepared), CMPI_RC_OK);
        EXPECT_RC(attach(prepared), CMPI_RC_ERR_INVALID_HANDLE);
        EXPECT_RC(detach(prepared), CMPI_RC_ERR_INVALID_HANDLE);
    });
}

TEST_F(Threads, OneContextServesOneThreadAtATime) {
    CMPIContext* prepared = prepare();
    EXPECT_RC(attach(prepared), CMPI_RC_OK);
    inThread([&] {
        EXPECT_RC(attach(prepared), CMPI_RC_ERR_FAILED);
        EXPECT_RC(detach(prepared), CMPI_RC_ERR_FAILED);
    });
    EXPECT_EQ(messages(), (std::vector<std::string>{"attachThread with a context that is attached already",
                                                    "detachThread in another thread than the one that was attached"}));
    EXPECT_RC(detach(prepared), CMPI_RC_OK);
}

TEST_F(Threads, AContextOfARequestCannotBeAttached) {
    EXPECT_RC(attach(context), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(detach(context), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(cmpi->bft->prepareAttachThread(cmpi, nullptr), nullptr);
    EXPECT_EQ(cmpi->bft->prepareAttachThread(nullptr, context), nullptr);
    EXPECT_RC(cmpi->bft->attachThread(nullptr, context), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(cmpi->bft->detachThread(nullptr, context), CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(Threads, AttachmentsNestAndEndInAnyOrder) {
    CMPIContext* outer = prepare();
    CMPIContext* inner = prepare();
    inThread([&] {
        attach(outer);
        const CMPIString* ofOuter = string("outer");
        attach(inner);
        const CMPIString* ofInner = string("inner");
        detach(outer);
        EXPECT_EQ(textOf(ofInner), "inner");
        static_cast<void>(ofOuter);
        EXPECT_EQ(textOf(string("still bound")), "still bound");
        detach(inner);
    });
    EXPECT_EQ(broker->leakingUnattachedCalls(), 0U);
    EXPECT_EQ(broker->preparedContexts(), 0U);
}

TEST_F(Threads, AnAttachmentWithinARequestTakesWhatIsMadeUntilItEnds) {
    CMPIContext* prepared = prepare();
    const std::size_t before = scope->arena().size();
    attach(prepared);
    for (int count = 0; count < 10000; ++count)
        string("belongs to the attachment");
    EXPECT_EQ(scope->arena().size(), before);
    detach(prepared);
    EXPECT_EQ(textOf(string("belongs to the request")), "belongs to the request");
}

TEST_F(Threads, ABatchWithItsOwnAttachmentKeepsMemoryFlat) {
    inThread([&] {
        CMPIContext* own = prepare();
        attach(own);
        for (int batch = 0; batch < 100; ++batch) {
            CMPIContext* fresh = cmpi->bft->prepareAttachThread(cmpi, own);
            ASSERT_NE(fresh, nullptr);
            attach(fresh);
            set(instance(), "Name", "alert", CMPI_chars);
            detach(fresh);
        }
        EXPECT_EQ(broker->preparedContexts(), 1U);
        detach(own);
    });
}

TEST_F(Threads, ManyThreadsWorkAtOnce) {
    std::atomic<int> good = 0;
    std::vector<CMPIContext*> prepared;
    for (int count = 0; count < 4; ++count)
        prepared.push_back(prepare());
    CMPIInstance* shared = instance();
    set(shared, "Name", "shared", CMPI_chars);
    CMPIInstance* copy = shared->ft->clone(shared, nullptr);
    std::vector<std::thread> threads;
    for (CMPIContext* mine : prepared) {
        threads.emplace_back([&, mine] {
            attach(mine);
            for (int round = 0; round < 200; ++round) {
                CMPIInstance* made = instance();
                set(made, "Name", textOf(get(copy, "Name").value.string).c_str(), CMPI_chars);
                set(made, "Colour", "unknown to the class", CMPI_chars);
                CMPIObjectPath* place = copy->ft->getObjectPath(copy, nullptr);
                CMPIInstance* third = cmpi->eft->newInstance(cmpi, place, nullptr);
                if (textOf(get(made, "Name").value.string) == "shared" &&
                    cmpi->eft->classPathIsA(cmpi, third->ft->getObjectPath(third, nullptr), "Test_Base", nullptr)) {
                    ++good;
                }
            }
            detach(mine);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    copy->ft->release(copy);
    EXPECT_EQ(good, 800);
    EXPECT_EQ(broker->droppedProperties().size(), 1U);
    EXPECT_EQ(broker->preparedContexts(), 0U);
}

TEST_F(Threads, AThreadThatWasNeverAttachedWorksAndIsCounted) {
    inThread([&] {
        CMPIInstance* made = instance();
        EXPECT_EQ(set(made, "Name", "text", CMPI_chars), CMPI_RC_OK);
        EXPECT_EQ(cmpi->eft->classPathIsA(cmpi, path(), "Test_Base", nullptr), 1);
        EXPECT_EQ(textOf(get(made, "Name").value.string), "text");
    });
    EXPECT_EQ(broker->fatalUnattachedCalls(), 4U) << "two paths, an instance, a class test";
    EXPECT_EQ(broker->leakingUnattachedCalls(), 0U);
    EXPECT_EQ(messages(), std::vector<std::string>{"newObjectPath was called in a thread that is not attached; other "
                                                   "servers may not survive that"})
        << "warned of once";
}

TEST_F(Threads, ObjectsThatOtherServersWouldNeverFreeAreCounted) {
    inThread([&] {
        string("text");
        array(1, CMPI_uint8);
        dateTime("00000001000000.000000:000");
        arguments();
        cmpi->eft->newDateTime(cmpi, nullptr);
        cmpi->eft->newSelectExp(cmpi, "SELECT", "WQL", nullptr, nullptr);
    });
    EXPECT_EQ(broker->leakingUnattachedCalls(), 6U);
    EXPECT_EQ(broker->fatalUnattachedCalls(), 0U);
}

TEST_F(Threads, ARequestIsAnAttachment) {
    string("text");
    instance();
    EXPECT_EQ(broker->leakingUnattachedCalls(), 0U);
    EXPECT_EQ(broker->fatalUnattachedCalls(), 0U);
}

TEST_F(Threads, ABrokerMayEndBeforeItsThreadDetaches) {
    scope.reset();
    {
        cimhost::Broker other(classes);
        RequestScope request(other);
        const CMPIBroker* table = other.table();
        CMPIContext* prepared = table->bft->prepareAttachThread(table, ContextObject::make(request.arena()));
        EXPECT_RC(table->bft->attachThread(table, prepared), CMPI_RC_OK);
    }
    EXPECT_EQ(textOf(string("made elsewhere")), "made elsewhere");
}
