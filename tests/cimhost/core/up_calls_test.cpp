// What a provider asks of its server: every call reaches the server with what the provider said, and its answer comes
// back.
#include "broker_fixture.h"

#include <functional>
#include <stdexcept>

using namespace cimhost;

namespace {

// Answers with two objects, and notes what it was asked.
class Server : public UpCalls {
public:
    Elements enumerateInstanceNames(ObjectMaker maker, const ObjectPathObject& path) override {
        return paths(maker, "names of " + text(path));
    }
    Elements enumerateInstances(ObjectMaker maker, const ObjectPathObject& path, const PropertyList& list) override {
        return instances(maker, "instances of " + text(path) + text(list));
    }
    Elements getInstance(ObjectMaker maker, const ObjectPathObject& path, const PropertyList& list) override {
        asked = "instance " + text(path) + text(list);
        if (isEmpty) return std::vector<CMPIData>{};
        return std::vector<CMPIData>{ObjectMaker::value(*maker.instance(path))};
    }
    Elements associators(ObjectMaker maker, const ObjectPathObject& path, const AssociationFilter& filter,
                         const PropertyList& list) override {
        return instances(maker, "associators of " + text(path) + text(filter) + text(list));
    }
    Elements associatorNames(ObjectMaker maker, const ObjectPathObject& path,
                             const AssociationFilter& filter) override {
        return paths(maker, "associator names of " + text(path) + text(filter));
    }
    Elements references(ObjectMaker maker, const ObjectPathObject& path, const AssociationFilter& filter,
                        const PropertyList& list) override {
        return instances(maker, "references of " + text(path) + text(filter) + text(list));
    }
    Elements referenceNames(ObjectMaker maker, const ObjectPathObject& path, const AssociationFilter& filter) override {
        return paths(maker, "reference names of " + text(path) + text(filter));
    }
    Elements invokeMethod(ObjectMaker maker, const ObjectPathObject& path, std::string_view method,
                          const ArgsObject& in, ArgsObject& out) override {
        asked = std::string(method) + " of " + text(path);
        out.add("Echo", in.argument("Text")->data);
        return std::vector<CMPIData>{*maker.value(CMPI_uint32, "5")};
    }

    std::string asked;
    bool isEmpty = false;

private:
    Elements paths(ObjectMaker maker, std::string question) {
        asked = std::move(question);
        return std::vector<CMPIData>(2, ObjectMaker::value(*maker.path("root/test", "Test_Thing")));
    }
    Elements instances(ObjectMaker maker, std::string question) {
        asked = std::move(question);
        return std::vector<CMPIData>(2, ObjectMaker::value(*maker.instance(*maker.path("root/test", "Test_Thing"))));
    }
    static std::string text(const ObjectPathObject& path) { return std::string(path.className()); }
    static std::string text(const PropertyList& list) {
        if (!list) return " all";
        std::string all = " {";
        for (const std::string& name : *list)
            all += name;
        return all + "}";
    }
    static std::string text(const AssociationFilter& filter) {
        return " (" + filter.associationClass + "," + filter.resultClass + "," + filter.role + "," + filter.resultRole +
               ")";
    }
};

class UpCallsTest : public BrokerTest {
protected:
    void startWithServer() {
        BrokerOptions options;
        options.upCalls = &server;
        start(std::move(options));
    }
    void expectTwo(const CMPIEnumeration* found, CMPIType type, const std::string& question) {
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(server.asked, question);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->ft->getNext(found, &status).type, type);
        EXPECT_EQ(found->ft->hasNext(found, &status), 1);
        EXPECT_EQ(found->ft->getNext(found, &status).type, type);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(found->ft->hasNext(found, &status), 0);
        EXPECT_EQ(found->ft->getNext(found, &status).state, absentState);
        EXPECT_EQ(status.rc, CMPI_RC_NO_MORE_ELEMENTS);
    }

    Server server;
    CMPIStatus status{CMPI_RC_ERROR, nullptr};
    const char* properties[2] = {"Name", nullptr};
};

} // namespace

TEST_F(UpCallsTest, ReachTheServerWithWhatTheProviderSaid) {
    startWithServer();
    const CMPIBrokerFT& bft = *cmpi->bft;
    expectTwo(bft.enumerateInstanceNames(cmpi, nullptr, path(), &status), CMPI_ref, "names of Test_Thing");
    expectTwo(bft.enumerateInstances(cmpi, nullptr, path(), properties, &status), CMPI_instance,
              "instances of Test_Thing {Name}");
    expectTwo(bft.enumerateInstances(cmpi, nullptr, path(), nullptr, &status), CMPI_instance,
              "instances of Test_Thing all");
    expectTwo(bft.associators(cmpi, nullptr, path(), "A", "B", "c", "d", properties, &status), CMPI_instance,
              "associators of Test_Thing (A,B,c,d) {Name}");
    expectTwo(bft.associatorNames(cmpi, nullptr, path(), nullptr, "B", nullptr, "d", &status), CMPI_ref,
              "associator names of Test_Thing (,B,,d)");
    expectTwo(bft.references(cmpi, nullptr, path(), "A", "c", nullptr, &status), CMPI_instance,
              "references of Test_Thing (A,,c,) all");
    expectTwo(bft.referenceNames(cmpi, nullptr, path(), "A", "c", &status), CMPI_ref,
              "reference names of Test_Thing (A,,c,)");
}

