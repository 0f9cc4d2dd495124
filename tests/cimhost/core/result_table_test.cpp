#include "broker_fixture.h"

#include "cimhost/broker/result_collector.h"

#include <stdexcept>
#include <string>
#include <vector>

using cimhost::ResultCollector;
using cimhost::ResultKind;

namespace {

class ResultTable : public BrokerTest {
protected:
    CMPIrc giveInstance(const CMPIResult& result) { return result.ft->returnInstance(&result, instance()).rc; }
    CMPIrc givePath(const CMPIResult& result) { return result.ft->returnObjectPath(&result, path()).rc; }
    CMPIrc giveData(const CMPIResult& result) {
        const CMPIUint32 code = 5;
        return result.ft->returnData(&result, at(&code), CMPI_uint32).rc;
    }
};

// Notes the names of what it is given, and takes no more than it is told.
class NotingSink final : public cimhost::ObjectSink {
public:
    explicit NotingSink(std::size_t limit = 100) : most(limit) {}

    void deliver(const cimhost::InstanceObject& instance) override { note(nameOf(instance.value("Name"))); }
    void deliver(const cimhost::ObjectPathObject& path) override { note(nameOf(&path.key("Name")->data)); }

    std::vector<std::string> names;

private:
    static std::string nameOf(const CMPIData* data) { return textOf(data->value.string); }
    void note(std::string name) {
        if (names.size() == most) throw std::runtime_error("enough");
        names.push_back(std::move(name));
    }

    std::size_t most;
};

} // namespace

TEST_F(ResultTable, ASinkGetsEachObjectAtOnceAndNothingIsKept) {
    NotingSink sink;
    ResultCollector instances(*scope, ResultKind::instances, &sink);
    CMPIInstance* made = instance();
    set(made, "Name", "one", CMPI_chars);
    EXPECT_RC(instances.ft->returnInstance(&instances, made), CMPI_RC_OK);
    EXPECT_EQ(sink.names, std::vector<std::string>({"one"}));
    ResultCollector paths(*scope, ResultKind::paths, &sink);
    CMPIObjectPath* place = path();
    set(place, "Name", "two", CMPI_chars);
    EXPECT_RC(paths.ft->returnObjectPath(&paths, place), CMPI_RC_OK);
    EXPECT_EQ(sink.names, std::vector<std::string>({"one", "two"}));
    EXPECT_TRUE(instances.instances.empty());
    EXPECT_TRUE(paths.paths.empty());
}

TEST_F(ResultTable, ASinkThatThrowsEndsTheAnswerAndTheProviderIsToldRc1) {
    NotingSink sink(1);
    ResultCollector result(*scope, ResultKind::instances, &sink);
    CMPIInstance* made = instance();
    set(made, "Name", "one", CMPI_chars);
    EXPECT_RC(result.ft->returnInstance(&result, made), CMPI_RC_OK);
    EXPECT_FALSE(result.failure());
    EXPECT_RC(result.ft->returnInstance(&result, made), CMPI_RC_ERR_FAILED);
    EXPECT_RC(result.ft->returnInstance(&result, made), CMPI_RC_ERR_FAILED);
    ASSERT_TRUE(result.failure());
    EXPECT_THROW(std::rethrow_exception(result.failure()), std::runtime_error);
    EXPECT_EQ(sink.names.size(), 1U);
}

TEST_F(ResultTable, ARequestTakesObjectsOfItsKindOnly) {
    for (const ResultKind kind : {ResultKind::nothing, ResultKind::paths, ResultKind::instances, ResultKind::data}) {
        ResultCollector result(*scope, kind);
        const auto codeFor = [&](ResultKind given) { return given == kind ? CMPI_RC_OK : CMPI_RC_ERR_NOT_SUPPORTED; };
        EXPECT_EQ(giveInstance(result), codeFor(ResultKind::instances));
        EXPECT_EQ(givePath(result), codeFor(ResultKind::paths));
        EXPECT_EQ(giveData(result), codeFor(ResultKind::data));
        EXPECT_EQ(result.instances.size(), kind == ResultKind::instances ? 1U : 0U);
        EXPECT_EQ(result.paths.size(), kind == ResultKind::paths ? 1U : 0U);
        EXPECT_EQ(result.data.size(), kind == ResultKind::data ? 1U : 0U);
        EXPECT_EQ(result.kind(), kind);
    }
}

