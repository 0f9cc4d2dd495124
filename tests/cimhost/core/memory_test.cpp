// Who owns what the tables hand out: a request's objects end with it, clones when they are released.
#include "broker_fixture.h"

#include "cimhost/broker/result_collector.h"

#include <array>
#include <string>
#include <vector>

using cimhost::Arena;
using cimhost::BrokerOptions;
using cimhost::ObjectMaker;
using cimhost::RequestScope;

namespace {

class Memory : public BrokerTest {
protected:
    // Releases the original's request and reads the clone.
    template <typename Object>
    Object* cloneBeyondTheRequest(Object* original) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        Object* copy = original->ft->clone(original, &status);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        scope.reset();
        scope.emplace(*broker);
        return copy;
    }
};

} // namespace

TEST_F(Memory, AnArenaGivesAlignedMemoryOfEverySize) {
    Arena arena;
    for (const std::size_t bytes : {0U, 1U, 7U, 8U, 9U, 1000U, 1024U, 5000U, 200000U, 3U}) {
        auto* memory = static_cast<unsigned char*>(arena.allocate(bytes));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 8, 0U);
        std::fill_n(memory, bytes, static_cast<unsigned char>(0xff));
    }
    EXPECT_GE(arena.size(), 200000U);
    const std::string_view copy = arena.copyText("text");
    EXPECT_EQ(copy, "text");
    EXPECT_EQ(copy.data()[copy.size()], '\0');
}

TEST_F(Memory, AnArenaThatIsRewoundHandsTheSameMemoryOutAgain) {
    Arena arena;
    const std::string_view first = arena.copyText("stays");
    const Arena::Place place = arena.place();
    for (int round = 0; round < 1000; ++round) {
        for (const std::size_t bytes : {10U, 3000U, 20000U})
            std::fill_n(static_cast<char*>(arena.allocate(bytes)), bytes, 'x');
        arena.rewind(place);
    }
    EXPECT_LE(arena.size(), 100000U);
    EXPECT_EQ(first, "stays");
}

TEST_F(Memory, KeptMemoryIsNotHandedOutAgain) {
    Arena arena;
    std::vector<std::string_view> kept;
    for (int round = 0; round < 100; ++round) {
        const Arena::Place place = arena.place();
        kept.push_back(arena.copyText(std::to_string(round) + std::string(500, '.')));
        arena.keepAll();
        arena.allocate(5000);
        arena.rewind(place);
    }
    for (std::size_t round = 0; round < kept.size(); ++round)
        EXPECT_EQ(kept[round], std::to_string(round) + std::string(500, '.'));
}

TEST_F(Memory, MemoryThatAProviderGivesBackIsUsedAgain) {
    std::size_t size = 0;
    for (int round = 0; round < 1000; ++round) {
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        CMPIGcStat* mark = cmpi->mft->mark(cmpi, &status);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        instance();
        string(std::string(500, 'x').c_str());
        EXPECT_RC(cmpi->mft->release(cmpi, mark), CMPI_RC_OK);
        if (round == 10) size = scope->arena().size();
    }
    EXPECT_EQ(scope->arena().size(), size);
}

TEST_F(Memory, ReturnedObjectsStayWhenTheRestIsGivenBack) {
    cimhost::ResultCollector result(*scope, cimhost::ResultKind::instances);
    for (const char* name : {"one", "two"}) {
        CMPIGcStat* mark = cmpi->mft->mark(cmpi, nullptr);
        CMPIInstance* made = instance();
        set(made, "Name", name, CMPI_chars);
        EXPECT_RC(result.ft->returnInstance(&result, made), CMPI_RC_OK);
        EXPECT_RC(cmpi->mft->release(cmpi, mark), CMPI_RC_OK);
        string(std::string(2000, 'x').c_str());
    }
    ASSERT_EQ(result.instances.size(), 2U);
    EXPECT_EQ(textOf(get(result.instances[0], "Name").value.string), "one");
    EXPECT_EQ(textOf(get(result.instances[1], "Name").value.string), "two");
}