TEST_F(UpCallsTest, OneInstanceIsOneOrNotFound) {
    startWithServer();
    CMPIObjectPath* place = path();
    set(place, "Name", "one", CMPI_chars);
    CMPIInstance* found = cmpi->bft->getInstance(cmpi, nullptr, place, nullptr, &status);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(server.asked, "instance Test_Thing all");
    const CMPIObjectPath* itsPath = found->ft->getObjectPath(found, nullptr);
    EXPECT_EQ(textOf(itsPath->ft->toString(itsPath, nullptr)), "root/test:Test_Thing.Name=\"one\"");
    server.isEmpty = true;
    EXPECT_EQ(cmpi->bft->getInstance(cmpi, nullptr, place, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(UpCallsTest, AMethodGivesItsValueAndArguments) {
    startWithServer();
    CMPIArgs* in = arguments();
    CMPIArgs* out = arguments();
    in->ft->addArg(in, "Text", at("hello"), CMPI_chars);
    const CMPIData value = cmpi->bft->invokeMethod(cmpi, nullptr, path(), "Do", in, out, &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(server.asked, "Do of Test_Thing");
    EXPECT_EQ(value.value.uint32, 5U);
    EXPECT_EQ(textOf(out->ft->getArg(out, "Echo", nullptr).value.string), "hello");
    EXPECT_EQ(cmpi->bft->invokeMethod(cmpi, nullptr, path(), "Do", nullptr, out, &status).state, absentState);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(UpCallsTest, AnswersBecomeAnArrayOfTheirType) {
    startWithServer();
    const CMPIEnumeration* found = cmpi->bft->enumerateInstanceNames(cmpi, nullptr, path(), &status);
    found->ft->getNext(found, nullptr);
    const CMPIArray* all = found->ft->toArray(found, &status);
    ASSERT_NE(all, nullptr);
    EXPECT_EQ(all->ft->getSize(all, nullptr), 2U) << "from the first on, whatever was read already";
    EXPECT_EQ(all->ft->getSimpleType(all, nullptr), CMPI_ref);
}

TEST_F(UpCallsTest, AnAnswerCanBeClonedWhereItStands) {
    startWithServer();
    const CMPIEnumeration* found = cmpi->bft->enumerateInstances(cmpi, nullptr, path(), nullptr, &status);
    found->ft->getNext(found, nullptr);
    CMPIEnumeration* copy = found->ft->clone(found, &status);
    found->ft->getNext(found, nullptr);
    EXPECT_EQ(found->ft->hasNext(found, nullptr), 0);
    EXPECT_EQ(copy->ft->hasNext(copy, nullptr), 1);
    scope.reset();
    scope.emplace(*broker);
    EXPECT_EQ(copy->ft->getNext(copy, nullptr).type, CMPI_instance);
    EXPECT_RC(copy->ft->release(copy), CMPI_RC_OK);
}

TEST_F(UpCallsTest, ServerWithoutAnswersSaysNotSupported) {
    const CMPIBrokerFT& bft = *cmpi->bft;
    EXPECT_EQ(bft.enumerateInstanceNames(cmpi, nullptr, path(), &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    for (const auto& call : std::vector<std::function<void()>>{
             [&] { bft.enumerateInstances(cmpi, nullptr, path(), nullptr, &status); },
             [&] { bft.getInstance(cmpi, nullptr, path(), nullptr, &status); },
             [&] { bft.associators(cmpi, nullptr, path(), nullptr, nullptr, nullptr, nullptr, nullptr, &status); },
             [&] { bft.associatorNames(cmpi, nullptr, path(), nullptr, nullptr, nullptr, nullptr, &status); },
             [&] { bft.references(cmpi, nullptr, path(), nullptr, nullptr, nullptr, &status); },
             [&] { bft.referenceNames(cmpi, nullptr, path(), nullptr, nullptr, &status); },
             [&] { bft.invokeMethod(cmpi, nullptr, path(), "Do", arguments(), arguments(), &status); },
             [&] { bft.createInstance(cmpi, nullptr, path(), instance(), &status); },
             [&] { status = bft.modifyInstance(cmpi, nullptr, path(), instance(), nullptr); },
             [&] { status = bft.deleteInstance(cmpi, nullptr, path()); },
             [&] { bft.execQuery(cmpi, nullptr, path(), "SELECT", "WQL", &status); },
             [&] { status = bft.setProperty(cmpi, nullptr, path(), "Name", at("x"), CMPI_chars); },
             [&] { bft.getProperty(cmpi, nullptr, path(), "Name", &status); },
         }) {
        status.rc = CMPI_RC_OK;
        call();
        EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    }
}

TEST_F(UpCallsTest, AServerThatFailsIsAFailureWithItsReason) {
    struct Failing : UpCalls {
        Elements enumerateInstanceNames(ObjectMaker, const ObjectPathObject&) override {
            throw std::runtime_error("no memory");
        }
        Elements enumerateInstances(ObjectMaker, const ObjectPathObject&, const PropertyList&) override { throw 1; }
        Elements getInstance(ObjectMaker, const ObjectPathObject&, const PropertyList&) override {
            return CimError{CMPI_RC_ERR_INVALID_CLASS, "no such class"};
        }
    } failing;
    BrokerOptions options;
    options.upCalls = &failing;
    start(std::move(options));
    EXPECT_EQ(cmpi->bft->enumerateInstanceNames(cmpi, nullptr, path(), &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(textOf(status.msg), "no memory");
    EXPECT_EQ(cmpi->bft->enumerateInstances(cmpi, nullptr, path(), nullptr, &status), nullptr);
    EXPECT_EQ(textOf(status.msg), "the server failed");
    EXPECT_EQ(cmpi->bft->getInstance(cmpi, nullptr, path(), nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(textOf(status.msg), "no such class");
    EXPECT_EQ(cmpi->bft->enumerateInstanceNames(cmpi, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}