TEST_F(ResultTable, DoneIsAllowedEverywhereAndMoreThanOnce) {
    for (const ResultKind kind : {ResultKind::nothing, ResultKind::paths, ResultKind::instances, ResultKind::data}) {
        ResultCollector result(*scope, kind);
        EXPECT_RC(result.ft->returnDone(&result), CMPI_RC_OK);
        EXPECT_RC(result.ft->returnDone(&result), CMPI_RC_OK);
        EXPECT_EQ(result.doneCount(), 2U);
    }
}

TEST_F(ResultTable, ReturnedObjectsDoNotChange) {
    ResultCollector instances(*scope, ResultKind::instances);
    CMPIInstance* made = instance();
    for (const char* name : {"one", "two"}) {
        set(made, "Name", name, CMPI_chars);
        EXPECT_RC(instances.ft->returnInstance(&instances, made), CMPI_RC_OK);
    }
    set(made, "Name", "three", CMPI_chars);
    ASSERT_EQ(instances.instances.size(), 2U);
    EXPECT_EQ(textOf(get(instances.instances[0], "Name").value.string), "one");
    EXPECT_EQ(textOf(get(instances.instances[1], "Name").value.string), "two");
    EXPECT_EQ(textOf(get(made, "Name").value.string), "three");

    ResultCollector paths(*scope, ResultKind::paths);
    CMPIObjectPath* place = path();
    for (const char* name : {"one", "two"}) {
        set(place, "Name", name, CMPI_chars);
        place->ft->setNameSpace(place, name);
        EXPECT_RC(paths.ft->returnObjectPath(&paths, place), CMPI_RC_OK);
    }
    ASSERT_EQ(paths.paths.size(), 2U);
    EXPECT_EQ(textOf(paths.paths[0]->ft->toString(paths.paths[0], nullptr)), "one:Test_Thing.Name=\"one\"");
    EXPECT_EQ(textOf(paths.paths[1]->ft->toString(paths.paths[1], nullptr)), "two:Test_Thing.Name=\"two\"");
}

TEST_F(ResultTable, AClonedInstanceCanBeReturnedAndReleased) {
    ResultCollector result(*scope, ResultKind::instances);
    CMPIInstance* made = instance();
    set(made, "Name", "one", CMPI_chars);
    CMPIInstance* copy = made->ft->clone(made, nullptr);
    EXPECT_RC(result.ft->returnInstance(&result, copy), CMPI_RC_OK);
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
    EXPECT_EQ(textOf(get(result.instances[0], "Name").value.string), "one");
}

TEST_F(ResultTable, BrokenObjectsAreRc60) {
    ResultCollector instances(*scope, ResultKind::instances);
    EXPECT_RC(instances.ft->returnInstance(&instances, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
    ResultCollector paths(*scope, ResultKind::paths);
    EXPECT_RC(paths.ft->returnObjectPath(&paths, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
    CMPIResult broken = paths;
    broken.hdl = nullptr;
    EXPECT_EQ(givePath(broken), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(giveInstance(broken), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(giveData(broken), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(broken.ft->returnDone(&broken), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(broken.ft->returnError(&broken, nullptr), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_RC(paths.ft->returnError(&paths, nullptr), CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(ResultTable, ReleaseAndCloneAreAbsent) {
    ResultCollector result(*scope, ResultKind::data);
    EXPECT_EQ(result.ft->release, nullptr);
    EXPECT_EQ(result.ft->clone, nullptr);
}