TEST_F(Memory, AMarkOfAnotherRequestIsRefused) {
    CMPIGcStat* mark = cmpi->mft->mark(cmpi, nullptr);
    RequestScope inner(*broker);
    EXPECT_RC(cmpi->mft->release(cmpi, mark), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(cmpi->mft->release(cmpi, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(Memory, AClonedStringOutlivesTheRequest) {
    CMPIString* copy = cloneBeyondTheRequest(string("text"));
    EXPECT_EQ(textOf(copy), "text");
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(Memory, AClonedDateTimeOutlivesTheRequest) {
    CMPIDateTime* copy = cloneBeyondTheRequest(dateTime("20010909034640.000000+120"));
    EXPECT_EQ(textOf(copy->ft->getStringFormat(copy, nullptr)), "20010909034640.000000+120");
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(Memory, AClonedArrayOutlivesTheRequest) {
    CMPIArray* texts = array(2, CMPI_string);
    const CMPIString* text = string("text");
    texts->ft->setElementAt(texts, 1, at(&text), CMPI_string);
    CMPIArray* copy = cloneBeyondTheRequest(texts);
    EXPECT_EQ(copy->ft->getElementAt(copy, 0, nullptr).state, CMPI_nullValue);
    EXPECT_EQ(textOf(copy->ft->getElementAt(copy, 1, nullptr).value.string), "text");
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(Memory, AClonedPathOutlivesTheRequest) {
    CMPIObjectPath* inner = path();
    set(inner, "Name", "one", CMPI_chars);
    CMPIObjectPath* made = path("Test_Keys");
    set(made, "Thing", &inner, CMPI_ref);
    CMPIObjectPath* copy = cloneBeyondTheRequest(made);
    EXPECT_EQ(textOf(copy->ft->toString(copy, nullptr)),
              R"(root/test:Test_Keys.Thing="root/test:Test_Thing.Name=\"one\"")");
    EXPECT_EQ(set(copy, "Text", "added to the clone", CMPI_chars), CMPI_RC_OK);
    EXPECT_EQ(copy->ft->getKeyCount(copy, nullptr), 2U);
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(Memory, AClonedInstanceOutlivesTheRequest) {
    for (const char* className : {"Test_Thing", "Test_Unknown"}) {
        CMPIInstance* inner = instance();
        set(inner, "Name", "inner", CMPI_chars);
        CMPIInstance* made = instance(className);
        set(made, "Name", "outer", CMPI_chars);
        set(made, "Inner", &inner, CMPI_instance);
        CMPIInstance* copy = cloneBeyondTheRequest(made);
        EXPECT_EQ(textOf(get(copy, "Name").value.string), "outer");
        EXPECT_EQ(textOf(get(get(copy, "Inner").value.inst, "Name").value.string), "inner");
        set(copy, "Name", "changed", CMPI_chars);
        EXPECT_EQ(textOf(get(copy, "Name").value.string), "changed");
        EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
    }
}

TEST_F(Memory, ClonedArgumentsOutliveTheRequest) {
    CMPIArgs* made = arguments();
    made->ft->addArg(made, "Name", at("text"), CMPI_chars);
    CMPIArgs* copy = cloneBeyondTheRequest(made);
    EXPECT_EQ(textOf(copy->ft->getArg(copy, "name", nullptr).value.string), "text");
    EXPECT_RC(copy->ft->addArg(copy, "Other", at("text"), CMPI_chars), CMPI_RC_OK);
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(Memory, AClonedQueryOutlivesTheRequest) {
    CMPISelectExp* copy = cloneBeyondTheRequest(cmpi->eft->newSelectExp(cmpi, "SELECT", "WQL", nullptr, nullptr));
    EXPECT_EQ(textOf(copy->ft->getString(copy, nullptr)), "SELECT");
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(Memory, ValuesReadFromACloneEndWithTheReadersRequest) {
    CMPIInstance* made = instance();
    set(made, "Name", "text", CMPI_chars);
    CMPIInstance* copy = made->ft->clone(made, nullptr);
    const CMPIString* name = get(copy, "Name").value.string;
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
    EXPECT_EQ(textOf(name), "text");
}

TEST_F(Memory, AChangeOfTheCloneLeavesTheOriginal) {
    CMPIInstance* made = instance();
    set(made, "Name", "original", CMPI_chars);
    CMPIInstance* copy = made->ft->clone(made, nullptr);
    CMPIInstance* copyOfCopy = copy->ft->clone(copy, nullptr);
    set(copy, "Name", "copy", CMPI_chars);
    EXPECT_EQ(textOf(get(made, "Name").value.string), "original");
    EXPECT_EQ(textOf(get(copyOfCopy, "Name").value.string), "original");
    copy->ft->release(copy);
    copyOfCopy->ft->release(copyOfCopy);
}

TEST_F(Memory, ReleaseOfARequestsObjectDoesNothing) {
    CMPIString* text = string("text");
    EXPECT_RC(text->ft->release(text), CMPI_RC_OK);
    EXPECT_EQ(textOf(text), "text");
    CMPIInstance* made = instance();
    EXPECT_RC(made->ft->release(made), CMPI_RC_OK);
    set(made, "Name", "text", CMPI_chars);
    EXPECT_EQ(textOf(get(made, "Name").value.string), "text");
}

TEST_F(Memory, ANestedRequestLeavesTheOuterOneItsObjects) {
    const CMPIString* outer = string("outer");
    {
        RequestScope inner(*broker);
        const CMPIString* within = string("inner");
        EXPECT_EQ(textOf(within), "inner");
        EXPECT_GT(inner.arena().size(), 0U);
    }
    EXPECT_EQ(textOf(outer), "outer");
    const std::size_t before = scope->arena().size();
    for (int count = 0; count < 1000; ++count) {
        RequestScope inner(*broker);
        string("some text that is gone with its request");
    }
    EXPECT_EQ(scope->arena().size(), before) << "what an inner request makes does not pile up in the outer one";
}

TEST_F(Memory, ValuesOfAnInnerRequestCanBeSetInAnOuterObject) {
    CMPIInstance* made = instance();
    CMPIArray* texts = array(1, CMPI_string);
    {
        RequestScope inner(*broker);
        const CMPIString* text = string("inner");
        const CMPIInstance* within = instance();
        set(within, "Name", "inner", CMPI_chars);
        EXPECT_EQ(set(made, "Text", &text, CMPI_string), CMPI_RC_OK);
        EXPECT_EQ(set(made, "Inner", &within, CMPI_instance), CMPI_RC_OK);
        EXPECT_RC(texts->ft->setElementAt(texts, 0, at(&text), CMPI_string), CMPI_RC_OK);
    }
    EXPECT_EQ(textOf(get(made, "Text").value.string), "inner");
    EXPECT_EQ(textOf(get(get(made, "Inner").value.inst, "Name").value.string), "inner");
    EXPECT_EQ(textOf(texts->ft->getElementAt(texts, 0, nullptr).value.string), "inner");
}

TEST_F(Memory, CopiesWithinARequestAreIndependentOfEachOther) {
    const cimhost::InstanceObject* made = cimhost::InstanceObject::from(static_cast<const CMPIInstance*>(instance()));
    set(made, "Name", "one", CMPI_chars);
    cimhost::InstanceObject* first = made->copyTo(scope->arena());
    cimhost::InstanceObject* second = first->copyTo(scope->arena());
    set(first, "Name", "two", CMPI_chars);
    set(second, "Level", nullptr, CMPI_uint16);
    EXPECT_EQ(textOf(get(made, "Name").value.string), "one");
    EXPECT_EQ(textOf(get(first, "Name").value.string), "two");
    EXPECT_EQ(textOf(get(second, "Name").value.string), "one");

    CMPIInstance* free = instance("Test_Unknown");
    set(free, "A", "one", CMPI_chars);
    cimhost::InstanceObject* copy = cimhost::InstanceObject::from(free)->copyTo(scope->arena());
    set(copy, "A", "two", CMPI_chars);
    set(free, "B", "three", CMPI_chars);
    EXPECT_EQ(textOf(get(free, "A").value.string), "one");
    EXPECT_EQ(textOf(get(copy, "A").value.string), "two");
    EXPECT_EQ(copy->ft->getPropertyCount(copy, nullptr), 1U);
}

TEST_F(Memory, AProviderThatMakesObjectsWithoutEndIsToldToStop) {
    CMPIObjectPath* thing = path("Test_Thing");
    std::size_t made = 0;
    CMPIStatus status{};
    while (cmpi->eft->newInstance(cmpi, thing, &status)) {
        ASSERT_EQ(status.rc, CMPI_RC_OK);
        ASSERT_LT(++made, 100'000'000U);
    }
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_GT(made, 100'000U);
    EXPECT_EQ(cmpi->eft->newObjectPath(cmpi, "root/test", "Test_Thing", &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    // What comes next starts anew.
    scope.reset();
    scope.emplace(*broker);
    EXPECT_NE(path("Test_Thing"), nullptr);
}
