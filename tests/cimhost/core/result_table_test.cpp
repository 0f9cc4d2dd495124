#include "broker_fixture.h"

#include "cimhost/broker/result_collector.h"

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

} // namespace

TEST_F(ResultTable, EveryRequestTakesItsOwnKindOnly) {
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

TEST_F(ResultTable, WhatWasReturnedStaysAsItWas) {
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
